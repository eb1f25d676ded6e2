// SPDX-License-Identifier: MIT
// The layout of the value that the engine publishes, and the rule which of its records count.
//
// The value is little-endian and packed: 4 reserved bytes, the number of APO records
// (32 bits), the records. A record: 16 bytes of header, the number of bands n (32 bits),
// 4 reserved bytes, n gains, n excitations (32-bit floats).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kora4::vis {

inline constexpr std::size_t cHeadSize = 8;
inline constexpr std::size_t cNumAPOsOffset = 4;
inline constexpr std::size_t cRecordHeadSize = 24;
inline constexpr std::size_t cNumBandsOffset = 16;
inline constexpr std::size_t cBandSize = 2 * sizeof(float);

// Bytes of a record with that many bands.
constexpr std::size_t RecordSize(std::size_t numBands) {
    return cRecordHeadSize + numBands * cBandSize;
}

// A 32-bit number at any address: the value is packed.
inline std::uint32_t ReadNumber(const std::uint8_t* p) {
    std::uint32_t number;
    std::memcpy(&number, p, sizeof number);
    return number;
}

// The number of records that the value states, whether they are there or not.
inline std::uint32_t StatedAPOs(const std::uint8_t* pBlob, std::size_t size) {
    return size >= cHeadSize ? ReadNumber(pBlob + cNumAPOsOffset) : 0;
}

// The number of bands of the record at `offset`; false unless the whole record is inside the
// value.
inline bool ReadNumBands(const std::uint8_t* pBlob, std::size_t size, std::size_t offset,
                         std::uint32_t* pNumBands) {
    if (offset < cHeadSize || offset > size || size - offset < cRecordHeadSize)
        return false;
    *pNumBands = ReadNumber(pBlob + offset + cNumBandsOffset);
    return *pNumBands <= (size - offset - cRecordHeadSize) / cBandSize;
}

// The number of records that count: none after an incomplete one, and no more than are stated.
inline std::uint32_t CountAPOs(const std::uint8_t* pBlob, std::size_t size) {
    const std::uint32_t stated = StatedAPOs(pBlob, size);
    std::size_t offset = cHeadSize;
    std::uint32_t count = 0;
    for (std::uint32_t numBands; count < stated && ReadNumBands(pBlob, size, offset, &numBands);
         ++count)
        offset += RecordSize(numBands);
    return count;
}

}  // namespace kora4::vis

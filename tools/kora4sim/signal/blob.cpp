// SPDX-License-Identifier: MIT
// Lays a picture out as bytes, and the table of everything that can be wrong with them.
#include "kora4sim/signal/blob.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "base/text.h"
#include "contract/patch_records.h"
#include "contract/vis_layout.h"

namespace kora4::tools::sim {

namespace {

constexpr std::size_t cHugeBytes = 1 << 20;
constexpr std::size_t cMostRandomBytes = 600;
constexpr std::size_t cTooManyBands = cMaxArrayElements + 1;
constexpr std::uint32_t cReserved = 0;

// Little-endian, without gaps.
class Writer {
  public:
    explicit Writer(std::vector<std::uint8_t>& bytes) : m_bytes(bytes) {}

    template <typename Number>
    void Put(Number number) {
        std::uint8_t bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof number);
    }

    void Put(const Record& record, std::size_t statedBands) {
        // The engine's own header; readers ignore it.
        m_bytes.insert(m_bytes.end(), vis::cNumBandsOffset, 0);
        Put(static_cast<std::uint32_t>(statedBands));
        Put(cReserved);
        for (const float gain : record.gains)
            Put(gain);
        for (const float excitation : record.excitations)
            Put(excitation);
    }

  private:
    std::vector<std::uint8_t>& m_bytes;
};

// The picture with other counts than its own: of records, and of the first record's bands.
StoredValue Stating(const Picture& picture, std::size_t records, std::size_t firstBands) {
    StoredValue value{cBinaryType, {}};
    Writer writer(value.bytes);
    writer.Put(cReserved);
    writer.Put(static_cast<std::uint32_t>(records));
    bool isFirst = true;
    for (const Record& record : picture) {
        writer.Put(record, isFirst ? firstBands : record.gains.size());
        isFirst = false;
    }
    return value;
}

std::size_t FirstBands(const Picture& picture) {
    return picture.empty() ? 0 : picture.front().gains.size();
}

StoredValue StatingRecords(const Picture& picture, std::size_t records) {
    return Stating(picture, records, FirstBands(picture));
}

StoredValue StatingBands(const Picture& picture, std::size_t bands) {
    return Stating(picture, picture.size(), bands);
}

// Each level replaced by what `level` makes of its band.
template <typename Level>
StoredValue WithLevels(Picture picture, Level level) {
    for (Record& record : picture) {
        for (std::size_t band = 0; band < record.gains.size(); ++band)
            record.gains[band] = record.excitations[band] = level(band);
    }
    return Published(picture);
}

StoredValue Empty(const Picture&, Noise, std::uint64_t) {
    return {cBinaryType, {}};
}

StoredValue ShortHead(const Picture& picture, Noise, std::uint64_t) {
    StoredValue value = Published(picture);
    value.bytes.resize(vis::cHeadSize - 3);
    return value;
}

StoredValue Random(const Picture&, Noise noise, std::uint64_t number) {
    StoredValue value{cBinaryType, {}};
    value.bytes.resize(1 + noise.Word(number) % cMostRandomBytes);
    for (std::size_t i = 0; i < value.bytes.size(); ++i)
        value.bytes[i] = static_cast<std::uint8_t>(noise.Word(number, i + 1));
    return value;
}

StoredValue Text(const Picture&, Noise, std::uint64_t) {
    return StoredValue::FromText(u"levels");
}

StoredValue Number(const Picture&, Noise, std::uint64_t number) {
    return StoredValue::FromDword(static_cast<std::uint32_t>(number));
}

StoredValue NotNumbers(const Picture& picture, Noise, std::uint64_t) {
    return WithLevels(picture,
                      [](std::size_t) { return std::numeric_limits<float>::quiet_NaN(); });
}

StoredValue Infinities(const Picture& picture, Noise, std::uint64_t) {
    return WithLevels(picture, [](std::size_t band) {
        constexpr float cInfinity = std::numeric_limits<float>::infinity();
        return band % 2 == 0 ? cInfinity : -cInfinity;
    });
}

StoredValue Huge(const Picture& picture, Noise noise, std::uint64_t number) {
    StoredValue value = Published(picture);
    const auto filling = static_cast<std::uint8_t>(noise.Word(number));
    value.bytes.resize(std::max(value.bytes.size(), cHugeBytes), filling);
    return value;
}

StoredValue Truncated(const Picture& picture, Noise, std::uint64_t) {
    StoredValue value = Published(picture);
    value.bytes.resize(value.bytes.size() - std::min<std::size_t>(value.bytes.size(), 6));
    return value;
}

StoredValue OneRecordMore(const Picture& picture, Noise, std::uint64_t) {
    return StatingRecords(picture, picture.size() + 1);
}

StoredValue OneRecordFewer(const Picture& picture, Noise, std::uint64_t) {
    return StatingRecords(picture, picture.empty() ? 0 : picture.size() - 1);
}

StoredValue MostRecords(const Picture& picture, Noise, std::uint64_t) {
    return StatingRecords(picture, 0xFFFFFFFF);
}

StoredValue NoRecords(const Picture& picture, Noise, std::uint64_t) {
    return StatingRecords(picture, 0);
}

StoredValue TooManyForTheValue(const Picture& picture, Noise, std::uint64_t) {
    std::size_t bytes = vis::cHeadSize;
    for (const Record& record : picture)
        bytes += vis::RecordSize(record.gains.size());
    // More than the whole value could hold, so that no record exists.
    return StatingBands(picture, bytes / vis::cBandSize + FirstBands(picture));
}

StoredValue MostBands(const Picture& picture, Noise, std::uint64_t) {
    return StatingBands(picture, 0xFFFFFFFF);
}

StoredValue NoBands(const Picture& picture, Noise, std::uint64_t) {
    Picture empty = picture;
    for (Record& record : empty)
        record = {};
    return Published(empty);
}

StoredValue ManyBands(const Picture& picture, Noise, std::uint64_t) {
    Picture wide = picture;
    for (Record& record : wide) {
        record.gains.resize(cTooManyBands, record.gains.empty() ? 0 : record.gains.back());
        record.excitations.resize(cTooManyBands,
                                  record.excitations.empty() ? 0 : record.excitations.back());
    }
    return Published(wide);
}

constexpr Spoiling cGarbage[] = {
    {"empty", "a value without a byte", Empty},
    {"short-head", "5 bytes, where the head alone has 8", ShortHead},
    {"random", "1 to 600 bytes at random", Random},
    {"text", "a REG_SZ", Text},
    {"dword", "a REG_DWORD", Number},
    {"nan", "every level is not a number", NotNumbers},
    {"infinite", "every level is infinite, plus and minus in turn", Infinities},
    {"huge", "the right levels, and junk behind them up to 1 MiB", Huge},
    {"truncated", "the last 6 bytes are missing", Truncated},
};

constexpr Spoiling cWrongCounts[] = {
    {"records-more", "one record more than there are", OneRecordMore},
    {"records-fewer", "one record fewer than there are", OneRecordFewer},
    {"records-none", "no records, though they are there", NoRecords},
    {"records-max", "0xFFFFFFFF records", MostRecords},
    {"bands-more", "more bands in the first record than the value has room for",
     TooManyForTheValue},
    {"bands-max", "0xFFFFFFFF bands in the first record", MostBands},
    {"bands-none", "records of 0 bands", NoBands},
    {"bands-41", "records that really have 41 bands", ManyBands},
};

}  // namespace

StoredValue Published(const Picture& picture) {
    return StatingRecords(picture, picture.size());
}

std::span<const Spoiling> Garbage() {
    return cGarbage;
}

std::span<const Spoiling> WrongCounts() {
    return cWrongCounts;
}

void Digest::Add(std::uint64_t word) {
    constexpr std::uint64_t cPrime = 0x100000001B3;
    m_state = (m_state ^ word) * cPrime;
}

void Digest::Add(const StoredValue& value) {
    Add(value.type);
    Add(value.bytes.size());
    for (const std::uint8_t byte : value.bytes)
        Add(std::uint64_t{byte});
}

std::string Digest::Text() const {
    return Hex(static_cast<std::uint32_t>(m_state >> 32)).substr(2) +
           Hex(static_cast<std::uint32_t>(m_state)).substr(2);
}

}  // namespace kora4::tools::sim

// SPDX-License-Identifier: MIT
// Lays a picture out as bytes, and the table of everything that can be wrong with them.
#include "kora4sim/signal/blob.h"

#include <algorithm>
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
constexpr float cInfinity = std::numeric_limits<float>::infinity();
constexpr float cNotANumber = std::numeric_limits<float>::quiet_NaN();

// Little-endian, without gaps.
template <typename Number>
void Put(Bytes& bytes, Number number) {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&number);
    bytes.insert(bytes.end(), first, first + sizeof number);
}

// The picture with other counts than its own: of records, and of the first record's bands.
StoredValue Stating(const Picture& picture, std::size_t records, std::size_t firstBands) {
    Bytes bytes;
    Put(bytes, cReserved);
    Put(bytes, static_cast<std::uint32_t>(records));
    for (const Record& record : picture) {
        const bool isFirst = &record == &picture.front();
        // The engine's own header; readers ignore it.
        bytes.insert(bytes.end(), vis::cNumBandsOffset, 0);
        Put(bytes, static_cast<std::uint32_t>(isFirst ? firstBands : record.gains.size()));
        Put(bytes, cReserved);
        for (const std::vector<float>* const levels : {&record.gains, &record.excitations})
            for (const float level : *levels)
                Put(bytes, level);
    }
    return StoredValue::FromBlob(std::move(bytes));
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

constexpr Spoiling cGarbage[] = {
    {"empty", "an empty value", [](const Moment&) { return StoredValue::FromBlob({}); }},
    {"short-head", "5 bytes; the head alone has 8",
     [](const Moment& now) {
         StoredValue value = Published(now.picture);
         value.bytes.resize(vis::cHeadSize - 3);
         return value;
     }},
    {"random", "1 to 600 random bytes",
     [](const Moment& now) {
         Bytes bytes(1 + now.noise.Word(now.number) % cMostRandomBytes);
         for (std::size_t i = 0; i < bytes.size(); ++i)
             bytes[i] = static_cast<std::uint8_t>(now.noise.Word(now.number, i + 1));
         return StoredValue::FromBlob(std::move(bytes));
     }},
    {"text", "a REG_SZ", [](const Moment&) { return StoredValue::FromText(u"levels"); }},
    {"dword", "a REG_DWORD",
     [](const Moment& now) {
         return StoredValue::FromDword(static_cast<std::uint32_t>(now.number));
     }},
    {"nan", "every level is not a number",
     [](const Moment& now) {
         return WithLevels(now.picture, [](std::size_t) { return cNotANumber; });
     }},
    {"infinite", "every level is infinite, plus and minus alternating",
     [](const Moment& now) {
         return WithLevels(now.picture, [](std::size_t band) {
             return band % 2 == 0 ? cInfinity : -cInfinity;
         });
     }},
    {"huge", "the correct levels, followed by junk up to 1 MiB",
     [](const Moment& now) {
         StoredValue value = Published(now.picture);
         const auto filling = static_cast<std::uint8_t>(now.noise.Word(now.number));
         value.bytes.resize(std::max(value.bytes.size(), cHugeBytes), filling);
         return value;
     }},
    {"truncated", "the last 6 bytes are missing",
     [](const Moment& now) {
         StoredValue value = Published(now.picture);
         value.bytes.resize(value.bytes.size() - std::min<std::size_t>(value.bytes.size(), 6));
         return value;
     }},
};

constexpr Spoiling cWrongCounts[] = {
    {"records-more", "one record more than there are",
     [](const Moment& now) { return StatingRecords(now.picture, now.picture.size() + 1); }},
    {"records-fewer", "one record fewer than there are",
     [](const Moment& now) {
         return StatingRecords(now.picture, std::max<std::size_t>(now.picture.size(), 1) - 1);
     }},
    {"records-none", "no records, although there are some",
     [](const Moment& now) { return StatingRecords(now.picture, 0); }},
    {"records-max", "0xFFFFFFFF records",
     [](const Moment& now) { return StatingRecords(now.picture, 0xFFFFFFFF); }},
    {"bands-more", "more bands in the first record than the value has room for",
     [](const Moment& now) {
         // More than the whole value could hold, so that no record exists.
         const std::size_t size = Published(now.picture).bytes.size();
         return StatingBands(now.picture, size / vis::cBandSize + FirstBands(now.picture));
     }},
    {"bands-max", "0xFFFFFFFF bands in the first record",
     [](const Moment& now) { return StatingBands(now.picture, 0xFFFFFFFF); }},
    {"bands-none", "records of 0 bands",
     [](const Moment& now) { return Published(Picture(now.picture.size())); }},
    {"bands-41", "records that actually have 41 bands",
     [](const Moment& now) {
         Picture wide = now.picture;
         for (Record& record : wide)
             for (std::vector<float>* const levels : {&record.gains, &record.excitations})
                 levels->resize(cTooManyBands, levels->empty() ? 0 : levels->back());
         return Published(wide);
     }},
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

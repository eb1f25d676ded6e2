// SPDX-License-Identifier: MIT
// The comparisons of docs/store-schema.md that concern texts, bounds and the visualization
// blob.
#include "checks/documents_schema_texts.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>

#include "checks/documents_sources.h"
#include "contract/codec/array_text.h"
#include "contract/codec/float_text.h"
#include "contract/display_levels.h"
#include "contract/property_key.h"
#include "contract/value_kind.h"
#include "store/patches/field_tables.h"
#include "store/visdata/vis_key_data.h"

namespace kora4::test {

namespace {

std::string Joined(const Row& parts) {
    std::string joined;
    for (const std::string& part : parts)
        joined += (joined.empty() ? "" : ", ") + part;
    return joined;
}

std::string Shortened(const Row& parts) {
    const bool equal =
        parts.size() > 1 &&
        std::ranges::all_of(parts, [&](const std::string& p) { return p == parts[0]; });
    return equal ? std::to_string(parts.size()) + " x " + parts[0] : Joined(parts);
}

constexpr char cUnreadable[] = "unreadable";

// --- texts ---------------------------------------------------------------------------------

std::u16string FromCell(const std::string& cell) {
    std::string text = cell;
    for (std::size_t at; (at = text.find("\\t")) != std::string::npos;)
        text.replace(at, 2, "\t");
    return Widened(text);
}

std::vector<float> FloatsIn(const std::string& cell) {
    std::vector<float> floats;
    std::istringstream parts(cell);
    for (std::string part; std::getline(parts, part, ',');)
        floats.push_back(std::strtof(part.c_str(), nullptr));
    return floats;
}

std::string ReadBack(const std::string& kind, const std::u16string& text) {
    Row parts;
    std::uint32_t count = 0;
    float floats[codec::cArrayCapacity];
    std::uint32_t flags[codec::cArrayCapacity];
    if (kind == "float") {
        if (!codec::ParseFloat(text.c_str(), floats))
            return cUnreadable;
        return FloatText(floats[0]);
    }
    if (kind == "array") {
        if (codec::DecodeNumericArray(text.c_str(), &count, floats) != result::cOk)
            return cUnreadable;
        for (std::uint32_t i = 0; i < count; ++i)
            parts.push_back(FloatText(floats[i]));
        return Joined(parts);
    }
    if (kind != "flags")
        return "of no kind";
    if (codec::DecodeFlagArray(text.c_str(), &count, flags) != result::cOk)
        return cUnreadable;
    for (std::uint32_t i = 0; i < count; ++i)
        parts.push_back(Text(flags[i]));
    return Joined(parts);
}

std::u16string Written(const std::string& kind, const std::string& scale,
                       const std::vector<float>& values) {
    char16_t text[codec::cArrayTextChars] = u"?";
    const auto count = static_cast<std::uint32_t>(values.size());
    if (kind == "float") {
        char16_t floatText[codec::cFloatTextChars];
        codec::FormatFloat(values.at(0), floatText);
        return floatText;
    }
    if (kind == "array") {
        codec::EncodeNumericArray(static_cast<std::uint32_t>(std::stoul("0" + scale)), count,
                                  values.data(), text);
    } else if (kind == "flags") {
        std::vector<std::uint32_t> flags;
        for (const float value : values)
            flags.push_back(value != 0.0f);
        codec::EncodeFlagArray(count, flags.data(), text);
    }
    return text;
}

// Whether a cell writes the float of the library: the shortest number that gives it, in any
// notation, or its exact value.
bool IsTheFloat(const std::string& cell, const std::string& shortest) {
    char* pEnd = nullptr;
    const double written = std::strtod(cell.c_str(), &pEnd);
    if (pEnd == cell.c_str() || *pEnd != '\0')
        return false;
    const double value = std::strtod(shortest.c_str(), nullptr);
    return written == value || written == static_cast<double>(static_cast<float>(value));
}

// The cell where it says the same as the library in other words, else the library's text.
std::string InTheWordsOf(const std::string& cell, const std::string& text) {
    std::istringstream cells(cell + ","), values(text + ",");
    std::string own, value;
    while (std::getline(values, value, ','))
        if (!std::getline(cells, own, ',') || (own != value && !IsTheFloat(own, value)))
            return text;
    return std::getline(cells, own, ',') ? text : cell;
}

}  // namespace

std::string DecodedArray(const std::u16string& text, std::uint32_t scale) {
    std::uint32_t count = 0;
    float elements[codec::cArrayCapacity];
    if (codec::DecodeNumericArray(text.c_str(), &count, elements) != result::cOk)
        return cUnreadable;
    Row parts;
    for (std::uint32_t i = 0; i < count; ++i) {
        char part[32];
        std::snprintf(part, sizeof part, scale == fields::cHertz ? "%.0f" : "%.2f",
                      static_cast<double>(elements[i]));
        parts.push_back(part);
    }
    return Shortened(parts);
}

std::string DecodedFlags(const std::u16string& text) {
    std::uint32_t count = 0;
    std::uint32_t flags[codec::cArrayCapacity];
    if (codec::DecodeFlagArray(text.c_str(), &count, flags) != result::cOk)
        return cUnreadable;
    Row parts;
    for (std::uint32_t i = 0; i < count; ++i)
        parts.push_back(Text(flags[i]));
    return Shortened(parts);
}

std::vector<Row> WrittenTexts(const Document& document) {
    std::vector<Row> rows = RowsOf(document, "written texts");
    for (Row& row : rows) {
        const std::u16string text = Written(row[0], row[1], FloatsIn(row[2]));
        row[4] = InTheWordsOf(row[4], ReadBack(row[0], text));
        row[3] = Narrow(text);
    }
    return rows;
}

std::vector<Row> ReadTexts(const Document& document) {
    std::vector<Row> rows = RowsOf(document, "read texts");
    for (Row& row : rows)
        row[2] = InTheWordsOf(row[2], ReadBack(row[0], FromCell(row[1])));
    return rows;
}

// --- bounds
// ------------------------------------------------------------------------------------

namespace {

// The last number from 0 on up to which `accepts` says yes.
std::uint64_t LastAccepted(const std::function<bool(std::uint32_t)>& accepts) {
    std::uint32_t number = 0;
    while (number < 0x20000 && accepts(number + 1))
        ++number;
    return number;
}

bool Decodes(const std::string& text) {
    std::uint32_t count = 0;
    float elements[codec::cArrayCapacity];
    return codec::DecodeNumericArray(Widened(text).c_str(), &count, elements) == result::cOk;
}

bool DecodesElement(std::uint32_t element) {
    char text[32];
    std::snprintf(text, sizeof text, "1,1,%x", static_cast<unsigned>(element));
    return Decodes(text);
}

bool EncodesAtScale(std::uint32_t scale) {
    char16_t text[codec::cArrayTextChars];
    return codec::EncodeNumericArray(scale, 0, nullptr, text) == result::cOk;
}

}  // namespace

std::vector<Row> Bounds(const Document&) {
    return {
        {"array elements", Text(codec::cArrayCapacity)},
        {"element", Text(LastAccepted(&DecodesElement))},
        {"token", Text(LastAccepted([](std::uint32_t length) {
             return Decodes("1,1," + std::string(length, '0'));
         }))},
        {"scale", Text(LastAccepted(&EncodesAtScale))},
        {"array text", Text(codec::cArrayTextChars - 1)},
        {"text bytes", Text(cMaxTextBytes)},
        {"value name", Text(cValueNameCapacity - 1)},
    };
}

// --- the visualization blob
// -------------------------------------------------------------------

namespace {

using Bytes = std::vector<std::uint8_t>;

// A blob of one record of `bands` bands, gain b is b + 1 and excitation b is 100 + b: made
// here by hand, with the numbers at the given places.
struct Layout {
    std::size_t countAt, firstRecord, bandsAt, gainsAt, excitationsAt, recordSize;
};

constexpr Layout LayoutFor(std::uint32_t bands) {
    return {4, 8, 16, 24, 24 + std::size_t{4} * bands, 24 + std::size_t{8} * bands};
}

void PutWord(Bytes& bytes, std::size_t at, std::uint32_t word) {
    std::memcpy(&bytes.at(at), &word, sizeof word);
}

// Whether the view finds two records of that layout, with their values.
bool ViewAgrees(std::uint32_t bands) {
    const Layout layout = LayoutFor(bands);
    Bytes bytes(layout.firstRecord + 2 * layout.recordSize);
    PutWord(bytes, layout.countAt, 2);
    for (const std::size_t record :
         {layout.firstRecord, layout.firstRecord + layout.recordSize}) {
        PutWord(bytes, record + layout.bandsAt, bands);
        for (std::uint32_t b = 0; b < bands; ++b) {
            const auto value = static_cast<float>(b + record);
            PutWord(bytes, record + layout.gainsAt + 4 * b,
                    std::bit_cast<std::uint32_t>(value));
            PutWord(bytes, record + layout.excitationsAt + 4 * b,
                    std::bit_cast<std::uint32_t>(-value));
        }
    }
    const KORA4VisKeyData view(bytes.data(), bytes.size());
    if (view.GetNumAPOs() != 2)
        return false;
    std::size_t record = layout.firstRecord;
    for (const std::uint8_t* p = view.FirstAPOData(); p; p = view.NextAPOData(p)) {
        std::uint32_t found = 0;
        const float *pGains = nullptr, *pExcitations = nullptr;
        view.GetData(p, &found, &pGains, &pExcitations);
        if (found != bands)
            return false;
        for (std::uint32_t b = 0; b < bands; ++b)
            if (pGains[b] != static_cast<float>(b + record) || pExcitations[b] != -pGains[b])
                return false;
        record += layout.recordSize;
    }
    return record == bytes.size();
}

bool ViewAgrees() {
    for (const std::uint32_t bands : {0u, 1u, 3u, 20u})
        if (!ViewAgrees(bands))
            return false;
    return true;
}

Bytes ExampleBlob(const Document& document) {
    Bytes bytes;
    const MarkedTable* pExample = document.Find("blob example");
    std::istringstream lines(pExample ? pExample->block : std::string());
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string offset;
        words >> offset;
        // A wrong offset is no example that anybody could follow.
        if (std::stoul(offset, nullptr, 16) != bytes.size())
            return {};
        for (std::string word; words >> word;)
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
    }
    return bytes;
}

// Calls visit(record, band, gain, excitation) for all of the example.
template <typename Visit>
void ForEachLevel(const Document& document, Visit&& visit) {
    const Bytes bytes = ExampleBlob(document);
    const KORA4VisKeyData view(bytes.data(), bytes.size());
    const std::uint8_t* p = view.FirstAPOData();
    for (std::uint32_t record = 0; record < view.GetNumAPOs(); ++record) {
        std::uint32_t bands = 0;
        const float *pGains = nullptr, *pExcitations = nullptr;
        view.GetData(p, &bands, &pGains, &pExcitations);
        for (std::uint32_t band = 0; band < bands; ++band)
            visit(record, band, pGains[band], pExcitations[band]);
        p = view.NextAPOData(p);
    }
}

}  // namespace

std::vector<Row> BlobHead(const Document&) {
    if (!ViewAgrees())
        return {{"the view", "reads", "another layout"}};
    return {{"0", "4", "reserved"}, {"4", "4", "records"}, {"8", "", "first record"}};
}

std::vector<Row> BlobRecord(const Document&) {
    if (!ViewAgrees())
        return {{"the view", "reads", "another layout"}};
    return {{"0", "16", "header"},
            {"16", "4", "bands"},
            {"20", "4", "reserved"},
            {"24", "4 n", "gains"},
            {"24 + 4 n", "4 n", "excitations"},
            {"24 + 8 n", "", "next record"}};
}

std::vector<Row> BlobValues(const Document& document) {
    std::vector<Row> rows;
    ForEachLevel(
        document, [&](std::uint32_t record, std::uint32_t band, float gain, float excitation) {
            rows.push_back({Text(record), Text(band), FloatText(gain), FloatText(excitation)});
        });
    return rows;
}

std::vector<Row> DisplayLevels(const Document& document) {
    float gains[cDisplayBands];
    float excitations[cDisplayBands];
    std::ranges::fill(gains, cLevelFloor);
    std::ranges::fill(excitations, cLevelFloor);
    std::uint32_t highest = 0;
    ForEachLevel(document,
                 [&](std::uint32_t, std::uint32_t band, float gain, float excitation) {
                     gains[band] = std::max(gains[band], gain);
                     excitations[band] = std::max(excitations[band], excitation);
                     highest = std::max(highest, band);
                 });
    std::vector<Row> rows;
    for (std::uint32_t band = 0; band <= highest + 1; ++band)
        rows.push_back(
            {band <= highest ? Text(band)
                             : Text(band) + " to " + Text(std::uint64_t{cDisplayBands} - 1),
             FloatText(gains[band]), FloatText(excitations[band] + cExcitationOffset)});
    return rows;
}

}  // namespace kora4::test

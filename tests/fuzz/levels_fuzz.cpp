// SPDX-License-Identifier: MIT
// The visualization blob: what the view shows of one is compared with a walk over its bytes,
// and the view is asked for records that are none.
#include "fuzz/frame.h"
#include "store/visdata/vis_key_data.h"
#include "support/native_trace_sink.h"
#include "support/trace_flags.h"

namespace kora4::fuzz {

namespace {

struct Record {
    std::size_t offset;
    std::size_t bands;
};

// A little-endian number, put together byte by byte.
std::size_t NumberAt(std::string_view blob, std::size_t offset) {
    std::size_t number = 0;
    for (std::size_t i = 4; i-- > 0;)
        number = number * 256 + static_cast<unsigned char>(blob[offset + i]);
    return number;
}

// The records in their order. `stated`: no more than the blob says.
std::vector<Record> RecordsOf(std::string_view blob, bool stated) {
    std::vector<Record> records;
    for (std::size_t offset = 8; offset + 24 <= blob.size();) {
        if (stated && records.size() == NumberAt(blob, 4))
            break;
        const std::size_t bands = NumberAt(blob, offset + 16);
        const std::size_t size = 24 + 8 * bands;
        if (offset + size > blob.size())
            break;
        records.push_back({offset, bands});
        offset += size;
    }
    return records;
}

void CheckData(const KORA4VisKeyData& view, const std::uint8_t* pBlob, Record record) {
    std::uint32_t bands = 4711;
    const float* pGains = nullptr;
    const float* pExcitations = nullptr;
    view.GetData(pBlob + record.offset, &bands, &pGains, &pExcitations);
    ExpectSame("bands", record.bands, std::size_t{bands});
    const auto* const pRecord = reinterpret_cast<const std::uint8_t*>(pBlob + record.offset);
    ExpectSame("gains", reinterpret_cast<std::uintptr_t>(pRecord + 24),
               reinterpret_cast<std::uintptr_t>(pGains));
    ExpectSame("excitations", reinterpret_cast<std::uintptr_t>(pRecord + 24 + 4 * record.bands),
               reinterpret_cast<std::uintptr_t>(pExcitations));
}

// Any place of the blob, and just behind it: a record stands there or does not.
void CheckPlace(const KORA4VisKeyData& view, const std::vector<std::uint8_t>& blob,
                std::size_t offset) {
    const std::string_view bytes(reinterpret_cast<const char*>(blob.data()), blob.size());
    std::size_t wanted = 0;
    if (offset >= 8 && offset + 24 <= blob.size() &&
        offset + 24 + 8 * NumberAt(bytes, offset + 16) <= blob.size())
        wanted = NumberAt(bytes, offset + 16);
    std::uint32_t bands = 4711;
    const float* pGains = nullptr;
    const float* pExcitations = nullptr;
    view.GetData(blob.data() + offset, &bands, &pGains, &pExcitations);
    ExpectSame("bands at any place", wanted, std::size_t{bands});
    view.NextAPOData(blob.data() + offset);
}

std::size_t PrintedBands() {
    std::size_t bands = 0;
    for (const test::TraceRecord& record : test::TraceRecords())
        bands += record.text.find("(Band ") != std::string::npos ? 1 : 0;
    return bands;
}

}  // namespace

void Check(std::string_view input) {
    const test::TraceFlags off(0);
    const std::vector<std::uint8_t> blob(input.begin(), input.end());
    const KORA4VisKeyData view(blob.data(), blob.size());
    const std::vector<Record> stated = RecordsOf(input, true);
    ExpectSame("number of records", input.size() < 8 ? 0 : stated.size(),
               std::size_t{view.GetNumAPOs()});
    const std::uint8_t* pRecord = view.FirstAPOData();
    ExpectSame("there is a first record", input.size() >= 8, pRecord != nullptr);
    // The walk itself does not stop at the number that the blob states.
    const std::vector<Record> all = RecordsOf(input, false);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ExpectSame("place of a record", all[i].offset,
                   static_cast<std::size_t>(pRecord - blob.data()));
        CheckData(view, blob.data(), all[i]);
        pRecord = view.NextAPOData(pRecord);
        ExpectSame("there is another record", i + 1 < all.size(), pRecord != nullptr);
    }
    if (!blob.empty()) {
        CheckPlace(view, blob, blob.back() % blob.size());
        CheckPlace(view, blob, blob.size());
    }
    if (blob.size() % 16 != 8)  // printing takes ten times as long as everything above
        return;
    test::TraceRecords().clear();
    {
        const test::TraceFlags flags(test::cEveryCategory);
        view.DebugPrint(nullptr, "fuzz");
    }
    std::size_t bands = 0;
    for (const Record& record : stated)
        bands += record.bands;
    ExpectSame("printed bands", bands, PrintedBands());
}

}  // namespace kora4::fuzz

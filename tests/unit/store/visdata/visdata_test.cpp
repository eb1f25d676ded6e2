// SPDX-License-Identifier: MIT
// The bounded view over the visualization blob.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "store/visdata/vis_key_data.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4 {
namespace {

using test::TraceFlags;
using test::TraceLog;
using testing::ElementsAre;

constexpr std::size_t cHeadSize = 8;
constexpr std::size_t cRecordHeadSize = 24;

// Builds blobs as the audio engine does.
class BlobBuilder {
  public:
    explicit BlobBuilder(std::uint32_t statedAPOs) {
        Put(0xDEADBEEF);
        Put(statedAPOs);
    }

    // Gains count up from `base`, excitations from -base.
    BlobBuilder& APO(std::uint32_t numBands, float base = 0.0f) {
        PutHead(numBands);
        for (std::uint32_t j = 0; j < numBands; ++j)
            Put(base + static_cast<float>(j));
        for (std::uint32_t j = 0; j < numBands; ++j)
            Put(-base + static_cast<float>(j));
        return *this;
    }

    BlobBuilder& PutHead(std::uint32_t numBands) {
        for (int i = 0; i < 4; ++i)
            Put(0xAAAAAAAAu);
        Put(numBands);
        Put(0xBBBBBBBBu);
        return *this;
    }

    // In an allocation of exactly that size, so that a sanitizer sees a read beyond it.
    std::vector<std::uint8_t> Bytes() const { return {m_bytes.begin(), m_bytes.end()}; }
    std::vector<std::uint8_t> Bytes(std::size_t size) const {
        return {m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(size)};
    }

  private:
    template <typename Value>
    void Put(Value value) {
        std::uint8_t bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof value);
    }

    std::vector<std::uint8_t> m_bytes;
};

struct Bands {
    std::uint32_t numBands = 99;
    const float* pGains = reinterpret_cast<const float*>(&numBands);
    const float* pExcitation = pGains;
};

Bands DataOf(const KORA4VisKeyData& view, const std::uint8_t* pAPOData) {
    Bands bands;
    view.GetData(pAPOData, &bands.numBands, &bands.pGains, &bands.pExcitation);
    return bands;
}

void ExpectNoData(const KORA4VisKeyData& view, const std::uint8_t* pAPOData) {
    const Bands bands = DataOf(view, pAPOData);
    EXPECT_EQ(0u, bands.numBands);
    EXPECT_EQ(nullptr, bands.pGains);
    EXPECT_EQ(nullptr, bands.pExcitation);
}

const std::uint8_t* BytesOf(const float* p) {
    return reinterpret_cast<const std::uint8_t*>(p);
}

TEST(VisKeyData, HoldsNothingWithoutABlob) {
    const KORA4VisKeyData view(nullptr, 1000);
    EXPECT_EQ(0u, view.GetNumAPOs());
    EXPECT_EQ(nullptr, view.FirstAPOData());
    EXPECT_EQ(nullptr, view.NextAPOData(nullptr));
    ExpectNoData(view, nullptr);
}

TEST(VisKeyData, WalksRecordsOfDifferentBandCounts) {
    const auto blob = BlobBuilder(2).APO(20, 1.0f).APO(10, 100.0f).Bytes();
    const KORA4VisKeyData view(blob.data(), blob.size());
    EXPECT_EQ(2u, view.GetNumAPOs());

    const std::uint8_t* const pFirst = view.FirstAPOData();
    EXPECT_EQ(pFirst, blob.data() + 8);
    const Bands first = DataOf(view, pFirst);
    EXPECT_EQ(20u, first.numBands);
    EXPECT_EQ(BytesOf(first.pGains), pFirst + 24);
    EXPECT_EQ(BytesOf(first.pExcitation), pFirst + 24 + 80);
    EXPECT_EQ(20.0f, first.pGains[19]);
    EXPECT_EQ(18.0f, first.pExcitation[19]);

    const std::uint8_t* const pSecond = view.NextAPOData(pFirst);
    EXPECT_EQ(pSecond, pFirst + 184);
    const Bands second = DataOf(view, pSecond);
    EXPECT_EQ(10u, second.numBands);
    EXPECT_EQ(BytesOf(second.pExcitation), BytesOf(second.pGains) + 40);
    EXPECT_EQ(100.0f, second.pGains[0]);
    EXPECT_EQ(-91.0f, second.pExcitation[9]);

    EXPECT_EQ(nullptr, view.NextAPOData(pSecond));
}

TEST(VisKeyData, AcceptsARecordWithoutBands) {
    const auto blob = BlobBuilder(2).APO(0).APO(1).Bytes();
    const KORA4VisKeyData view(blob.data(), blob.size());
    EXPECT_EQ(2u, view.GetNumAPOs());
    const std::uint8_t* const pFirst = view.FirstAPOData();
    const Bands bands = DataOf(view, pFirst);
    EXPECT_EQ(0u, bands.numBands);
    EXPECT_EQ(BytesOf(bands.pGains), pFirst + 24);
    EXPECT_EQ(bands.pGains, bands.pExcitation);
    EXPECT_EQ(view.NextAPOData(pFirst), pFirst + 24);
}

TEST(VisKeyData, BelievesTheStatedNumberWhenMoreBytesFollow) {
    const auto blob = BlobBuilder(1).APO(2).APO(2).Bytes();
    EXPECT_EQ(1u, KORA4VisKeyData(blob.data(), blob.size()).GetNumAPOs());
    const auto none = BlobBuilder(0).APO(2).Bytes();
    EXPECT_EQ(0u, KORA4VisKeyData(none.data(), none.size()).GetNumAPOs());
}

TEST(VisKeyData, HoldsNothingWithoutAWholeHead) {
    const BlobBuilder builder = BlobBuilder(1).APO(2);
    for (std::size_t size = 0; size < cHeadSize; ++size) {
        const auto blob = builder.Bytes(size);
        const KORA4VisKeyData view(blob.data(), blob.size());
        EXPECT_EQ(0u, view.GetNumAPOs()) << size;
        EXPECT_EQ(nullptr, view.FirstAPOData()) << size;
    }
}

TEST(VisKeyData, HasAFirstRecordBehindABareHeadThatHoldsNoData) {
    const auto blob = BlobBuilder(1).Bytes();
    ASSERT_EQ(cHeadSize, blob.size());
    const KORA4VisKeyData view(blob.data(), blob.size());
    EXPECT_EQ(0u, view.GetNumAPOs());
    EXPECT_EQ(view.FirstAPOData(), blob.data() + cHeadSize);
    ExpectNoData(view, view.FirstAPOData());
    EXPECT_EQ(nullptr, view.NextAPOData(view.FirstAPOData()));
}

TEST(VisKeyData, CountsTheRecordsThatFitAtEverySize) {
    const BlobBuilder builder = BlobBuilder(3).APO(3).APO(0).APO(2);
    const std::size_t firstEnd = cHeadSize + cRecordHeadSize + 24;
    const std::size_t secondEnd = firstEnd + cRecordHeadSize;
    const std::size_t thirdEnd = secondEnd + cRecordHeadSize + 16;
    ASSERT_EQ(thirdEnd, builder.Bytes().size());
    for (std::size_t size = cHeadSize; size <= thirdEnd; ++size) {
        const auto blob = builder.Bytes(size);
        const KORA4VisKeyData view(blob.data(), blob.size());
        const std::uint32_t expected = size < firstEnd    ? 0
                                       : size < secondEnd ? 1
                                       : size < thirdEnd  ? 2
                                                          : 3;
        EXPECT_EQ(expected, view.GetNumAPOs()) << size;
    }
}

TEST(VisKeyData, GivesNoDataOfARecordThatDoesNotFit) {
    const BlobBuilder builder = BlobBuilder(2).APO(1).APO(5);
    const auto blob = builder.Bytes(builder.Bytes().size() - 1);
    const KORA4VisKeyData view(blob.data(), blob.size());
    const std::uint8_t* const pFirst = view.FirstAPOData();
    EXPECT_EQ(nullptr, view.NextAPOData(pFirst));
    ExpectNoData(view, pFirst + cRecordHeadSize + 8);
}

TEST(VisKeyData, SurvivesHugeCounts) {
    for (std::uint32_t numBands :
         {0xFFFFFFFFu, 0x80000000u, 0x20000000u, 0x1FFFFFFFu, 0x40000001u, 4u}) {
        const auto blob = BlobBuilder(0xFFFFFFFF).APO(1).PutHead(numBands).APO(0).Bytes();
        const KORA4VisKeyData view(blob.data(), blob.size());
        EXPECT_EQ(1u, view.GetNumAPOs()) << numBands;
        EXPECT_EQ(nullptr, view.NextAPOData(view.FirstAPOData())) << numBands;
    }
    const auto blob = BlobBuilder(0xFFFFFFFF).APO(1).APO(2).Bytes();
    EXPECT_EQ(2u, KORA4VisKeyData(blob.data(), blob.size()).GetNumAPOs());
}

TEST(VisKeyData, RefusesPointersOutsideTheBlob) {
    const auto blob = BlobBuilder(1).APO(1).Bytes();
    const auto other = BlobBuilder(1).APO(1).Bytes();
    const KORA4VisKeyData view(blob.data(), blob.size());
    for (const std::uint8_t* p :
         {blob.data(), blob.data() + 7, blob.data() + blob.size(), other.data() + cHeadSize,
          static_cast<const std::uint8_t*>(nullptr)}) {
        ExpectNoData(view, p);
        EXPECT_EQ(nullptr, view.NextAPOData(p));
    }
}

TEST(VisKeyData, RefusesAPointerIntoTheHeadThatWouldReadAsARecord) {
    // Nothing but zeros: at any address they read as records without bands.
    const std::vector<std::uint8_t> blob(cHeadSize + 3 * cRecordHeadSize);
    const KORA4VisKeyData view(blob.data(), blob.size());
    ASSERT_NE(nullptr, DataOf(view, blob.data() + cHeadSize).pGains);
    ASSERT_NE(nullptr, view.NextAPOData(blob.data() + cHeadSize));
    for (std::size_t at = 0; at < cHeadSize; ++at) {
        ExpectNoData(view, blob.data() + at);
        EXPECT_EQ(nullptr, view.NextAPOData(blob.data() + at)) << at;
    }
}

TEST(VisKeyData, ReadsABlobAtAnyAddress) {
    const auto blob = BlobBuilder(2).APO(1, 5.0f).APO(2, 7.0f).Bytes();
    for (std::size_t shift = 1; shift < 8; ++shift) {
        std::vector<std::uint8_t> moved(blob.size() + shift);
        std::memcpy(moved.data() + shift, blob.data(), blob.size());
        const KORA4VisKeyData view(moved.data() + shift, blob.size());
        EXPECT_EQ(2u, view.GetNumAPOs());
        const Bands bands = DataOf(view, view.NextAPOData(view.FirstAPOData()));
        float gain;
        std::memcpy(&gain, bands.pGains, sizeof gain);
        EXPECT_EQ(7.0f, gain);
        view.DebugPrint(nullptr, "unaligned");
    }
}

TEST(VisKeyData, StaysInsideRandomBlobs) {
    const TraceFlags flags(trace::eVisualizationDump);
    TraceLog log;
    std::mt19937 random(99);
    for (int i = 0; i < 300; ++i) {
        std::vector<std::uint8_t> blob(random() % 200);
        for (std::uint8_t& byte : blob)
            byte = static_cast<std::uint8_t>(random() % 4 == 0 ? random() % 6 : 0);
        const KORA4VisKeyData view(blob.data(), blob.size());
        const std::uint8_t* const pEnd = blob.data() + blob.size();
        std::uint32_t walked = 0;
        const std::uint32_t count = view.GetNumAPOs();
        for (const std::uint8_t* p = view.FirstAPOData(); walked < count; ++walked) {
            ASSERT_NE(nullptr, p);
            const Bands bands = DataOf(view, p);
            ASSERT_LE(BytesOf(bands.pExcitation + bands.numBands), pEnd);
            p = view.NextAPOData(p);
        }
        view.DebugPrint(&view, "random");
    }
}

std::string Hex(const void* p) {
    char text[32];
#if defined(_WIN32)
    std::snprintf(text, sizeof text, "%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(p)));
#else
    std::snprintf(text, sizeof text, "%p", p);
#endif
    return text;
}

// The messages that a call leaves under the view's tag with a given flag word.
template <typename Call>
std::vector<std::string> Traced(std::uint32_t flags, Call call) {
    TraceLog log;
    {
        const TraceFlags scoped(flags | trace::eLogFiles);
        call();
    }
    return test::Messages(log.Read("KORA4VisKeyData"));
}

TEST(VisKeyDataTrace, WritesEntryAndExitLinesOfEveryMethod) {
    const auto blob = BlobBuilder(2).APO(2).APO(0).Bytes();
    const KORA4VisKeyData view(blob.data(), blob.size());
    const std::uint8_t* const pFirst = blob.data() + 8;
    const std::uint8_t* const pSecond = pFirst + 40;
    EXPECT_THAT(Traced(trace::eAllEntryExit, [&] { view.GetNumAPOs(); }),
                ElementsAre(">>", "<< numberAPOs: 2"));
    EXPECT_THAT(Traced(trace::eAllEntryExit, [&] { view.FirstAPOData(); }),
                ElementsAre(">>", "<< pAPOData: " + Hex(pFirst)));
    EXPECT_THAT(Traced(trace::eAllEntryExit, [&] { view.NextAPOData(pFirst); }),
                ElementsAre(">>", "<< pNextAPOData: " + Hex(pSecond)));
    EXPECT_THAT(Traced(trace::eAllEntryExit, [&] { DataOf(view, pFirst); }),
                ElementsAre(">>", "<< numBands: 2 pGains: " + Hex(pFirst + 24) +
                                      " pExcitation: " + Hex(pFirst + 32)));
}

TEST(VisKeyDataTrace, PutsEntryAndExitLinesUnderTheirCategories) {
    const KORA4VisKeyData view(nullptr, 0);
    const auto call = [&view] { view.GetNumAPOs(); };
    EXPECT_THAT(Traced(trace::eSecurity, call), ElementsAre(">>", "<< numberAPOs: 0"));
    EXPECT_THAT(Traced(trace::eResults, call), ElementsAre("<< numberAPOs: 0"));
    EXPECT_THAT(Traced(~(trace::eSecurity | trace::eResults | trace::eAllEntryExit |
                         trace::eMasterSwitchOff),
                       call),
                ElementsAre());
}

TEST(VisKeyDataTrace, DumpsTheWholeContent) {
    const auto blob = BlobBuilder(2).APO(2, 1.5f).APO(1, -144.0f).Bytes();
    const KORA4VisKeyData view(blob.data(), blob.size());
    const std::uint8_t* const p1 = blob.data() + 8;
    const std::uint8_t* const p2 = p1 + 40;
    const auto lines = Traced(trace::eVisualizationDump, [&] {
        view.DebugPrint(&view, "Visualization key Data READ (API)");
    });
    EXPECT_THAT(
        lines,
        ElementsAre(
            "Vis Key Data: Module: " + Hex(&view) + ": Visualization key Data READ (API)",
            "    NumAPOs: 2 pAPOData: " + Hex(p1), "      APO: 0 pAPOData: " + Hex(p1),
            "        (APO 0) numBands: 2 pGains: " + Hex(p1 + 24) +
                " pExcitiation: " + Hex(p1 + 32),
            "        (Band 0) gain:   1.500000 excitation:  -1.500000",
            "        (Band 1) gain:   2.500000 excitation:  -0.500000",
            "      APO: 1 pAPOData: " + Hex(p2),
            "        (APO 1) numBands: 1 pGains: " + Hex(p2 + 24) +
                " pExcitiation: " + Hex(p2 + 28),
            "        (Band 0) gain: -144.000000 excitation: 144.000000"));
}

TEST(VisKeyDataTrace, PrintsTheHeaderLinesOnlyWithoutABlob) {
    const KORA4VisKeyData view(nullptr, 0);
    const char* const pMessage = "none";
    const auto lines = Traced(trace::eVisualizationDump | trace::eSecurity,
                              [&] { view.DebugPrint(&view, pMessage); });
    EXPECT_THAT(lines,
                ElementsAre(">> pModule: " + Hex(&view) + " pMessage: " + Hex(pMessage),
                            "Vis Key Data: Module: " + Hex(&view) + ": none", ">>",
                            "<< numberAPOs: 0", ">>", testing::StartsWith("<< pAPOData: "),
                            testing::StartsWith("    NumAPOs: 0 pAPOData: "), "<<"));
}

}  // namespace
}  // namespace kora4

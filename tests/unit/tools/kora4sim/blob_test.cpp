// SPDX-License-Identifier: MIT
// What the engine publishes, read by the library's own reader.
#include "kora4sim/signal/blob.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>
#include <string>

#include "store/visdata/vis_key_data.h"

namespace kora4::tools::sim {
namespace {

const Picture cPicture = {{{-20, -12.5f, -60}, {-40, -30.5f, -72}},
                          {{-10, -90}, {-44, -18.25f}}};

constexpr Noise cNoise(7);
constexpr std::uint64_t cNumber = 3;

StoredValue Spoilt(std::span<const Spoiling> spoilings, const std::string& name,
                   const Picture& picture = cPicture) {
    for (const Spoiling& spoiling : spoilings) {
        if (name == spoiling.name)
            return spoiling.make({picture, cNoise, cNumber});
    }
    ADD_FAILURE() << name;
    return {};
}

// What the library's reader finds.
Picture ReadBack(const StoredValue& value) {
    const KORA4VisKeyData data(value.bytes.data(), value.bytes.size());
    Picture picture;
    const std::uint8_t* record = data.FirstAPOData();
    for (std::uint32_t i = 0; i < data.GetNumAPOs(); ++i, record = data.NextAPOData(record)) {
        std::uint32_t bands = 0;
        const float* gains = nullptr;
        const float* excitations = nullptr;
        data.GetData(record, &bands, &gains, &excitations);
        Record read;
        for (std::uint32_t band = 0; band < bands; ++band) {
            float level = 0;
            std::memcpy(&level, gains + band, sizeof level);
            read.gains.push_back(level);
            std::memcpy(&level, excitations + band, sizeof level);
            read.excitations.push_back(level);
        }
        picture.push_back(read);
    }
    return picture;
}

void ExpectSame(const Picture& expected, const Picture& picture) {
    ASSERT_EQ(expected.size(), picture.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].gains, picture[i].gains) << "record " << i;
        EXPECT_EQ(expected[i].excitations, picture[i].excitations) << "record " << i;
    }
}

TEST(Blob, ReadsBackAsThePicture) {
    const StoredValue value = Published(cPicture);
    EXPECT_EQ(cBinaryType, value.type);
    ExpectSame(cPicture, ReadBack(value));
}

TEST(Blob, HasTheBytesOfTheDocumentedExample) {
    const Bytes bytes = Published(cPicture).bytes;
    ASSERT_EQ(96u, bytes.size());
    EXPECT_EQ("0000000002000000", ToHex({bytes.begin(), bytes.begin() + 8}));
    EXPECT_EQ("03000000000000000000a0c1", ToHex({bytes.begin() + 24, bytes.begin() + 36}));
    EXPECT_EQ("0200000000000000000020c1", ToHex({bytes.begin() + 72, bytes.begin() + 84}));
}

TEST(Blob, WithoutRecordsIsTheHeadAlone) {
    EXPECT_EQ(8u, Published({}).bytes.size());
    EXPECT_TRUE(ReadBack(Published({})).empty());
}

TEST(Blob, MayHaveRecordsWithoutBands) {
    ExpectSame({{}, cPicture[1]}, ReadBack(Published({{}, cPicture[1]})));
}

TEST(Garbage, EmptyAndShortHeadHoldNoRecords) {
    EXPECT_EQ(0u, Spoilt(Garbage(), "empty").bytes.size());
    EXPECT_EQ(5u, Spoilt(Garbage(), "short-head").bytes.size());
    EXPECT_TRUE(ReadBack(Spoilt(Garbage(), "empty")).empty());
    EXPECT_TRUE(ReadBack(Spoilt(Garbage(), "short-head")).empty());
}

TEST(Garbage, TextAndDwordAreOfThoseTypes) {
    EXPECT_EQ(cTextType, Spoilt(Garbage(), "text").type);
    EXPECT_EQ(u"levels", Spoilt(Garbage(), "text").AsText());
    EXPECT_EQ(cDwordType, Spoilt(Garbage(), "dword").type);
    EXPECT_EQ(3u, Spoilt(Garbage(), "dword").AsDword());
}

TEST(Garbage, RandomBytesDifferFromPictureToPictureAndRepeatWithTheSeed) {
    std::set<std::string> values;
    for (const Spoiling& spoiling : Garbage()) {
        if (std::string(spoiling.name) != "random")
            continue;
        for (std::uint64_t number = 0; number < 50; ++number) {
            const StoredValue value = spoiling.make({cPicture, cNoise, number});
            EXPECT_LE(1u, value.bytes.size());
            EXPECT_GE(600u, value.bytes.size());
            EXPECT_EQ(value, spoiling.make({cPicture, Noise(7), number}));
            EXPECT_NE(value, spoiling.make({cPicture, Noise(8), number}));
            values.insert(ToHex(value.bytes));
            ReadBack(value);
        }
    }
    EXPECT_EQ(50u, values.size());
}

TEST(Garbage, NanMakesEveryLevelNotANumber) {
    const Picture picture = ReadBack(Spoilt(Garbage(), "nan"));
    ASSERT_EQ(2u, picture.size());
    for (const Record& record : picture) {
        for (std::size_t band = 0; band < record.gains.size(); ++band) {
            EXPECT_TRUE(std::isnan(record.gains[band]));
            EXPECT_TRUE(std::isnan(record.excitations[band]));
        }
    }
}

TEST(Garbage, InfiniteLevelsChangeTheirSignFromBandToBand) {
    const Picture picture = ReadBack(Spoilt(Garbage(), "infinite"));
    ASSERT_EQ(2u, picture.size());
    EXPECT_TRUE(std::isinf(picture[0].gains[0]));
    EXPECT_LT(0, picture[0].gains[0]);
    EXPECT_GT(0, picture[0].gains[1]);
    EXPECT_TRUE(std::isinf(picture[0].excitations[1]));
}

TEST(Garbage, HugeHasTheRightLevelsAndJunkBehindThem) {
    const StoredValue value = Spoilt(Garbage(), "huge");
    EXPECT_EQ(std::size_t{1} << 20, value.bytes.size());
    ExpectSame(cPicture, ReadBack(value));
}

TEST(Garbage, TruncatedLosesTheLastRecord) {
    ExpectSame({cPicture[0]}, ReadBack(Spoilt(Garbage(), "truncated")));
    EXPECT_EQ(2u, Spoilt(Garbage(), "truncated", {}).bytes.size());
}

TEST(WrongCounts, ReadAsTheRecordsThatReallyExist) {
    ExpectSame(cPicture, ReadBack(Spoilt(WrongCounts(), "records-more")));
    ExpectSame({cPicture[0]}, ReadBack(Spoilt(WrongCounts(), "records-fewer")));
    ExpectSame({}, ReadBack(Spoilt(WrongCounts(), "records-none")));
    ExpectSame(cPicture, ReadBack(Spoilt(WrongCounts(), "records-max")));
    ExpectSame({}, ReadBack(Spoilt(WrongCounts(), "bands-more")));
    ExpectSame({}, ReadBack(Spoilt(WrongCounts(), "bands-max")));
    ExpectSame({{}, {}}, ReadBack(Spoilt(WrongCounts(), "bands-none")));
}

TEST(WrongCounts, StateWhatTheirNamesSay) {
    const auto word = [](const StoredValue& value, std::size_t at) {
        std::uint32_t number = 0;
        std::memcpy(&number, value.bytes.data() + at, sizeof number);
        return number;
    };
    EXPECT_EQ(3u, word(Spoilt(WrongCounts(), "records-more"), 4));
    EXPECT_EQ(1u, word(Spoilt(WrongCounts(), "records-fewer"), 4));
    EXPECT_EQ(0xFFFFFFFFu, word(Spoilt(WrongCounts(), "records-max"), 4));
    EXPECT_LT(3u, word(Spoilt(WrongCounts(), "bands-more"), 24));
    EXPECT_EQ(0xFFFFFFFFu, word(Spoilt(WrongCounts(), "bands-max"), 24));
    EXPECT_EQ(0u, word(Spoilt(WrongCounts(), "bands-none"), 24));
}

TEST(WrongCounts, FortyOneBandsAreReallyThere) {
    const Picture picture = ReadBack(Spoilt(WrongCounts(), "bands-41"));
    ASSERT_EQ(2u, picture.size());
    for (std::size_t i = 0; i < picture.size(); ++i) {
        ASSERT_EQ(41u, picture[i].gains.size());
        EXPECT_EQ(cPicture[i].gains[1], picture[i].gains[1]);
        EXPECT_EQ(cPicture[i].gains.back(), picture[i].gains[40]);
    }
}

TEST(WrongCounts, OfAPictureWithoutRecordsAreHarmless) {
    for (const Spoiling& spoiling : WrongCounts())
        EXPECT_TRUE(ReadBack(spoiling.make({Picture(), cNoise, cNumber})).empty())
            << spoiling.name;
}

std::string DigestOf(const std::vector<StoredValue>& values) {
    Digest digest;
    for (const StoredValue& value : values)
        digest.Add(value);
    return digest.Text();
}

TEST(Digest, TellsSequencesApart) {
    const StoredValue one = Published(cPicture);
    const StoredValue other = Published({});
    EXPECT_EQ(16u, DigestOf({}).size());
    EXPECT_EQ(DigestOf({one, other}), DigestOf({one, other}));
    EXPECT_NE(DigestOf({one, other}), DigestOf({other, one}));
    EXPECT_NE(DigestOf({one}), DigestOf({one, one}));
    EXPECT_NE(DigestOf({{cBinaryType, {1}}}), DigestOf({{cTextType, {1}}}));
}

}  // namespace
}  // namespace kora4::tools::sim

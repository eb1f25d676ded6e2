// SPDX-License-Identifier: MIT
// The settings document: dumped and read back, refused with the place of the mistake, compared
// with a store.
#include "settings/document.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "contract/value_kind.h"
#include "settings/content.h"
#include "tools/support/memory_store.h"

namespace kora4::tools {
namespace {

// What is said of a document that is refused; empty when it is taken.
std::string Refusal(const std::string& text) {
    try {
        ReadDocument(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eBadInput, failure.Code());
        return std::string(failure.what()) + " " + failure.Next();
    }
    return {};
}

// A document of scope all with these sections.
std::string WithBody(const std::string& body, const std::string& scope = "all") {
    return R"({"format": "kora4-settings", "version": 1, "scope": ")" + scope + "\"" +
           (body.empty() ? "" : ", " + body) + "}";
}

std::string InMusic(const std::string& members) {
    return WithBody(R"("profiles": {"music": {)" + members + "}}");
}

void ExpectRefusal(const std::string& text, const std::vector<std::string>& words) {
    const std::string refusal = Refusal(text);
    EXPECT_FALSE(refusal.empty()) << "taken: " << text;
    for (const std::string& word : words)
        EXPECT_NE(std::string::npos, refusal.find(word)) << text << "\n" << refusal;
}

class DumpAndRead : public testing::TestWithParam<Scope> {};

TEST_P(DumpAndRead, AreTheIdentityOnRandomStores) {
    for (std::uint32_t seed = 0; seed < 500; ++seed) {
        RandomStore random(seed);
        MemoryStore source;
        source.values = random.Values(seed % 5);
        const std::string text = Dump(source, GetParam()).dump();
        const Plan plan = ReadDocument(text);
        EXPECT_TRUE(Compare(plan, source).empty()) << seed;

        MemoryStore target;
        target.values = random.Values(3);
        const MemoryStore::Values before = target.values;
        Put(target, plan);
        ASSERT_EQ(Covered(target.values, GetParam()), Covered(source.values, GetParam()))
            << seed << "\n"
            << text;
        ASSERT_EQ(NotCovered(target.values, GetParam()), NotCovered(before, GetParam()));
        EXPECT_EQ(text, Dump(target, GetParam()).dump());
    }
}

INSTANTIATE_TEST_SUITE_P(Scopes, DumpAndRead, testing::Values(Scope::eUser, Scope::eAll));

TEST(Document, GivesSettingsAsPeopleWouldWriteThem) {
    MemoryStore store;
    const auto put = [&store](const char* name, std::uint32_t profile, const Value& content) {
        const SchemaValue value = SettingNamed(name).Stored(profile);
        store.Write(value.keySet, value.key, Encode(value, content));
    };
    put("profile", 0, std::uint32_t{1});
    put("enable", 0, false);
    put("volume-leveler", 1, std::uint32_t{7});
    put("dialog-enhancer", 1, 0.33f);
    put("intelligent-eq", 1, std::uint32_t{4});
    put("graphic-eq.gains", 1, std::vector<float>{1.5f, -12.0f});
    put("name", 3, std::string("Sp\xC3\xA4t"));
    put("audio-regulator.isolated", 0, std::vector<bool>{true, false});
    EXPECT_EQ(R"({"format":"kora4-settings","version":1,"scope":"all",)"
              R"("general":{"profile":"music","enable":false},)"
              R"("profiles":{"music":{"volume-leveler":7,"graphic-eq.gains":[1.5,-12.0],)"
              R"("intelligent-eq":"rich","dialog-enhancer":0.33},"p1":{"name":"Spät"}},)"
              R"("global":{"audio-regulator.isolated":[true,false]}})",
              Dump(store, Scope::eAll).dump());
}

TEST(Document, KeepsUnusualValuesToTheByte) {
    MemoryStore store;
    const SchemaValue amount = SettingNamed("volume-leveler").Stored(1);
    const SchemaValue boost = SettingNamed("headphone-virtualizer").Stored(1);
    const SchemaValue flag = SettingNamed("volume-leveler.on").Stored(1);
    store.Write(amount.keySet, amount.key, {cDwordType, {7, 0}});
    store.Write(boost.keySet, boost.key, StoredValue::FromText(u" 3 dB"));
    store.Write(flag.keySet, flag.key, StoredValue::FromDword(2));
    const Json music = Dump(store, Scope::eUser)["profiles"]["music"];
    EXPECT_EQ(R"({"type":4,"data":"0700"})", music["volume-leveler"].dump());
    EXPECT_EQ(R"({"text":" 3 dB"})", music["headphone-virtualizer"].dump());
    EXPECT_EQ("2", music["volume-leveler.on"].dump());
}

TEST(Document, TakesValuesThatTheApiWouldNot) {
    EXPECT_EQ("", Refusal(InMusic(R"("volume-leveler": 262151, "speaker-virtualizer": 10)")));
}

TEST(Document, RefusesWhatIsNoDocument) {
    ExpectRefusal("", {"empty"});
    ExpectRefusal("   \n", {"empty"});
    ExpectRefusal("hello", {"Not valid JSON", "line 1"});
    ExpectRefusal(InMusic(R"("volume-leveler": 1e999)"), {"Not valid JSON: number overflow"});
    ExpectRefusal("[]", {"expected a JSON object", "dump"});
    ExpectRefusal("{}", {"format"});
    ExpectRefusal(R"({"format": "other", "version": 1, "scope": "user"})", {"format"});
    ExpectRefusal(R"({"format": "kora4-settings", "scope": "user"})", {"version"});
    ExpectRefusal(R"({"format": "kora4-settings", "version": 2, "scope": "user"})",
                  {"version 2 is not supported; the newest supported version is 1"});
    ExpectRefusal(R"({"format": "kora4-settings", "version": 0, "scope": "user"})",
                  {"version"});
    ExpectRefusal(R"({"format": "kora4-settings", "version": "1", "scope": "user"})",
                  {"version"});
    ExpectRefusal(R"({"format": "kora4-settings", "version": 1})", {"scope"});
    ExpectRefusal(R"({"format": "kora4-settings", "version": 1, "scope": "mine"})",
                  {"scope", "user", "all"});
}

TEST(Document, RefusesEveryTruncation) {
    RandomStore random(9);
    MemoryStore store;
    store.values = random.Values(4);
    const std::string text = Dump(store, Scope::eUser).dump();
    ASSERT_EQ("", Refusal(text));
    for (std::size_t length = 1; length < text.size(); length += 1 + length / 50)
        ASSERT_NE("", Refusal(text.substr(0, length))) << length;
    ExpectRefusal(text.substr(0, text.size() - 1), {"truncated"});
}

TEST(Document, RefusesNamesThatAreThereTwice) {
    ExpectRefusal(InMusic(R"("volume-leveler": 1, "volume-leveler": 2)"),
                  {"profiles.music.volume-leveler", "duplicate"});
    ExpectRefusal(WithBody(R"("general": {}, "general": {})"), {"general", "duplicate"});
}

TEST(Document, RefusesUnknownNamesWithTheNearest) {
    ExpectRefusal(WithBody(R"("genral": {})"), {"genral", "general"});
    ExpectRefusal(WithBody(R"("profiles": {"musik": {}})"), {"profiles.musik", "music"});
    ExpectRefusal(InMusic(R"("volume-levler": 1)"),
                  {"profiles.music.volume-levler", "volume-leveler"});
    ExpectRefusal(InMusic(R"("name": "x")"), {"profiles.music.name"});
    ExpectRefusal(InMusic(R"("version": "1")"), {"profiles.music.version"});
    ExpectRefusal(WithBody(R"("global": {"volume-leveler": 1})"), {"global.volume-leveler"});
}

TEST(Document, RefusesWhatItsScopeDoesNotCover) {
    ExpectRefusal(WithBody(R"("general": {"trace-flags": 1})", "user"),
                  {"general.trace-flags", "all"});
    ExpectRefusal(WithBody(R"("profiles": {"demo-movie": {}})", "user"), {"demo-movie"});
    ExpectRefusal(WithBody(R"("global": {"peak-limiter.on": true})", "user"),
                  {"peak-limiter.on"});
}

TEST(Document, RefusesOneBadValueAndSaysWhereItIs) {
    ExpectRefusal(InMusic(R"("volume-leveler": -1)"),
                  {"profiles.music.volume-leveler", "0 to 10"});
    ExpectRefusal(InMusic(R"("volume-leveler": 7.5)"), {"profiles.music.volume-leveler"});
    ExpectRefusal(InMusic(R"("volume-leveler": 4294967296)"),
                  {"profiles.music.volume-leveler"});
    ExpectRefusal(InMusic(R"("volume-leveler": true)"), {"profiles.music.volume-leveler"});
    ExpectRefusal(InMusic(R"("volume-leveler": null)"), {"profiles.music.volume-leveler"});
    ExpectRefusal(InMusic(R"("volume-leveler.on": "yes")"), {"on or off"});
    ExpectRefusal(InMusic(R"("dialog-enhancer": "0.5")"), {"profiles.music.dialog-enhancer"});
    ExpectRefusal(InMusic(R"("dialog-enhancer": 1e300)"), {"too large"});
    ExpectRefusal(InMusic(R"("intelligent-eq": "loud")"), {"balanced"});
    ExpectRefusal(InMusic(R"("intelligent-eq": 6)"),
                  {"profiles.music.intelligent-eq", "curves"});
    ExpectRefusal(InMusic(R"("graphic-eq.gains": [1, "2"])"),
                  {"profiles.music.graphic-eq.gains[1]"});
    ExpectRefusal(InMusic(R"("graphic-eq.gains": 1)"), {"profiles.music.graphic-eq.gains"});
    std::string many = "0";
    for (int i = 0; i < 40; ++i)
        many += ",0";
    ExpectRefusal(InMusic("\"graphic-eq.gains\": [" + many + "]"), {"41 elements"});
    ExpectRefusal(WithBody(R"("profiles": {"p1": {"name": ")" +
                           std::string(cMaxTextChars + 1, 'x') + "\"}}"),
                  {"profiles.p1.name", "2047"});
    ExpectRefusal(WithBody(R"("profiles": {"p1": {"name": "a\u0000b"}})"), {"null character"});
    ExpectRefusal(WithBody(R"("profiles": {"p1": 5})"), {"profiles.p1", "object"});
    ExpectRefusal(WithBody(R"("profiles": [])"), {"profiles", "object"});
}

// An element of an array has 16 bits: what does not fit would be stored as another number.
TEST(Document, RefusesElementsThatWouldComeBackAsOthers) {
    const auto gains = [](const std::string& element) {
        return R"({"format": "kora4-settings", "version": 1, "scope": "user", "profiles":
                {"movie": {"graphic-eq.gains": [)" +
               element + "]}}}";
    };
    for (const char* const element : {"128", "-128.1", "200", "-200", "1e30"}) {
        try {
            ReadDocument(gains(element));
            ADD_FAILURE() << element << " was taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(ExitCode::eBadInput, failure.Code());
            EXPECT_NE(std::string::npos, std::string(failure.what()).find("graphic-eq.gains"))
                << failure.what();
        }
    }
    EXPECT_NO_THROW(ReadDocument(gains("127.99, -128")));
}

TEST(Document, RefusesWhatIsNestedWithoutEnd) {
    for (const std::size_t depth : {100u, 200000u}) {
        const std::string text = std::string(depth, '[') + std::string(depth, ']');
        EXPECT_THROW(ReadDocument(text), Failure) << depth;
        EXPECT_THROW(ReadDocument(R"({"format": )" + text + "}"), Failure) << depth;
    }
}

TEST(Document, RefusesNumbersThatNothingHolds) {
    EXPECT_NE(std::string::npos,
              Refusal(InMusic(R"("dialog-enhancer": 1e400)")).find("number overflow"));
}

TEST(Document, RefusesObjectsWithThousandsOfMembers) {
    std::string names = R"("a": 1)";
    for (int i = 1; i < 1000; ++i)
        names += ", \"n" + std::to_string(i) + "\": 1";
    ExpectRefusal(InMusic(names), {"profiles.music.a: unknown member."});
    ExpectRefusal(InMusic(names + R"(, "last": 1)"),
                  {"profiles.music.last: too many members; an object has at most 1000."});
}

TEST(Document, ReadingCanBeInterrupted) {
    const auto interrupt = [] { throw Failure(ExitCode::eFailed, "Interrupted."); };
    const std::string few = InMusic(R"("volume-leveler": 5)");
    EXPECT_NO_THROW(ReadDocument(few, Completeness::eExact, interrupt));
    std::string numbers = "[1";
    for (int i = 0; i < 10000; ++i)
        numbers += ",1";
    try {
        ReadDocument(InMusic("\"graphic-eq.gains\": " + numbers + "]"), Completeness::eExact,
                     interrupt);
        ADD_FAILURE() << "was not interrupted";
    } catch (const Failure& failure) {
        EXPECT_STREQ("Interrupted.", failure.what());
    }
}

TEST(Document, LargeValuesHaveTheirSizeOnlyAndLoadingLeavesThem) {
    const SchemaValue value = SettingNamed("volume-leveler").Stored(1);
    MemoryStore store;
    store.Write(value.keySet, value.key, {cBinaryType, {}, 3000000});
    MemoryStore empty;
    const Json dumped = Dump(store, Scope::eUser);
    EXPECT_EQ(Json({{"type", cBinaryType}, {"unread", 3000000}}),
              dumped["profiles"]["music"]["volume-leveler"]);
    const Plan plan = CheckDocument(dumped);
    EXPECT_TRUE(Compare(plan, store).empty());
    store.values.clear();
    EXPECT_TRUE(Compare(plan, store).empty());
    store.Write(value.keySet, value.key, StoredValue::FromDword(5));
    EXPECT_TRUE(Compare(plan, store).empty());
    EXPECT_EQ(1u, Compare(CheckDocument(Dump(empty, Scope::eUser)), store).size());
    for (const char* const unread : {"0", "-1", "1.5", "\"x\"", "4294967296"})
        ExpectRefusal(
            InMusic(R"("volume-leveler": {"type": 3, "unread": )" + std::string(unread) + "}"),
            {"profiles.music.volume-leveler: invalid 'unread'"});
}

TEST(Document, RefusesBadRawValues) {
    for (const char* const raw :
         {R"({})", R"({"text": 5})", R"({"type": 4})", R"({"type": 4, "data": "0"})",
          R"({"type": 4, "data": "0x"})", R"({"type": -1, "data": ""})",
          R"({"type": 4, "data": "00", "text": "x"})", R"({"data": "00", "kind": 4})"})
        ExpectRefusal(InMusic(std::string("\"volume-leveler\": ") + raw),
                      {"profiles.music.volume-leveler"});
}

TEST(Document, WhatItDoesNotHaveIsDeletedOrLeftAlone) {
    const std::string text = InMusic(R"("volume-leveler": 5)");
    const Plan merged = ReadDocument(text, Completeness::eMerge);
    ASSERT_EQ(1u, merged.values.size());
    EXPECT_EQ(StoredValue::FromDword(5), merged.values[0].wanted);
    const Plan exact = ReadDocument(text);
    std::size_t wanted = 0;
    for (const PlannedValue& planned : exact.values)
        wanted += planned.wanted.has_value();
    EXPECT_EQ(1u, wanted);
    EXPECT_LT(200u, exact.values.size());
}

TEST(Document, DifferencesAreShownAsInDocuments) {
    MemoryStore store;
    const SchemaValue amount = SettingNamed("volume-leveler").Stored(1);
    store.Write(amount.keySet, amount.key, StoredValue::FromDword(7));
    const Plan plan = ReadDocument(InMusic(R"("volume-leveler": 5, "volume-leveler.on": true)"),
                                   Completeness::eMerge);
    const std::vector<Difference> differences = Compare(plan, store);
    ASSERT_EQ(2u, differences.size());
    EXPECT_EQ("music: volume-leveler.on: unset -> true", differences[0].Line());
    EXPECT_EQ("music: volume-leveler: 7 -> 5", differences[1].Line());
    EXPECT_EQ(R"({"name":"volume-leveler","profile":"music","stored":7,"wanted":5})",
              differences[1].Document().dump());
    EXPECT_EQ(nullptr, differences[0].Document()["stored"]);
}

}  // namespace
}  // namespace kora4::tools

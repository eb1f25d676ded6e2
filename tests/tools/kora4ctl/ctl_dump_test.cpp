// SPDX-License-Identifier: MIT
// kora4ctl dump, and what load makes of it again.
//
// KORA4_SEED and KORA4_STORES in the environment repeat a run or make a longer one.
#include <cstdio>
#include <cstdlib>

#include "contract/value_kind.h"
#include "tools/kora4ctl/store_fixture.h"

namespace kora4::test {
namespace {

using tools::RandomStore;
using tools::StoredValue;

constexpr char cUserShape[] =
    R"({"format": "=kora4-settings", "version": "integer", "scope": "=user",
        "general": {"profile?": "any", "enable?": "any", "sampling-period?": "any"},
        "profiles": {"*": {"*": "any"}}})";
constexpr char cAllShape[] =
    R"({"format": "=kora4-settings", "version": "integer", "scope": "=all",
        "general": {"*": "any"}, "profiles": {"*": {"*": "any"}}, "global": {"*": "any"}})";

// Of each scope.
constexpr std::uint32_t cStores = 250;

std::uint32_t FromEnvironment(const char* name, std::uint32_t fallback) {
    const char* const text = std::getenv(name);
    return text && *text ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 0))
                         : fallback;
}

Words DumpOf(Scope scope) {
    return scope == Scope::eAll ? Words{"dump", "--all"} : Words{"dump"};
}

const char* ShapeOf(Scope scope) {
    return scope == Scope::eAll ? cAllShape : cUserShape;
}

// Among the values of a random store a few that are larger than any reader takes.
void AddLargeOnes(RandomStore& random, StoreValues& values) {
    for (std::uint32_t i = random.Pick(3); i > 0; --i) {
        const auto& schema = tools::Schema();
        const tools::SchemaValue& value =
            schema[random.Pick(static_cast<std::uint32_t>(schema.size()))];
        std::u16string text(cMaxTextChars + 1 + random.Pick(20000), u'x');
        text[random.Pick(cMaxTextChars + 1)] = 0xD800;
        values[{value.keySet, value.Name()}] = StoredValue::FromText(text);
    }
}

class CtlDumpAndLoad : public StoreTest, public testing::WithParamInterface<Scope> {
  protected:
    // A store goes out, another one comes in its place, and then the first comes back.
    void ThereAndBack(RandomStore& random, std::uint32_t garbage) {
        StoreValues source = random.Values(garbage);
        AddLargeOnes(random, source);
        ReplaceStoreValues(source);
        const std::string text = Done(DumpOf(GetParam()));
        EXPECT_TRUE(HasShape(ParsedJson(text), ShapeOf(GetParam())));
        ExpectStore(source);

        const StoreValues other = random.Values(1 + random.Pick(4));
        ReplaceStoreValues(other);
        Done({"load", "--stored", "-", "--quiet"}, text);
        ExpectStore(LoadOf(other, source, GetParam()).after);
        EXPECT_FALSE(HasJournal());
    }
};

TEST_P(CtlDumpAndLoad, AreTheIdentityOnRandomStores) {
    const std::uint32_t stores = FromEnvironment("KORA4_STORES", cStores);
    const std::uint32_t first =
        FromEnvironment("KORA4_SEED", GetParam() == Scope::eAll ? 1000 : 0);
    for (std::uint32_t seed = first; seed < first + stores && !HasFailure(); ++seed) {
        SCOPED_TRACE("KORA4_SEED=" + std::to_string(seed) + " KORA4_STORES=1");
        RandomStore random(seed);
        ThereAndBack(random, seed % 5);
    }
    std::printf("KORA4_SEED=%u KORA4_STORES=%u\n", static_cast<unsigned>(first),
                static_cast<unsigned>(stores));
}

TEST_P(CtlDumpAndLoad, LeaveAnEmptyStoreEmpty) {
    ReplaceStoreValues({});
    const std::string text = Done(DumpOf(GetParam()));
    EXPECT_EQ(0u, ParsedJson(text)["general"].size());
    RandomStore random(7);
    const StoreValues other = random.Values(3);
    ReplaceStoreValues(other);
    Done({"load", "--stored", "-", "--quiet"}, text);
    const StoreValues now = ReadStoreValues();
    EXPECT_TRUE(tools::Covered(now, GetParam()).empty());
}

TEST_P(CtlDumpAndLoad, TakeTheSameWayThroughAFile) {
    const TwoStores stores = DifferentStores(11);
    ReplaceStoreValues(stores.after);
    const std::string file = m_folder.File("S\xC3\xA4tze.json");
    Words dump = DumpOf(GetParam());
    const std::string text = Done(dump);
    dump.push_back(file);
    EXPECT_EQ("", Done(dump));
    EXPECT_EQ(text, ContentOf(file));
    ReplaceStoreValues(stores.before);
    Done({"load", "--stored", file});
    ExpectStore(LoadOf(stores.before, stores.after, GetParam()).after);
}

INSTANTIATE_TEST_SUITE_P(Scopes, CtlDumpAndLoad, testing::Values(Scope::eUser, Scope::eAll),
                         ScopeName);

class CtlDump : public StoreTest {
  protected:
    // The names of the six custom profiles, taken through a document and back.
    void NamesThereAndBack(const std::vector<std::u16string>& names) {
        StoreValues values;
        for (std::uint32_t i = 0; i < names.size(); ++i) {
            const tools::SchemaValue place = tools::NameValue(3 + i);
            values[{place.keySet, place.Name()}] = StoredValue::FromText(names[i]);
        }
        ReplaceStoreValues(values);
        const std::string text = Done({"dump"});
        ReplaceStoreValues({});
        Done({"load", "--stored", "-", "--quiet"}, text);
        ExpectStore(LoadOf({}, values, Scope::eUser).after);
    }
};

TEST_F(CtlDump, NamesMayHaveEveryCodeUnit) {
    constexpr std::uint32_t cNameLength = 2000;
    std::vector<std::u16string> names(1);
    for (std::uint32_t unit = 1; unit <= 0xFFFF; ++unit) {
        names.back() += static_cast<char16_t>(unit);
        if (names.back().size() < cNameLength && unit != 0xFFFF)
            continue;
        if (names.size() == 6 || unit == 0xFFFF) {
            NamesThereAndBack(names);
            names.clear();
        }
        names.emplace_back();
    }
}

TEST_F(CtlDump, NamesMayHaveCharactersOfAllPlanes) {
    std::vector<std::u16string> names(6);
    for (std::uint32_t i = 0; i < 6 * 1000; ++i) {
        const std::uint32_t point = 0x10000 + i * 174;
        names[i / 1000] += static_cast<char16_t>(0xD7C0 + (point >> 10));
        names[i / 1000] += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
    }
    NamesThereAndBack(names);
}

TEST_F(CtlDump, NamesMayHaveHalvesOfPairsWithoutTheOther) {
    NamesThereAndBack({std::u16string(1, 0xD83C), std::u16string(1, 0xDFB5),
                       std::u16string{0xDFB5, 0xD83C}, std::u16string{u'a', 0xD83C, u'b'},
                       std::u16string{0xD83C, 0xD83C, 0xDFB5}, u""});
}

TEST_F(CtlDump, OfTheUserHasNothingThatBelongsToTheWholeMachine) {
    ReplaceStoreValues(DifferentStores(2).before);
    const Json user = ParsedJson(Done({"dump"}));
    EXPECT_TRUE(HasShape(user, cUserShape));
    for (const char* const demo : {"demo-movie", "demo-music", "demo-games"})
        EXPECT_FALSE(user["profiles"].contains(demo)) << demo;
    const Json all = ParsedJson(Done({"dump", "--all"}));
    EXPECT_TRUE(HasShape(all, cAllShape));
    EXPECT_TRUE(all["profiles"].contains("demo-movie"));
    EXPECT_LT(3u, all["global"].size());
    EXPECT_EQ(all["profiles"]["music"], user["profiles"]["music"]);
}

TEST_F(CtlDump, HasNoCountersNoSavedStateAndNoLevels) {
    StoreValues values = DifferentStores(3).before;
    ReplaceStoreValues(values);
    const std::string text = Done({"dump", "--all"});
    for (const tools::SchemaValue& value : tools::Schema())
        if (value.role == tools::Role::eTrigger || value.role == tools::Role::eTableCounter ||
            value.role == tools::Role::eSavedDemoState ||
            value.role == tools::Role::eVisualization)
            values[{value.keySet, value.Name()}] = StoredValue::FromText(u"a trial text");
    ReplaceStoreValues(values);
    EXPECT_EQ(text, Done({"dump", "--all"}));
}

TEST_F(CtlDump, OfASettingThatAClientMadeIsAsPeopleWouldWriteIt) {
    ASSERT_EQ(S_OK, Client().SetActiveProfile(1));
    ASSERT_EQ(S_OK, Client().CreateCustomProfile(3, L"Sp\u00E4t"));
    KORA4PatchValueUnion value = {};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 7;
    ASSERT_EQ(S_OK, Client().SetSimplePatchValue(&value));
    const Json document = ParsedJson(Done({"dump"}));
    EXPECT_EQ("music", document["general"]["profile"]);
    EXPECT_EQ(7, document["profiles"]["music"]["volume-leveler"]);
    EXPECT_EQ("Sp\xC3\xA4t", document["profiles"]["p1"]["name"]);
}

TEST_F(CtlDump, WithAFileSaysWhereTheSettingsAre) {
    const std::string file = m_folder.File("here.json");
    const ToolResult said = RunCtl({"dump", file});
    EXPECT_EQ(cDone, said.exitCode) << said;
    EXPECT_EQ("", said.out);
    EXPECT_NE(std::string::npos, said.err.find(file)) << said;
    EXPECT_EQ("", RunCtl({"dump", file, "--quiet"}).err);
    const Json result = DoneJson({"dump", "--all", file});
    EXPECT_TRUE(HasShape(result, R"({"file": "string", "scope": "=all"})"));
    EXPECT_EQ(file, result["file"]);
    EXPECT_EQ("all", ParsedJson(ContentOf(file))["scope"]);
}

TEST_F(CtlDump, IntoAPlaceWhereNoFileCanBeIsAFailureInWords) {
    Refused({"dump", m_folder.File("no\\such\\folder.json")}, cFailed, "cannot be created");
    Refused({"dump", m_folder.Path()}, cFailed, m_folder.Path());
}

TEST_F(CtlDump, ReplacesAFileWhole) {
    const std::string file = m_folder.File("again.json");
    MakeFile(file, std::string(100000, 'x'));
    Done({"dump", file});
    EXPECT_EQ(ContentOf(file), Done({"dump"}));
}

TEST_F(CtlDump, ChangesNothing) {
    const StoreValues values = DifferentStores(5).before;
    ReplaceStoreValues(values);
    Done({"dump"});
    Done({"dump", "--all"});
    ExpectStore(values);
    EXPECT_FALSE(HasJournal());
}

TEST_F(CtlDump, WithoutAStoreNamesTheCommandThatMendsIt) {
    Unregister();
    RemoveStore();
    for (const Words& arguments : {Words{"dump"}, Words{"dump", "--all", "--json"}})
        Refused(arguments, cNotReady, "kora4ctl register");
}

TEST_F(CtlDump, InADemoHasWhatTheDemoReturnsTo) {
    ASSERT_EQ(S_OK, Client().SetActiveProfile(KORA4_PROFILE_GAMES));
    ASSERT_EQ(S_OK, Client().SetVeltoEnable(FALSE));
    const std::string before = Done({"dump", "--all"});
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, TRUE));
    EXPECT_EQ(before, Done({"dump", "--all"}));
    Client().ForceRevertFromDemoMode();
    Done({"profile", "use", "movie"});
    Done({"load", "--stored", "-"}, before);
    EXPECT_EQ("games\n", Done({"get", "profile"}));
    EXPECT_EQ("off\n", Done({"get", "enable"}));
}

}  // namespace
}  // namespace kora4::test

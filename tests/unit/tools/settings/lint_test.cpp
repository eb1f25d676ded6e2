// SPDX-License-Identifier: MIT
// The findings for damaged values, and repairs that leave nothing to repair.
#include "settings/lint.h"

#include <gtest/gtest.h>

#include "contract/engine_masks.h"
#include "contract/profiles.h"
#include "contract/value_kind.h"
#include "settings/content.h"
#include "tools/support/memory_store.h"

namespace kora4::tools {
namespace {

// What lint says of one value of the music profile, or of a general setting.
std::vector<Finding> Of(const char* name, const StoredValue& stored) {
    MemoryStore store;
    const SchemaValue value = SettingNamed(name).Stored(1);
    store.Write(value.keySet, value.key, stored);
    return Lint(store);
}

// The severity of the only finding; none when there is none.
std::optional<Severity> SeverityOf(const char* name, const StoredValue& stored) {
    const std::vector<Finding> findings = Of(name, stored);
    EXPECT_GE(1u, findings.size());
    return findings.empty() ? std::nullopt : std::optional(findings[0].severity);
}

StoredValue Text(const char16_t* text) {
    return StoredValue::FromText(text);
}

// Without the notes about changed factory values.
std::vector<Finding> WithoutFactory(std::vector<Finding> findings) {
    std::erase_if(findings, [](const Finding& finding) {
        return finding.severity == Severity::eNote && finding.profile &&
               IsDemoProfile(*finding.profile);
    });
    return findings;
}

TEST(Lint, HealthyStoresHaveNoFindings) {
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        RandomStore random(seed);
        MemoryStore store;
        store.values = random.Values(0);
        for (const Finding& finding : WithoutFactory(Lint(store)))
            ADD_FAILURE() << seed << ": " << finding.Line();
    }
}

TEST(Lint, BuiltInDefaultsPassWhateverTheLimitsOfTheApi) {
    for (const SchemaValue& value : Schema()) {
        for (const StoredValue& builtIn : value.Defaults()) {
            MemoryStore store;
            store.Write(value.keySet, value.key, builtIn);
            for (const Finding& finding : WithoutFactory(Lint(store)))
                ADD_FAILURE() << finding.Line();
        }
    }
}

TEST(Lint, FactoryValuesThatAreNotBuiltInAreNotes) {
    const SchemaValue value = SettingNamed("volume-leveler").Stored(cDemoMusicProfile);
    MemoryStore store;
    store.Write(value.keySet, value.key, *value.Default());
    EXPECT_TRUE(Lint(store).empty());
    store.Write(value.keySet, value.key, StoredValue::FromDword(4));
    const std::vector<Finding> findings = Lint(store);
    ASSERT_EQ(1u, findings.size());
    EXPECT_EQ(
        "note: demo-music: volume-leveler: the factory value is not the built-in one, 0 "
        "(stored: 4)",
        findings[0].Line());
    EXPECT_FALSE(findings[0].fix);
}

TEST(Lint, AfterTheRepairOfAnyDamageThereIsNothingLeftToRepair) {
    std::size_t repaired = 0;
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        RandomStore random(seed);
        MemoryStore store;
        store.values = random.Values(2);
        const std::vector<Finding> findings = Lint(store);
        const Plan plan = FixPlan(findings);
        repaired += plan.values.size();
        EXPECT_EQ(!plan.values.empty(), HasFindings(findings));
        Put(store, plan);
        for (const Finding& finding : Lint(store))
            EXPECT_EQ(Severity::eNote, finding.severity) << seed << ": " << finding.Line();
    }
    EXPECT_LT(1000u, repaired);
}

TEST(Lint, RepairsLeaveEverythingElseAlone) {
    RandomStore random(3);
    MemoryStore store;
    store.values = random.Values(3);
    const MemoryStore::Values before = store.values;
    const Plan plan = FixPlan(Lint(store));
    Put(store, plan);
    std::size_t changed = 0;
    for (const auto& [place, value] : before) {
        const auto now = store.values.find(place);
        changed += now == store.values.end() || now->second != value;
    }
    EXPECT_EQ(changed, plan.values.size());
}

TEST(Lint, AnotherTypeAndUnreadableContentAreErrors) {
    EXPECT_EQ(Severity::eError, SeverityOf("volume-leveler", Text(u"7")));
    EXPECT_EQ(Severity::eError, SeverityOf("volume-leveler", {cDwordType, {7, 0}}));
    EXPECT_EQ(Severity::eError, SeverityOf("dialog-enhancer", StoredValue::FromDword(1)));
    EXPECT_EQ(Severity::eError, SeverityOf("dialog-enhancer", Text(u"loud")));
    EXPECT_EQ(Severity::eError, SeverityOf("dialog-enhancer", Text(u"nan")));
    EXPECT_EQ(Severity::eError, SeverityOf("graphic-eq.gains", Text(u"0100,0002,0000")));
    EXPECT_EQ(Severity::eError, SeverityOf("audio-regulator.isolated", Text(u"0029")));
    EXPECT_EQ(Severity::eError, SeverityOf("intelligent-eq", StoredValue::FromDword(6)));
    EXPECT_EQ(
        Severity::eError,
        SeverityOf("demo-app-command", Text(std::u16string(cMaxTextChars + 1, u'x').c_str())));
}

StoredValue TenGains(const std::u16string& first) {
    return Text(
        (u"0100,000a," + first + u",0000,0000,0000,0000,0000,0000,0000,0000,0000").c_str());
}

TEST(Lint, ValuesBeyondTheLimitsOfTheApiAreWarnings) {
    EXPECT_EQ(Severity::eWarning, SeverityOf("volume-leveler", StoredValue::FromDword(11)));
    EXPECT_EQ(std::nullopt, SeverityOf("volume-leveler", StoredValue::FromDword(10)));
    EXPECT_EQ(Severity::eWarning, SeverityOf("dialog-enhancer", Text(u"1.000001")));
    EXPECT_EQ(std::nullopt, SeverityOf("dialog-enhancer", Text(u"1.000000")));
    EXPECT_EQ(std::nullopt, SeverityOf("speaker-virtualizer", Text(u"10.000000")));
    EXPECT_EQ(Severity::eWarning, SeverityOf("headphone-virtualizer", Text(u"10.000000")));
    EXPECT_EQ(Severity::eWarning, SeverityOf("graphic-eq.gains", TenGains(u"0c01")));
    EXPECT_EQ(std::nullopt, SeverityOf("graphic-eq.gains", TenGains(u"0c00")));
    EXPECT_EQ(Severity::eWarning, SeverityOf("profile", StoredValue::FromDword(9)));
    EXPECT_EQ(std::nullopt, SeverityOf("profile", StoredValue::FromDword(cDemoGamesProfile)));
    EXPECT_EQ(std::nullopt, SeverityOf("volume-leveler.on", StoredValue::FromDword(2)));
}

TEST(Lint, TextsWithoutTerminatorAreStoredProperlyWithTheirContent) {
    StoredValue stored = Text(u"0.500000");
    stored.bytes.resize(stored.bytes.size() - 2);
    const std::vector<Finding> findings = Of("dialog-enhancer", stored);
    ASSERT_EQ(1u, findings.size());
    EXPECT_EQ(Severity::eWarning, findings[0].severity);
    ASSERT_TRUE(findings[0].fix);
    EXPECT_EQ(Text(u"0.500000"), findings[0].fix->wanted);
}

TEST(Lint, OtherRepairsDeleteSoThatTheDefaultIsInForce) {
    const std::vector<Finding> findings = Of("volume-leveler", StoredValue::FromDword(11));
    ASSERT_EQ(1u, findings.size());
    ASSERT_TRUE(findings[0].fix);
    EXPECT_EQ(std::nullopt, findings[0].fix->wanted);
    EXPECT_EQ("deleted, so that the default is in effect: 0", findings[0].repair);
    EXPECT_EQ(
        "warning: music: volume-leveler: out of range, 0 to 10 "
        "(stored: 11)",
        findings[0].Line());
}

// The bands of the music profile, as they are and as --fix leaves them.
MemoryStore Bands(const std::vector<float>& frequencies, const std::vector<float>& gains) {
    MemoryStore store;
    for (const auto& [name, array] : {std::pair("graphic-eq.frequencies", frequencies),
                                      std::pair("graphic-eq.gains", gains)}) {
        const SchemaValue value = SettingNamed(name).Stored(1);
        if (!array.empty())
            store.Write(value.keySet, value.key, Encode(value, array));
    }
    return store;
}

TEST(Lint, BandsAscendAndHaveOneGainEach) {
    struct Case {
        std::vector<float> frequencies;
        std::vector<float> gains;
        std::vector<std::string> problems;
    };
    const std::string foreign = "the frequencies of their bands are not valid";
    for (const Case& one : std::vector<Case>{
             {{100, 200}, {1, 2}, {}},
             {{}, std::vector<float>(10, 1), {}},
             {{100, 200}, {}, {}},
             {{100, 200}, {1, 2, 3}, {"expected 2 gains, got 3"}},
             {{100, 200}, {1}, {"expected 2 gains, got 1"}},
             {{}, {1}, {"expected 10 gains, got 1"}},
             {{200, 100},
              {1, 2},
              {"band 2 is at 100 Hz, which is not above the previous band", foreign}},
             {{100, 100}, {}, {"band 2 is at 100 Hz, which is not above the previous band"}},
             {{0, 100}, {}, {"band 1 is at 0 Hz; frequencies range from 1 to 32767 Hz"}},
         }) {
        MemoryStore store = Bands(one.frequencies, one.gains);
        std::vector<std::string> problems;
        const std::vector<Finding> findings = Lint(store);
        for (const Finding& finding : findings) {
            EXPECT_EQ(Severity::eWarning, finding.severity);
            problems.push_back(finding.problem);
        }
        EXPECT_EQ(one.problems, problems);
        Put(store, FixPlan(findings));
        EXPECT_TRUE(Lint(store).empty());
    }
}

TEST(Lint, TheRepairOfGainsKeepsWhatReadersSee) {
    const SchemaValue gains = SettingNamed("graphic-eq.gains").Stored(1);
    for (const auto& [stored, repaired] :
         {std::pair(std::vector<float>{1, 2, 3}, std::vector<float>{1, 2}),
          std::pair(std::vector<float>{1}, std::vector<float>{1, 0})}) {
        MemoryStore store = Bands({100, 200}, stored);
        const std::vector<Finding> findings = Lint(store);
        ASSERT_EQ(1u, findings.size());
        EXPECT_EQ(Encode(gains, repaired), findings[0].fix->wanted);
    }
}

TEST(Lint, TheActiveProfileExists) {
    MemoryStore store;
    const SchemaValue active = SettingNamed("profile").Stored();
    const SchemaValue name = NameValue(4);
    store.Write(active.keySet, active.key, StoredValue::FromDword(4));
    ASSERT_EQ(1u, Lint(store).size());
    EXPECT_EQ("the profile p2 does not exist", Lint(store)[0].problem);
    store.Write(name.keySet, name.key, Text(u""));
    EXPECT_TRUE(Lint(store).empty());
}

TEST(Lint, LargeValuesAreErrorsThatNobodyRead) {
    const StoredValue large{cBinaryType, {}, 3000000};
    for (const char* const name : {"demo-app-command", "volume-leveler", "enable"}) {
        const std::vector<Finding> findings = Of(name, large);
        ASSERT_EQ(1u, findings.size()) << name;
        EXPECT_EQ(Severity::eError, findings[0].severity);
        EXPECT_EQ("it has 3000000 bytes; more than 1048576 are never read",
                  findings[0].problem);
        EXPECT_EQ("REG_BINARY of 3000000 bytes", findings[0].stored);
    }
}

TEST(Lint, LevelsMustHoldWhatTheySay) {
    const SchemaValue levels = SettingValue(pkey::cVisualizationDataPid);
    const auto problems = [&levels](const Bytes& blob) {
        MemoryStore store;
        store.Write(levels.keySet, levels.key, StoredValue::FromBlob(blob));
        return Lint(store).size();
    };
    Bytes blob(8 + 24 + 16);
    blob[4] = 1;
    blob[24] = 2;
    EXPECT_EQ(0u, problems(blob));
    EXPECT_EQ(0u, problems(Bytes(8)));
    EXPECT_EQ(1u, problems(Bytes(7)));
    blob[24] = 3;
    EXPECT_EQ(1u, problems(blob));
    blob[24] = 2;
    blob[4] = 2;
    EXPECT_EQ(1u, problems(blob));
    blob[4] = 1;
    for (std::size_t i = 24; i < 28; ++i)
        blob[i] = 0xFF;
    EXPECT_EQ(1u, problems(blob));
}

TEST(Lint, UnknownNamesAreNotesAndStay) {
    MemoryStore store;
    store.values[{eKeySetStatic, "Something"}] = StoredValue::FromDword(1);
    store.Write(eKeySetStatic, pkey::Setting(999), StoredValue::FromDword(1));
    // A flag belongs into the dynamic keys.
    store.Write(eKeySetStatic, SwitchValue({Family::ePreset, 1}, 0).key,
                StoredValue::FromDword(1));
    const std::vector<Finding> findings = Lint(store);
    EXPECT_EQ(3u, findings.size());
    EXPECT_FALSE(HasFindings(findings));
    EXPECT_TRUE(FixPlan(findings).values.empty());
}

TEST(Lint, ABitOfTheMaskThatStandsForNothingIsANote) {
    EXPECT_EQ(Severity::eNote, SeverityOf("engine-mask", StoredValue::FromDword(0x07FF)));
    EXPECT_EQ(std::nullopt,
              SeverityOf("engine-mask", StoredValue::FromDword(cEngineTechnologies)));
}

TEST(Lint, TheMostSevereComesFirst) {
    MemoryStore store;
    const SchemaValue amount = SettingNamed("volume-leveler").Stored(0);
    const SchemaValue boost = SettingNamed("speaker-virtualizer").Stored(8);
    store.Write(amount.keySet, amount.key, StoredValue::FromDword(11));
    store.Write(boost.keySet, boost.key, StoredValue::FromDword(11));
    const std::vector<Finding> findings = Lint(store);
    ASSERT_EQ(2u, findings.size());
    EXPECT_EQ(Severity::eError, findings[0].severity);
    EXPECT_EQ("volume-leveler", findings[1].Document()["name"]);
    EXPECT_EQ("movie", findings[1].Document()["profile"]);
}

}  // namespace
}  // namespace kora4::tools

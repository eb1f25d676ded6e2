// SPDX-License-Identifier: MIT
#include "settings/lint.h"

#include <gtest/gtest.h>

#include "unit/tools/memory_store.h"

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
    EXPECT_LE(findings.size(), 1u);
    return findings.empty() ? std::nullopt : std::optional(findings[0].severity);
}

StoredValue Text(const char16_t* text) {
    return StoredValue::FromText(text);
}

void Put(MemoryStore& store, const Plan& plan) {
    for (const PlannedValue& planned : plan.values) {
        if (planned.wanted)
            store.Write(planned.value.keySet, planned.value.key, *planned.wanted);
        else
            store.Delete(planned.value.keySet, planned.value.key);
    }
}

TEST(Lint, HealthyStoresHaveNoFindings) {
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        RandomStore random(seed);
        MemoryStore store;
        store.values = random.Values(0);
        for (const Finding& finding : Lint(store))
            ADD_FAILURE() << seed << ": " << finding.Line();
    }
}

TEST(Lint, BuiltInDefaultsPassWhateverTheLimitsOfTheApi) {
    for (const SchemaValue& value : Schema()) {
        for (const StoredValue& builtIn : value.Defaults()) {
            MemoryStore store;
            store.Write(value.keySet, value.key, builtIn);
            for (const Finding& finding : Lint(store))
                ADD_FAILURE() << finding.Line();
        }
    }
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
        EXPECT_EQ(HasFindings(findings), !plan.values.empty());
        Put(store, plan);
        for (const Finding& finding : Lint(store))
            EXPECT_EQ(finding.severity, Severity::eNote) << seed << ": " << finding.Line();
    }
    EXPECT_GT(repaired, 1000u);
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
    EXPECT_EQ(SeverityOf("volume-leveler", Text(u"7")), Severity::eError);
    EXPECT_EQ(SeverityOf("volume-leveler", {cDwordType, {7, 0}}), Severity::eError);
    EXPECT_EQ(SeverityOf("dialog-enhancer", StoredValue::FromDword(1)), Severity::eError);
    EXPECT_EQ(SeverityOf("dialog-enhancer", Text(u"loud")), Severity::eError);
    EXPECT_EQ(SeverityOf("dialog-enhancer", Text(u"nan")), Severity::eError);
    EXPECT_EQ(SeverityOf("graphic-eq.gains", Text(u"0100,0002,0000")), Severity::eError);
    EXPECT_EQ(SeverityOf("audio-regulator.isolated", Text(u"0029")), Severity::eError);
    EXPECT_EQ(SeverityOf("intelligent-eq", StoredValue::FromDword(6)), Severity::eError);
    EXPECT_EQ(SeverityOf("demo-app-command", Text(std::u16string(2048, u'x').c_str())),
              Severity::eError);
}

TEST(Lint, ValuesBeyondTheLimitsOfTheApiAreWarnings) {
    EXPECT_EQ(SeverityOf("volume-leveler", StoredValue::FromDword(11)), Severity::eWarning);
    EXPECT_EQ(SeverityOf("volume-leveler", StoredValue::FromDword(10)), std::nullopt);
    EXPECT_EQ(SeverityOf("dialog-enhancer", Text(u"1.000001")), Severity::eWarning);
    EXPECT_EQ(SeverityOf("dialog-enhancer", Text(u"1.000000")), std::nullopt);
    EXPECT_EQ(SeverityOf("speaker-virtualizer", Text(u"10.000000")), std::nullopt);
    EXPECT_EQ(SeverityOf("headphone-virtualizer", Text(u"10.000000")), Severity::eWarning);
    EXPECT_EQ(SeverityOf("graphic-eq.gains", Text(u"0100,0001,0c01")), Severity::eWarning);
    EXPECT_EQ(SeverityOf("graphic-eq.gains", Text(u"0100,0001,0c00")), std::nullopt);
    EXPECT_EQ(SeverityOf("profile", StoredValue::FromDword(9)), Severity::eWarning);
    EXPECT_EQ(SeverityOf("profile", StoredValue::FromDword(242)), std::nullopt);
    EXPECT_EQ(SeverityOf("volume-leveler.on", StoredValue::FromDword(2)), std::nullopt);
}

TEST(Lint, TextsWithoutTerminatorAreStoredProperlyWithTheirContent) {
    StoredValue stored = Text(u"0.500000");
    stored.bytes.resize(stored.bytes.size() - 2);
    const std::vector<Finding> findings = Of("dialog-enhancer", stored);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::eWarning);
    ASSERT_TRUE(findings[0].fix);
    EXPECT_EQ(findings[0].fix->wanted, Text(u"0.500000"));
}

TEST(Lint, OtherRepairsDeleteSoThatTheDefaultIsInForce) {
    const std::vector<Finding> findings = Of("volume-leveler", StoredValue::FromDword(11));
    ASSERT_EQ(findings.size(), 1u);
    ASSERT_TRUE(findings[0].fix);
    EXPECT_EQ(findings[0].fix->wanted, std::nullopt);
    EXPECT_EQ(findings[0].repair, "deleted, so that the default is in force: 0");
    EXPECT_EQ(findings[0].Line(),
              "warning: music: volume-leveler: it is out of range: the API sets 0 to 10 "
              "(stored: 11)");
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
    EXPECT_EQ(problems(blob), 0u);
    EXPECT_EQ(problems(Bytes(8)), 0u);
    EXPECT_EQ(problems(Bytes(7)), 1u);
    blob[24] = 3;
    EXPECT_EQ(problems(blob), 1u);
    blob[24] = 2;
    blob[4] = 2;
    EXPECT_EQ(problems(blob), 1u);
    blob[4] = 1;
    for (std::size_t i = 24; i < 28; ++i)
        blob[i] = 0xFF;
    EXPECT_EQ(problems(blob), 1u);
}

TEST(Lint, UnknownNamesAreNotesAndStay) {
    MemoryStore store;
    store.values[{eKeySetStatic, "Something"}] = StoredValue::FromDword(1);
    store.Write(eKeySetStatic, pkey::Setting(999), StoredValue::FromDword(1));
    // A flag belongs into the dynamic keys.
    store.Write(eKeySetStatic, SwitchValue({Family::ePreset, 1}, 0).key,
                StoredValue::FromDword(1));
    const std::vector<Finding> findings = Lint(store);
    EXPECT_EQ(findings.size(), 3u);
    EXPECT_FALSE(HasFindings(findings));
    EXPECT_TRUE(FixPlan(findings).values.empty());
}

TEST(Lint, ABitOfTheMaskThatStandsForNothingIsANote) {
    EXPECT_EQ(SeverityOf("engine-mask", StoredValue::FromDword(0x07FF)), Severity::eNote);
    EXPECT_EQ(SeverityOf("engine-mask", StoredValue::FromDword(0x03FF)), std::nullopt);
}

TEST(Lint, TheMostSevereComesFirst) {
    MemoryStore store;
    const SchemaValue amount = SettingNamed("volume-leveler").Stored(0);
    const SchemaValue boost = SettingNamed("speaker-virtualizer").Stored(8);
    store.Write(amount.keySet, amount.key, StoredValue::FromDword(11));
    store.Write(boost.keySet, boost.key, StoredValue::FromDword(11));
    const std::vector<Finding> findings = Lint(store);
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].severity, Severity::eError);
    EXPECT_EQ(findings[1].Document()["name"], "volume-leveler");
    EXPECT_EQ(findings[1].Document()["profile"], "movie");
}

}  // namespace
}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// The table of settings: names, what is allowed, and values parsed and formatted.
#include "settings/settings_table.h"

#include <gtest/gtest.h>

#include <set>

#include "base/failure.h"
#include "settings/setting_values.h"

namespace kora4::tools {
namespace {

Value Parsed(const char* name, const char* text, std::optional<Value> current = {}) {
    return ParseValue(SettingNamed(name), text, current);
}

// The message and the advice; empty when nothing is refused.
std::string Refusal(const char* name, const char* text, std::optional<Value> current = {}) {
    try {
        ParseValue(SettingNamed(name), text, current);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::eBadInput);
        return std::string(failure.what()) + " " + failure.Next();
    }
    return {};
}

Value Number(std::uint32_t number) {
    return number;
}

TEST(SettingsTable, HasEachNameOnce) {
    std::set<std::string> names;
    for (const Setting& setting : SettingsTable()) {
        EXPECT_TRUE(names.insert(setting.name).second) << setting.name;
        EXPECT_FALSE(setting.summary.empty()) << setting.name;
        EXPECT_EQ(setting.access == Access::eStoreOnly, *ReaderName(setting.methods) == 0)
            << setting.name;
        EXPECT_EQ(setting.access != Access::eReadWrite, *WriterName(setting.methods) == 0)
            << setting.name;
    }
    for (const char* const name : {"profile",
                                   "enable",
                                   "sampling-period",
                                   "engine-mask",
                                   "version",
                                   "trace-flags",
                                   "profile-editor-command",
                                   "dynamic-switch",
                                   "refresh-2-demo",
                                   "switch-54",
                                   "number-57",
                                   "volume-leveler",
                                   "volume-leveler.on",
                                   "volume-leveler.field-8",
                                   "graphic-eq",
                                   "graphic-eq.frequencies",
                                   "graphic-eq.gains",
                                   "intelligent-eq",
                                   "intelligent-eq.level",
                                   "intelligent-eq.frequencies",
                                   "dialog-enhancer",
                                   "headphone-virtualizer",
                                   "speaker-virtualizer.field-4",
                                   "next-gen-surround.on",
                                   "peak-limiter.on",
                                   "peak-limiter.field-3",
                                   "audio-regulator.frequencies",
                                   "audio-regulator.thresholds-1",
                                   "audio-regulator.thresholds-2",
                                   "audio-regulator.isolated",
                                   "audio-optimizer.gains-1",
                                   "audio-optimizer.gains-8",
                                   "name"})
        EXPECT_EQ(names.count(name), 1u) << name;
}

TEST(SettingsTable, EverySettingOfTheStoreIsARow) {
    for (const SchemaValue& value : Schema()) {
        const bool isSetting =
            value.role != Role::eTrigger && value.role != Role::eTableCounter &&
            value.role != Role::eSavedDemoState && value.role != Role::eVisualization;
        const Setting* const setting = SettingOf(value);
        ASSERT_EQ(setting != nullptr, isSetting) << value.Name();
        if (setting) {
            EXPECT_EQ(setting->Stored(value.profile.value_or(0)).key, value.key)
                << setting->name;
        }
    }
}

TEST(SettingsTable, FindsByNameAliasAndNumberInAnyCase) {
    EXPECT_EQ(SettingNamed("Volume-Leveler").name, "volume-leveler");
    EXPECT_EQ(SettingNamed("volume").name, "volume-leveler");
    EXPECT_EQ(SettingNamed("volume.on").name, "volume-leveler.on");
    EXPECT_EQ(SettingNamed("volume-leveler.switch").name, "volume-leveler.on");
    EXPECT_EQ(SettingNamed("3").name, "dialog-enhancer");
    EXPECT_EQ(SettingNamed("5.on").name, "speaker-virtualizer.on");
    EXPECT_EQ(FindSetting("no-such-thing"), nullptr);
}

TEST(SettingsTable, AnUnknownNameIsAnsweredWithTheNearest) {
    try {
        SettingNamed("volume-levler");
        FAIL() << "found";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::eBadInput);
        EXPECT_NE(failure.Next().find("volume-leveler"), std::string::npos) << failure.Next();
    }
}

TEST(SettingsTable, SwitchesOfTechnologies) {
    EXPECT_EQ(SwitchOf(SettingNamed("volume-leveler"))->name, "volume-leveler.on");
    EXPECT_EQ(SwitchOf(SettingNamed("graphic-eq"))->name, "graphic-eq.on");
    EXPECT_EQ(SwitchOf(SettingNamed("peak-limiter.on"))->name, "peak-limiter.on");
    EXPECT_EQ(SwitchOf(SettingNamed("enable"))->name, "enable");
    EXPECT_EQ(SwitchOf(SettingNamed("volume-leveler.field-6")), nullptr);
    EXPECT_EQ(SwitchOf(SettingNamed("sampling-period")), nullptr);
}

TEST(SettingsTable, ParsesWordsAndNumbers) {
    EXPECT_EQ(Parsed("enable", "ON"), Value(true));
    EXPECT_EQ(Parsed("enable", "0"), Value(false));
    EXPECT_EQ(Parsed("volume-leveler", " 7 "), Number(7));
    EXPECT_EQ(Parsed("dialog-enhancer", "0.5"), Value(0.5f));
    EXPECT_EQ(Parsed("intelligent-eq", "Warm"), Number(5));
    EXPECT_EQ(Parsed("intelligent-eq", "2"), Number(2));
    EXPECT_EQ(Parsed("profile", "p6"), Number(8));
    EXPECT_EQ(Parsed("sampling-period", "20 ms"), Number(20));
    EXPECT_EQ(Parsed("sampling-period", "20ms"), Number(20));
    EXPECT_EQ(Parsed("trace-flags", "0x01000400"), Number(0x01000400));
    EXPECT_EQ(Parsed("volume-leveler.field-6", "-20"), Value(-20.0f));
    EXPECT_EQ(Parsed("graphic-eq.gains", "1, -2 3.5"),
              Value(std::vector<float>{1.0f, -2.0f, 3.5f}));
    EXPECT_EQ(Parsed("audio-regulator.isolated", "on,off"),
              Value(std::vector<bool>{true, false}));
}

TEST(SettingsTable, RefusesWithWhatIsAllowed) {
    EXPECT_NE(Refusal("volume-leveler", "11").find("0 to 10"), std::string::npos);
    EXPECT_NE(Refusal("volume-leveler", "7.5").find("whole"), std::string::npos);
    EXPECT_NE(Refusal("dialog-enhancer", "1.01").find("0 to 1"), std::string::npos);
    EXPECT_NE(Refusal("enable", "maybe").find("on or off"), std::string::npos);
    EXPECT_NE(Refusal("intelligent-eq", "loud").find("balanced"), std::string::npos);
    EXPECT_NE(Refusal("profile", "demo-music").find("movie"), std::string::npos);
    EXPECT_NE(Refusal("graphic-eq.gains", "1,13").find("-12 to 12"), std::string::npos);
    EXPECT_FALSE(Refusal("graphic-eq.gains", "1,x").empty());
    EXPECT_FALSE(Refusal("dialog-enhancer", "nan").empty());
    EXPECT_FALSE(Refusal("dialog-enhancer", "").empty());
    EXPECT_FALSE(Refusal("sampling-period", "4294967296").empty());
    EXPECT_FALSE(Refusal("trace-flags", "0x").empty());
}

TEST(SettingsTable, TheStoreTakesWhatTheApiDoesNot) {
    EXPECT_EQ(ParseValue(SettingNamed("volume-leveler"), "262151", {}, Limits::eStore),
              Number(262151));
    EXPECT_EQ(ParseValue(SettingNamed("speaker-virtualizer"), "10", {}, Limits::eStore),
              Value(10.0f));
}

TEST(SettingsTable, RelativeValuesStopAtTheEndsOfTheRange) {
    EXPECT_EQ(Parsed("volume-leveler", "+1", Number(7)), Number(8));
    EXPECT_EQ(Parsed("volume-leveler", "-3", Number(7)), Number(4));
    EXPECT_EQ(Parsed("volume-leveler", "+9", Number(7)), Number(10));
    EXPECT_EQ(Parsed("volume-leveler", "-1", Number(262151)), Number(10));
    EXPECT_EQ(Parsed("volume-leveler", "-20%", Number(7)), Number(5));
    EXPECT_EQ(Parsed("volume-leveler", "+1%", Number(7)), Number(8));
    EXPECT_EQ(Parsed("headphone-virtualizer", "+50%", Value(1.0f)), Value(4.0f));
    EXPECT_EQ(Parsed("dialog-enhancer", "-1", Value(0.25f)), Value(0.0f));
    EXPECT_EQ(Parsed("sampling-period", "+10", Number(50)), Number(60));
    EXPECT_EQ(Parsed("sampling-period", "-100", Number(50)), Number(0));
    EXPECT_NE(Refusal("sampling-period", "+10%", Number(50)).find("range"), std::string::npos);
    EXPECT_FALSE(Refusal("volume-leveler", "+1").empty());
    EXPECT_FALSE(Refusal("volume-leveler", "+", Number(7)).empty());
}

TEST(SettingsTable, FormattedValuesParse) {
    for (const Setting& setting : SettingsTable()) {
        if (!setting.isStored || !setting.Stored(0).Default())
            continue;
        const Value value = *Decode(setting.Stored(0), *setting.Stored(0).Default());
        const std::string text = FormatValue(setting, value);
        EXPECT_EQ(ParseValue(setting, text, {}, Limits::eStore), value)
            << setting.name << ": " << text;
    }
}

TEST(SettingsTable, ValuesInJson) {
    EXPECT_EQ(ToJson(SettingNamed("profile"), Number(4)).dump(), "\"p2\"");
    EXPECT_EQ(ToJson(SettingNamed("profile"), Number(77)).dump(), "77");
    EXPECT_EQ(ToJson(SettingNamed("dialog-enhancer"), Value(0.33f)).dump(), "0.33");
    EXPECT_EQ(ToJson(SettingNamed("enable"), Value(true)).dump(), "true");
    EXPECT_EQ(ToJson(SettingNamed("graphic-eq.frequencies"), Value(std::vector<float>{32, 64}))
                  .dump(),
              "[32.0,64.0]");
}

TEST(SettingsTable, UnitsAreShownWhenAsked) {
    EXPECT_EQ(FormatValue(SettingNamed("sampling-period"), Number(50), true), "50 ms");
    EXPECT_EQ(FormatValue(SettingNamed("sampling-period"), Number(50)), "50");
    EXPECT_EQ(FormatValue(SettingNamed("intelligent-eq"), Number(1), true), "open");
    EXPECT_EQ(FormatValue(SettingNamed("engine-mask"), Number(0x3ff)), "0x000003ff");
}

TEST(SettingsTable, CompletionOffersWhatCanBeSet) {
    EXPECT_EQ(CompletionWords(SettingNamed("enable")), (std::vector<std::string>{"on", "off"}));
    EXPECT_EQ(CompletionWords(SettingNamed("profile")).size(), 9u);
    EXPECT_EQ(CompletionWords(SettingNamed("intelligent-eq")).size(), 6u);
    EXPECT_TRUE(CompletionWords(SettingNamed("volume-leveler")).empty());
}

TEST(Names, ProfilesByWordAndNumber) {
    EXPECT_EQ(ParseProfile("Music"), 1u);
    EXPECT_EQ(ParseProfile("241"), 241u);
    EXPECT_EQ(ProfileName(8), "p6");
    EXPECT_EQ(ProfileName(77), "77");
    for (const char* const bad : {"77", "p7", "", "-1", "1x"})
        EXPECT_THROW(ParseProfile(bad), Failure) << bad;
}

TEST(Names, TechnologiesByWordAndNumberOfTheApi) {
    EXPECT_STREQ("intelligent-eq", FindTechnology("2")->word);
    EXPECT_STREQ("peak-limiter", FindTechnology("Peak-Limiter")->word);
    EXPECT_EQ(nullptr, FindTechnology("6"));
}

}  // namespace
}  // namespace kora4::tools

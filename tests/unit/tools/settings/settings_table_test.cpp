// SPDX-License-Identifier: MIT
// The table of settings: names, what is allowed, and values parsed and formatted.
#include "settings/settings_table.h"

#include <gmock/gmock.h>

#include <set>

#include "base/failure.h"
#include "contract/defaults.h"
#include "contract/profiles.h"
#include "settings/setting_values.h"

namespace kora4::tools {
namespace {

using testing::HasSubstr;

Value Parsed(const char* name, const char* text, std::optional<Value> current = {}) {
    return ParseValue(SettingNamed(name), text, current);
}

// The message and the advice; empty when nothing is refused.
std::string Refusal(const char* name, const char* text, std::optional<Value> current = {}) {
    try {
        ParseValue(SettingNamed(name), text, current);
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eBadInput, failure.Code());
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
        EXPECT_EQ(1u, names.count(name)) << name;
}

TEST(SettingsTable, EverySettingOfTheStoreIsARow) {
    for (const SchemaValue& value : Schema()) {
        const bool isSetting =
            value.role != Role::eTrigger && value.role != Role::eTableCounter &&
            value.role != Role::eSavedDemoState && value.role != Role::eVisualization;
        const Setting* const setting = SettingOf(value);
        ASSERT_EQ(isSetting, setting != nullptr) << value.Name();
        if (setting) {
            EXPECT_EQ(value.key, setting->Stored(value.profile.value_or(0)).key)
                << setting->name;
        }
    }
}

TEST(SettingsTable, FindsByNameAliasAndNumberInAnyCase) {
    EXPECT_EQ("volume-leveler", SettingNamed("Volume-Leveler").name);
    EXPECT_EQ("volume-leveler", SettingNamed("volume").name);
    EXPECT_EQ("volume-leveler.on", SettingNamed("volume.on").name);
    EXPECT_EQ("volume-leveler.on", SettingNamed("volume-leveler.switch").name);
    EXPECT_EQ("dialog-enhancer", SettingNamed("3").name);
    EXPECT_EQ("speaker-virtualizer.on", SettingNamed("5.on").name);
    EXPECT_EQ("peak-limiter.on", SettingNamed("peak-limiter").name);
    EXPECT_EQ(nullptr, FindSetting("no-such-thing"));
}

TEST(SettingsTable, AnUnknownNameIsAnsweredWithTheNearest) {
    try {
        SettingNamed("volume-levler");
        FAIL() << "found";
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eBadInput, failure.Code());
        EXPECT_NE(std::string::npos, failure.Next().find("volume-leveler")) << failure.Next();
    }
}

TEST(SettingsTable, SwitchesOfTechnologies) {
    EXPECT_EQ("volume-leveler.on", SwitchOf(SettingNamed("volume-leveler"))->name);
    EXPECT_EQ("graphic-eq.on", SwitchOf(SettingNamed("graphic-eq"))->name);
    EXPECT_EQ("peak-limiter.on", SwitchOf(SettingNamed("peak-limiter.on"))->name);
    EXPECT_EQ("enable", SwitchOf(SettingNamed("enable"))->name);
    EXPECT_EQ(nullptr, SwitchOf(SettingNamed("volume-leveler.field-6")));
    EXPECT_EQ(nullptr, SwitchOf(SettingNamed("sampling-period")));
}

TEST(SettingsTable, ParsesWordsAndNumbers) {
    EXPECT_EQ(Value(true), Parsed("enable", "ON"));
    EXPECT_EQ(Value(false), Parsed("enable", "0"));
    EXPECT_EQ(Number(7), Parsed("volume-leveler", " 7 "));
    EXPECT_EQ(Value(0.5f), Parsed("dialog-enhancer", "0.5"));
    EXPECT_EQ(Number(5), Parsed("intelligent-eq", "Warm"));
    EXPECT_EQ(Number(2), Parsed("intelligent-eq", "2"));
    EXPECT_EQ(Number(8), Parsed("profile", "p6"));
    EXPECT_EQ(Number(20), Parsed("sampling-period", "20 ms"));
    EXPECT_EQ(Number(20), Parsed("sampling-period", "20ms"));
    EXPECT_EQ(Number(0x01000400), Parsed("trace-flags", "0x01000400"));
    EXPECT_EQ(Value(-20.0f), Parsed("volume-leveler.field-6", "-20"));
    EXPECT_EQ(Value(std::vector<float>{1.0f, -2.0f, 3.5f}),
              Parsed("graphic-eq.gains", "1, -2 3.5"));
    EXPECT_EQ(Value(std::vector<bool>{true, false}),
              Parsed("audio-regulator.isolated", "on,off"));
}

TEST(SettingsTable, RefusesWithWhatIsAllowed) {
    EXPECT_NE(std::string::npos, Refusal("volume-leveler", "11").find("0 to 10"));
    EXPECT_NE(std::string::npos, Refusal("volume-leveler", "7.5").find("whole"));
    EXPECT_NE(std::string::npos, Refusal("dialog-enhancer", "1.01").find("0 to 1"));
    EXPECT_NE(std::string::npos, Refusal("enable", "maybe").find("on or off"));
    EXPECT_NE(std::string::npos, Refusal("intelligent-eq", "loud").find("balanced"));
    EXPECT_NE(std::string::npos, Refusal("profile", "demo-music").find("movie"));
    EXPECT_NE(std::string::npos, Refusal("graphic-eq.gains", "1,13").find("-12 to 12"));
    EXPECT_FALSE(Refusal("graphic-eq.gains", "1,x").empty());
    EXPECT_FALSE(Refusal("dialog-enhancer", "nan").empty());
    EXPECT_FALSE(Refusal("dialog-enhancer", "").empty());
    EXPECT_FALSE(Refusal("sampling-period", "4294967296").empty());
    EXPECT_FALSE(Refusal("trace-flags", "0x").empty());
}

TEST(SettingsTable, RefusesInTheWordsThatWereTyped) {
    EXPECT_THAT(Refusal("volume-leveler", "0x1F"),
                HasSubstr("Invalid value '0x1F' for 'volume-leveler': out of range, 0 to 10."));
    EXPECT_THAT(Refusal("dialog-enhancer", " 7 "), HasSubstr("Invalid value '7' for"));
    EXPECT_THAT(Refusal("sampling-period", "x ms"), HasSubstr("'x ms'"));
    EXPECT_THAT(Refusal("graphic-eq.gains", "1, 13"), HasSubstr("'13'"));
}

TEST(SettingsTable, ProfilesHaveNoSteps) {
    for (const char* const step : {"+1", "-1"})
        EXPECT_THAT(Refusal("profile", step), HasSubstr("there are no steps")) << step;
    EXPECT_EQ(Number(1), Parsed("profile", "1"));
}

TEST(SettingsTable, NumbersBehindAnEqualsSignAreNeverSteps) {
    const Setting& boost = SettingNamed("speaker-virtualizer");
    EXPECT_EQ(Value(-5.0f), ParseValue(boost, "=-5", Value(3.0f), Limits::eStore));
    EXPECT_EQ(Value(5.0f), ParseValue(boost, "= 5", Value(3.0f), Limits::eStore));
    EXPECT_EQ(Value(-5.0f), ParseValue(SettingNamed("volume-leveler.field-6"), "-5", {}));
    EXPECT_FALSE(Refusal("volume-leveler", "=").empty());
}

TEST(SettingsTable, TheStoreTakesWhatTheApiDoesNot) {
    EXPECT_EQ(Number(defaults::cVolumeAmount[cMovieProfile]),
              ParseValue(SettingNamed("volume-leveler"), "262151", {}, Limits::eStore));
    EXPECT_EQ(Value(10.0f),
              ParseValue(SettingNamed("speaker-virtualizer"), "10", {}, Limits::eStore));
}

TEST(SettingsTable, RelativeValuesStopAtTheEndsOfTheRange) {
    EXPECT_EQ(Number(8), Parsed("volume-leveler", "+1", Number(7)));
    EXPECT_EQ(Number(4), Parsed("volume-leveler", "-3", Number(7)));
    EXPECT_EQ(Number(10), Parsed("volume-leveler", "+9", Number(7)));
    EXPECT_EQ(Number(10),
              Parsed("volume-leveler", "-1", Number(defaults::cVolumeAmount[cMovieProfile])));
    EXPECT_EQ(Number(5), Parsed("volume-leveler", "-20%", Number(7)));
    EXPECT_EQ(Number(8), Parsed("volume-leveler", "+1%", Number(7)));
    EXPECT_EQ(Value(4.0f), Parsed("headphone-virtualizer", "+50%", Value(1.0f)));
    EXPECT_EQ(Value(0.0f), Parsed("dialog-enhancer", "-1", Value(0.25f)));
    EXPECT_EQ(Number(60), Parsed("sampling-period", "+10", Number(50)));
    EXPECT_EQ(Number(0), Parsed("sampling-period", "-100", Number(50)));
    EXPECT_NE(std::string::npos, Refusal("sampling-period", "+10%", Number(50)).find("range"));
    EXPECT_FALSE(Refusal("volume-leveler", "+1").empty());
    EXPECT_FALSE(Refusal("volume-leveler", "+", Number(7)).empty());
}

TEST(SettingsTable, SharesAreOfTheRange) {
    EXPECT_EQ(Number(5), Parsed("volume-leveler", "50%"));
    EXPECT_EQ(Number(3), Parsed("volume-leveler", "25 %"));
    EXPECT_EQ(Number(10), Parsed("volume-leveler", "100%", Number(1)));
    EXPECT_EQ(Value(3.0f), Parsed("headphone-virtualizer", "50%"));
    EXPECT_NE(std::string::npos, Refusal("volume-leveler", "101%").find("0 to 10"));
    EXPECT_FALSE(Refusal("volume-leveler", "x%").empty());
    EXPECT_FALSE(Refusal("volume-leveler", "%").empty());
    for (const char* const name : {"sampling-period", "intelligent-eq", "profile"})
        EXPECT_NE(std::string::npos, Refusal(name, "50%").find("range")) << name;
}

TEST(SettingsTable, ToggleIsTheOppositeOfASwitch) {
    EXPECT_EQ(Value(false), Parsed("enable", "toggle", Value(true)));
    EXPECT_EQ(Value(true), Parsed("enable", "Toggle", Value(false)));
    EXPECT_FALSE(Refusal("enable", "toggle").empty()) << "of what?";
    EXPECT_FALSE(Refusal("volume-leveler", "toggle", Number(1)).empty());
}

TEST(SettingsTable, CarriedAreThoseWithoutAMeaningOfTheirOwn) {
    for (const Setting& setting : SettingsTable()) {
        const std::string& name = setting.name;
        const bool isNumbered = name.find(".field-") != std::string::npos ||
                                name.starts_with("switch-") || name.starts_with("number-") ||
                                name.starts_with("refresh-") || name == "dynamic-switch";
        EXPECT_EQ(isNumbered, setting.isCarried) << name;
    }
}

TEST(SettingsTable, FormattedValuesParse) {
    for (const Setting& setting : SettingsTable()) {
        if (!setting.isStored || !setting.Stored(0).Default())
            continue;
        const Value value = *Decode(setting.Stored(0), *setting.Stored(0).Default());
        const std::string text = FormatValue(setting, value);
        EXPECT_EQ(value, ParseValue(setting, text, {}, Limits::eStore))
            << setting.name << ": " << text;
    }
}

TEST(SettingsTable, ValuesInJson) {
    EXPECT_EQ("\"p2\"", ToJson(SettingNamed("profile"), Number(4)).dump());
    EXPECT_EQ("77", ToJson(SettingNamed("profile"), Number(77)).dump());
    EXPECT_EQ("0.33", ToJson(SettingNamed("dialog-enhancer"), Value(0.33f)).dump());
    EXPECT_EQ("true", ToJson(SettingNamed("enable"), Value(true)).dump());
    EXPECT_EQ("[32.0,64.0]",
              ToJson(SettingNamed("graphic-eq.frequencies"), Value(std::vector<float>{32, 64}))
                  .dump());
}

TEST(SettingsTable, UnitsAreShownWhenAsked) {
    EXPECT_EQ("50 ms", FormatValue(SettingNamed("sampling-period"), Number(50), true));
    EXPECT_EQ("50", FormatValue(SettingNamed("sampling-period"), Number(50)));
    EXPECT_EQ("open", FormatValue(SettingNamed("intelligent-eq"), Number(1), true));
    EXPECT_EQ("0x000003ff", FormatValue(SettingNamed("engine-mask"), Number(0x3ff)));
}

TEST(SettingsTable, CompletionOffersWhatCanBeSet) {
    EXPECT_EQ((std::vector<std::string>{"on", "off"}), CompletionWords(SettingNamed("enable")));
    EXPECT_EQ(9u, CompletionWords(SettingNamed("profile")).size());
    EXPECT_EQ(6u, CompletionWords(SettingNamed("intelligent-eq")).size());
    EXPECT_TRUE(CompletionWords(SettingNamed("volume-leveler")).empty());
}

TEST(Names, ProfilesByWordAndNumber) {
    EXPECT_EQ(1u, ParseProfile("Music"));
    EXPECT_EQ(cDemoMusicProfile, ParseProfile(std::to_string(cDemoMusicProfile)));
    EXPECT_EQ("p6", ProfileName(8));
    EXPECT_EQ("77", ProfileName(77));
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

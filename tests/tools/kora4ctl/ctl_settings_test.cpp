// SPDX-License-Identifier: MIT
// kora4ctl get, set, toggle, describe and list.
#include <optional>
#include <regex>

#include "registry/stored_value.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"
#include "support/raw_store.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

using tools::Access;
using tools::Kind;
using tools::Role;
using tools::Setting;
using tools::Value;

constexpr DWORD cTimedOut = 6;

constexpr char cReadingShape[] =
    R"({"name": "string", "value": "any", "unit": "string|null", "profile": "string|null",
        "stored": "any", "inRange": "boolean", "source": "string"})";
constexpr char cChangeShape[] =
    R"({"name": "string", "value": "any", "unit": "string|null", "profile": "string|null",
        "stored": "any", "inRange": "boolean", "source": "string", "old": "any"})";
constexpr char cDescriptionShape[] =
    R"({"name": "string", "summary": "string", "type": "string", "unit": "string|null",
        "allowed": "string", "lowest": "number|null", "highest": "number|null",
        "words": {"*": "integer"}, "default": "any", "perProfile": "boolean",
        "access": "string", "reader": "string|null", "writer": "string|null",
        "keySet": "string|null", "valueName": "string|null", "value": "any",
        "profile": "string|null", "problem": "string|null"})";

std::optional<Value> DecodedOf(const Setting& setting, std::uint32_t profile) {
    const tools::SchemaValue place = setting.Stored(profile);
    const std::optional<RawValue> raw = ReadRaw(place.keySet, place.key);
    return raw ? tools::Decode(place, {raw->type, raw->data}) : std::nullopt;
}

// A value of the right kind that is not a default.
std::string TrialText(const Setting& setting) {
    if (setting.role == Role::eActiveProfile)
        return "games";
    switch (setting.kind) {
        case Kind::eSwitch:
            return "off";
        case Kind::eNumber:
            return "4";
        case Kind::eCurveIndex:
            return "focused";
        case Kind::eFloat:
            return "0.625";
        case Kind::eNumericArray:
            return "1 2 3 4 5 6 7 8 9 10";
        case Kind::eFlagArray:
            return "on off on";
        default:
            return "C:\\Program Files\\\xC3\xBC.exe";
    }
}

class CtlSettings : public CtlTest {
  protected:
    // Sets the setting, and looks at it in the answer, in the store, and with get.
    void SetAndRead(const Setting& setting, std::uint32_t profile, const Words& options) {
        SCOPED_TRACE(setting.name);
        const std::string text = TrialText(setting);
        const Value wanted = tools::ParseValue(setting, text, {}, tools::Limits::eStore);
        Words set = {"set", setting.name, text};
        set.insert(set.end(), options.begin(), options.end());
        const Json change = DoneJson(set);
        EXPECT_TRUE(HasShape(change, cChangeShape));
        EXPECT_EQ(change["value"], tools::ToJson(setting, wanted));
        EXPECT_EQ(wanted, DecodedOf(setting, profile));
    }
};

TEST_F(CtlSettings, ListHasEveryRowInOrderWithItsDefault) {
    const Json list = DoneJson({"list", "--all"});
    const std::vector<Setting>& table = tools::SettingsTable();
    ASSERT_EQ(table.size(), list.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        SCOPED_TRACE(table[i].name);
        EXPECT_EQ(table[i].name, list[i]["name"]);
        if (!table[i].isStored || table[i].role == Role::eName)
            continue;
        const tools::SchemaValue place = table[i].Stored(0);
        const auto standIn = place.Default();
        const auto value = standIn ? tools::Decode(place, *standIn) : std::nullopt;
        EXPECT_EQ(value ? tools::ToJson(table[i], *value) : Json(), list[i]["value"]);
    }
    EXPECT_TRUE(HasShape(list, R"([{"name": "string", "value": "any", "unit": "string|null",
                   "profile": "string|null", "stored": "any", "inRange": "boolean",
                   "source": "string", "allowed": "string", "access": "string"}])"));
}

TEST_F(CtlSettings, GetTakesEveryNameAndPrintsOneLineForEach) {
    Words arguments = {"get"};
    for (const Setting& setting : tools::SettingsTable())
        arguments.push_back(setting.name);
    const ToolResult result = RunCtl(arguments);
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(tools::SettingsTable().size(), result.Lines().size()) << result;
    EXPECT_EQ("movie", result.Lines().front());
}

TEST_F(CtlSettings, EveryRowThatCanBeSetIsSetInTheActiveProfile) {
    for (const Setting& setting : tools::SettingsTable()) {
        if (setting.access == Access::eReadOnly || setting.role == Role::eActiveProfile ||
            setting.role == Role::eName)
            continue;
        SetAndRead(setting, 0, {});
    }
}

TEST_F(CtlSettings, EveryRowOfAProfileIsSetInOneThatIsNotActive) {
    for (const Setting& setting : tools::SettingsTable()) {
        if (!setting.perProfile || setting.access == Access::eReadOnly ||
            setting.role == Role::eName)
            continue;
        const std::optional<Value> before = DecodedOf(setting, 0);
        SetAndRead(setting, 2, {"--profile", "games"});
        EXPECT_EQ(before, DecodedOf(setting, 0)) << setting.name;
    }
}

TEST_F(CtlSettings, EveryRowWithoutASetterIsRefusedAndGoesIntoTheStoreWhenAsked) {
    for (const Setting& setting : tools::SettingsTable()) {
        if (setting.access != Access::eReadOnly)
            continue;
        SCOPED_TRACE(setting.name);
        RefusedUnchanged({"set", setting.name, TrialText(setting)}, cBadInput, setting.name);
        if (setting.isStored)
            SetAndRead(setting, 0, {"--stored"});
        else
            RefusedUnchanged({"set", setting.name, "1", "--stored"}, cBadInput, setting.name);
    }
}

TEST_F(CtlSettings, EverySwitchTogglesBothWays) {
    for (const Setting& setting : tools::SettingsTable()) {
        if (!setting.IsSwitch())
            continue;
        SCOPED_TRACE(setting.name);
        const Json first = DoneJson({"toggle", setting.name});
        EXPECT_EQ(first["old"].get<bool>(), !first["value"].get<bool>());
        EXPECT_EQ(DecodedOf(setting, 0), Value(first["value"].get<bool>()));
        const Json second = DoneJson({"toggle", setting.name});
        EXPECT_EQ(second["value"], first["old"]);
    }
}

TEST_F(CtlSettings, DescribeTellsEveryRow) {
    const Json descriptions = DoneJson({"describe", "--all"});
    const std::vector<Setting>& table = tools::SettingsTable();
    ASSERT_EQ(table.size(), descriptions.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        SCOPED_TRACE(table[i].name);
        EXPECT_TRUE(HasShape(descriptions[i], cDescriptionShape));
        EXPECT_EQ(descriptions[i]["name"], table[i].name);
        EXPECT_EQ(descriptions[i]["allowed"], table[i].Allowed());
        EXPECT_EQ(nullptr, descriptions[i]["problem"]);
    }
}

TEST_F(CtlSettings, DescribeSaysInWordsWhatAndWhere) {
    const std::string text = Done({"describe", "dialog-enhancer", "--profile", "music"});
    for (const char* const part :
         {"0 to 1", "0.33", "GetSimplePatchValue, SetSimplePatchValue",
          "static keys, {5E0A0103-2C71-4B9E-8F36-D41A07C9B2E5},3", "in music, the default"})
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\n" << text;
    EXPECT_NE(std::string::npos, Done({"describe", "volume-leveler"})
                                     .find("movie 262151, music 0, games 0, custom 262151"));
}

TEST_F(CtlSettings, DescribeNeedsNoLibrary) {
    Unregister();
    const std::string text = Done({"describe", "volume-leveler"});
    EXPECT_NE(std::string::npos, text.find("0 to 10")) << text;
    EXPECT_NE(std::string::npos, text.find("not registered")) << text;
    EXPECT_NE(nullptr, DoneJson({"describe", "volume-leveler"})["problem"]);
}

TEST_F(CtlSettings, HelpOfGetAndSetHasTheTable) {
    const std::string get = Done({"get", "--help"});
    // Long lines are broken.
    const std::string set =
        std::regex_replace(Done({"set", "--help"}), std::regex("\\n +"), " ");
    for (const Setting& setting : tools::SettingsTable()) {
        const bool isThere = get.find("  " + setting.name + " ") != std::string::npos;
        EXPECT_EQ(!setting.isCarried, isThere) << setting.name;
        EXPECT_NE(std::string::npos, set.find(setting.Allowed())) << setting.name;
    }
}

TEST_F(CtlSettings, GetPrintsJustTheValue) {
    EXPECT_EQ("262151\n", Done({"get", "volume-leveler"}));
    EXPECT_EQ("on\n", Done({"get", "enable"}));
    EXPECT_EQ("50\n7.2.7000.4\n", Done({"get", "sampling-period", "version"}));
}

TEST_F(CtlSettings, GetHasAnObjectForOneNameAndAnArrayForSeveral) {
    const Json one = DoneJson({"get", "volume-leveler"});
    EXPECT_TRUE(HasShape(one, cReadingShape));
    EXPECT_EQ("movie", one["profile"]);
    EXPECT_EQ(false, one["inRange"]);
    EXPECT_EQ(nullptr, one["stored"]);
    EXPECT_EQ("api", one["source"]);
    const Json two = DoneJson({"get", "enable", "trace-flags"});
    ASSERT_EQ(2u, two.size());
    EXPECT_TRUE(HasShape(two, "[" + std::string(cReadingShape) + "]"));
    EXPECT_EQ("store", two[1]["source"]);
}

TEST_F(CtlSettings, AnArgumentWithThousandsOfBracketsIsRefused) {
    constexpr std::size_t cFullStack = 15000;
    const std::string brackets(cFullStack, '[');
    RefusedUnchanged({"get", brackets + "enable" + std::string(cFullStack, ']')}, cUsage,
                     "too many brackets");
}

TEST_F(CtlSettings, SetTellsOldAndNewAndOtherClientsSeeIt) {
    EXPECT_EQ("volume-leveler: 262151 -> 4\n", Done({"set", "volume-leveler", "4"}));
    KORA4PatchValueUnion value = {};
    value.m_technology = eVolumeLeveler;
    EXPECT_EQ(S_OK, Client().GetSimplePatchValue(&value));
    EXPECT_EQ(4u, value.m_values.m_volumeSlider);
    EXPECT_EQ("profile: movie -> music\n", Done({"set", "profile", "music"}));
    LONG profile = 0;
    EXPECT_EQ(S_OK, Client().GetActiveProfile(&profile));
    EXPECT_EQ(1, profile);
}

TEST_F(CtlSettings, OtherClientsAreToldOfBothWays) {
    const auto recorder = CallbackRecorder::Create();
    ASSERT_EQ(S_OK, Client().RegisterChangeNotifications(recorder.Get()));
    Done({"set", "dialog-enhancer", "0.75"});
    EXPECT_TRUE(recorder->WaitForLine("OnSimplePatchValueChange(eDialogEnhancer, 0.75)"));
    Done({"set", "volume-leveler.field-6", "-18.5"});
    EXPECT_TRUE(recorder->WaitForLine("OnSimplePatchValueChange(eVolumeLeveler, 262151)"));
    Done({"toggle", "enable"});
    EXPECT_TRUE(recorder->WaitForLine("OnEnableStateChange(0)"));
}

TEST_F(CtlSettings, ATechnologyTakesWordsForItsSwitchAndNumbersForItsValue) {
    EXPECT_EQ("volume-leveler.on: on -> off\n", Done({"set", "volume-leveler", "off"}));
    EXPECT_EQ("volume-leveler: 262151 -> 1\n", Done({"set", "volume-leveler", "1"}));
    EXPECT_EQ("graphic-eq.on: on -> off\n", Done({"toggle", "graphic-eq"}));
    EXPECT_EQ("peak-limiter.on: on -> off\n", Done({"set", "peak-limiter", "no"}));
    EXPECT_EQ("intelligent-eq: balanced -> warm\n", Done({"set", "intelligent-eq", "Warm"}));
    EXPECT_EQ("intelligent-eq: warm -> focused\n", Done({"set", "intelligent-eq", "2"}));
    EXPECT_EQ("volume-leveler: 1 -> 5\n", Done({"set", "0", "5"}));
}

TEST_F(CtlSettings, RelativeValuesStopAtTheEndsOfTheRange) {
    Done({"set", "volume-leveler", "7"});
    EXPECT_EQ("volume-leveler: 7 -> 8\n", Done({"set", "volume-leveler", "+1"}));
    EXPECT_EQ("volume-leveler: 8 -> 5\n", Done({"set", "volume-leveler", "-30%"}));
    EXPECT_EQ("volume-leveler: 5 -> 10\n", Done({"set", "volume-leveler", "+9"}));
    EXPECT_EQ("dialog-enhancer: 0.33 -> 0\n", Done({"set", "dialog-enhancer", "-50%"}));
    EXPECT_EQ("volume-leveler: 0 -> 1\n",
              Done({"set", "volume-leveler", "+1", "--profile", "games"}));
}

TEST_F(CtlSettings, OnlyStoredGoesPastTheLimitsAndNotPastTheType) {
    RefusedUnchanged({"set", "volume-leveler", "11"}, cBadInput, "0 to 10");
    RefusedUnchanged({"set", "volume-leveler", "11", "--profile", "p2"}, cBadInput, "0 to 10");
    EXPECT_EQ("volume-leveler: 262151 -> 11\n",
              Done({"set", "volume-leveler", "11", "--stored"}));
    KORA4PatchValueUnion value = {};
    value.m_technology = eVolumeLeveler;
    EXPECT_EQ(S_OK, Client().GetSimplePatchValue(&value));
    EXPECT_EQ(11u, value.m_values.m_volumeSlider);
    RefusedUnchanged({"set", "volume-leveler", "loud", "--stored"}, cBadInput, "loud");
    RefusedUnchanged({"set", "intelligent-eq", "6", "--stored"}, cBadInput, "6");
    RefusedUnchanged({"set", "dialog-enhancer", "nan", "--stored"}, cBadInput, "nan");
}

TEST_F(CtlSettings, UnknownNamesGetTheNearestOnes) {
    Refused({"get", "volum-leveler"}, cBadInput, "volume-leveler");
    Refused({"set", "dialog-enhacer", "1"}, cBadInput, "dialog-enhancer");
    Refused({"get", "enable", "--profil", "music"}, cUsage, "--profile");
    Refused({"get", "volume-leveler", "--profile", "musik"}, cBadInput, "music");
    Refused({"toggle", "sampling-period"}, cBadInput, "not a switch");
    Refused({"get", "enable", "--profile", "music"}, cBadInput, "all profiles");
    Refused({"get"}, cUsage, "NAME");
    Refused({"set", "enable"}, cUsage, "VALUE");
}

TEST_F(CtlSettings, InADemoNothingIsSetAndThatIsSaid) {
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, TRUE));
    RefusedUnchanged({"set", "volume-leveler", "4"}, cRefused, "demo-music");
    RefusedUnchanged({"set", "volume-leveler", "off"}, cRefused, "force-leave");
    RefusedUnchanged({"set", "volume-leveler.field-6", "1"}, cRefused, "demo-music");
    RefusedUnchanged({"set", "graphic-eq.gains", "1 1 1 1 1 1 1 1 1 1"}, cRefused, "demo");
    RefusedUnchanged({"toggle", "dialog-enhancer"}, cRefused, "demo-music");
    RefusedUnchanged({"set", "profile", "movie"}, cRefused, "KORA4_S_DEMO_MODE_ACTIVE");
    EXPECT_EQ("enable: on -> off\n", Done({"set", "enable", "off"}));
    EXPECT_EQ("volume-leveler: 262151 -> 4\n",
              Done({"set", "volume-leveler", "4", "--profile", "movie"}));
}

TEST_F(CtlSettings, BandsKeepToOneRule) {
    const std::string ten = "10 20 30 40 50 60 70 80 90 100";
    std::string many;
    for (int i = 1; i <= 45; ++i)
        many += std::to_string(i * 100) + " ";
    for (const Words& profile : {Words{}, Words{"--profile", "games"}}) {
        const auto set = [&profile](const char* name, const std::string& value) {
            Words words{"set", name, value};
            words.insert(words.end(), profile.begin(), profile.end());
            return words;
        };
        const char* const frequencies = "graphic-eq.frequencies";
        RefusedUnchanged(set(frequencies, many), cBadInput, "Expected 10 frequencies, got 45.");
        RefusedUnchanged(set(frequencies, "1 2 3"), cBadInput,
                         "Expected 10 frequencies, got 3.");
        RefusedUnchanged(set("graphic-eq.gains", "1 2 3"), cBadInput,
                         "Expected 10 gains, got 3.");
        RefusedUnchanged(set(frequencies, "10 20 30 40 50 60 70 80 100 90"), cBadInput,
                         "Band 10 is at 90 Hz, which is not above the previous band.");
        RefusedUnchanged(set(frequencies, "10.1 10.9 30 40 50 60 70 80 90 100"), cBadInput,
                         "Band 2 is at 10.9 Hz");
        RefusedUnchanged(set(frequencies, "0 20 30 40 50 60 70 80 90 100"), cBadInput,
                         "frequencies range from 1 to 32767 Hz");
        Done(set(frequencies, ten));
        EXPECT_EQ(cDone, RunCtl({"lint"}).exitCode);
    }
    RefusedUnchanged({"set", "audio-optimizer.frequencies", "20 10"}, cBadInput, "Band 2");
    Done({"set", "graphic-eq.frequencies", "300 200", "--stored", "--profile", "games"});
    RefusedUnchanged({"eq", "set", "--band", "1", "3", "--profile", "games"}, cBadInput,
                     "Band 2 is at 200 Hz");
    RefusedUnchanged({"set", "graphic-eq.gains", "1 1", "--profile", "games"}, cBadInput,
                     "Band 2 is at 200 Hz");
}

TEST_F(CtlSettings, AnEmptyProfileIsNone) {
    for (const Words& arguments :
         {Words{"set", "volume-leveler", "3", "--profile", ""},
          Words{"eq", "flat", "--profile", ""}, Words{"get", "volume-leveler", "--profile", ""},
          Words{"list", "--profile", ""}, Words{"describe", "volume-leveler", "--profile", ""},
          Words{"toggle", "volume-leveler", "--profile", ""}, Words{"profile", "show", ""},
          Words{"profile", "use", ""}, Words{"profile", "create", "", "x"},
          Words{"demo", "enter", ""}})
        RefusedUnchanged(arguments, cBadInput, "Unknown profile ''.");
}

TEST_F(CtlSettings, SaysWhatCannotBeRead) {
    WriteStoredText(eKeySetStatic, tools::SettingNamed("volume-leveler").Stored(0).key, L"7");
    const char* const words = "'volume-leveler' is stored but cannot be read";
    const ToolResult got = RunCtl({"get", "volume-leveler", "enable"});
    EXPECT_EQ((Words{"262151", "on"}), got.Lines()) << got;
    EXPECT_NE(std::string::npos, got.err.find(words)) << got;
    EXPECT_EQ("", RunCtl({"get", "volume-leveler", "--profile", "music"}).err);
    EXPECT_EQ("", RunCtl({"get", "volume-leveler", "--quiet"}).err);
    const Json status = DoneJson({"status"});
    EXPECT_EQ(1, status["unreadable"]);
    EXPECT_EQ(false, status["interrupted"]);
    EXPECT_NE(std::string::npos, Done({"status"}).find("1 cannot be read")) << status;
    const ToolResult set = RunCtl({"set", "volume-leveler", "3"});
    EXPECT_EQ(Words{"volume-leveler: 262151 -> 3"}, set.Lines()) << set;
    EXPECT_NE(std::string::npos, set.err.find(words)) << set;
    EXPECT_EQ("", RunCtl({"get", "volume-leveler"}).err);
    EXPECT_EQ(0, DoneJson({"status"})["unreadable"]);
}

TEST_F(CtlSettings, FactoryValuesAreNotOverwrittenByAccident) {
    for (const Words& arguments :
         {Words{"set", "volume-leveler", "6"}, Words{"set", "volume-leveler.field-6", "1"},
          Words{"set", "graphic-eq.gains", "1 1 1 1 1 1 1 1 1 1"},
          Words{"set", "volume-leveler", "off"}, Words{"toggle", "dialog-enhancer"}}) {
        Words named = arguments;
        named.insert(named.end(), {"--profile", "demo-music"});
        RefusedUnchanged(named, cRefused, "demo-music holds the factory values of music.");
        RefusedUnchanged(named, cRefused, "--stored");
    }
}

TEST_F(CtlSettings, FactoryValuesOfADemoProfileAreReadAndWrittenByItsName) {
    EXPECT_EQ("volume-leveler: 0 -> 6\n",
              Done({"set", "volume-leveler", "6", "--stored", "--profile", "demo-music"}));
    EXPECT_EQ("6\n", Done({"get", "volume-leveler", "--profile", "241"}));
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, TRUE));
    // What clients see is built in; what is stored is for going back to it.
    EXPECT_EQ("0\n", Done({"get", "volume-leveler"}));
    EXPECT_EQ("6\n", Done({"get", "volume-leveler", "--profile", "demo-music"}));
}

TEST_F(CtlSettings, WithoutTheLibraryOneSentenceSaysWhatToDo) {
    Unregister();
    const ToolResult result = RunCtl({"get", "enable"});
    EXPECT_EQ(cNotReady, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("not registered")) << result;
    EXPECT_NE(std::string::npos, result.err.find("kora4ctl register")) << result;
    Refused({"set", "enable", "on"}, cNotReady, "not registered");
    Refused({"list"}, cNotReady, "not registered");
    // What the library does not serve does not need it.
    EXPECT_EQ("200\n", Done({"get", "number-57"}));
}

TEST_F(CtlSettings, WithoutTheKeysTheStoreIsNotReady) {
    RemoveStore();
    Refused({"get", "number-57"}, cNotReady, "register");
    Refused({"get", "enable"}, cNotReady, "doctor");
}

TEST_F(CtlSettings, CarriedFieldsAreListedWhenAsked) {
    for (const char* const verb : {"list", "describe"}) {
        const std::string text = Done({verb});
        for (const char* const name : {"field-", "switch-5", "number-5", "refresh-"})
            EXPECT_EQ(std::string::npos, text.find(name)) << verb << " " << name;
        EXPECT_NE(std::string::npos, text.find("volume-leveler.on")) << verb;
    }
    EXPECT_EQ("200\n", Done({"get", "number-57"})) << "by its name";
    EXPECT_NE(std::string::npos, Done({"describe", "number-57"}).find("carried"));
    EXPECT_EQ(std::string::npos, Done({"get", "--help"}).find("number-57"));
}

TEST_F(CtlSettings, ToggleAndSharesAreValues) {
    EXPECT_EQ("enable: on -> off\n", Done({"set", "enable", "toggle"}));
    EXPECT_EQ("enable: off -> on\n", Done({"set", "enable", "toggle"}));
    EXPECT_EQ("dialog-enhancer.on: on -> off\n", Done({"set", "dialog-enhancer", "toggle"}));
    EXPECT_EQ("next-gen-surround.on: on -> off\n",
              Done({"set", "next-gen-surround", "toggle"}));
    EXPECT_EQ("enable: on -> off\n", Done({"set", "enable", "toggle", "--stored"}));
    EXPECT_EQ("dialog-enhancer: 0.33 -> 0.5\n", Done({"set", "dialog-enhancer", "50%"}));
    RefusedUnchanged({"set", "sampling-period", "toggle"}, cBadInput, "toggle");
}

TEST_F(CtlSettings, NamesBelongToCustomProfiles) {
    ASSERT_EQ(S_OK, Client().CreateCustomProfile(4, L"One"));
    EXPECT_EQ("One\n", Done({"get", "name", "--profile", "p2"}));
    EXPECT_EQ("name: One -> Two\n", Done({"set", "name", "Two", "--profile", "p2"}));
    EXPECT_EQ(nullptr, DoneJson({"get", "name", "--profile", "p1"})["value"]);
    Refused({"set", "name", "x", "--profile", "p1"}, cRefused, "does not exist");
    Refused({"set", "name", "x"}, cBadInput, "movie");
}

TEST_F(CtlSettings, AStoreThatIsHeldTooLongIsGivenUp) {
    const RawTransaction held;
    const std::string before = StoreSnapshot();
    // Through the library too, which would wait without end.
    RunningTool throughTheLibrary("kora4ctl", {"get", "enable"});
    Refused({"set", "number-57", "1"}, cTimedOut, "");
    EXPECT_EQ(cTimedOut, throughTheLibrary.WaitForEnd().exitCode);
    EXPECT_EQ(before, StoreSnapshot());
}

TEST_F(CtlSettings, CtrlCEndsTheWaitForAHeldStore) {
    const RawTransaction held;
    RunningTool tool("kora4ctl", {"watch"});
    EXPECT_TRUE(tool.IsSilentFor(1500));
    tool.PressCtrlC();
    const ToolResult result = tool.WaitForEnd(20000);
    EXPECT_EQ(1u, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("Interrupted")) << result;
}

TEST_F(CtlSettings, AnActiveProfileThatIsNoneIsTold) {
    Done({"set", "profile", "77", "--stored"});
    EXPECT_EQ("77\n", Done({"get", "profile"}));
    RefusedUnchanged({"set", "volume-leveler", "4"}, cRefused, "77");
}

}  // namespace
}  // namespace kora4::test

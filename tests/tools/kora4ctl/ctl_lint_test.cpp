// SPDX-License-Identifier: MIT
// kora4ctl lint and diff.
#include <algorithm>
#include <set>

#include "contract/defaults.h"
#include "contract/profiles.h"
#include "contract/value_kind.h"
#include "settings/settings_table.h"
#include "tools/kora4ctl/store_fixture.h"

namespace kora4::test {
namespace {

using tools::StoredValue;

constexpr char cLintShape[] =
    R"({"findings": [{"severity": "string", "name": "string|null", "profile": "string|null",
                      "keys": "string", "value": "string", "stored": "string|null",
                      "problem": "string", "repair": "string|null"}],
        "fixed": [{"name": "string", "profile": "string|null", "stored": "any",
                   "wanted": "any"}],
        "written": "integer", "deleted": "integer", "backup": "string|null"})";
constexpr char cDiffShape[] =
    R"({"same": "boolean",
        "differences": [{"name": "string", "profile": "string|null", "stored": "any",
                         "wanted": "any"}]})";

StoredValue Text(const char16_t* text) {
    return StoredValue::FromText(text);
}

StoredValue Unterminated(const char16_t* text) {
    StoredValue value = Text(text);
    value.bytes.resize(value.bytes.size() - 2);
    return value;
}

class CtlLint : public StoreTest {
  protected:
    static void Put(const tools::SchemaValue& place, const StoredValue& value) {
        WriteRaw(place.keySet, place.key, value.type, value.bytes.data(), value.bytes.size());
    }
    // Into the music profile, or where else the setting is.
    static void Put(const std::string& name, const StoredValue& value) {
        StoreValues values = ReadStoreValues();
        const tools::SchemaValue place = tools::SettingNamed(name).Stored(1);
        values[{place.keySet, place.Name()}] = value;
        ReplaceStoreValues(values);
    }

    static Json Findings(DWORD code) {
        const ToolResult result = RunCtl({"lint", "--json"});
        EXPECT_EQ(code, result.exitCode) << result;
        const Json document = ParsedJson(result.out);
        EXPECT_TRUE(HasShape(document, cLintShape));
        EXPECT_EQ(nullptr, document["backup"]);
        EXPECT_TRUE(document["fixed"].empty());
        return document["findings"];
    }

    std::string BackupFile() const { return m_folder.File("before.json"); }
};

TEST_F(CtlLint, HasNothingToSayOfAStoreThatClientsMade) {
    ASSERT_EQ(S_OK, Client().CreateCustomProfile(3, L"Late"));
    for (const LONG profile : {0L, 1L, 2L, 3L}) {
        ASSERT_EQ(S_OK, Client().SetActiveProfile(profile));
        KORA4PatchValueUnion value = {};
        value.m_technology = eVolumeLeveler;
        value.m_values.m_volumeSlider = 10;
        EXPECT_EQ(S_OK, Client().SetSimplePatchValue(&value));
        GraphicEQData equalizer = {};
        EXPECT_EQ(S_OK, Client().GetGraphicEQData(&equalizer));
        EXPECT_EQ(S_OK, Client().SetGraphicEQData(&equalizer));
    }
    ASSERT_EQ(KORA4_S_NOT_A_PRESET_PROFILE, Client().RevertActiveProfile());
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    EXPECT_EQ(Json::array(), Findings(cDone));
    const ToolResult words = RunCtl({"lint"});
    EXPECT_EQ("", words.out);
    EXPECT_NE(std::string::npos, words.err.find("All stored values are valid.")) << words;
    ASSERT_EQ(S_OK, Client().RevertFromDemoMode());
}

TEST_F(CtlLint, BuiltInDefaultsPassWhateverTheLimitsAre) {
    Put("volume-leveler", StoredValue::FromDword(defaults::cVolumeAmount[cMovieProfile]));
    Put("speaker-virtualizer", Text(u"10.000000"));
    EXPECT_EQ(Json::array(), Findings(cDone));
    // Each row of the table of defaults, in each profile.
    for (std::size_t row = 0; row < 3; ++row) {
        StoreValues values;
        for (const tools::SchemaValue& value : tools::Schema()) {
            const std::vector<StoredValue> rows = value.Defaults();
            if (!rows.empty())
                values[{value.keySet, value.Name()}] = rows[std::min(row, rows.size() - 1)];
        }
        ReplaceStoreValues(values);
        for (const Json& finding : Findings(cDone))
            EXPECT_EQ("note", finding["severity"]) << finding;
        const ToolResult fixed = RunCtl({"lint", "--fix", "--backup", BackupFile()});
        EXPECT_EQ(cDone, fixed.exitCode) << fixed;
        EXPECT_FALSE(Exists(BackupFile()));
        ExpectStore(values);
    }
}

// One way in which a value can be wrong, and what is said of it.
struct Wrong {
    const char* test;
    const char* name;
    StoredValue stored;
    const char* severity;
    const char* problem;
};

std::ostream& operator<<(std::ostream& stream, const Wrong& wrong) {
    return stream << wrong.test;
}

class CtlLintOn : public CtlLint, public testing::WithParamInterface<Wrong> {};

TEST_P(CtlLintOn, IsNamedAndMended) {
    const Wrong& wrong = GetParam();
    Put("dialog-enhancer", Text(u"0.250000"));
    Put(wrong.name, wrong.stored);
    const StoreValues before = ReadStoreValues();
    const tools::Setting& setting = tools::SettingNamed(wrong.name);
    const tools::SchemaValue place = setting.Stored(1);
    const Json findings = Findings(cFindings);
    ASSERT_EQ(1u, findings.size()) << findings;
    EXPECT_EQ(wrong.severity, findings[0]["severity"]);
    EXPECT_EQ(wrong.name, findings[0]["name"]);
    EXPECT_EQ(setting.perProfile ? Json("music") : Json(nullptr), findings[0]["profile"]);
    EXPECT_EQ(place.keySet == eKeySetStatic    ? "static"
              : place.keySet == eKeySetDynamic ? "dynamic"
                                               : "app",
              findings[0]["keys"]);
    EXPECT_EQ(place.Name(), findings[0]["value"]);
    EXPECT_NE(std::string::npos, findings[0]["problem"].get<std::string>().find(wrong.problem))
        << findings;
    EXPECT_NE(nullptr, findings[0]["repair"]);
    const ToolResult words = RunCtl({"lint"});
    EXPECT_EQ(cFindings, words.exitCode);
    EXPECT_EQ(0u, words.out.find(wrong.severity)) << words;
    EXPECT_NE(std::string::npos, words.out.find(wrong.name)) << words;
    EXPECT_NE(std::string::npos, words.out.find(wrong.problem)) << words;
    ExpectStore(before);

    const Json fix = DoneJson({"lint", "--fix", "--backup", BackupFile()});
    EXPECT_TRUE(HasShape(fix, cLintShape));
    EXPECT_EQ(findings, fix["findings"]);
    ASSERT_EQ(1u, fix["fixed"].size());
    EXPECT_EQ(fix["fixed"][0]["name"], wrong.name);
    EXPECT_EQ(fix["backup"], BackupFile());
    EXPECT_EQ(Json::array(), Findings(cDone));
    EXPECT_FALSE(HasJournal());
    // The dump brings back what was there, to the byte.
    Done({"load", "--stored", BackupFile(), "--quiet"});
    ExpectSettings(before);
    EXPECT_EQ(findings, Findings(cFindings));
}

INSTANTIATE_TEST_SUITE_P(
    Damage, CtlLintOn,
    testing::Values(
        Wrong{"TextForNumber", "volume-leveler", Text(u"7"), "error", "expected a REG_DWORD"},
        Wrong{"ShortNumber", "volume-leveler", {cDwordType, {7, 0}}, "error", "got 2"},
        Wrong{"LongNumber", "sampling-period", {cDwordType, {1, 2, 3, 4, 5}}, "error", "got 5"},
        Wrong{"EmptyNumber", "volume-leveler.on", {cDwordType, {}}, "error", "got 0"},
        Wrong{"NumberForText", "demo-app-command", StoredValue::FromDword(1), "error",
              "expected a REG_SZ"},
        Wrong{"BytesForSwitch",
              "enable",
              {cBinaryType, {1, 0, 0, 0}},
              "error",
              "expected a REG_DWORD"},
        Wrong{"UnknownType", "volume-leveler", {77, {1, 0, 0, 0}}, "error", "type 77"},
        Wrong{"NumberForFloat", "dialog-enhancer", StoredValue::FromDword(1), "error",
              "expected a REG_SZ"},
        Wrong{"NoNumber", "dialog-enhancer", Text(u"loud"), "error", "not a number"},
        Wrong{"NotANumber", "headphone-virtualizer", Text(u"nan"), "error", "not a number"},
        Wrong{"EmptyFloat", "dialog-enhancer", {cTextType, {}}, "error", "not a number"},
        Wrong{"NoArray", "graphic-eq.gains", Text(u"0100,0002,0000"), "error", "not an array"},
        Wrong{"NoFlags", "audio-regulator.isolated", Text(u"0029"), "error",
              "not an array of flags"},
        Wrong{"NoCurve", "intelligent-eq", StoredValue::FromDword(6), "error",
              "curves are numbered"},
        Wrong{"TooLong", "demo-app-command",
              StoredValue::FromText(std::u16string(cMaxTextChars + 1, u'x')), "error",
              "too long"},
        Wrong{"AmountOutOfRange", "volume-leveler", StoredValue::FromDword(11), "warning",
              "out of range"},
        Wrong{"FloatOutOfRange", "dialog-enhancer", Text(u"1.000001"), "warning",
              "out of range"},
        Wrong{"BoostOutOfRange", "headphone-virtualizer", Text(u"10.000000"), "warning",
              "out of range"},
        Wrong{"GainOutOfRange", "graphic-eq.gains", Text(u"0100,0001,0c01"), "warning",
              "out of range"},
        Wrong{"NoProfile", "profile", StoredValue::FromDword(9), "warning",
              "not the number of a profile"},
        Wrong{"Unterminated", "headphone-virtualizer", Unterminated(u"1.500000"), "warning",
              "no terminator"},
        Wrong{"MoreThanATerminator",
              "profile-editor-command",
              {cTextType, {'a', 0, 0, 0, 'b', 0}},
              "warning",
              "its terminator"}),
    [](const testing::TestParamInfo<Wrong>& wrong) { return wrong.param.test; });

TEST_F(CtlLint, WhatIsNoSettingIsNamedToo) {
    Put(tools::TriggerValue({tools::Family::ePreset, 0}), Text(u"1"));
    Put(tools::SettingValue(pkey::cVisualizationDataPid), {cBinaryType, {1, 2, 3}});
    Put(tools::SettingValue(pkey::cSavedProfilePid),
        StoredValue::FromDword(KORA4_PROFILE_DEMO_MOVIE));
    Put(tools::NameValue(4), StoredValue::FromDword(1));
    const Json findings = Findings(cFindings);
    ASSERT_EQ(4u, findings.size()) << findings;
    for (const Json& finding : findings)
        EXPECT_NE(nullptr, finding["name"]) << finding;
    const StoreValues before = ReadStoreValues();
    // The name is in the dump; what no dump holds is told, with what stood there.
    const ToolResult words = RunCtl({"lint", "--fix", "--backup", BackupFile()});
    const std::size_t begin =
        words.err.find("Also repaired, but not settings and so not saved: ");
    ASSERT_NE(std::string::npos, begin) << words;
    const std::string told = words.err.substr(begin, words.err.find('\n', begin) - begin);
    EXPECT_EQ(2, std::count(told.begin(), told.end(), ';')) << told;
    EXPECT_NE(std::string::npos, told.find("240 -> unset")) << told;
    EXPECT_EQ(Json::array(), Findings(cDone));
    ReplaceStoreValues(before);
    EXPECT_EQ(4u, DoneJson({"lint", "--fix", "--backup", BackupFile()})["fixed"].size());
    EXPECT_EQ(Json::array(), Findings(cDone));
}

TEST_F(CtlLint, UnknownNamesAreNotesAndStay) {
    const std::wstring path = KeySetPath(eKeySetStatic);
    WriteValue(HKEY_LOCAL_MACHINE, path, L"Something \u00E4", REG_SZ, L"x", 4);
    const StoreValues before = ReadStoreValues();
    const Json findings = Findings(cDone);
    ASSERT_EQ(1u, findings.size());
    EXPECT_EQ("note", findings[0]["severity"]);
    EXPECT_EQ("Something \xC3\xA4", findings[0]["value"]);
    EXPECT_EQ(nullptr, findings[0]["repair"]);
    Done({"lint", "--fix", "--backup", BackupFile()});
    ExpectStore(before);
    EXPECT_FALSE(Exists(BackupFile()));
}

TEST_F(CtlLint, MendsAnyStoreAfterADumpOfIt) {
    int mended = 0;
    for (std::uint32_t seed = 0; seed < 20 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        tools::RandomStore random(seed);
        const StoreValues before = random.Values(2);
        ReplaceStoreValues(before);
        const Json findings = Findings(cFindings);
        const ToolResult result = RunCtl({"lint", "--fix", "--backup", BackupFile()});
        EXPECT_EQ(cDone, result.exitCode) << result;
        EXPECT_NE(std::string::npos, result.err.find(BackupFile())) << result;
        EXPECT_EQ(ContentOf(BackupFile()), DocumentText(before, Scope::eAll));
        for (const Json& left : Findings(cDone))
            EXPECT_EQ("note", left["severity"]) << left;
        mended += static_cast<int>(findings.size());
        Done({"load", "--stored", BackupFile(), "--quiet"});
        EXPECT_EQ("", DifferencesOf(tools::Covered(before, Scope::eAll),
                                    tools::Covered(ReadStoreValues(), Scope::eAll)));
    }
    EXPECT_LT(100, mended);
}

TEST_F(CtlLint, WithoutANameTheBackupIsThatOfUndo) {
    Put("volume-leveler", StoredValue::FromDword(11));
    const StoreValues before = ReadStoreValues();
    const std::string backup = DoneJson({"lint", "--fix"})["backup"];
    const std::string folder = JournalPath().substr(0, JournalPath().rfind('\\'));
    EXPECT_EQ(0u, backup.find(folder + "\\backup-")) << backup;
    EXPECT_EQ(ContentOf(backup), DocumentText(before, Scope::eAll));
    EXPECT_TRUE(DeleteFileW(tools::Widen(backup).c_str()));
}

TEST_F(CtlLint, MendsNothingWhenTheDumpCannotBeWritten) {
    Put("volume-leveler", StoredValue::FromDword(11));
    RefusedUnchanged({"lint", "--fix", "--backup", m_folder.Path()}, cFailed,
                     "cannot be created");
    RefusedUnchanged({"lint", "--backup", BackupFile()}, cUsage, "--fix");
}

TEST_F(CtlLint, ClientsSeeTheDefaultsAfterTheRepair) {
    const auto recorder = CallbackRecorder::Create();
    ASSERT_EQ(S_OK, Client().RegisterChangeNotifications(recorder.Get()));
    const tools::SchemaValue place = tools::SettingNamed("volume-leveler").Stored(0);
    Put(place, StoredValue::FromDword(99));
    KORA4PatchValueUnion value = {};
    value.m_technology = eVolumeLeveler;
    ASSERT_EQ(S_OK, Client().GetSimplePatchValue(&value));
    EXPECT_EQ(99u, value.m_values.m_volumeSlider);
    Done({"lint", "--fix", "--backup", BackupFile()});
    EXPECT_TRUE(recorder->WaitForLine("OnSimplePatchValueChange(eVolumeLeveler, 262151)"));
    ASSERT_EQ(S_OK, Client().GetSimplePatchValue(&value));
    EXPECT_EQ(defaults::cVolumeAmount[cMovieProfile], value.m_values.m_volumeSlider);
}

TEST_F(CtlLint, WithoutAStoreNamesTheCommandThatMendsIt) {
    Unregister();
    RemoveStore();
    const std::string document =
        R"({"format": "kora4-settings", "version": 1, "scope": "user"})";
    for (const Words& arguments :
         {Words{"lint"}, Words{"lint", "--json"}, Words{"lint", "--fix"}, Words{"diff", "-"}})
        Refused(arguments, cNotReady, "kora4ctl register", document);
}

// ---- diff -----------------------------------------------------------------------------------

class CtlDiff : public StoreTest, public testing::WithParamInterface<Scope> {};

TEST_P(CtlDiff, OfTheStoreItselfFindsNothing) {
    const StoreValues values = DifferentStores(41).before;
    ReplaceStoreValues(values);
    const std::string text = DocumentText(values, GetParam());
    const ToolResult result = RunCtl({"diff", "-"}, text);
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.out);
    const Json document = DoneJson({"diff", "-"}, text);
    EXPECT_TRUE(HasShape(document, cDiffShape));
    EXPECT_EQ(true, document["same"]);
    EXPECT_TRUE(document["differences"].empty());
}

TEST_P(CtlDiff, TellsEachValueThatDiffers) {
    const TwoStores stores = DifferentStores(42);
    ReplaceStoreValues(stores.before);
    const std::string text = DocumentText(stores.after, GetParam());
    const std::size_t changes = LoadOf(stores.before, stores.after, GetParam()).changes;
    const ToolResult words = RunCtl({"diff", "-"}, text);
    EXPECT_EQ(cFindings, words.exitCode) << words;
    // The bands of a profile are one value.
    std::set<std::string> values;
    for (const std::string& line : words.Lines())
        values.insert(line.substr(0, line.find(" graphic-eq ")));
    EXPECT_EQ(changes, values.size());
    const ToolResult result = RunCtl({"diff", "-", "--json"}, text);
    EXPECT_EQ(cFindings, result.exitCode) << result;
    const Json document = ParsedJson(result.out);
    EXPECT_TRUE(HasShape(document, cDiffShape));
    EXPECT_EQ(false, document["same"]);
    EXPECT_EQ(changes, document["differences"].size());
    ExpectStore(stores.before);
    // A load of it makes just these changes.
    EXPECT_EQ(DoneJson({"load", "--stored", "-", "--dry-run"}, text)["changes"],
              document["differences"]);
}

INSTANTIATE_TEST_SUITE_P(Scopes, CtlDiff, testing::Values(Scope::eUser, Scope::eAll),
                         ScopeName);

TEST_F(CtlDiff, ShowsWhatIsStoredAndWhatTheDocumentHas) {
    ReplaceStoreValues({});
    const tools::SchemaValue amount = tools::SettingNamed("volume-leveler").Stored(1);
    WriteStoredUINT(amount.keySet, amount.key, 7);
    const std::string text =
        R"({"format": "kora4-settings", "version": 1, "scope": "user",
            "profiles": {"music": {"volume-leveler": 5}, "p1": {"name": "Late"}}})";
    const ToolResult words = RunCtl({"diff", "-"}, text);
    EXPECT_EQ((std::vector<std::string>{"music: volume-leveler: 7 -> 5",
                                        "p1: name: unset -> \"Late\""}),
              words.Lines());
    const Json differences = ParsedJson(RunCtl({"diff", "-", "--json"}, text).out);
    EXPECT_EQ(differences["differences"][0],
              ParsedJson(R"({"name": "volume-leveler", "profile": "music", "stored": 7,
                             "wanted": 5})"));
    EXPECT_EQ(nullptr, differences["differences"][1]["stored"]);
}

TEST_F(CtlDiff, MergingPassesOverWhatTheDocumentDoesNotHave) {
    ReplaceStoreValues(DifferentStores(43).before);
    const tools::SchemaValue amount = tools::SettingNamed("volume-leveler").Stored(1);
    WriteStoredUINT(amount.keySet, amount.key, 7);
    const auto document = [](const char* value) {
        return std::string(R"({"format": "kora4-settings", "version": 1, "scope": "user",)"
                           R"("profiles": {"music": {"volume-leveler": )") +
               value + "}}}";
    };
    EXPECT_EQ(cDone, RunCtl({"diff", "-", "--merge"}, document("7")).exitCode);
    const ToolResult five = RunCtl({"diff", "-", "--merge"}, document("5"));
    EXPECT_EQ(cFindings, five.exitCode) << five;
    EXPECT_EQ(std::vector<std::string>{"music: volume-leveler: 7 -> 5"}, five.Lines());
    EXPECT_LT(50u, RunCtl({"diff", "-"}, document("7")).Lines().size());
}

TEST_F(CtlDiff, RefusesBadDocuments) {
    RefusedUnchanged({"diff", "-"}, cBadInput, "Not valid JSON", "hello");
    RefusedUnchanged({"diff", "-"}, cBadInput, "empty", "");
    RefusedUnchanged({"diff"}, cUsage, "FILE");
}

}  // namespace
}  // namespace kora4::test

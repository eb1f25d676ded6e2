// SPDX-License-Identifier: MIT
// kora4ctl doctor: each thing that it finds, made wrong for real.
#include <atomic>
#include <cstring>
#include <filesystem>
#include <thread>

#include "contract/engine_masks.h"
#include "contract/profiles.h"
#include "contract/registry_paths.h"
#include "contract/store_mutex.h"
#include "contract/trace_flags.h"
#include "registry/journal.h"
#include "settings/schema.h"
#include "support/foreign_mutex.h"
#include "support/key_security.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

constexpr DWORD cFindings = 7;

constexpr PropertyKey cActiveProfile = pkey::Setting(pkey::cActivePresetPid);
constexpr PropertyKey cLevels = pkey::Setting(pkey::cVisualizationDataPid);
constexpr PropertyKey cPeriod = pkey::Setting(pkey::cSamplingPeriodPid);
constexpr PropertyKey cTraceWord = pkey::Setting(pkey::cTraceFlagsPid);
constexpr PropertyKey cSavedProfile = pkey::Setting(pkey::cSavedProfilePid);

constexpr char cShape[] =
    R"({"findings": [{"check": "string", "severity": "string", "what": "string",
                      "next": "string"}],
        "summary": {"checks": "integer", "ok": "integer", "notes": "integer",
                    "warnings": "integer", "errors": "integer"}})";

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// A blob with one record.
std::vector<std::uint8_t> Blob(const std::vector<float>& gains) {
    std::vector<std::uint8_t> blob(8 + 24 + 8 * gains.size());
    blob[4] = 1;
    blob[24] = static_cast<std::uint8_t>(gains.size());
    std::memcpy(blob.data() + 32, gains.data(), gains.size() * sizeof(float));
    return blob;
}

void WriteMask(std::uint32_t mask) {
    const tools::SchemaValue place = tools::EngineMaskValue();
    WriteStoredUINT(place.keySet, place.key, mask);
}

class CtlDoctor : public CtlTest {
  protected:
    void SetUp() override {
        CtlTest::SetUp();
        m_journal.Remove();
    }
    void TearDown() override {
        m_journal.Remove();
        CtlTest::TearDown();
    }

    static Json Examine(DWORD code, Words arguments = {}) {
        arguments.insert(arguments.begin(), {"doctor", "--json"});
        const ToolResult result = RunCtl(arguments);
        EXPECT_EQ(code, result.exitCode) << result;
        const Json document = ParsedJson(result.out);
        EXPECT_TRUE(HasShape(document, cShape));
        return document;
    }
    // "warning: what" of one check, a line for each finding. What is wrong has a next step.
    static std::string Of(const std::string& check, const Json& document) {
        std::string text;
        for (const Json& finding : document["findings"]) {
            if (finding["check"] != check)
                continue;
            if (finding["severity"] == "warning" || finding["severity"] == "error") {
                EXPECT_NE("", finding["next"]) << finding;
            }
            text += finding["severity"].get<std::string>() + ": " +
                    finding["what"].get<std::string>() + "\n";
        }
        EXPECT_NE("", text) << "nothing is said of " << check;
        return text;
    }

    tools::JournalFile m_journal{tools::DefaultJournalPath()};
};

TEST_F(CtlDoctor, AHealthyMachineHasNotesAtWorst) {
    const Json document = Examine(cDone);
    EXPECT_EQ(0, document["summary"]["errors"]) << document;
    EXPECT_EQ(0, document["summary"]["warnings"]) << document;
    EXPECT_EQ(12, document["summary"]["checks"]);
    for (const char* check :
         {"registration", "access", "mutex", "load", "values", "profile", "trace", "library"})
        EXPECT_TRUE(Of(check, document).starts_with("ok: ")) << document;
    EXPECT_TRUE(Has(Of("keys", document), "note: The companion programs' keys"));
    EXPECT_TRUE(Has(Of("engine", document), "note: No engine is installed"));
    const std::string text = Done({"doctor"});
    EXPECT_TRUE(Has(text, "ok       registration")) << text;
    EXPECT_TRUE(Has(text, "-> ")) << text;
    EXPECT_TRUE(Has(text, "\nNo problems, ")) << text;
}

TEST_F(CtlDoctor, LeavesTheStoreAsItIs) {
    WriteRaw(eKeySetStatic, cPeriod, REG_SZ, L"x", 4);
    WriteStoredUINT(eKeySetDynamic, cActiveProfile, KORA4_PROFILE_DEMO_MUSIC);
    const std::string before = StoreSnapshot();
    Examine(cFindings);
    EXPECT_EQ(before, StoreSnapshot());
}

TEST_F(CtlDoctor, WorksWithEverythingMissing) {
    Unregister();
    RemoveStore();
    const Json document = Examine(cFindings, {"--deep"});
    EXPECT_EQ("error: The library is not registered on this machine.\n",
              Of("registration", document));
    EXPECT_TRUE(Has(Of("keys", document), "DynamicKeys does not exist."));
    EXPECT_EQ("note: Skipped: there are no keys.\n", Of("access", document));
    for (const char* check : {"load", "values", "profile", "custom-profiles", "trace",
                              "library", "engine", "levels", "notifications"})
        EXPECT_TRUE(Of(check, document).starts_with("note: Skipped: "));
}

TEST_F(CtlDoctor, FindsAMissingRegistration) {
    Unregister();
    const Json document = Examine(cFindings);
    EXPECT_TRUE(Of("registration", document).starts_with("error: "));
    EXPECT_EQ("note: Skipped: the library cannot be loaded.\n", Of("library", document));
    EXPECT_TRUE(Of("values", document).starts_with("ok: "));
}

TEST_F(CtlDoctor, FindsMissingKeys) {
    RemoveKey(HKEY_LOCAL_MACHINE, cStaticKeysPath);
    EXPECT_EQ("error: HKEY_LOCAL_MACHINE\\SOFTWARE\\Velto\\KORA4\\StaticKeys does not exist.\n",
              Of("keys", Examine(cFindings)));
}

TEST_F(CtlDoctor, SaysNothingOfAppKeysThatAreThere) {
    CreateKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    EXPECT_TRUE(Of("keys", Examine(cDone)).starts_with("ok: "));
}

TEST_F(CtlDoctor, FindsAnAccessListThatLetsNobodyWrite) {
    SetDacl(cStaticKeysPath, L"D:(A;;KA;;;BA)(A;;KR;;;WD)");
    const std::string text = Of("access", Examine(cFindings));
    EXPECT_TRUE(Has(text, "StaticKeys does not let everyone write values, create subkeys"))
        << text;
    EXPECT_FALSE(Has(text, "read values")) << text;
    EXPECT_TRUE(Has(text, "access list: D:")) << text;
}

TEST_F(CtlDoctor, FindsAnAccessListWithoutEverybody) {
    SetDacl(cDynamicKeysPath, L"D:(A;;KA;;;BA)");
    EXPECT_TRUE(Has(Of("access", Examine(cFindings)), "DynamicKeys grants everyone no rights"));
}

// What a careful installation sets, see docs/security.md.
TEST_F(CtlDoctor, IsContentWithListsThatGrantWhatClientsNeed) {
    SetDacl(cBaseKeyPath, L"D:P(A;;KA;;;SY)(A;;KA;;;BA)(A;;KR;;;WD)");
    for (const wchar_t* path : {cStaticKeysPath, cDynamicKeysPath})
        SetDacl(path, L"D:P(A;;KA;;;SY)(A;;KA;;;BA)(A;;KRKW;;;WD)");
    const std::string text = Of("access", Examine(cDone));
    EXPECT_FALSE(Has(text, "does not let everyone")) << text;
}

TEST_F(CtlDoctor, FindsAnAccessListThatDenies) {
    SetDacl(cBaseKeyPath, L"D:(D;;KW;;;BG)(A;;KA;;;WD)");
    EXPECT_TRUE(Has(Of("access", Examine(cFindings)), "contains entries that deny access"));
}

TEST_F(CtlDoctor, NotesAccessListsThatWineHasForgotten) {
    const std::wstring ofNewKeys = DaclOf(L"SOFTWARE");
    for (const wchar_t* path : {cBaseKeyPath, cStaticKeysPath, cDynamicKeysPath})
        SetDacl(path, ofNewKeys.c_str());
    const std::string text = Of("access", Examine(cDone));
    EXPECT_TRUE(Has(text, "note: The access lists set by registration are gone: Wine")) << text;
}

TEST_F(CtlDoctor, FindsAppKeysThatOthersCanWrite) {
    CreateKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    for (const wchar_t* list : {L"D:(A;;KA;;;BA)(A;;KR;;;WD)(A;;KW;;;BU)", L"D:(A;;KA;;;WD)"}) {
        SetDacl(cAppKeysPath, list);
        EXPECT_TRUE(Has(Of("access", Examine(cFindings)),
                        "warning: Users who are not administrators can write "
                        "HKEY_LOCAL_MACHINE\\SOFTWARE\\Velto\\KORA4\\AppKeys"));
    }
}

TEST_F(CtlDoctor, RegisteringMakesAppKeysThatOnlyAdministratorsWrite) {
    RemoveKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    Done({"register"});
    EXPECT_EQ(L"D:P(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;WD)", DaclOf(cAppKeysPath));
    EXPECT_TRUE(Of("access", Examine(cDone)).starts_with("ok: "));
    // One that is there stays as it is: its commands may be somebody's.
    SetDacl(cAppKeysPath, L"D:(A;;KA;;;WD)");
    Done({"register"});
    EXPECT_EQ(L"D:(A;;KA;;;WD)", DaclOf(cAppKeysPath));
}

TEST_F(CtlDoctor, RegisteringMendsTheAccessLists) {
    SetDacl(cStaticKeysPath, L"D:(A;;KA;;;BA)");
    Done({"register"});
    EXPECT_TRUE(Of("access", Examine(cDone)).starts_with("ok: "));
}

TEST_F(CtlDoctor, RegisteringMendsAKeyThatDeniesEverybody) {
    WriteStoredUINT(eKeySetDynamic, cActiveProfile, 1);
    const DeniedKey denied(cDynamicKeysPath);
    const Json document = Examine(cFindings);
    EXPECT_TRUE(Has(Of("keys", document), "DynamicKeys cannot be opened: "));
    EXPECT_TRUE(Has(Of("access", document), "contains entries that deny access"));
    EXPECT_TRUE(Has(document.dump(), "kora4ctl register"));
    Done({"register"});
    const Json mended = Examine(cDone);
    for (const char* check : {"access", "profile"})
        EXPECT_TRUE(Of(check, mended).starts_with("ok: ")) << mended;
    EXPECT_EQ(1u, ReadStoredUINT(eKeySetDynamic, cActiveProfile));
}

TEST_F(CtlDoctor, FindsALinkInPlaceOfAKeyThatRegisteringRefuses) {
    constexpr wchar_t cVictim[] = L"SOFTWARE\\KORA4 doctor test";
    CreateKey(HKEY_LOCAL_MACHINE, cVictim);
    const std::wstring before = DaclOf(cVictim);
    RemoveKey(HKEY_LOCAL_MACHINE, cStaticKeysPath);
    {
        const RegistryLink link(cStaticKeysPath, cVictim);
        EXPECT_EQ(
            "error: HKEY_LOCAL_MACHINE\\SOFTWARE\\Velto\\KORA4\\StaticKeys is a link to "
            "another key; registration does not create links.\n",
            Of("keys", Examine(cFindings)));
        EXPECT_EQ(cFailed, RunCtl({"register"}).exitCode);
    }
    EXPECT_EQ(before, DaclOf(cVictim));
    RemoveKey(HKEY_LOCAL_MACHINE, cVictim);
}

// ---- The mutex --------------------------------------------------------------------------

HANDLE OpenMutexOfStore() {
    return CreateMutexW(nullptr, FALSE, reinterpret_cast<const wchar_t*>(cStoreMutexName));
}

TEST_F(CtlDoctor, FindsAMutexThatIsHeldAndLooksAtTheRest) {
    const UniqueHandle mutex(OpenMutexOfStore());
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.Get(), cBoundedWait));
    const Json document = Examine(cFindings, {"--wait", "0.3"});
    ReleaseMutex(mutex.Get());
    EXPECT_TRUE(Has(Of("mutex", document),
                    "error: A program has held the store's mutex for more than 0.3 s"));
    EXPECT_TRUE(Of("values", document).starts_with("ok: "));
    EXPECT_EQ("note: Skipped: the store's mutex cannot be acquired.\n",
              Of("library", document));
    EXPECT_EQ(Of("load", document), Of("library", document));
}

TEST_F(CtlDoctor, IsContentWithTheMutexOfAnotherToken) {
    const ForeignMutex foreign;
    const Json document = Examine(cDone, {"--deep"});
    for (const char* check : {"mutex", "library", "notifications"})
        EXPECT_TRUE(Of(check, document).starts_with("ok: ")) << document;
    Done({"profile", "use", "music"});
    EXPECT_EQ(1u, ReadStoredUINT(eKeySetDynamic, cActiveProfile));
}

TEST_F(CtlDoctor, FindsAMutexWhoseNameMeansSomethingElse) {
    const UniqueHandle event(
        CreateEventW(nullptr, TRUE, FALSE, reinterpret_cast<const wchar_t*>(cStoreMutexName)));
    ASSERT_TRUE(event);
    const Json document = Examine(cFindings);
    EXPECT_TRUE(Has(Of("mutex", document),
                    "error: This check failed: The store's mutex cannot be opened: "))
        << document;
}

TEST_F(CtlDoctor, FindsAMutexWhoseOwnerDied) {
    const UniqueHandle mutex(OpenMutexOfStore());
    std::thread([&] { WaitForSingleObject(mutex.Get(), cBoundedWait); }).join();
    EXPECT_TRUE(Has(Of("mutex", Examine(cFindings)),
                    "warning: A program died while it held the store's mutex."));
    EXPECT_TRUE(Of("mutex", Examine(cDone)).starts_with("ok: "));
}

// ---- A broken load ----------------------------------------------------------------------

class CtlDoctorLoad : public CtlDoctor {
  protected:
    // Of two values the first was written when the load broke off.
    void BreakLoad() {
        tools::Journal journal;
        const auto entry = [&](std::uint32_t pid, std::uint32_t before, std::uint32_t after) {
            journal.entries.push_back({eKeySetStatic, pkey::Setting(pid),
                                       tools::StoredValue::FromDword(before),
                                       tools::StoredValue::FromDword(after)});
        };
        entry(pkey::cSamplingPeriodPid, 40, 60);
        entry(pkey::cStaticNumber57Pid, 1, 2);
        m_journal.Write(journal);
        WriteStoredUINT(eKeySetStatic, cPeriod, 60);
        WriteStoredUINT(eKeySetStatic, pkey::Setting(pkey::cStaticNumber57Pid), 1);
    }
    bool IsJournalThere() const {
        tools::Journal journal;
        return m_journal.Read(journal) != tools::JournalFile::State::eAbsent;
    }
};

TEST_F(CtlDoctorLoad, IsUndone) {
    BreakLoad();
    const Json document = Examine(cDone);
    EXPECT_TRUE(Has(Of("load", document), "note: A change of the settings was interrupted"));
    EXPECT_EQ(40u, ReadStoredUINT(eKeySetStatic, cPeriod));
    EXPECT_FALSE(IsJournalThere());
    EXPECT_TRUE(Of("load", Examine(cDone)).starts_with("ok: "));
}

TEST_F(CtlDoctorLoad, IsOnlyToldOfInADryRun) {
    BreakLoad();
    const Json document = Examine(cFindings, {"--dry-run"});
    EXPECT_TRUE(Has(Of("load", document), "warning: A change of the settings was interrupted"));
    EXPECT_EQ(60u, ReadStoredUINT(eKeySetStatic, cPeriod));
    EXPECT_TRUE(IsJournalThere());
}

// ---- What is stored ---------------------------------------------------------------------

TEST_F(CtlDoctor, CountsValuesThatCannotBeRead) {
    WriteRaw(eKeySetStatic, cPeriod, REG_SZ, L"x", 4);
    WriteStoredText(eKeySetDynamic, pkey::Setting(pkey::cMasterEnablePid), L"on");
    const Json document = Examine(cFindings);
    EXPECT_TRUE(Has(Of("values", document), "error: 2 values cannot be read"));
}

TEST_F(CtlDoctor, CountsValuesThatNobodyWouldHaveSet) {
    const tools::SchemaValue slider =
        tools::FieldValue({tools::Family::ePreset, eVolumeTech}, cMusicProfile, 3);
    WriteStoredUINT(slider.keySet, slider.key, 11);
    EXPECT_TRUE(Has(Of("values", Examine(cFindings)), "warning: 1 value is outside what"));
}

TEST_F(CtlDoctor, FindsADemoThatWasLeftOn) {
    WriteStoredUINT(eKeySetDynamic, cActiveProfile, cDemoMusicProfile);
    WriteStoredUINT(eKeySetStatic, cSavedProfile, cGamesProfile);
    const Json document = Examine(cFindings);
    EXPECT_TRUE(Has(Of("profile", document), "warning: The demo profile demo-music is active"));
    EXPECT_FALSE(Has(Of("profile", document), "before the demo is unknown"));
    EXPECT_TRUE(Has(document.dump(), "kora4ctl demo force-leave"));
    Done({"demo", "force-leave"});
    EXPECT_EQ("ok: games is active\n", Of("profile", Examine(cDone)));
}

TEST_F(CtlDoctor, SaysThatTheProfileBeforeADemoIsNotKnown) {
    WriteStoredUINT(eKeySetDynamic, cActiveProfile, cDemoMovieProfile);
    EXPECT_TRUE(Has(Of("profile", Examine(cFindings)),
                    "note: The profile from before the demo is unknown"));
}

TEST_F(CtlDoctor, FindsAnActiveProfileThatIsNone) {
    WriteStoredUINT(eKeySetDynamic, cActiveProfile, 17);
    EXPECT_TRUE(Has(Of("profile", Examine(cFindings)), "warning: The active profile is 17"));
    Done({"profile", "use", "movie"});
    EXPECT_TRUE(Of("profile", Examine(cDone)).starts_with("ok: "));
}

TEST_F(CtlDoctor, FindsAnActiveCustomProfileThatDoesNotExist) {
    WriteStoredUINT(eKeySetDynamic, cActiveProfile, 4);
    EXPECT_TRUE(Has(Of("profile", Examine(cFindings)),
                    "warning: The custom profile p2 is active but does not exist."));
}

TEST_F(CtlDoctor, FindsACustomProfileWhoseNameCannotBeRead) {
    const tools::SchemaValue name = tools::NameValue(5);
    WriteStoredUINT(name.keySet, name.key, 1);
    const Json document = Examine(cFindings);
    EXPECT_TRUE(Has(Of("custom-profiles", document), "error: The name of p3 cannot be read"));
    EXPECT_TRUE(Of("values", document).starts_with("ok: ")) << document;
    Done({"profile", "delete", "p3"});
    EXPECT_EQ("ok: there are none\n", Of("custom-profiles", Examine(cDone)));
}

// ---- The trace --------------------------------------------------------------------------

TEST_F(CtlDoctor, FindsLogFilesThatAreSwitchedOn) {
    std::error_code isAbsent;
    std::filesystem::remove_all(L"C:\\KalLogs", isAbsent);
    WriteStoredUINT(eKeySetStatic, cTraceWord, trace::eLogFiles);
    const std::string text = Of("trace", Examine(cFindings));
    EXPECT_TRUE(Has(text, "warning: Log files are on"));
    EXPECT_TRUE(Has(text, "warning: The log folder, C:\\KalLogs, does not exist"));
}

TEST_F(CtlDoctor, NotesWhatElseIsUnusualAboutTheTrace) {
    WriteStoredUINT(eKeySetStatic, cTraceWord, trace::eMasterSwitchOff);
    EXPECT_TRUE(Has(Of("trace", Examine(cDone)), "note: The trace's master switch is off"));
    WriteStoredUINT(eKeySetStatic, cTraceWord, trace::eMessages | trace::eResults);
    EXPECT_TRUE(Has(Of("trace", Examine(cDone)), "note: More than messages are traced"));
    WriteStoredUINT(eKeySetStatic, cTraceWord, 0x80000400);
    EXPECT_TRUE(Has(Of("trace", Examine(cFindings)), "unknown bits: 0x80000000"));
}

// ---- The engine -------------------------------------------------------------------------

TEST_F(CtlDoctor, KnowsTheEnginesByTheirMasks) {
    WriteStoredBlob(eKeySetStatic, cLevels, Blob({}));
    for (const EngineConfiguration& known : cEngineConfigurations) {
        WriteMask(known.mask);
        EXPECT_TRUE(Of("engine", Examine(cDone)).starts_with(std::string("ok: ") + known.name));
    }
    WriteMask(0x1234);
    EXPECT_TRUE(Has(Of("engine", Examine(cFindings)),
                    "warning: The engine mask 0x1234 is not that of a known engine."));
}

TEST_F(CtlDoctor, FindsAnEngineMaskThatCannotBeRead) {
    const tools::SchemaValue place = tools::EngineMaskValue();
    WriteStoredText(place.keySet, place.key, L"0x03FF");
    EXPECT_TRUE(
        Has(Of("engine", Examine(cFindings)), "error: The engine mask cannot be read: "));
}

TEST_F(CtlDoctor, FindsSamplingPeriodsThatNobodyCanUse) {
    WriteStoredUINT(eKeySetStatic, cPeriod, 0);
    EXPECT_TRUE(Has(Of("levels", Examine(cFindings)), "warning: The sampling period is 0 ms"));
    WriteStoredUINT(eKeySetStatic, cPeriod, 3600000);
    EXPECT_TRUE(
        Has(Of("levels", Examine(cFindings)), "warning: The sampling period is 3600000 ms"));
}

TEST_F(CtlDoctor, FindsAnEngineThatPublishesNothing) {
    WriteMask(KORA4_ENGINE_FULL);
    EXPECT_TRUE(Has(Of("levels", Examine(cFindings)), "warning: No levels are published"));
}

TEST_F(CtlDoctor, FindsAnEngineThatHasStopped) {
    WriteMask(KORA4_ENGINE_FULL);
    WriteStoredBlob(eKeySetStatic, cLevels, Blob({-20, -30}));
    EXPECT_TRUE(Has(Of("levels", Examine(cFindings)), "the engine does not answer"));
}

TEST_F(CtlDoctor, TakesSilenceForWhatItIs) {
    WriteMask(KORA4_ENGINE_FULL);
    WriteStoredBlob(eKeySetStatic, cLevels, Blob({-144, -120}));
    EXPECT_TRUE(Has(Of("levels", Examine(cDone)), "there is only silence"));
}

TEST_F(CtlDoctor, FindsMalformedLevels) {
    WriteStoredBlob(eKeySetStatic, cLevels, {1, 2, 3});
    EXPECT_TRUE(
        Has(Of("levels", Examine(cFindings)), "error: The engine's levels are malformed: "));
}

TEST_F(CtlDoctor, IsContentWithAnEngineAtWork) {
    WriteMask(KORA4_ENGINE_STANDARD);
    std::atomic<bool> isOver = false;
    const UniqueHandle pause(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread engine([&] {
        for (float gain = -60; !isOver; gain += 0.01f) {
            WriteStoredBlob(eKeySetStatic, cLevels, Blob({gain}));
            WaitForSingleObject(pause.Get(), 30);
        }
    });
    const Json document = Examine(cDone);
    isOver = true;
    SetEvent(pause.Get());
    engine.join();
    EXPECT_EQ("ok: published and changing\n", Of("levels", document));
}

// ---- The library ------------------------------------------------------------------------

TEST_F(CtlDoctor, DeepSeesANotificationArriveAndChangesNoSetting) {
    const Json before = DoneJson({"dump", "--all"});
    const Json document = Examine(cDone, {"--deep"});
    EXPECT_TRUE(Has(Of("notifications", document), "ok: a notification arrived after "));
    EXPECT_EQ(13, document["summary"]["checks"]);
    EXPECT_EQ(before, DoneJson({"dump", "--all"}));
}

TEST_F(CtlDoctor, RefusesWhatMakesNoSense) {
    RefusedUnchanged({"doctor", "--deep", "--dry-run"}, cUsage, "--deep");
    RefusedUnchanged({"doctor", "--wait", "0"}, cUsage, "--wait");
    RefusedUnchanged({"doctor", "all"}, cUsage, "");
}

}  // namespace
}  // namespace kora4::test

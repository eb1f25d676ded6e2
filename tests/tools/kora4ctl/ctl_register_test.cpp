// SPDX-License-Identifier: MIT
// kora4ctl register, unregister and register --check.
#include <objbase.h>

#include <filesystem>
#include <fstream>

#include "base/text.h"
#include "contract/registry_paths.h"
#include "process/guarded_folder.h"
#include "support/key_security.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

constexpr DWORD cFindings = 7;

constexpr char cShape[] =
    R"({"registered": "boolean", "for": "string|null", "class": "string",
        "title": "string|null", "path": "string|null", "threadingModel": "string|null",
        "appId": "string|null", "typeLibrary": "string|null", "fileExists": "boolean",
        "fileVersion": "string|null", "apiVersion": "string|null", "toolVersion": "string",
        "findings": [{"severity": "string", "what": "string", "next": "string"}]})";

std::wstring ClassKey() {
    wchar_t guid[40] = {};
    StringFromGUID2(CLSID_VeltoKORA4APITestCoclass, guid, 40);
    return std::wstring(L"CLSID\\") + guid;
}

std::wstring ServerKey() {
    return ClassKey() + L"\\InprocServer32";
}

void WriteText(HKEY root, const std::wstring& key, const wchar_t* name,
               const std::wstring& text) {
    CreateKey(root, key);
    WriteValue(root, key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

std::string Library() {
    return tools::Narrow(LibraryPath());
}

// A file of the folder in which the test runs, gone at its end.
class OwnFile {
  public:
    explicit OwnFile(const std::string& name)
        : m_path(std::filesystem::absolute(name)), m_name(tools::Narrow(m_path.wstring())) {}
    ~OwnFile() {
        std::error_code error;
        std::filesystem::remove(m_path, error);
    }
    OwnFile(const OwnFile&) = delete;
    OwnFile& operator=(const OwnFile&) = delete;

    const std::string& Name() const { return m_name; }
    void CopyFrom(const std::wstring& other) const {
        std::filesystem::copy_file(other, m_path,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    void Write(const std::string& content) const {
        std::ofstream(m_path, std::ios::binary) << content;
    }
    // Puts a word into the head of the program, counted from its signature.
    void Patch(std::streamoff place, std::uint16_t word) const {
        std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
        std::uint32_t head = 0;
        file.seekg(0x3C).read(reinterpret_cast<char*>(&head), sizeof head);
        file.seekp(head + place).write(reinterpret_cast<const char*>(&word), sizeof word);
    }

  private:
    std::filesystem::path m_path;
    std::string m_name;
};

// kora4ctl in a folder of its own, without a library beside it.
class LoneTool {
  public:
    LoneTool() {
        std::filesystem::create_directories(m_folder);
        std::filesystem::copy_file(ProgramFolder() + L"\\kora4ctl.exe",
                                   m_folder / L"kora4ctl.exe",
                                   std::filesystem::copy_options::overwrite_existing);
    }
    ~LoneTool() {
        std::error_code error;
        std::filesystem::remove_all(m_folder, error);
    }
    LoneTool(const LoneTool&) = delete;
    LoneTool& operator=(const LoneTool&) = delete;

    ToolResult Run(const Words& arguments) const {
        const auto program = std::filesystem::relative(m_folder, ProgramFolder()) / L"kora4ctl";
        return RunTool(tools::Narrow(program.wstring()), arguments);
    }

  private:
    const std::filesystem::path m_folder = std::filesystem::absolute(L"lone");
};

class CtlRegister : public CtlTest {
  protected:
    void TearDown() override {
        RemoveKey(HKEY_CURRENT_USER, L"Software\\Classes\\" + ClassKey());
        CtlTest::TearDown();
    }

    // What --check says, with the code that it ends with.
    static Json Check(DWORD code, Words arguments = {}) {
        arguments.insert(arguments.begin(), {"register", "--check", "--json"});
        const ToolResult result = RunCtl(arguments);
        EXPECT_EQ(code, result.exitCode) << result;
        const Json document = ParsedJson(result.out);
        EXPECT_TRUE(HasShape(document, cShape));
        return document;
    }
    static std::string Findings(const Json& document) {
        std::string text;
        for (const Json& finding : document["findings"]) {
            EXPECT_NE("", finding["next"]) << finding;
            text += finding["severity"].get<std::string>() + ": " +
                    finding["what"].get<std::string>() + "\n";
        }
        return text;
    }
};

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(CtlRegister, CheckTellsEverythingOfAnOrderlyRegistration) {
    const Json found = Check(cDone);
    EXPECT_EQ(true, found["registered"]);
    EXPECT_EQ("machine", found["for"]);
    EXPECT_EQ(tools::Lower(Library()), tools::Lower(found["path"].get<std::string>()));
    EXPECT_EQ(found["typeLibrary"], found["path"]);
    EXPECT_EQ("Both", found["threadingModel"]);
    EXPECT_EQ(true, found["fileExists"]);
    EXPECT_EQ(found["fileVersion"], found["toolVersion"]);
    EXPECT_EQ(found["apiVersion"], found["toolVersion"]);
    EXPECT_EQ(Json::array(), found["findings"]);
    const std::string text = Done({"register", "--check"});
    EXPECT_TRUE(Has(text, "the machine (HKEY_LOCAL_MACHINE)")) << text;
    EXPECT_TRUE(Has(text, Library())) << text;
}

TEST_F(CtlRegister, CheckOfTheRegisteredFileIsContent) {
    EXPECT_EQ("", Findings(Check(cDone, {Library()})));
}

TEST_F(CtlRegister, CheckOfAnotherFileSaysWhichIsRegistered) {
    EXPECT_TRUE(Has(Findings(Check(cFindings, {"C:\\elsewhere\\QXA64T.dll"})),
                    "warning: Another file is registered: "));
}

TEST_F(CtlRegister, CheckWithoutARegistrationEndsWithFour) {
    Unregister();
    const Json found = Check(cNotReady);
    EXPECT_EQ(false, found["registered"]);
    EXPECT_EQ(nullptr, found["path"]);
    EXPECT_EQ("error: The library is not registered on this machine.\n", Findings(found));
}

TEST_F(CtlRegister, CheckFindsAMissingFile) {
    WriteText(HKEY_CLASSES_ROOT, ServerKey(), L"", L"C:\\gone\\QXA64T.dll");
    const Json found = Check(cFindings);
    EXPECT_EQ(false, found["fileExists"]);
    EXPECT_TRUE(Has(Findings(found), "error: The registered file does not exist."));
}

TEST_F(CtlRegister, CheckFindsAFileThatIsNoLibrary) {
    const OwnFile file("no-library.dll");
    file.Write("This is a text.");
    WriteText(HKEY_CLASSES_ROOT, ServerKey(), L"", tools::Widen(file.Name()));
    EXPECT_TRUE(
        Has(Findings(Check(cFindings)), "error: The registered file is not a library."));
}

TEST_F(CtlRegister, CheckFindsALibraryThatMakesNoObject) {
    WriteText(HKEY_CLASSES_ROOT, ServerKey(), L"", L"C:\\windows\\system32\\msvcrt.dll");
    EXPECT_TRUE(Has(Findings(Check(cFindings)),
                    "error: The registered library cannot create an object: "));
}

TEST_F(CtlRegister, CheckFindsAWrongAndAMissingThreadingModel) {
    WriteText(HKEY_CLASSES_ROOT, ServerKey(), L"ThreadingModel", L"Apartment");
    EXPECT_TRUE(Has(Findings(Check(cFindings)),
                    "error: The threading model is 'Apartment' and should be 'Both'"));
    RegDeleteKeyValueW(HKEY_CLASSES_ROOT, ServerKey().c_str(), L"ThreadingModel");
    EXPECT_TRUE(Has(Findings(Check(cFindings)), "error: The threading model is missing"));
}

TEST_F(CtlRegister, CheckFindsMissingEntriesOfTheApplication) {
    RemoveKey(HKEY_CLASSES_ROOT, L"AppID\\QXA64T.DLL");
    const Json found = Check(cFindings);
    EXPECT_EQ(nullptr, found["appId"]);
    EXPECT_TRUE(Has(Findings(found), "warning: The application entries (AppID)"));
}

TEST_F(CtlRegister, CheckFindsAMissingTypeLibrary) {
    wchar_t guid[40] = {};
    StringFromGUID2(LIBID_KORA4ASLLib, guid, 40);
    RemoveKey(HKEY_CLASSES_ROOT, std::wstring(L"TypeLib\\") + guid);
    const Json found = Check(cFindings);
    EXPECT_EQ(nullptr, found["typeLibrary"]);
    EXPECT_TRUE(Has(Findings(found), "warning: The type library is not registered."));
}

TEST_F(CtlRegister, RegistersTheLibraryBesideTheProgram) {
    Unregister();
    RemoveStore();
    const std::string text = Done({"register"});
    EXPECT_TRUE(Has(text, Library())) << text;
    EXPECT_TRUE(Has(text, "StaticKeys")) << text;
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetStatic)));
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetDynamic)));
    EXPECT_EQ(true, Check(cDone)["registered"]);
}

TEST_F(CtlRegister, MakesTheFolderOfJournalsAndBackups) {
    const std::filesystem::path folder = tools::Widen(tools::DataFolder());
    std::error_code isAbsent;
    std::filesystem::remove_all(folder, isAbsent);
    Done({"register"});
    EXPECT_TRUE(std::filesystem::is_directory(folder));
}

TEST_F(CtlRegister, RegistersAFileThatIsNamedAndSaysWhichWasBefore) {
    const OwnFile copy("copy of QXA64T.dll");
    copy.CopyFrom(LibraryPath());
    const Json document = DoneJson({"register", copy.Name()});
    EXPECT_EQ(document["path"], copy.Name());
    EXPECT_EQ(tools::Lower(document["before"].get<std::string>()), tools::Lower(Library()));
    EXPECT_EQ("", Done({"unregister", copy.Name()}));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, ClassKey()));
}

TEST_F(CtlRegister, IsSilentWhenToldSo) {
    const ToolResult result = RunCtl({"register", "--quiet"});
    EXPECT_EQ(cDone, result.exitCode);
    EXPECT_EQ("", result.out);
    EXPECT_EQ("", result.err);
}

TEST_F(CtlRegister, RefusesWhatIsNoSuchLibraryInASentence) {
    const std::string before = DumpKey(HKEY_CLASSES_ROOT, ClassKey());
    const OwnFile text("text.dll");
    text.Write("MZ, but nothing behind");
    const OwnFile narrow("narrow.dll");
    narrow.CopyFrom(LibraryPath());
    narrow.Patch(4, IMAGE_FILE_MACHINE_I386);
    const std::string program = tools::Narrow(ProgramFolder()) + "\\kora4ctl.exe";
    for (const char* verb : {"register", "unregister"}) {
        Refused({verb, "C:\\no\\such.dll"}, cBadInput, "does not exist.");
        Refused({verb, "C:\\windows"}, cBadInput, "is not a library.");
        Refused({verb, text.Name()}, cBadInput, "is not a library.");
        Refused({verb, program}, cBadInput, "is a program, not a library.");
        Refused({verb, narrow.Name()}, cBadInput, "is not a library for 64-bit x64 programs.");
        Refused({verb, "C:\\windows\\system32\\msvcrt.dll"}, cBadInput,
                "it does not export DllRegisterServer.");
    }
    EXPECT_EQ(before, DumpKey(HKEY_CLASSES_ROOT, ClassKey()));
}

TEST_F(CtlRegister, UnregistersAndKeepsTheSettings) {
    WriteStoredUINT(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), 2);
    const std::string store = StoreSnapshot();
    const Json document = DoneJson({"unregister"});
    EXPECT_EQ(false, document["registered"]);
    EXPECT_EQ(tools::Lower(document["before"].get<std::string>()), tools::Lower(Library()));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, ClassKey()));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, L"AppID\\QXA64T.DLL"));
    EXPECT_EQ(store, StoreSnapshot());
}

TEST_F(CtlRegister, UnregistersALibraryThatWasMoved) {
    WriteText(HKEY_CLASSES_ROOT, ServerKey(), L"", L"C:\\gone\\QXA64T.dll");
    const ToolResult get = RunCtl({"get", "profile"});
    EXPECT_EQ(cNotReady, get.exitCode) << get;
    EXPECT_TRUE(Has(get.err, "The registered file does not exist: C:\\gone\\QXA64T.dll"))
        << get;
    const LoneTool tool;
    const ToolResult result = tool.Run({"unregister"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, ClassKey()));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, L"AppID\\QXA64T.DLL"));
    EXPECT_EQ("error: The library is not registered on this machine.\n",
              Findings(Check(cNotReady)));
}

TEST_F(CtlRegister, UnregistersALibraryThatIsDamaged) {
    // Its head is whole, so only loading it shows the damage.
    const OwnFile damaged("damaged.dll");
    damaged.CopyFrom(LibraryPath());
    std::filesystem::resize_file(tools::Widen(damaged.Name()), 4096);
    WriteText(HKEY_CLASSES_ROOT, ServerKey(), L"", tools::Widen(damaged.Name()));
    Refused({"unregister", damaged.Name()}, cBadInput, "cannot be loaded");
    const LoneTool tool;
    const ToolResult result = tool.Run({"unregister"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, ClassKey()));
}

TEST_F(CtlRegister, NamesTheProgramsThatHaveLoadedTheLibrary) {
    const OwnFile copy("loaded.dll");
    copy.CopyFrom(LibraryPath());
    const ToolResult nobody = RunCtl({"register", "--in-use", copy.Name()});
    EXPECT_EQ("", nobody.out) << nobody;
    EXPECT_TRUE(Has(nobody.err, "No program has loaded " + copy.Name())) << nobody;
    const Words ask = {"register", "--in-use", copy.Name()};
    EXPECT_EQ(Json::array(), DoneJson(ask)["usedBy"]);
    const HMODULE loaded = LoadLibraryW(tools::Widen(copy.Name()).c_str());
    const Json users = DoneJson(ask)["usedBy"];
    FreeLibrary(loaded);
    ASSERT_EQ(1u, users.size()) << users;
    EXPECT_EQ(GetCurrentProcessId(), users[0]["process"]);
    EXPECT_TRUE(Has(users[0]["program"], "ctl_register_test.exe")) << users;
    // The registered one without a name: the fixture has it.
    EXPECT_EQ(users, DoneJson({"register", "--in-use"})["usedBy"]);
}

TEST_F(CtlRegister, LetsOnlyAdministratorsWriteAppKeysThatAreThereWhenToldSo) {
    CreateKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    WriteValue(HKEY_LOCAL_MACHINE, cAppKeysPath, L"command", REG_DWORD, &cDone, sizeof cDone);
    const std::string values = DumpKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    SetDacl(cAppKeysPath, cWorldAccess);
    const ToolResult result = RunCtl({"register", "--app-keys"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_TRUE(Has(result.err, "could write AppKeys until now")) << result;
    EXPECT_EQ(L"D:P(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;WD)", DaclOf(cAppKeysPath));
    EXPECT_EQ(values, DumpKey(HKEY_LOCAL_MACHINE, cAppKeysPath));
    RemoveKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    Done({"register", "--app-keys"});
    EXPECT_EQ(L"D:P(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;WD)", DaclOf(cAppKeysPath));
}

TEST_F(CtlRegister, GivesNoListToWhatALinkInPlaceOfAppKeysLeadsTo) {
    constexpr wchar_t cTarget[] = L"SOFTWARE\\KORA4 link target";
    CreateKey(HKEY_LOCAL_MACHINE, cTarget);
    SetDacl(cTarget, cWorldAccess);
    {
        const RegistryLink link(cAppKeysPath, cTarget);
        Refused({"register", "--app-keys"}, cFailed, "the application keys cannot be created");
    }
    EXPECT_EQ(cWorldAccess, DaclOf(cTarget));
    RemoveKey(HKEY_LOCAL_MACHINE, cTarget);
}

TEST_F(CtlRegister, UnregistersAndRemovesTheSettingsWhenToldSo) {
    WriteStoredUINT(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), 2);
    CreateKey(HKEY_LOCAL_MACHINE, std::wstring(cAppKeysPath) + L"\\below");
    Done({"reset", "--all"});
    const std::filesystem::path folder = tools::Widen(tools::DataFolder());
    EXPECT_FALSE(std::filesystem::is_empty(folder));
    const ToolResult result = RunCtl({"unregister", "--settings"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_TRUE(Has(result.err, "The settings are removed.")) << result;
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cBaseKeyPath));
    EXPECT_FALSE(std::filesystem::exists(folder));
    Done({"unregister", "--settings"});
}

TEST_F(CtlRegister, SaysWhichBackupsStayBecauseTheyAreOpen) {
    WriteStoredUINT(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), 2);
    Done({"reset", "--all"});
    const std::filesystem::path folder = tools::Widen(tools::DataFolder());
    ASSERT_FALSE(std::filesystem::is_empty(folder));
    for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
        const UniqueHandle open(
            CreateFileW(std::filesystem::directory_iterator(folder)->path().c_str(),
                        GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
        const ToolResult result = RunCtl({"unregister", "--settings"});
        EXPECT_EQ(cDone, result.exitCode) << result;
        EXPECT_TRUE(Has(result.err, "holds files that are open in another program")) << result;
    }
    EXPECT_FALSE(Has(RunCtl({"unregister", "--settings"}).err, "note: "));
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(CtlRegister, RemovesALinkAmongTheSettingsAndNotWhatItLeadsTo) {
    constexpr wchar_t cTarget[] = L"SOFTWARE\\KORA4 link target";
    CreateKey(HKEY_LOCAL_MACHINE, std::wstring(cTarget) + L"\\below");
    const std::wstring planted = std::wstring(cBaseKeyPath) + L"\\Planted";
    const RegistryLink link(planted, cTarget);
    Done({"unregister", "--settings"});
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cBaseKeyPath));
    CreateKey(HKEY_LOCAL_MACHINE, planted);  // which the end of the link deletes
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, std::wstring(cTarget) + L"\\below"));
    RemoveKey(HKEY_LOCAL_MACHINE, cTarget);
}

// ---- A registration of the user -----------------------------------------------------------

TEST_F(CtlRegister, NeverLoadsWhatOnlyAUserHasRegistered) {
    // It would remove its own entries, and make an object, if it were loaded.
    const OwnFile users("users.dll");
    users.CopyFrom(LibraryPath());
    Unregister();
    // A tool that has no other library beside it.
    const LoneTool tool;
    WriteText(HKEY_CURRENT_USER, L"Software\\Classes\\" + ServerKey(), L"",
              tools::Widen(users.Name()));
    const Json check = Check(cFindings);
    EXPECT_EQ("user", check["for"]);
    EXPECT_EQ(nullptr, check["apiVersion"]);
    const ToolResult result = tool.Run({"unregister", "--json"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    const Json document = ParsedJson(result.out);
    EXPECT_EQ(nullptr, document["before"]);
    EXPECT_EQ(document["beforeUser"], users.Name());
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, L"Software\\Classes\\" + ClassKey()));
}

TEST_F(CtlRegister, UnregistersOnlyOneLibraryOfTheMachineWhenToldSo) {
    WriteText(HKEY_CURRENT_USER, L"Software\\Classes\\" + ServerKey(), L"",
              L"C:\\users\\own.dll");
    const std::string store = StoreSnapshot();
    const ToolResult other =
        RunCtl({"unregister", "--settings", "--only", "C:\\elsewhere\\QXA64T.dll"});
    EXPECT_EQ(cDone, other.exitCode) << other;
    EXPECT_TRUE(Has(other.err, "Another library is registered, and stays so")) << other;
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\" + ServerKey()));
    EXPECT_EQ(store, StoreSnapshot());

    // The same file by another path.
    const std::string folder = tools::Narrow(ProgramFolder());
    const ToolResult own = RunCtl({"unregister", "--only", folder + "\\..\\bin\\qxa64t.dll"});
    EXPECT_EQ(cDone, own.exitCode) << own;
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\" + ClassKey()));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Software\\Classes\\" + ServerKey()));
}

TEST_F(CtlRegister, KnowsALibraryByTheShortNameOfItsFolderAndInAnyCase) {
    const std::filesystem::path folder =
        std::filesystem::absolute(L"T\u00F6ne in a long folder");
    std::filesystem::create_directory(folder);
    std::filesystem::copy_file(LibraryPath(), folder / L"QXA64T.dll",
                               std::filesystem::copy_options::overwrite_existing);
    wchar_t brief[MAX_PATH];
    ASSERT_NE(0u, GetShortPathNameW(folder.c_str(), brief, MAX_PATH));
    std::wstring capitals = folder.wstring();
    capitals.replace(capitals.find(L'\u00F6'), 1, L"\u00D6");
    for (const std::wstring& name : {std::wstring(brief), capitals}) {
        Done({"register", tools::Narrow((folder / L"QXA64T.dll").wstring())});
        const ToolResult result =
            RunCtl({"unregister", "--only", tools::Narrow(name + L"\\QXA64T.dll")});
        EXPECT_EQ(cDone, result.exitCode) << result;
        EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\" + ClassKey()))
            << result;
    }
    std::filesystem::remove_all(folder);
}

TEST_F(CtlRegister, TellsTheRegistrationsOfMachineAndUserApart) {
    WriteText(HKEY_CURRENT_USER, L"Software\\Classes\\" + ServerKey(), L"",
              L"C:\\users\\own.dll");
    EXPECT_TRUE(Has(Findings(Check(cFindings)), "hides the machine's"));
    const ToolResult result = RunCtl({"unregister"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_TRUE(
        Has(tools::Lower(result.err), tools::Lower("no longer registered: " + Library())))
        << result;
    EXPECT_TRUE(Has(result.err, "user's own registration was removed: C:\\users\\own.dll"))
        << result;
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, L"Software\\Classes\\" + ClassKey()));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, L"Software\\Classes\\" + ClassKey()));
}

TEST_F(CtlRegister, UnregisteringTwiceIsNoFailure) {
    Unregister();
    const ToolResult result = RunCtl({"unregister"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_TRUE(Has(result.err, "was not registered")) << result;
}

TEST_F(CtlRegister, OtherVerbsNameTheCommandThatMendsAMissingRegistration) {
    Unregister();
    const ToolResult result = RunCtl({"get", "profile"});
    EXPECT_EQ(cNotReady, result.exitCode) << result;
    EXPECT_TRUE(Has(result.err, "kora4ctl register")) << result;
}

}  // namespace
}  // namespace kora4::test

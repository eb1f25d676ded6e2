// SPDX-License-Identifier: MIT
// The installer for people and deployment tools, run silently: what it installs, replaces, puts
// back after a failure, refuses and removes. installers.sh starts this program.
#include <aclapi.h>
#include <sddl.h>

#include <fstream>

#include "contract/registry_paths.h"
#include "installer/installation.h"
#include "platform/handles.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t cBackups[] = L"C:\\ProgramData\\KORA4";
constexpr wchar_t cElsewhere[] = L"C:\\Elsewhere";
constexpr wchar_t cAdministratorsOnly[] = L"D:P(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;WD)";

// A file that no other program may open, as backup programs and scanners keep one for a while.
class LockedFile {
  public:
    explicit LockedFile(const fs::path& path)
        : m_file(
              CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(INVALID_HANDLE_VALUE, m_file.Get());
    }

  private:
    const UniqueHandle m_file;
};

// What an installation and its settings are, to be compared.
struct State {
    Files files = FilesOf();
    Files backups = FilesOf(cBackups);
    std::string registration = Registration();
    std::string store = StoreSnapshot();
    std::string product = DumpKey(HKEY_LOCAL_MACHINE, cProduct);
    std::wstring list = KeyExists(HKEY_LOCAL_MACHINE, cStaticKeysPath) ? DaclOf(cStaticKeysPath)
                                                                       : std::wstring();

    friend bool operator==(const State&, const State&) = default;
};

// The entry in the list of installed programs, which nobody can write for the length of a
// scope: the last step of an installation fails.
class ReadOnlyProduct {
  public:
    ReadOnlyProduct() { SetDacl(cProduct, L"D:(A;;KRWDSD;;;WD)"); }
    ~ReadOnlyProduct() { SetDacl(cProduct, L"D:(A;;KA;;;WD)"); }
    ReadOnlyProduct(const ReadOnlyProduct&) = delete;
    ReadOnlyProduct& operator=(const ReadOnlyProduct&) = delete;
};

// The access list of a folder, as far as the platform keeps it: Wine keeps who may do what of
// three kinds of users.
std::wstring ListOfFolder(const fs::path& folder) {
    UniqueLocalMemory descriptor;
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
              GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                    nullptr, nullptr, nullptr, nullptr, descriptor.Put()));
    wchar_t* text = nullptr;
    EXPECT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
        descriptor.Get(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    const std::wstring list = text;
    LocalFree(text);
    return list;
}

// What a folder gets that is made with a list; null: with the list of the folder above.
std::wstring ListOfNewFolder(const wchar_t* sddl) {
    UniqueLocalMemory descriptor;
    EXPECT_TRUE(!sddl || ConvertStringSecurityDescriptorToSecurityDescriptorW(
                             sddl, SDDL_REVISION_1, descriptor.Put(), nullptr));
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.Get(), FALSE};
    EXPECT_TRUE(CreateDirectoryW(cElsewhere, sddl ? &attributes : nullptr));
    const std::wstring list = ListOfFolder(cElsewhere);
    fs::remove(cElsewhere);
    return list;
}

class Setups : public Installation {};

void SetProductValue(const wchar_t* name, const std::wstring& text) {
    WriteValue(HKEY_LOCAL_MACHINE, cProduct, name, REG_SZ, text.c_str(),
               (text.size() + 1) * sizeof(wchar_t));
}

void SaveSettings() {
    WriteStoredUINT(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), KORA4_PROFILE_GAMES);
    std::ofstream(fs::path(cBackups) / L"backup.json") << "kept";
}

std::optional<std::wstring> ProductValue(const wchar_t* name) {
    return ReadString(HKEY_LOCAL_MACHINE, cProduct, name);
}

TEST_F(Setups, InstallRegisterAndLetAClientWork) {
    const Outcome run = RunSetup(cNew);
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_TRUE(run.Says("is installed and registered")) << run;
    EXPECT_NE(std::string::npos, Ctl(L"register --check").find("The registration is valid."));
    EXPECT_EQ(cWorldAccess, DaclOf(cBaseKeyPath));
    EXPECT_EQ(cWorldAccess, DaclOf(cStaticKeysPath));
    EXPECT_EQ(cWorldAccess, DaclOf(cDynamicKeysPath));
    EXPECT_EQ(cAdministratorsOnly, DaclOf(cAppKeysPath));
    EXPECT_EQ(L"library,tools,panel", ProductValue(L"Features"));
    EXPECT_EQ(cNew, ProductValue(L"DisplayVersion"));
    const ToolResult first = RunTool("kora4_first_client", {});
    EXPECT_EQ(0u, first.exitCode) << first;
    EXPECT_EQ("music\n", Ctl(L"get profile"));
    // Nothing is left of the run itself.
    for (const auto& entry : fs::directory_iterator(cFolder))
        EXPECT_NE(0u, entry.path().filename().wstring().find(L".setup")) << entry.path();
}

TEST_F(Setups, RepairWhatWasDeletedAndWhatOthersMayWrite) {
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    const Files installed = FilesOf();
    fs::remove(cLibrary);
    std::ofstream(fs::path(cFolder) / L"bin\\kora4sim.exe") << "damaged";
    SetDacl(cAppKeysPath, cWorldAccess);
    Ctl(L"register --check", 7);
    const Outcome run = RunSetup(cNew);
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_TRUE(installed == FilesOf());
    EXPECT_EQ(cAdministratorsOnly, DaclOf(cAppKeysPath));
    Ctl(L"register --check");
}

TEST_F(Setups, UpgradeWhileAClientRunsAndKeepItsSettings) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    const std::string old = BytesOf(cLibrary);
    EXPECT_TRUE(fs::exists(fs::path(cFolder) / L"bin\\gone.txt"));
    std::string store;
    {
        Client client;
        EXPECT_TRUE(client->SetActiveProfile(KORA4_PROFILE_GAMES));
        EXPECT_TRUE(client->SetVolumeLeveler(3));
        store = StoreSnapshot();
        const Outcome run = RunSetup(cNew);
        EXPECT_EQ(cRestart, run.code) << run;
        EXPECT_TRUE(run.Says("setup_test.exe")) << run;
        EXPECT_EQ(store, StoreSnapshot());
        EXPECT_TRUE(old != BytesOf(cLibrary));
        EXPECT_EQ(cNew, ProductValue(L"DisplayVersion"));
        // One registration, and a new client beside the old one.
        Ctl(L"register --check");
        EXPECT_EQ("games\n", Ctl(L"get profile"));
        EXPECT_EQ(KORA4_PROFILE_GAMES, *client->GetActiveProfile());
        EXPECT_TRUE(client->SetActiveProfile(KORA4_PROFILE_MUSIC));
        EXPECT_EQ("music\n", Ctl(L"get profile"));
    }
    // What belongs to the old version only is gone; its library goes when the machine restarts.
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"bin\\gone.txt"));
    EXPECT_EQ(2, LibraryCount());
    RunToEnd(L"wineboot.exe -r", L"none");
    EXPECT_EQ(1, LibraryCount());
    EXPECT_TRUE(old != BytesOf(cLibrary));
    Ctl(L"register --check");
}

TEST_F(Setups, PutEverythingBackWhenAFileCannotBeReplaced) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    SaveSettings();
    // Registering would reset it.
    SetDacl(cStaticKeysPath, L"D:(A;;KA;;;BA)(A;;KR;;;WD)");
    const State before;
    {
        const LockedFile locked(fs::path(cFolder) / L"bin\\kora4ctl.exe");
        for (const wchar_t* features : {L"", L"/FEATURES=library"}) {
            const Outcome run = RunSetup(cNew, features);
            EXPECT_EQ(cFailed, run.code) << run;
            EXPECT_TRUE(run.Says("kora4ctl.exe cannot be moved to ")) << run;
            EXPECT_TRUE(run.Says("Nothing was changed.")) << run;
        }
        const Outcome run = RunRemoval(L"/REMOVESETTINGS");
        EXPECT_EQ(cFailed, run.code) << run;
        EXPECT_TRUE(run.Says("Nothing was changed.")) << run;
    }
    EXPECT_TRUE(before == State());
    Ctl(L"get profile");
}

TEST_F(Setups, PutEverythingBackWhenTheLastStepFails) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    SaveSettings();
    const State before;
    const ReadOnlyProduct product;
    const Outcome run = RunSetup(cNew);
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_TRUE(
        run.Says("list of installed programs cannot be written. Everything was put back"))
        << run;
    EXPECT_TRUE(before == State());
    Ctl(L"get profile");
}

TEST_F(Setups, ChangeNothingWhenTheFolderCannotBeMade) {
    const std::wstring folder = std::wstring(L"/D=") + cElsewhere + L"\\below\\KORA4";
    EXPECT_EQ(cInstalled, RunSetup(cOld, folder).code);
    SaveSettings();
    fs::rename(cElsewhere, L"C:\\Moved");
    std::ofstream(cElsewhere) << "a file in place of a folder";
    State before;
    Outcome run = RunSetup(cNew);
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_TRUE(run.Says("The folder C:\\Elsewhere cannot be created: ")) << run;
    EXPECT_TRUE(run.Says("Nothing was changed.")) << run;
    EXPECT_EQ(cFailed, RunRemoval(L"/REMOVESETTINGS").code);
    EXPECT_TRUE(before == State());

    SetProductValue(L"InstallLocation", L"Q:\\KORA4");
    before = State();
    run = RunSetup(cNew);
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_TRUE(run.Says("its drive is not there. Nothing was changed.")) << run;
    EXPECT_EQ(cFailed, RunRemoval(L"/REMOVESETTINGS").code);
    EXPECT_TRUE(before == State());

    // Nothing is installed, and settings are there from before.
    SetProductValue(L"InstallLocation", L"C:\\Moved\\below\\KORA4");
    EXPECT_EQ(cInstalled, RunRemoval().code);
    before = State();
    EXPECT_NE("", before.store);
    fs::remove(cElsewhere);
    run = RunSetup(cNew, folder + std::wstring(300, L'x'));
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_TRUE(run.Says(" cannot be created: ")) << run;
    EXPECT_TRUE(before == State());
    EXPECT_FALSE(fs::exists(cElsewhere));
    fs::remove_all(L"C:\\Moved");
}

TEST_F(Setups, ChangeNothingWithoutTheListOfFiles) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    SaveSettings();
    const fs::path list = fs::path(cFolder) / L"files.txt";
    State before;
    {
        const LockedFile locked(list);
        for (const Outcome& run : {RunRemoval(), RunSetup(cNew)}) {
            EXPECT_EQ(cFailed, run.code) << run;
            EXPECT_TRUE(
                run.Says("files.txt, which says what was installed, cannot be read. "
                         "Nothing was changed."))
                << run;
        }
    }
    EXPECT_TRUE(before == State());

    fs::remove(list);
    before = State();
    const Outcome removal = RunRemoval();
    EXPECT_EQ(cFailed, removal.code) << removal;
    EXPECT_TRUE(removal.Says("has no files.txt")) << removal;
    EXPECT_TRUE(removal.Says("run the setup again, then remove")) << removal;
    EXPECT_TRUE(before == State());
    const Outcome upgrade = RunSetup(cNew);
    EXPECT_EQ(cInstalled, upgrade.code) << upgrade;
    EXPECT_TRUE(upgrade.Says("files of 7.2.7000.3 that 7.2.7000.4 lacks stay")) << upgrade;
    EXPECT_TRUE(fs::exists(list));
    EXPECT_TRUE(fs::exists(fs::path(cFolder) / L"bin\\gone.txt"));
}

TEST_F(Setups, FinishWhatAKilledRunHasLeft) {
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    const Files installed = FilesOf();
    // Everything moved aside, nothing put in its place.
    const fs::path left = fs::path(cFolder) / L".setup-12345678";
    fs::create_directories(left / L"old");
    fs::rename(fs::path(cFolder) / L"bin", left / L"old\\bin");
    fs::rename(fs::path(cFolder) / L"files.txt", left / L"old\\files.txt");
    const Outcome run = RunSetup(cNew);
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_TRUE(installed == FilesOf());
    EXPECT_FALSE(fs::exists(left));
    // What is still in use has no next run.
    fs::create_directories(left / L"old");
    fs::copy_file(cLibrary, left / L"old\\QXA64T.dll");
    const HMODULE used = LoadLibraryW((left / L"old\\QXA64T.dll").c_str());
    EXPECT_NE(nullptr, used);
    EXPECT_EQ(cRestart, RunRemoval().code);
    FreeLibrary(used);
    RunToEnd(L"wineboot.exe -r", L"none");
    EXPECT_FALSE(fs::exists(cFolder));
}

TEST_F(Setups, LeaveNothingOfTheirOwnWhenRegisteringFails) {
    CreateKey(HKEY_LOCAL_MACHINE, cBaseKeyPath);
    const RegistryLink link(cStaticKeysPath, L"SOFTWARE\\nowhere");
    // What the administrator has registered for himself.
    const std::wstring ofUser = L"Software\\Classes\\AppID\\QXA64T.DLL\\of the user";
    CreateKey(HKEY_CURRENT_USER, ofUser);
    const Outcome run = RunSetup(cNew, L"/D=C:\\Elsewhere\\below\\KORA4");
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_TRUE(run.Says("The library cannot be registered: ")) << run;
    EXPECT_FALSE(fs::exists(cElsewhere));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, ofUser));
    RemoveKey(HKEY_CURRENT_USER, L"Software\\Classes\\AppID\\QXA64T.DLL");
    EXPECT_EQ("", Registration());
    EXPECT_EQ("", DumpKey(HKEY_LOCAL_MACHINE, cProduct));
}

TEST_F(Setups, RegisterAgainWhatWasRegisteredWhenRegisteringFails) {
    const RegisteredLibrary registered;
    const std::string before = Registration();
    RemoveKey(HKEY_LOCAL_MACHINE, cStaticKeysPath);
    const RegistryLink link(cStaticKeysPath, L"SOFTWARE\\nowhere");
    // The same link is in the way of registering again, which has written the class by then.
    EXPECT_EQ(cHalfWay, RunSetup(cOld).code);
    EXPECT_FALSE(fs::exists(cFolder));
    EXPECT_EQ(before, Registration());
}

TEST_F(Setups, SayWhatCannotBePutBack) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    const Files files = FilesOf();
    fs::create_directory(cElsewhere);
    const fs::path other = fs::path(cElsewhere) / L"QXA64T.dll";
    fs::copy_file(cLibrary, other);
    Ctl(L"register " + other.wstring());
    fs::remove_all(cElsewhere);
    const ReadOnlyProduct product;
    const Outcome run = RunSetup(cNew);
    EXPECT_EQ(cHalfWay, run.code) << run;
    EXPECT_TRUE(
        run.Says("Not everything could be put back. The library that was registered, "
                 "C:\\Elsewhere\\QXA64T.dll, cannot be registered again: "))
        << run;
    EXPECT_TRUE(files == FilesOf());
}

TEST_F(Setups, AddAndRemoveFeatures) {
    EXPECT_EQ(cInstalled, RunSetup(cNew, L"/FEATURES=library").code);
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"bin\\kora4ctl.exe"));
    EXPECT_EQ(cInstalled, RunSetup(cNew, L"/FEATURES=tools,sdk").code);
    EXPECT_TRUE(fs::exists(fs::path(cFolder) / L"include\\kora4.hpp"));
    EXPECT_EQ(L"library,tools,sdk", ProductValue(L"Features"));
    // Without a word, what is installed stays.
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    EXPECT_EQ(L"library,tools,sdk", ProductValue(L"Features"));
    EXPECT_EQ(cInstalled, RunSetup(cNew, L"/FEATURES=tools").code);
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"include"));
    // What another version had, and this one has not.
    SetProductValue(L"Features", L"library,other,tools");
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    EXPECT_EQ(L"library,tools", ProductValue(L"Features"));
    const Outcome run = RunSetup(cNew, L"/FEATURES=tools,sdks");
    EXPECT_EQ(cCommandLine, run.code) << run;
    EXPECT_TRUE(run.Says("There is no feature 'sdks'")) << run;
}

TEST_F(Setups, RefuseSwitchesThatDoNotExist) {
    for (const wchar_t* wrong :
         {L"/FEATURE=tools", L"/FEATURES=tools, sdk", L"/SILENT", L"tools"}) {
        const Outcome run = RunSetup(cNew, wrong);
        EXPECT_EQ(cCommandLine, run.code) << run;
        EXPECT_TRUE(run.Says("There is no switch '")) << run;
    }
    Outcome run = RunSetup(cNew, L"/REMOVESETTINGS");
    EXPECT_EQ(cCommandLine, run.code) << run;
    EXPECT_TRUE(run.Says("belongs to /UNINSTALL")) << run;
    for (const wchar_t* folder :
         {L"C:\\Elsewhere /FEATURES=tools", L"Q:\\KORA4", L"KORA4", L"..\\KORA4"}) {
        run = RunSetup(cNew, std::wstring(L"/D=") + folder);
        EXPECT_EQ(cCommandLine, run.code) << run;
        EXPECT_TRUE(run.Says("/D is the last switch, and takes a full path")) << run;
    }
    EXPECT_EQ(cNoLog, RunSetup(cNew, L"/LOG=C:\\Elsewhere\\setup.log").code);
    EXPECT_FALSE(fs::exists(cFolder));
}

TEST_F(Setups, TakeSwitchesInAnyCaseAndAnyNameOfALog) {
    const fs::path log = fs::absolute(L"log of a setup.log");
    const std::wstring setup =
        Installer(L"kora4asl-" + std::wstring(cOld) + L"-setup.exe").wstring();
    for (const std::wstring& argument :
         {L"\"/log=" + log.wstring() + L"\"", L"/LOG=\"" + log.wstring() + L"\""}) {
        const Outcome run =
            RunToEnd(L"\"" + setup + L"\" /s /features=Library " + argument, log);
        EXPECT_EQ(cInstalled, run.code) << run;
        EXPECT_TRUE(run.Says("is installed and registered")) << run;
    }
    EXPECT_EQ(L"library", ProductValue(L"Features"));
}

TEST_F(Setups, RefuseAnOlderVersionAndASecondFolder) {
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    const Files files = FilesOf();
    Outcome run = RunSetup(cOld);
    EXPECT_EQ(cOtherProduct, run.code) << run;
    EXPECT_TRUE(run.Says("KORA4 ASL 7.2.7000.4 is installed, which is newer")) << run;
    run = RunSetup(cNew, L"/D=C:\\Elsewhere");
    EXPECT_EQ(cOtherProduct, run.code) << run;
    EXPECT_FALSE(fs::exists(L"C:\\Elsewhere"));
    EXPECT_TRUE(files == FilesOf());
}

TEST_F(Setups, InstallInAnotherFolderThatOnlyAdministratorsWrite) {
    EXPECT_EQ(cInstalled, RunSetup(cOld, L"/D=C:\\Töne & mehr\\KORA4").code);
    const std::wstring list = ListOfNewFolder(
        L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200A9;;;BU)(A;OICI;0x1200A9;;;AC)");
    EXPECT_NE(list, ListOfNewFolder(nullptr));
    EXPECT_EQ(list, ListOfFolder(L"C:\\Töne & mehr"));
    EXPECT_EQ(list, ListOfFolder(L"C:\\Töne & mehr\\KORA4"));
    EXPECT_FALSE(fs::exists(cFolder));
    EXPECT_EQ(L"C:\\Töne & mehr\\KORA4", ProductValue(L"InstallLocation"));
    EXPECT_NE(std::string::npos, Registration().find("mehr\\KORA4\\bin\\QXA64T.dll"));
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    EXPECT_FALSE(fs::exists(cFolder));
    EXPECT_EQ(cInstalled, RunRemoval().code);
    EXPECT_EQ("", Registration());
    EXPECT_FALSE(fs::exists(L"C:\\Töne & mehr\\KORA4"));
    fs::remove(L"C:\\Töne & mehr");
}

TEST_F(Setups, RefuseAnOldWindowsUsersAndASecondSetup) {
    const std::wstring versions = L"Software\\Wine\\AppDefaults\\kora4asl-7.2.7000.4-setup.exe";
    const wchar_t cSeven[] = L"win7";
    CreateKey(HKEY_CURRENT_USER, versions);
    WriteValue(HKEY_CURRENT_USER, versions, L"Version", REG_SZ, cSeven, sizeof cSeven);
    EXPECT_EQ(cOldSystem, RunSetup(cNew).code);
    RemoveKey(HKEY_CURRENT_USER, versions);

    UniqueHandle own;
    UniqueHandle restricted;
    BYTE sid[SECURITY_MAX_SID_SIZE] = {};
    DWORD size = sizeof sid;
    EXPECT_TRUE(CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid, &size));
    SID_AND_ATTRIBUTES administrators{sid, 0};
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.Put()));
    EXPECT_TRUE(CreateRestrictedToken(own.Get(), DISABLE_MAX_PRIVILEGE, 1, &administrators, 0,
                                      nullptr, 0, nullptr, restricted.Put()));
    EXPECT_EQ(cNotAdmin, RunSetup(cNew, {}, restricted.Get()).code);

    const fs::path lock = L"C:\\windows\\Logs\\KORA4\\setup.lock";
    fs::create_directories(lock.parent_path());
    {
        const UniqueHandle other(CreateFileW(lock.c_str(), GENERIC_WRITE, 0, nullptr,
                                             CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE,
                                             nullptr));
        // Which writes the same log.
        const UniqueHandle log(CreateFileW(LogPath().c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                           nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE,
                                           nullptr));
        EXPECT_EQ(cBusy, RunSetup(cNew).code);
    }
    EXPECT_FALSE(fs::exists(lock));
    EXPECT_FALSE(fs::exists(cFolder));
    EXPECT_EQ("", Registration());
}

TEST_F(Setups, RemoveAndKeepTheSettings) {
    EXPECT_EQ(cInstalled, RunSetup(cNew, L"/FEATURES=all").code);
    Ctl(L"set profile games");
    const std::string store = StoreSnapshot();
    const Outcome run = RunRemoval();
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_EQ("", Registration());
    EXPECT_EQ("", DumpKey(HKEY_LOCAL_MACHINE, cProduct));
    EXPECT_EQ(store, StoreSnapshot());
    EXPECT_FALSE(fs::exists(fs::path(cFolder).parent_path()));
    EXPECT_EQ(cNotInstalled, RunRemoval().code);
    EXPECT_EQ(cInstalled, RunSetup(cNew).code);
    EXPECT_EQ("games\n", Ctl(L"get profile"));
}

TEST_F(Setups, RemoveThroughTheProgramThatIsInstalled) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    const std::wstring folder = cFolder;
    EXPECT_EQ(L"\"" + folder + L"\\uninstall.exe\" /S", ProductValue(L"QuietUninstallString"));
    const std::wstring command = *ProductValue(L"QuietUninstallString");
    EXPECT_EQ(cCommandLine, RunToEnd(command + L" _?=" + folder, L"none").code);
    EXPECT_NE("", Registration());
    // A copy of it does the work, for which nobody can wait.
    EXPECT_EQ(cInstalled, RunToEnd(command, L"none").code);
    for (int i = 0; i < 600 && fs::exists(cFolder); ++i)
        Sleep(100);
    EXPECT_FALSE(fs::exists(cFolder));
    EXPECT_EQ("", Registration());
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, cStaticKeysPath));
}

TEST_F(Setups, RemoveTheSettingsWhenToldSo) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    Ctl(L"set profile games");
    Ctl(L"reset --all");
    EXPECT_TRUE(fs::exists(L"C:\\ProgramData\\KORA4"));
    const Outcome run = RunRemoval(L"/REMOVESETTINGS");
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cBaseKeyPath));
    EXPECT_FALSE(fs::exists(cBackups));
}

TEST_F(Setups, SayThatSettingsMayBeGoneWhenNotAllCanBeRemoved) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    const Files files = FilesOf();
    const std::string registration = Registration();
    {
        const std::wstring key = std::wstring(cBaseKeyPath) + L"\\Denied";
        CreateKey(HKEY_LOCAL_MACHINE, key);
        const DeniedKey denied(key);
        const Outcome run = RunRemoval(L"/REMOVESETTINGS");
        EXPECT_EQ(cHalfWay, run.code) << run;
        EXPECT_TRUE(run.Says("The settings cannot be removed: ")) << run;
        EXPECT_TRUE(run.Says("Not everything could be put back. Settings may be gone.")) << run;
    }
    EXPECT_TRUE(files == FilesOf());
    EXPECT_EQ(registration, Registration());
    EXPECT_EQ(cInstalled, RunRemoval(L"/REMOVESETTINGS").code);
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cBaseKeyPath));
    EXPECT_FALSE(fs::exists(cBackups));
}

TEST_F(Setups, RemoveADamagedLibraryAndLeaveAnother) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    fs::resize_file(cLibrary, 4096);
    EXPECT_EQ(cInstalled, RunRemoval().code);
    EXPECT_EQ("", Registration());
    EXPECT_FALSE(fs::exists(cFolder));

    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    const RegisteredLibrary other;
    const std::string registration = Registration();
    const std::string store = StoreSnapshot();
    const Outcome run = RunRemoval(L"/REMOVESETTINGS");
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_TRUE(run.Says("Another library is registered, and stays so")) << run;
    EXPECT_EQ(registration, Registration());
    EXPECT_EQ(store, StoreSnapshot());
    EXPECT_FALSE(fs::exists(cFolder));
}

// In the folder of the setup, with the settings beside it, as docs/deployment.md has it.
TEST_F(Setups, DeployByTheBatchFileOfTheDocument) {
    const fs::path settings = Installer(L"settings.json");
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    Ctl(L"set profile games");
    Ctl(L"dump \"" + settings.wstring() + L"\"");
    Ctl(L"set profile music");
    const std::wstring deploy = L"cmd.exe /c \"" + Installer(L"deploy.cmd").wstring() + L"\"";
    {
        const Client client;
        EXPECT_EQ(cRestart, RunToEnd(deploy, L"none").code);
        EXPECT_EQ(cNew, ProductValue(L"DisplayVersion"));
        EXPECT_EQ("games\n", Ctl(L"get profile"));
    }
    EXPECT_EQ(cInstalled, RunToEnd(deploy, L"none").code);
    std::ofstream(settings) << "no document";
    constexpr DWORD cBadInput = 5;
    EXPECT_EQ(cBadInput, RunToEnd(deploy, L"none").code);
    SetProductValue(L"DisplayVersion", L"7.2.7000.5");
    EXPECT_EQ(cOtherProduct, RunToEnd(deploy, L"none").code);
    RunToEnd(L"wineboot.exe -r", L"none");
}

TEST_F(Setups, RemoveWhileAClientRunsOrTheLibraryIsGone) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    {
        Client client;
        const Outcome run = RunRemoval();
        EXPECT_EQ(cRestart, run.code) << run;
        EXPECT_TRUE(run.Says("setup_test.exe")) << run;
        EXPECT_EQ("", Registration());
        EXPECT_FALSE(fs::exists(cLibrary));
        EXPECT_TRUE(client->SetActiveProfile(KORA4_PROFILE_MUSIC));
        // What waits for the restart does not touch what is installed before it.
        EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    }
    RunToEnd(L"wineboot.exe -r", L"none");
    Ctl(L"get profile");
    fs::remove(cLibrary);
    EXPECT_EQ(cInstalled, RunRemoval().code);
    EXPECT_EQ("", Registration());
}

}  // namespace
}  // namespace kora4::test

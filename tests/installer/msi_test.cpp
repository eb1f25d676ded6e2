// SPDX-License-Identifier: MIT
// The package for deployment tools, run silently by the platform's installer: what it installs,
// replaces, refuses and removes. Rolling back after a failure is the platform's own.
// installers.sh starts this program.
#include <sstream>

#include "contract/registry_paths.h"
#include "installer/installation.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

namespace fs = std::filesystem;

std::wstring Package(const std::wstring& version) {
    return L"\"" + Installer(L"kora4asl-" + version + L"-x64.msi").wstring() + L"\"";
}

// Of this product, in the list of installed programs.
std::vector<std::string> ListedVersions() {
    std::istringstream list(DumpKey(HKEY_LOCAL_MACHINE, fs::path(cProduct).parent_path()));
    std::vector<std::string> versions;
    for (std::string line; std::getline(list, line);)
        if (line.starts_with("DisplayVersion REG_SZ 7.2.7000."))
            versions.push_back(line);
    return versions;
}

class Packages : public Installation {
  protected:
    void TearDown() override {
        RunMsi(L"/x " + Package(cNew));
        RunMsi(L"/x " + Package(cOld));
        Installation::TearDown();
    }
};

TEST_F(Packages, InstallRegisterAndLetAClientWorkThenGoAndKeepTheSettings) {
    const Outcome run = RunMsi(L"/i " + Package(cNew));
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_NE(std::string::npos, Ctl(L"register --check").find("The registration is valid."));
    EXPECT_EQ(cWorldAccess, DaclOf(cStaticKeysPath));
    EXPECT_EQ(L"D:P(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;WD)", DaclOf(cAppKeysPath));
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"include"));
    const ToolResult first = RunTool("kora4_first_client", {});
    EXPECT_EQ(0u, first.exitCode) << first;
    const std::string store = StoreSnapshot();

    const Outcome removal = RunMsi(L"/x " + Package(cNew));
    EXPECT_EQ(cInstalled, removal.code) << removal;
    EXPECT_EQ("", Registration());
    EXPECT_TRUE(FilesOf().empty());
    EXPECT_EQ(store, StoreSnapshot());
}

TEST_F(Packages, RepairADeletedLibraryAndAddFeatures) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cNew) + L" ADDLOCAL=Library").code);
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"bin\\kora4ctl.exe"));
    const std::string library = BytesOf(cLibrary);
    fs::remove(cLibrary);
    const Outcome repair =
        RunMsi(L"/i " + Package(cNew) + L" REINSTALL=ALL REINSTALLMODE=amus");
    EXPECT_EQ(cInstalled, repair.code) << repair;
    EXPECT_TRUE(library == BytesOf(cLibrary));
    const Outcome adding = RunMsi(L"/i " + Package(cNew) + L" ADDLOCAL=Tools,Sdk");
    EXPECT_EQ(cInstalled, adding.code) << adding;
    EXPECT_TRUE(fs::exists(fs::path(cFolder) / L"include\\kora4.hpp"));
    Ctl(L"register --check");
}

TEST_F(Packages, ReplaceTheVersionBeforeAndKeepTheSettings) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cOld)).code);
    EXPECT_TRUE(fs::exists(fs::path(cFolder) / L"bin\\gone.txt"));
    Ctl(L"set profile games");
    const std::string store = StoreSnapshot();
    const Outcome run = RunMsi(L"/i " + Package(cNew));
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_EQ(store, StoreSnapshot());
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"bin\\gone.txt"));
    Ctl(L"register --check");
}

TEST_F(Packages, ReplaceTheVersionBeforeWhileAClientRuns) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cOld)).code);
    const std::string old = BytesOf(cLibrary);
    {
        Client client;
        EXPECT_TRUE(client->SetActiveProfile(KORA4_PROFILE_GAMES));
        EXPECT_TRUE(client->SetVolumeLeveler(3));
        const std::string store = StoreSnapshot();
        const Outcome run = RunMsi(L"/i " + Package(cNew));
        EXPECT_EQ(cRestart, run.code) << run;
        EXPECT_EQ(store, StoreSnapshot());
        EXPECT_EQ(std::vector<std::string>{"DisplayVersion REG_SZ 7.2.7000.4"},
                  ListedVersions());
        // The client and a program that starts now work on the same settings. Windows moves a
        // library aside that is loaded; Wine leaves it in its place until the restart.
        EXPECT_EQ("games\n", Ctl(L"get profile"));
        EXPECT_TRUE(client->SetActiveProfile(KORA4_PROFILE_MUSIC));
        EXPECT_EQ("music\n", Ctl(L"get profile"));
        Ctl(L"set profile movie");
        EXPECT_EQ(KORA4_PROFILE_MOVIE, *client->GetActiveProfile());
    }
    const std::string store = StoreSnapshot();
    RunToEnd(L"wineboot.exe -r", L"none");
    EXPECT_TRUE(old != BytesOf(cLibrary));
    EXPECT_EQ(1, LibraryCount());
    Ctl(L"register --check");
    EXPECT_EQ(store, StoreSnapshot());
}

// The features are chosen again because Wine, unlike Windows, does not take them over; that the
// package says so, installers.sh tests.
TEST_F(Packages, KeepTheFolderOfTheVersionBefore) {
    const fs::path folder = L"C:\\Töne & mehr\\KORA4";
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cOld) + L" ADDLOCAL=Library INSTALLDIR=\"" +
                                 folder.wstring() + L"\"")
                              .code);
    for (const wchar_t* again : {L" ADDLOCAL=Library", L" REINSTALL=ALL REINSTALLMODE=amus"}) {
        const Outcome run = RunMsi(L"/i " + Package(cNew) + again);
        EXPECT_EQ(cInstalled, run.code) << run;
        EXPECT_FALSE(fs::exists(cFolder));
        EXPECT_TRUE(fs::exists(folder / L"bin\\QXA64T.dll"));
        EXPECT_FALSE(fs::exists(folder / L"bin\\kora4ctl.exe"));
        EXPECT_FALSE(fs::exists(folder / L"bin\\gone.txt"));
        EXPECT_NE(std::string::npos, Registration().find("mehr\\KORA4\\bin\\QXA64T.dll"));
    }
    EXPECT_EQ(cInstalled, RunMsi(L"/x " + Package(cNew)).code);
    EXPECT_EQ("", Registration());
    EXPECT_TRUE(FilesOf(folder).empty());
    fs::remove_all(folder.parent_path());
}

TEST_F(Packages, LeaveAFeatureOut) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cNew) + L" ADDLOCAL=ALL").code);
    const Outcome run = RunMsi(L"/i " + Package(cNew) + L" REMOVE=Sdk");
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_FALSE(fs::exists(fs::path(cFolder) / L"include"));
    Ctl(L"register --check");
}

TEST_F(Packages, RefuseAVersionWhoseFourthNumberIsLower) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cNew)).code);
    const Files files = FilesOf();
    const Outcome run = RunMsi(L"/i " + Package(cOld));
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_TRUE(files == FilesOf());
    EXPECT_EQ(std::vector<std::string>{"DisplayVersion REG_SZ 7.2.7000.4"}, ListedVersions());
    Ctl(L"register --check");
}

TEST_F(Packages, RemoveADamagedLibraryAndLeaveAnother) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cNew)).code);
    fs::resize_file(cLibrary, 4096);
    Outcome run = RunMsi(L"/x " + Package(cNew));
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_EQ("", Registration());

    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cNew)).code);
    const RegisteredLibrary other;
    const std::string registration = Registration();
    const std::string store = StoreSnapshot();
    run = RunMsi(L"/x " + Package(cNew) + L" REMOVESETTINGS=1");
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_EQ(registration, Registration());
    EXPECT_EQ(store, StoreSnapshot());
    EXPECT_TRUE(FilesOf().empty());
}

// Windows refuses with 1605 before anything runs; Wine goes through the package.
TEST_F(Packages, LeaveAnotherVersionAlone) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cNew)).code);
    const Files files = FilesOf();
    const std::string registration = Registration();
    RunMsi(L"/x " + Package(cOld));
    EXPECT_TRUE(files == FilesOf());
    EXPECT_EQ(registration, Registration());
}

TEST_F(Packages, RemoveTheSettingsWhenToldSo) {
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cOld)).code);
    Ctl(L"set profile games");
    const Outcome run = RunMsi(L"/x " + Package(cOld) + L" REMOVESETTINGS=1");
    EXPECT_EQ(cInstalled, run.code) << run;
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cBaseKeyPath));
}

TEST_F(Packages, AndTheSetupRefuseEachOther) {
    EXPECT_EQ(cInstalled, RunSetup(cOld).code);
    // Windows Installer writes the reason into its log; that of Wine does not.
    Outcome run = RunMsi(L"/i " + Package(cOld));
    EXPECT_EQ(cFailed, run.code) << run;
    EXPECT_EQ(cInstalled, RunRemoval().code);
    EXPECT_EQ(cInstalled, RunMsi(L"/i " + Package(cOld)).code);
    run = RunSetup(cNew);
    EXPECT_EQ(cOtherProduct, run.code) << run;
    EXPECT_TRUE(run.Says("is installed from an MSI package")) << run;
}

}  // namespace
}  // namespace kora4::test

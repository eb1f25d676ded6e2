// SPDX-License-Identifier: MIT
// The package for deployment tools, run silently by the platform's installer: what it installs,
// replaces, refuses and removes. Rolling back after a failure is the platform's own.
// installers.sh starts this program.
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

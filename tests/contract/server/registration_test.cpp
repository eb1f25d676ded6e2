// SPDX-License-Identifier: MIT
// Registration of the built library: what it writes, what it removes, what it leaves.
#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>
#include <veltokora4api.h>
#include <windows.h>
#include <wrl/client.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <thread>

#include "contract/registry_paths.h"
#include "support/com_client.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"
#include "support/start_process.h"
#include "support/trace_capture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr wchar_t cClass[] = L"CLSID\\{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}";
constexpr wchar_t cClassServer[] =
    L"CLSID\\{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}\\InprocServer32";
constexpr wchar_t cAppId[] = L"AppID\\{D4086C01-F20F-480F-A293-938122C6452B}";
constexpr wchar_t cAppIdOfLibrary[] = L"AppID\\QXA64T.DLL";
constexpr wchar_t cTypeLib[] = L"TypeLib\\{4D455D10-5B43-48E6-AE4E-308A29CFE9D1}";
constexpr wchar_t cTypeLibPath[] =
    L"TypeLib\\{4D455D10-5B43-48E6-AE4E-308A29CFE9D1}\\1.0\\409\\win64";
constexpr wchar_t cBase[] = L"SOFTWARE\\Velto\\KORA4";
constexpr char cEmptyStore[] = "[]\n[DynamicKeys]\n[StaticKeys]\n";
constexpr PropertyKey cSomeSetting = pkey::Setting(pkey::cActivePresetPid);

std::string Classes() {
    return DumpKey(HKEY_CLASSES_ROOT, L"");
}

// The keys ("[...]" lines) that `after` has and `before` has not, in upper case: the case
// of the parents is the system's own affair. Keys that both views of the registry share show
// up in the 32-bit view too.
std::vector<std::string> NewKeys(const std::string& before, const std::string& after) {
    const auto keys = [](const std::string& dump) {
        std::vector<std::string> lines;
        std::istringstream stream(dump);
        for (std::string line; std::getline(stream, line);)
            if (line.starts_with("[")) {
                std::transform(line.begin(), line.end(), line.begin(), [](char c) {
                    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
                });
                if (!line.starts_with("[WOW6432NODE\\APPID\\") &&
                    !line.starts_with("[WOW6432NODE\\TYPELIB\\"))
                    lines.push_back(line);
            }
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    const auto old = keys(before);
    const auto now = keys(after);
    std::vector<std::string> added;
    std::set_difference(now.begin(), now.end(), old.begin(), old.end(),
                        std::back_inserter(added));
    return added;
}

// Runs a program to its end; its exit code, or ~0.
DWORD RunProgram(std::wstring command) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!StartProcess([&] {
            return CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                  nullptr, &startup, &process);
        }))
        return ~DWORD{0};
    const UniqueHandle thread(process.hThread);
    const UniqueHandle handle(process.hProcess);
    DWORD code = ~DWORD{0};
    if (WaitForSingleObject(handle.Get(), 60000) != WAIT_OBJECT_0)
        TerminateProcess(handle.Get(), 1);
    else
        GetExitCodeProcess(handle.Get(), &code);
    return code;
}

class Registration : public ::testing::Test {
  protected:
    void SetUp() override {
        Clean();
        ASSERT_TRUE(m_library.IsLoaded());
    }
    void TearDown() override { Clean(); }

    static void Clean() {
        for (const wchar_t* const path : {cClass, cAppId, cAppIdOfLibrary, cTypeLib})
            RemoveKey(HKEY_CLASSES_ROOT, path);
        RemoveStore();
    }

    Apartment m_apartment{COINIT_MULTITHREADED};
    LoadedLibrary m_library;
};

// As the dumps have it.
std::string Utf8(const std::wstring& text) {
    std::string narrow(4 * text.size(), '\0');
    narrow.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                            narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr)));
    return narrow;
}

TEST_F(Registration, WritesTheClassWithItsServerAndThreadingModel) {
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ("[]\n REG_SZ KORA4 ASL Test COM Class\n[InprocServer32]\n REG_SZ " +
                  Utf8(LibraryPath()) + "\nThreadingModel REG_SZ Both\n",
              DumpKey(HKEY_CLASSES_ROOT, cClass));
}

TEST_F(Registration, WritesTheAppId) {
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ("[]\n REG_SZ QXA64T\n", DumpKey(HKEY_CLASSES_ROOT, cAppId));
    EXPECT_EQ("[]\nAppID REG_SZ {D4086C01-F20F-480F-A293-938122C6452B}\n",
              DumpKey(HKEY_CLASSES_ROOT, cAppIdOfLibrary));
}

TEST_F(Registration, RegistersTheTypeLibraryOfTheLibraryItself) {
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(LibraryPath(), ReadString(HKEY_CLASSES_ROOT, cTypeLibPath, L""));
    ComPtr<ITypeLib> typeLib;
    EXPECT_EQ(S_OK, LoadRegTypeLib(LIBID_KORA4ASLLib, 1, 0, 0x409, typeLib.GetAddressOf()));
}

TEST_F(Registration, CreatesTheSettingKeysAndNoneForTheApplications) {
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(cEmptyStore, StoreSnapshot());
}

TEST_F(Registration, AddsNothingElseToTheClasses) {
    const std::string before = Classes();
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    const std::string typeLib = "[TYPELIB\\{4D455D10-5B43-48E6-AE4E-308A29CFE9D1}";
    EXPECT_EQ(NewKeys(before, Classes()),
              (std::vector<std::string>{
                  "[APPID\\QXA64T.DLL]",
                  "[APPID\\{D4086C01-F20F-480F-A293-938122C6452B}]",
                  "[CLSID\\{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}\\INPROCSERVER32]",
                  "[CLSID\\{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}]",
                  typeLib + "\\1.0\\409\\WIN64]",
                  typeLib + "\\1.0\\409]",
                  typeLib + "\\1.0\\FLAGS]",
                  typeLib + "\\1.0\\HELPDIR]",
                  typeLib + "\\1.0]",
                  typeLib + "]",
              }));
    EXPECT_EQ(S_OK, m_library.UnregisterServer());
    EXPECT_EQ(std::vector<std::string>{}, NewKeys(before, Classes()));
}

TEST_F(Registration, DoesNotRegisterTheClassesThatAreNotServed) {
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_FALSE(
        KeyExists(HKEY_CLASSES_ROOT, L"CLSID\\{B612768B-F11E-43EA-976C-1B226F8741FE}"));
    EXPECT_FALSE(
        KeyExists(HKEY_CLASSES_ROOT, L"CLSID\\{FBD78353-8513-46F2-A5DA-7982B07320BF}"));
}

TEST_F(Registration, ComKnowsNothingOfTheClassesThatAreNotServed) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    for (const CLSID& clsid :
         {CLSID_VeltoKORA4APIAnalogCoclass, CLSID_VeltoKORA4APIHDMICoclass}) {
        ComPtr<IUnknown> object;
        EXPECT_EQ(REGDB_E_CLASSNOTREG,
                  CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   reinterpret_cast<void**>(object.GetAddressOf())));
        EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
                  m_library.GetClassObject(clsid, IID_IClassFactory,
                                           reinterpret_cast<void**>(object.GetAddressOf())));
    }
}

TEST_F(Registration, TwiceIsOnce) {
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    const std::string classes = Classes();
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(classes, Classes());
    EXPECT_EQ(cEmptyStore, StoreSnapshot());
}

TEST_F(Registration, ReplacesAnOldClassKeyWhole) {
    CreateKey(HKEY_CLASSES_ROOT, std::wstring(cClass) + L"\\LocalServer32");
    WriteValue(HKEY_CLASSES_ROOT, cClassServer, L"old", REG_SZ, L"1", 4);
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, std::wstring(cClass) + L"\\LocalServer32"));
    EXPECT_FALSE(ReadValue(HKEY_CLASSES_ROOT, cClassServer, L"old"));
}

TEST_F(Registration, KeepsTheSettingsThatAreStoredAlready) {
    WriteStoredUINT(eKeySetDynamic, cSomeSetting, 2);
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(2u, ReadStoredUINT(eKeySetDynamic, cSomeSetting));
}

TEST_F(Registration, UnregistrationRemovesTheClassTheAppIdAndTheTypeLibrary) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(S_OK, m_library.UnregisterServer());
    for (const wchar_t* const path : {cClass, cAppId, cAppIdOfLibrary, cTypeLib})
        EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, path)) << Utf8(path);
}

TEST_F(Registration, UnregistrationKeepsTheParentsOfItsKeys) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(S_OK, m_library.UnregisterServer());
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, L"CLSID"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, L"AppID"));
}

TEST_F(Registration, UnregistrationKeepsTheSettings) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    WriteStoredUINT(eKeySetDynamic, cSomeSetting, 2);
    const std::string before = StoreSnapshot();
    EXPECT_EQ(S_OK, m_library.UnregisterServer());
    EXPECT_EQ(before, StoreSnapshot());
}

TEST_F(Registration, UnregistrationRemovesAClassKeyWithWhatOthersPutThere) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    CreateKey(HKEY_CLASSES_ROOT, std::wstring(cClass) + L"\\Foreign\\Deep");
    EXPECT_EQ(S_OK, m_library.UnregisterServer());
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, cClass));
}

TEST_F(Registration, AFailureOfUnregistrationIsTheResultAndSkipsTheRest) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    RemoveKey(HKEY_CLASSES_ROOT, cTypeLib);
    EXPECT_HRESULT_FAILED(m_library.UnregisterServer());
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, cClass));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, cAppId));
}

TEST_F(Registration, AFailureToMakeTheSettingKeysIsTheResultButTheClassIsRegistered) {
    UniqueRegKey base;  // under a volatile key only volatile ones can be created
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_LOCAL_MACHINE, cBase, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_WRITE, nullptr, base.Put(), nullptr));
    EXPECT_EQ(E_FAIL, m_library.RegisterServer());
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, cClassServer));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, cTypeLib));
}

TEST_F(Registration, AgainRepairsKeysThatDenyEverybody) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    WriteStoredUINT(eKeySetDynamic, cSomeSetting, 2);
    for (const wchar_t* const path : {cBaseKeyPath, cStaticKeysPath, cDynamicKeysPath}) {
        const DeniedKey denied(path);
        EXPECT_EQ(S_OK, m_library.RegisterServer());
        EXPECT_EQ(cWorldAccess, DaclOf(path));
    }
    EXPECT_EQ(2u, ReadStoredUINT(eKeySetDynamic, cSomeSetting));
}

// Its list is what it inherits: registering makes it writable for everybody again.
TEST_F(Registration, AStaticKeyThatAClientCreatedIsNotOpenToEverybodyUntilItIsRepaired) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    RemoveKey(HKEY_LOCAL_MACHINE, cStaticKeysPath);
    {
        ComPtr<IVeltoKORA4API> api;
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr,
                                         CLSCTX_INPROC_SERVER, IID_IVeltoKORA4API,
                                         reinterpret_cast<void**>(api.GetAddressOf())));
        EXPECT_EQ(S_OK, api->Initialize());
    }
    ASSERT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, cStaticKeysPath));
    EXPECT_NE(cWorldAccess, DaclOf(cStaticKeysPath));
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(cWorldAccess, DaclOf(cStaticKeysPath));
}

// Full access to the parent is the right to create keys below it: an installer that leaves the
// key out leaves it to whoever comes first.
TEST_F(Registration, LeavesTheKeyOfTheApplicationsToEverybody) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(cWorldAccess, DaclOf(cBaseKeyPath));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cAppKeysPath));
    CreateKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    const std::wstring before = DaclOf(cAppKeysPath);
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(before, DaclOf(cAppKeysPath));
}

TEST_F(Registration, NeverOpensWhatALinkInPlaceOfAKeyLeadsTo) {
    constexpr wchar_t cVictim[] = L"SOFTWARE\\KORA4 registration test";
    CreateKey(HKEY_LOCAL_MACHINE, cVictim);
    const std::wstring before = DaclOf(cVictim);
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    RemoveKey(HKEY_LOCAL_MACHINE, cDynamicKeysPath);
    {
        const RegistryLink link(cDynamicKeysPath, cVictim);
        EXPECT_EQ(E_FAIL, m_library.RegisterServer());
    }
    EXPECT_EQ(before, DaclOf(cVictim));
    RemoveKey(HKEY_LOCAL_MACHINE, cVictim);
}

TEST_F(Registration, TheThreadsLocaleIsAsBeforeInEveryCase) {
    const LCID former = GetThreadLocale();
    ASSERT_TRUE(SetThreadLocale(0x0407));
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(0x0407u, GetThreadLocale());
    RemoveKey(HKEY_CLASSES_ROOT, cTypeLib);
    EXPECT_HRESULT_FAILED(m_library.UnregisterServer());
    EXPECT_EQ(0x0407u, GetThreadLocale());
    SetThreadLocale(former);
}

TEST_F(Registration, TheRegisteredClassIsCreatedInEachKindOfApartment) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    for (const DWORD model : {DWORD{COINIT_MULTITHREADED}, DWORD{COINIT_APARTMENTTHREADED}}) {
        std::thread([model] {
            const Apartment apartment(model);
            ComPtr<IVeltoKORA4API> api;
            EXPECT_EQ(S_OK, CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr,
                                             CLSCTX_INPROC_SERVER, IID_IVeltoKORA4API,
                                             reinterpret_cast<void**>(api.GetAddressOf())));
            // Without a proxy: a class for both models lives where it is created.
            ComPtr<IUnknown> proxy;
            EXPECT_EQ(E_NOINTERFACE,
                      api.Get()->QueryInterface(
                          IID_IClientSecurity, reinterpret_cast<void**>(proxy.GetAddressOf())));
        }).join();
    }
}

TEST_F(Registration, TheSystemsRegistrationProgramWorks) {
    EXPECT_EQ(0u, RunProgram(L"regsvr32.exe /s \"" + LibraryPath() + L"\""));
    EXPECT_EQ(LibraryPath(), ReadString(HKEY_CLASSES_ROOT, cClassServer, L""));
    EXPECT_EQ(cEmptyStore, StoreSnapshot());
    EXPECT_EQ(0u, RunProgram(L"regsvr32.exe /u /s \"" + LibraryPath() + L"\""));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, cClass));
    EXPECT_EQ(cEmptyStore, StoreSnapshot());
}

class RegistrationFromFolder : public Registration,
                               public ::testing::WithParamInterface<const wchar_t*> {};

TEST_P(RegistrationFromFolder, AnyPathWorks) {
    wchar_t temp[MAX_PATH];
    ASSERT_NE(0u, GetTempPathW(MAX_PATH, temp));
    const std::wstring folder = std::wstring(temp) + GetParam();
    const std::wstring path = folder + L"\\QXA64T.dll";
    CreateDirectoryW(folder.c_str(), nullptr);
    ASSERT_TRUE(CopyFileW(LibraryPath().c_str(), path.c_str(), FALSE));
    {
        const RegisteredLibrary registered(path);
        EXPECT_EQ(path, ReadString(HKEY_CLASSES_ROOT, cClassServer, L""));
        EXPECT_EQ(path, ReadString(HKEY_CLASSES_ROOT, cTypeLibPath, L""));
        ComPtr<ITypeLib> typeLib;
        EXPECT_EQ(S_OK, LoadRegTypeLib(LIBID_KORA4ASLLib, 1, 0, 0x409, typeLib.GetAddressOf()));
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr,
                                         CLSCTX_INPROC_SERVER, IID_IUnknown,
                                         reinterpret_cast<void**>(object.GetAddressOf())));
    }
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, cClass));
    CoFreeUnusedLibrariesEx(0, 0);
    DeleteFileW(path.c_str());
    RemoveDirectoryW(folder.c_str());
}

INSTANTIATE_TEST_SUITE_P(Folders, RegistrationFromFolder,
                         ::testing::Values(L"KORA4 with blanks", L"KORA4 it's", L"KORA4 100%",
                                           L"KORA4 %MODULE% %APPID%", L"KORA4 {a} { b }",
                                           L"KORA4 \u00fc\u0142\u4e2d",
                                           L"KORA4 ''all'' 5% {\u00e4} %"));

TEST_F(Registration, IsTracedUnderTheModuleAndTheHookUnderTheApi) {
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    WriteStoredUINT(eKeySetStatic, pkey::Setting(pkey::cTraceFlagsPid), 0x01000801);
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, m_library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IClassFactory,
                                             reinterpret_cast<void**>(factory.GetAddressOf())));
    ComPtr<IVeltoKORA4API> api;
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IVeltoKORA4API,
                                            reinterpret_cast<void**>(api.GetAddressOf())));
    ASSERT_EQ(S_OK, api->Initialize());
    TraceLog log;
    EXPECT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(S_OK, m_library.UnregisterServer());
    const auto module = log.Read("KORA4ASLDLL");
    const std::vector<std::string> success{">>", "<< hr: 0x00000000"};
    EXPECT_EQ(success, MessagesOf(module, "DllRegisterServer"));
    EXPECT_EQ(success, MessagesOf(module, "DllUnregisterServer"));
    EXPECT_EQ(success, MessagesOf(log.Read("KORA4ASL"), "OnRegisterServer"));
}

}  // namespace
}  // namespace kora4::test

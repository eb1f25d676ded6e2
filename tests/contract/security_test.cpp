// SPDX-License-Identifier: MIT
// What docs/security.md says of access lists and of what other users can do to a client: which
// rights the library needs, what the list of registering grants besides, keys that disappear.
#include <aclapi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sddl.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "contract/api_fixture.h"
#include "contract/registry_paths.h"
#include "multiprocess/working_store.h"
#include "support/import_redirection.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

// Administrators and the system count as everyone here: the lists name nobody else, so that
// they hold for the test, too.
constexpr wchar_t cReading[] = L"D:P(A;;KR;;;WD)";
constexpr wchar_t cReadingAndWriting[] = L"D:P(A;;KRKW;;;WD)";

LSTATUS Open(const wchar_t* path, REGSAM access) {
    UniqueRegKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, key.Put());
}

class AccessLists : public ApiTest {
  protected:
    // The store is removed at the end, which takes the right to.
    ~AccessLists() override {
        for (const wchar_t* path :
             {cBaseKeyPath, cStaticKeysPath, cDynamicKeysPath, cAppKeysPath})
            SetDacl(path, cWorldAccess);
    }

    static void Narrow() {
        SetDacl(cAppKeysPath, cReading);
        SetDacl(cBaseKeyPath, cReading);
        SetDacl(cStaticKeysPath, cReadingAndWriting);
        SetDacl(cDynamicKeysPath, cReadingAndWriting);
    }
};

TEST_F(AccessLists, OfRegisteringLetEveryoneDeleteAndLink) {
    SetDacl(cDynamicKeysPath, cWorldAccess);
    for (const REGSAM access : {REGSAM{DELETE}, REGSAM{KEY_CREATE_LINK}, REGSAM{WRITE_DAC},
                                REGSAM{WRITE_OWNER}, REGSAM{KEY_ALL_ACCESS}})
        EXPECT_EQ(ERROR_SUCCESS, Open(cDynamicKeysPath, access)) << std::hex << access;
}

// Whether the list grants that to a user who does not own the key. An owner may do more: on
// Windows change the list, under Wine also delete the key.
bool Grants(const wchar_t* list, DWORD access) {
    UniqueLocalMemory descriptor;
    EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        (std::wstring(L"O:LSG:LS") + list).c_str(), SDDL_REVISION_1, descriptor.Put(),
        nullptr));
    UniqueHandle process;
    UniqueHandle token;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE, process.Put()));
    EXPECT_TRUE(DuplicateToken(process.Get(), SecurityImpersonation, token.Put()));
    GENERIC_MAPPING mapping{KEY_READ, KEY_WRITE, KEY_EXECUTE, KEY_ALL_ACCESS};
    PRIVILEGE_SET privileges{};
    DWORD size = sizeof privileges;
    DWORD granted = 0;
    BOOL isGranted = FALSE;
    EXPECT_TRUE(AccessCheck(descriptor.Get(), token.Get(), access, &mapping, &privileges, &size,
                            &granted, &isGranted));
    return isGranted;
}

TEST_F(AccessLists, ThatAreNarrowRefuseWhatNoClientNeeds) {
    for (const DWORD access :
         {DWORD{DELETE}, DWORD{WRITE_DAC}, DWORD{WRITE_OWNER}, DWORD{KEY_CREATE_LINK}}) {
        EXPECT_TRUE(Grants(cWorldAccess, access)) << std::hex << access;
        EXPECT_FALSE(Grants(cReadingAndWriting, access)) << std::hex << access;
        EXPECT_FALSE(Grants(cReading, access)) << std::hex << access;
    }
    EXPECT_TRUE(Grants(cReadingAndWriting, KEY_READ | KEY_WRITE));
    Narrow();
    EXPECT_EQ(ERROR_ACCESS_DENIED, Open(cDynamicKeysPath, KEY_CREATE_LINK));
    EXPECT_EQ(ERROR_ACCESS_DENIED, Open(cBaseKeyPath, KEY_CREATE_SUB_KEY));
    EXPECT_EQ(ERROR_ACCESS_DENIED, Open(cBaseKeyPath, KEY_SET_VALUE));
}

TEST_F(AccessLists, ThatAreNarrowLetEveryMethodWork) {
    Narrow();
    const ComPtr<IVeltoKORA4API> api = Initialized();
    const auto recorder = CallbackRecorder::Create();
    EXPECT_EQ(S_OK, api->RegisterChangeNotifications(recorder.Get()));
    ExpectEveryMethodToWork(*api.Get(), 0);
    // The watch of the other one.
    EXPECT_EQ(S_OK, Initialized()->SetActiveProfile(2));
    EXPECT_TRUE(recorder->WaitForLine("OnActiveProfileChange(2)"));
    EXPECT_EQ(S_OK, api->UnregisterChangeNotifications());
}

// So the list of a narrow installation cannot be narrower.
TEST_F(AccessLists, ThatLackOneOfTheRightsLetNoClientStart) {
    for (const auto& [missing, sddl] : {std::pair{"read values", L"D:P(A;;0x2001e;;;WD)"},
                                        std::pair{"write values", L"D:P(A;;0x2001d;;;WD)"},
                                        std::pair{"create subkeys", L"D:P(A;;0x2001b;;;WD)"},
                                        std::pair{"list subkeys", L"D:P(A;;0x20017;;;WD)"},
                                        std::pair{"be notified", L"D:P(A;;0x2000f;;;WD)"}}) {
        for (const wchar_t* path : {cStaticKeysPath, cDynamicKeysPath}) {
            SetDacl(path, sddl);
            EXPECT_EQ(E_FAIL, Created()->Initialize()) << missing;
            SetDacl(path, cReadingAndWriting);
        }
    }
    EXPECT_EQ(S_OK, Created()->Initialize());
}

// Anybody may delete the keys under a client. It fails until it is made anew, and goes in
// peace.
TEST_F(AccessLists, OfRegisteringLetOthersDeleteTheKeysOfAClient) {
    ComPtr<IVeltoKORA4API> api = Initialized();
    const auto recorder = CallbackRecorder::Create();
    EXPECT_EQ(S_OK, api->RegisterChangeNotifications(recorder.Get()));
    RawStore::DeleteKeys();
    LONG profile = 0;
    EXPECT_EQ(E_FAIL, api->SetActiveProfile(1));
    EXPECT_EQ(S_OK, api->GetActiveProfile(&profile));
    EXPECT_EQ(E_FAIL, Created()->Initialize());
    RawStore::CreateKeys();
    EXPECT_EQ(E_FAIL, api->SetActiveProfile(1));
    ComPtr<IVeltoKORA4API> other = Initialized();
    const auto others = CallbackRecorder::Create();
    EXPECT_EQ(S_OK, other->RegisterChangeNotifications(others.Get()));
    EXPECT_EQ(S_OK, Initialized()->SetActiveProfile(1));
    EXPECT_TRUE(others->WaitForLine("OnActiveProfileChange(1)"));
    EXPECT_EQ(std::vector<std::string>(), recorder->Log());
    other.Reset();
    api.Reset();
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST(HostProcess, IsGivenNoProgramsAndNoConnections) {
    const LoadedLibrary library;
    const std::vector<std::string> names = Imports(library.Module());
    EXPECT_LT(50u, names.size());
    EXPECT_EQ(1, std::count(names.begin(), names.end(), "RegOpenKeyExW"));
    for (const std::string& name : names) {
        for (const char* unwanted : {"CreateProcess", "ShellExecute", "WinExec", "WS2_32",
                                     "WINHTTP", "WININET", "ws2_32", "winhttp", "wininet"})
            EXPECT_EQ(std::string::npos, name.find(unwanted)) << name;
    }
}

TEST(HostProcess, IsGivenLibrariesOfTheSystemOnly) {
    const LoadedLibrary library;
    for (const std::string& name : Imports(library.Module())) {
        if (!name.ends_with(".dll"))
            continue;
        EXPECT_THAT(name,
                    testing::AnyOf("ADVAPI32.dll", "KERNEL32.dll", "OLEAUT32.dll", "RPCRT4.dll",
                                   "USER32.dll", "msvcrt.dll", "ole32.dll"));
    }
}

}  // namespace
}  // namespace kora4::test

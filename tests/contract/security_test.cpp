// SPDX-License-Identifier: MIT
// What docs/security.md says of access lists and of what other users can do to a client: which
// rights the library needs, what the list of registering grants besides, keys that disappear.
#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "contract/api_fixture.h"
#include "contract/registry_paths.h"
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
        for (const wchar_t* path : {cBaseKeyPath, cStaticKeysPath, cDynamicKeysPath})
            SetDacl(path, cWorldAccess);
    }

    static void Narrow() {
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
    for (const DWORD access : {DWORD{DELETE}, DWORD{WRITE_DAC}, DWORD{KEY_CREATE_LINK}}) {
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
    EXPECT_EQ(S_OK, api->SetActiveProfile(1));
    EXPECT_EQ(S_OK, api->SetVeltoEnable(TRUE));
    EXPECT_EQ(S_OK, api->SetTechnologyOnElseOff(eDialogEnhancer, TRUE));
    KORA4PatchValueUnion value{};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 5;
    EXPECT_EQ(S_OK, api->SetSimplePatchValue(&value));
    EXPECT_EQ(S_OK, api->GetSimplePatchValue(&value));
    EXPECT_EQ(S_OK, api->SetVisualizationSamplingPeriod(50));
    EXPECT_EQ(S_OK, api->CreateCustomProfile(4, L"name"));
    EXPECT_EQ(S_OK, api->SetCustomProfileName(4, L"other"));
    EXPECT_EQ(S_OK, api->DeleteCustomProfile(4));
    EXPECT_EQ(S_OK, api->SetDemoProfileAndEnable(241, TRUE));
    EXPECT_EQ(S_OK, api->RevertFromDemoMode());
    EXPECT_EQ(S_OK, api->RevertActiveProfile());
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
        SetDacl(cDynamicKeysPath, sddl);
        EXPECT_EQ(E_FAIL, Created()->Initialize()) << missing;
    }
    SetDacl(cDynamicKeysPath, cReadingAndWriting);
    EXPECT_EQ(S_OK, Created()->Initialize());
}

// Anybody may delete the keys under a client. It fails until it is made anew, and goes in
// peace.
TEST_F(AccessLists, OfRegisteringLetOthersDeleteTheKeysOfAClient) {
    ComPtr<IVeltoKORA4API> api = Initialized();
    RawStore::DeleteKeys();
    LONG profile = 0;
    EXPECT_EQ(E_FAIL, api->SetActiveProfile(1));
    EXPECT_EQ(S_OK, api->GetActiveProfile(&profile));
    EXPECT_EQ(E_FAIL, Created()->Initialize());
    RawStore::CreateKeys();
    EXPECT_EQ(E_FAIL, api->SetActiveProfile(1));
    EXPECT_EQ(S_OK, Initialized()->SetActiveProfile(1));
    api.Reset();
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

// Every name that the module takes from another one, and the other one's name.
std::vector<std::string> Imports(HMODULE module) {
    const auto* const base = reinterpret_cast<const BYTE*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const auto& place = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<std::string> names;
    for (const auto* from =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + place.VirtualAddress);
         from->Name; ++from) {
        names.emplace_back(reinterpret_cast<const char*>(base + from->Name));
        for (const auto* thunk =
                 reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + from->OriginalFirstThunk);
             thunk->u1.AddressOfData; ++thunk)
            names.emplace_back(
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + thunk->u1.AddressOfData)
                    ->Name);
    }
    return names;
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

}  // namespace
}  // namespace kora4::test

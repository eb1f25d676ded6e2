// SPDX-License-Identifier: MIT
// Keys opened to everyone: missing, existing and denying ones, links, and races with whoever
// plants a link.
#include "monitor/reg_key_security.h"

#include <aclapi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "monitor/security_types.h"
#include "platform/handles.h"
#include "support/import_redirection.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

constexpr wchar_t cRoot[] = L"SOFTWARE\\KORA4 key security test";
constexpr wchar_t cFirst[] = L"SOFTWARE\\KORA4 key security test\\First";
constexpr wchar_t cSecond[] = L"SOFTWARE\\KORA4 key security test\\Second";
constexpr wchar_t cBelowSecond[] = L"SOFTWARE\\KORA4 key security test\\Second\\Below";
constexpr wchar_t cThird[] = L"SOFTWARE\\KORA4 key security test\\Third";

void GiveToSystem(const std::wstring& path) {
    UniqueRegKey key;
    ASSERT_EQ(ERROR_SUCCESS,
              RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, WRITE_OWNER, key.Put()));
    BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(sid);
    ASSERT_TRUE(CreateWellKnownSid(WinLocalSystemSid, nullptr, sid, &size));
    ASSERT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
              SetSecurityInfo(key.Get(), SE_REGISTRY_KEY, OWNER_SECURITY_INFORMATION, sid,
                              nullptr, nullptr, nullptr));
}

class RegKeySecurityTest : public ::testing::Test {
  protected:
    void SetUp() override { RemoveKey(HKEY_LOCAL_MACHINE, cRoot); }
    void TearDown() override { RemoveKey(HKEY_LOCAL_MACHINE, cRoot); }

    static HRESULT MakeAccessible(std::vector<const wchar_t*> names) {
        names.push_back(nullptr);
        return RegKeySecurity::MakeRegKeysAccessible(names.data());
    }

    // A key below which only volatile keys can be created.
    void CreateVolatileSecond() {
        CreateKey(HKEY_LOCAL_MACHINE, cRoot);
        ASSERT_EQ(ERROR_SUCCESS,
                  RegCreateKeyExW(HKEY_LOCAL_MACHINE, cSecond, 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_WRITE, nullptr, m_second.Put(), nullptr));
    }

    UniqueRegKey m_second;
};

TEST_F(RegKeySecurityTest, ANullListIsABadPointer) {
    EXPECT_EQ(E_POINTER, RegKeySecurity::MakeRegKeysAccessible(nullptr));
}

TEST_F(RegKeySecurityTest, AnEmptyListSucceedsAndCreatesNothing) {
    EXPECT_EQ(S_OK, MakeAccessible({}));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cRoot));
}

TEST_F(RegKeySecurityTest, MissingKeysAreCreatedAndOpenToEveryone) {
    EXPECT_EQ(S_OK, MakeAccessible({cRoot, cFirst, cSecond}));
    for (const wchar_t* const path : {cRoot, cFirst, cSecond})
        EXPECT_EQ(cWorldAccess, DaclOf(path));
}

TEST_F(RegKeySecurityTest, AnExistingKeyKeepsItsValuesAndSubkeys) {
    WriteValue(HKEY_LOCAL_MACHINE, cFirst, L"n", REG_SZ, L"1", 4);
    CreateKey(HKEY_LOCAL_MACHINE, std::wstring(cFirst) + L"\\Below");
    const std::string before = DumpKey(HKEY_LOCAL_MACHINE, cRoot);
    EXPECT_EQ(S_OK, MakeAccessible({cFirst}));
    EXPECT_EQ(before, DumpKey(HKEY_LOCAL_MACHINE, cRoot));
    EXPECT_EQ(cWorldAccess, DaclOf(cFirst));
}

TEST_F(RegKeySecurityTest, AnExistingAccessListIsReplaced) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    SetDacl(cFirst, L"D:(A;;KA;;;BA)(A;;KR;;;BU)");
    ASSERT_NE(cWorldAccess, DaclOf(cFirst));
    EXPECT_EQ(S_OK, MakeAccessible({cFirst}));
    EXPECT_EQ(cWorldAccess, DaclOf(cFirst));
}

TEST_F(RegKeySecurityTest, OnlyTheListedKeysAreOpened) {
    CreateKey(HKEY_LOCAL_MACHINE, cThird);
    const std::wstring before = DaclOf(cThird);
    EXPECT_EQ(S_OK, MakeAccessible({cRoot, cFirst}));
    EXPECT_EQ(before, DaclOf(cThird));
    EXPECT_NE(cWorldAccess, before);
}

TEST_F(RegKeySecurityTest, TheFirstFailureEndsTheWorkAndWhatWasMadeStays) {
    CreateVolatileSecond();
    EXPECT_EQ(E_FAIL, MakeAccessible({cFirst, cBelowSecond, cThird}));
    EXPECT_EQ(cWorldAccess, DaclOf(cFirst));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cThird));
}

// ---- Keys that deny everybody everything --------------------------------------------------

TEST_F(RegKeySecurityTest, AKeyThatDeniesIsRepaired) {
    WriteValue(HKEY_LOCAL_MACHINE, cFirst, L"n", REG_SZ, L"1", 4);
    const std::string before = DumpKey(HKEY_LOCAL_MACHINE, cRoot);
    const DeniedKey denied(cFirst);
    ASSERT_EQ(S_OK, MakeAccessible({cFirst, cSecond}));
    EXPECT_EQ(cWorldAccess, DaclOf(cFirst));
    EXPECT_EQ(cWorldAccess, DaclOf(cSecond));
    RemoveKey(HKEY_LOCAL_MACHINE, cSecond);
    EXPECT_EQ(before, DumpKey(HKEY_LOCAL_MACHINE, cRoot));
}

TEST_F(RegKeySecurityTest, AKeyThatDeniesBelowOneThatDeniesIsRepaired) {
    CreateKey(HKEY_LOCAL_MACHINE, cBelowSecond);
    const DeniedKey denied(cSecond);
    const DeniedKey below(cBelowSecond);
    ASSERT_EQ(S_OK, MakeAccessible({cSecond, cBelowSecond}));
    EXPECT_EQ(cWorldAccess, DaclOf(cSecond));
    EXPECT_EQ(cWorldAccess, DaclOf(cBelowSecond));
}

TEST_F(RegKeySecurityTest, AKeyOfSomebodyElseThatDeniesIsLeftAsItIs) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    GiveToSystem(cFirst);
    SetDacl(cFirst, L"D:(A;;KRSD;;;WD)");
    const std::wstring before = DaclOf(cFirst);
    EXPECT_EQ(E_FAIL, MakeAccessible({cFirst}));
    EXPECT_EQ(before, DaclOf(cFirst));
}

// ---- Links ----------------------------------------------------------------------------------

TEST_F(RegKeySecurityTest, ALinkIsRefusedAndItsTargetLeftAlone) {
    CreateKey(HKEY_LOCAL_MACHINE, cThird);
    const RegistryLink link(cFirst, cThird);
    const std::wstring linkBefore = DaclOf(cFirst);
    const std::wstring targetBefore = DaclOf(cThird);
    EXPECT_EQ(E_FAIL, MakeAccessible({cFirst, cSecond}));
    EXPECT_EQ(linkBefore, DaclOf(cFirst));
    EXPECT_EQ(targetBefore, DaclOf(cThird));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cSecond));
}

TEST_F(RegKeySecurityTest, ALinkToNowhereIsRefusedAndCreatesNothing) {
    CreateKey(HKEY_LOCAL_MACHINE, cRoot);
    const RegistryLink link(cFirst, cThird);
    const std::wstring before = DaclOf(cFirst);
    EXPECT_EQ(E_FAIL, MakeAccessible({cFirst}));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cThird));
    EXPECT_EQ(before, DaclOf(cFirst));
}

TEST_F(RegKeySecurityTest, ALinkThatDeniesIsRefusedAndLeftAsItIs) {
    CreateKey(HKEY_LOCAL_MACHINE, cThird);
    const RegistryLink link(cFirst, cThird);
    const DeniedKey denied(cFirst);
    const std::wstring linkBefore = DaclOf(cFirst);
    const std::wstring targetBefore = DaclOf(cThird);
    EXPECT_EQ(E_FAIL, MakeAccessible({cFirst}));
    EXPECT_EQ(linkBefore, DaclOf(cFirst));
    EXPECT_EQ(targetBefore, DaclOf(cThird));
}

TEST_F(RegKeySecurityTest, NothingBelowARefusedLinkIsOpened) {
    CreateKey(HKEY_LOCAL_MACHINE, std::wstring(cThird) + L"\\Below");
    const std::wstring before = DaclOf(std::wstring(cThird) + L"\\Below");
    const RegistryLink link(cSecond, cThird);
    EXPECT_EQ(E_FAIL, MakeAccessible({cSecond, cBelowSecond}));
    EXPECT_EQ(before, DaclOf(std::wstring(cThird) + L"\\Below"));
}

// Somebody plants a link just after the key was found missing.
std::function<void()> g_beforeCreation;
LSTATUS WINAPI CreateTooLate(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR className,
                             DWORD options, REGSAM access, LPSECURITY_ATTRIBUTES attributes,
                             PHKEY key, LPDWORD disposition) {
    g_beforeCreation();
    return RegCreateKeyExW(root, path, reserved, className, options, access, attributes, key,
                           disposition);
}

class RegKeySecurityRace : public RegKeySecurityTest {
  protected:
    ~RegKeySecurityRace() override { g_beforeCreation = nullptr; }

    HRESULT MakeFirstWhileALinkIsPlanted() {
        CreateKey(HKEY_LOCAL_MACHINE, cRoot);
        std::optional<RegistryLink> link;
        g_beforeCreation = [&link] { link.emplace(cFirst, cThird); };
        RegKeyCalls calls;
        calls.create = &CreateTooLate;
        const HRESULT hr = RegKeySecurity::MakeRegKey(cFirst, calls);
        EXPECT_TRUE(link);
        return hr;
    }
};

TEST_F(RegKeySecurityRace, WithALinkToAKeyDoesNotOpenThatKey) {
    CreateKey(HKEY_LOCAL_MACHINE, cThird);
    const std::wstring before = DaclOf(cThird);
    EXPECT_EQ(E_FAIL, MakeFirstWhileALinkIsPlanted());
    EXPECT_EQ(before, DaclOf(cThird));
}

TEST_F(RegKeySecurityRace, WithALinkToNowhereDoesNotOpenWhatIsCreatedThere) {
    EXPECT_EQ(E_FAIL, MakeFirstWhileALinkIsPlanted());
    EXPECT_NE(cWorldAccess, DaclOf(cThird));
}

// ---- Which call follows which ---------------------------------------------------------------

std::vector<std::string> g_opened;
LSTATUS WINAPI RecordOpening(HKEY parent, LPCWSTR path, DWORD options, REGSAM access,
                             PHKEY key) {
    std::ostringstream words;
    words << (parent == HKEY_LOCAL_MACHINE ? "machine" : "handle") << (*path ? ", path" : "")
          << std::hex << ", options " << options << ", access " << access;
    g_opened.push_back(words.str());
    return RegOpenKeyExW(parent, path, options, access, key);
}

// No opening follows a link, and after the first one the name is used no more.
TEST_F(RegKeySecurityTest, ARepairGoesThroughTheHandleOfTheDeniedKey) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    const DeniedKey denied(cFirst);
    g_opened.clear();
    UniqueRegKey key;
    RegKeyCalls calls;
    calls.open = &RecordOpening;
    EXPECT_EQ(S_OK, RegKeySecurity::CreateRegKey(cFirst, key.Put(), calls));
    EXPECT_EQ((std::vector<std::string>{
                  "machine, path, options 8, access 2001b",
                  "machine, path, options 8, access 40000",
                  "handle, options 8, access 20000",
                  "handle, options 8, access 2001b",
              }),
              g_opened);
}

// ---- The handle, privileges, descriptors ----------------------------------------------------

TEST_F(RegKeySecurityTest, CreatingAKeyHandsOutItsHandle) {
    UniqueRegKey key;
    EXPECT_EQ(S_OK, RegKeySecurity::CreateRegKey(cFirst, key.Put()));
    EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(key.Get(), L"n", 0, REG_SZ, nullptr, 0));
}

TEST_F(RegKeySecurityTest, CreatingWithoutANameOrAPlaceForTheHandleFails) {
    HKEY hKey = nullptr;
    EXPECT_EQ(E_FAIL, RegKeySecurity::CreateRegKey(nullptr, &hKey));
    EXPECT_EQ(nullptr, hKey);
    EXPECT_EQ(E_FAIL, RegKeySecurity::CreateRegKey(cFirst, nullptr));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cFirst));
}

TEST_F(RegKeySecurityTest, ListingNeverTouchesThePrivilegesOfTheProcess) {
    const auto isSecurityOn = [] {
        UniqueHandle token;
        EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()));
        PRIVILEGE_SET set{};
        set.PrivilegeCount = 1;
        set.Control = PRIVILEGE_SET_ALL_NECESSARY;
        EXPECT_TRUE(LookupPrivilegeValueW(nullptr, SE_SECURITY_NAME, &set.Privilege[0].Luid));
        BOOL on = FALSE;
        EXPECT_TRUE(PrivilegeCheck(token.Get(), &set, &on));
        return on != FALSE;
    };
    const bool before = isSecurityOn();
    UniqueRegKey key;
    ASSERT_EQ(S_OK, RegKeySecurity::CreateRegKey(cFirst, key.Put()));
    RegKeySecurity::ListSecurityString(key.Get());
    EXPECT_EQ(before, isSecurityOn());
    {
        const PrivilegeHold hold(SE_SECURITY_NAME);
        EXPECT_TRUE(isSecurityOn());
    }
    EXPECT_EQ(before, isSecurityOn());
}

TEST_F(RegKeySecurityTest, APrivilegeThatDoesNotExistIsNoTrouble) {
    SetLastError(4711);
    const PrivilegeHold hold(L"SeNoSuchPrivilege");
    EXPECT_EQ(S_OK, MakeAccessible({cFirst}));
}

TEST_F(RegKeySecurityTest, ATextThatIsNoDescriptorGivesNone) {
    EXPECT_FALSE(SecurityDescriptor::FromSddl(L"nonsense"));
    EXPECT_NE(static_cast<DWORD>(ERROR_SUCCESS), GetLastError());
}

TEST_F(RegKeySecurityTest, ADescriptorWithoutAnAccessListHasNone) {
    const SecurityDescriptor descriptor = SecurityDescriptor::FromSddl(L"O:BA");
    ASSERT_TRUE(descriptor);
    EXPECT_EQ(nullptr, descriptor.Dacl());
}

BOOL WINAPI NoDescriptor(const wchar_t*, DWORD, PSECURITY_DESCRIPTOR*, ULONG*) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

TEST_F(RegKeySecurityTest, AKeyThatDeniesStaysAsItIsWithoutAListForIt) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    const DeniedKey denied(cFirst);
    const auto before = DaclOf(cFirst);
    const ImportRedirection descriptors(GetModuleHandleW(nullptr),
                                        "ConvertStringSecurityDescriptorToSecurityDescriptorW",
                                        &NoDescriptor);
    ASSERT_TRUE(descriptors.IsInPlace());
    EXPECT_EQ(E_FAIL, MakeAccessible({cFirst}));
    EXPECT_EQ(before, DaclOf(cFirst));
}

// ---- Trace
// ------------------------------------------------------------------------------------

class RegKeySecurityTrace : public RegKeySecurityTest {
  protected:
    std::vector<std::string> Run(std::vector<const wchar_t*> names, std::uint32_t categories) {
        const TraceFlags flags(trace::eLogFiles | categories);
        MakeAccessible(std::move(names));
        std::vector<std::string> texts;
        for (const TraceLine& line : m_log.Read("RegKeySecurity"))
            texts.push_back(line.function + " " + line.message);
        return texts;
    }

    TraceLog m_log;
};

TEST_F(RegKeySecurityTrace, AFailedKeyTellsItsWin32Code) {
    CreateVolatileSecond();
    EXPECT_EQ((std::vector<std::string>{
                  "RegKeySecurity::CreateRegKey Create reg key SOFTWARE\\KORA4 key security "
                  "test\\Second\\Below code: 1021",
                  "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
                  "SOFTWARE\\KORA4 key security test\\Second\\Below"}),
              Run({cBelowSecond}, trace::eSecurity));
}

TEST_F(RegKeySecurityTrace, AKeyThatMayNeitherBeOpenedNorRepairedTellsAccessDenied) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    GiveToSystem(cFirst);
    SetDacl(cFirst, L"D:(A;;KRSD;;;WD)");
    EXPECT_EQ((std::vector<std::string>{
                  "RegKeySecurity::CreateRegKey Create reg key SOFTWARE\\KORA4 key security "
                  "test\\First code: 5",
                  "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
                  "SOFTWARE\\KORA4 key security test\\First"}),
              Run({cFirst}, trace::eSecurity));
}

TEST_F(RegKeySecurityTrace, ARepairedKeyIsToldOfOnce) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    const DeniedKey denied(cFirst);
    const auto texts = Run({cFirst}, trace::eSecurity);
    const std::string name = "SOFTWARE\\KORA4 key security test\\First";
    ASSERT_EQ(6u, texts.size());
    EXPECT_EQ("RegKeySecurity::CreateRegKey Create reg key " + name + " code: 0", texts[0]);
    EXPECT_EQ("RegKeySecurity::MakeRegKey Post creation security string for: " + name,
              texts[1]);
    EXPECT_EQ("RegKeySecurity::MakeRegKey Post-set security string for: " + name, texts[3]);
    EXPECT_EQ("RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x00000000 name: " + name,
              texts[5]);
}

TEST_F(RegKeySecurityTrace, ALinkTellsThatItIsOne) {
    CreateKey(HKEY_LOCAL_MACHINE, cThird);
    const RegistryLink link(cFirst, cThird);
    EXPECT_EQ((std::vector<std::string>{
                  "RegKeySecurity::CreateRegKey Create reg key SOFTWARE\\KORA4 key security "
                  "test\\First code: 681",
                  "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
                  "SOFTWARE\\KORA4 key security test\\First"}),
              Run({cFirst}, trace::eSecurity));
}

TEST_F(RegKeySecurityTrace, AKeyWhoseAccessListMayNotBeChangedTellsSo) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    // An owner may always change the list: the key has to belong to somebody else.
    GiveToSystem(cFirst);
    SetDacl(cFirst, L"D:(A;;0x3001B;;;WD)");
    const auto texts = Run({cFirst}, trace::eSecurity);
    EXPECT_NE(std::find(texts.begin(), texts.end(),
                        "RegKeySecurity::MakeRegKey Error setting world DACL"),
              texts.end());
    EXPECT_EQ(
        "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
        "SOFTWARE\\KORA4 key security test\\First",
        texts.back());
}

TEST_F(RegKeySecurityTrace, EntryAndExitLinesKeepTheirMarkers) {
    EXPECT_EQ(
        (std::vector<std::string>{
            "RegKeySecurity::MakeRegKeysAccessible >>", "RegKeySecurity::MakeRegKey >>",
            "RegKeySecurity::CreateRegKey >>", "RegKeySecurity::CreateRegKey << hr: 0x00000000",
            "RegKeySecurity::ListSecurityString >>",
            "RegKeySecurity::ListSecurityString << hr: 0x80004005",
            "RegKeySecurity::ListSecurityString >>",
            "RegKeySecurity::ListSecurityString << hr: 0x80004005",
            "RegKeySecurity::MakeRegKey >> hr: 0x00000000",
            "RegKeySecurity::MakeRegKeysAccessible << hr: 0x00000000"}),
        Run({cRoot}, trace::eApiEntryExit));
}

TEST_F(RegKeySecurityTrace, TheDescriptorIsListedBeforeAndAfterTheChange) {
    const auto texts = Run({cRoot}, trace::eSecurity);
    const std::string name = "SOFTWARE\\KORA4 key security test";
    ASSERT_EQ(6u, texts.size());
    EXPECT_EQ("RegKeySecurity::CreateRegKey Create reg key " + name + " code: 0", texts[0]);
    EXPECT_EQ("RegKeySecurity::MakeRegKey Post creation security string for: " + name,
              texts[1]);
    EXPECT_EQ("RegKeySecurity::MakeRegKey Post-set security string for: " + name, texts[3]);
    // The text of the descriptor, or the reason that there is none.
    for (const std::string& listed : {texts[2], texts[4]}) {
        EXPECT_TRUE(listed.starts_with("RegKeySecurity::ListSecurityString securityString: ") ||
                    listed ==
                        "RegKeySecurity::ListSecurityString Error getting security "
                        "descriptor 5")
            << listed;
    }
}

// Wine 8 refuses a descriptor with its audit part to everybody; Windows gives it to an
// administrator.
DWORD WINAPI WithoutAuditPart(HANDLE handle, SE_OBJECT_TYPE type, SECURITY_INFORMATION parts,
                              PSID* ppOwner, PSID* ppGroup, PACL* ppDacl, PACL* ppSacl,
                              PSECURITY_DESCRIPTOR* ppDescriptor) {
    const auto original = GetProcAddress(GetModuleHandleW(L"advapi32"), "GetSecurityInfo");
    return std::bit_cast<decltype(&GetSecurityInfo)>(original)(
        handle, type, parts & ~DWORD{SACL_SECURITY_INFORMATION}, ppOwner, ppGroup, ppDacl,
        ppSacl, ppDescriptor);
}

BOOL WINAPI NoText(PSECURITY_DESCRIPTOR, DWORD, SECURITY_INFORMATION, wchar_t**, ULONG*) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

TEST_F(RegKeySecurityTrace, ADescriptorThatIsGivenIsListed) {
    const ImportRedirection given(GetModuleHandleW(nullptr), "GetSecurityInfo",
                                  &WithoutAuditPart);
    ASSERT_TRUE(given.IsInPlace());
    const auto texts = Run({cFirst}, trace::eSecurity);
    ASSERT_EQ(6u, texts.size());
    EXPECT_THAT(texts[4], testing::MatchesRegex(
                              "RegKeySecurity::ListSecurityString securityString: .*D:.*WD.*"));
    UniqueRegKey key;
    ASSERT_EQ(S_OK, RegKeySecurity::CreateRegKey(cFirst, key.Put()));
    EXPECT_EQ(S_OK, RegKeySecurity::ListSecurityString(key.Get()));
    const ImportRedirection wordless(GetModuleHandleW(nullptr),
                                     "ConvertSecurityDescriptorToStringSecurityDescriptorW",
                                     &NoText);
    ASSERT_TRUE(wordless.IsInPlace());
    EXPECT_EQ(E_FAIL, RegKeySecurity::ListSecurityString(key.Get()));
}

}  // namespace
}  // namespace kora4::test

#include "monitor/reg_key_security.h"

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>

#include <string>
#include <vector>

#include "monitor/security_types.h"
#include "platform/handles.h"
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

constexpr SECURITY_INFORMATION cDacl = DACL_SECURITY_INFORMATION;

std::wstring DaclOf(const std::wstring& path) {
    UniqueRegKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, READ_CONTROL, key.Put()) !=
        ERROR_SUCCESS)
        return L"(no key)";
    const SecurityDescriptor descriptor = SecurityDescriptor::OfRegKey(key.Get(), cDacl);
    const auto text = descriptor ? descriptor.ToSddl(cDacl) : SecurityDescriptor::Text(nullptr);
    return text ? text.Get() : L"(no descriptor)";
}

void SetDaclOf(const std::wstring& path, const wchar_t* sddl) {
    UniqueRegKey key;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, WRITE_DAC, key.Put()),
              ERROR_SUCCESS);
    const SecurityDescriptor descriptor = SecurityDescriptor::FromSddl(sddl);
    ASSERT_EQ(SetSecurityInfo(key.Get(), SE_REGISTRY_KEY, cDacl, nullptr, nullptr,
                              descriptor.Dacl(), nullptr),
              static_cast<DWORD>(ERROR_SUCCESS));
}

void GiveToSystem(const std::wstring& path) {
    UniqueRegKey key;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, WRITE_OWNER, key.Put()),
              ERROR_SUCCESS);
    BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(sid);
    ASSERT_TRUE(CreateWellKnownSid(WinLocalSystemSid, nullptr, sid, &size));
    ASSERT_EQ(SetSecurityInfo(key.Get(), SE_REGISTRY_KEY, OWNER_SECURITY_INFORMATION, sid,
                              nullptr, nullptr, nullptr),
              static_cast<DWORD>(ERROR_SUCCESS));
}

class RegKeySecurityTest : public ::testing::Test {
  protected:
    static constexpr const wchar_t* cWorldAccess = L"D:(A;;KA;;;WD)";

    void SetUp() override { RemoveKey(HKEY_LOCAL_MACHINE, cRoot); }
    void TearDown() override { RemoveKey(HKEY_LOCAL_MACHINE, cRoot); }

    static HRESULT MakeAccessible(std::vector<const wchar_t*> names) {
        names.push_back(nullptr);
        return RegKeySecurity::MakeRegKeysAccessible(names.data());
    }

    // A key below which only volatile keys can be created.
    void CreateVolatileSecond() {
        CreateKey(HKEY_LOCAL_MACHINE, cRoot);
        ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, cSecond, 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_WRITE, nullptr, m_second.Put(), nullptr),
                  ERROR_SUCCESS);
    }

    UniqueRegKey m_second;
};

TEST_F(RegKeySecurityTest, ANullListIsABadPointer) {
    EXPECT_EQ(RegKeySecurity::MakeRegKeysAccessible(nullptr), E_POINTER);
}

TEST_F(RegKeySecurityTest, AnEmptyListSucceedsAndCreatesNothing) {
    EXPECT_EQ(MakeAccessible({}), S_OK);
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cRoot));
}

TEST_F(RegKeySecurityTest, MissingKeysAreCreatedAndOpenToEveryone) {
    EXPECT_EQ(MakeAccessible({cRoot, cFirst, cSecond}), S_OK);
    for (const wchar_t* const path : {cRoot, cFirst, cSecond})
        EXPECT_EQ(DaclOf(path), cWorldAccess);
}

TEST_F(RegKeySecurityTest, AnExistingKeyKeepsItsValuesAndSubkeys) {
    WriteValue(HKEY_LOCAL_MACHINE, cFirst, L"n", REG_SZ, L"1", 4);
    CreateKey(HKEY_LOCAL_MACHINE, std::wstring(cFirst) + L"\\Below");
    const std::string before = DumpKey(HKEY_LOCAL_MACHINE, cRoot);
    EXPECT_EQ(MakeAccessible({cFirst}), S_OK);
    EXPECT_EQ(DumpKey(HKEY_LOCAL_MACHINE, cRoot), before);
    EXPECT_EQ(DaclOf(cFirst), cWorldAccess);
}

TEST_F(RegKeySecurityTest, AnExistingAccessListIsReplaced) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    SetDaclOf(cFirst, L"D:(A;;KA;;;BA)(A;;KR;;;BU)");
    ASSERT_NE(DaclOf(cFirst), cWorldAccess);
    EXPECT_EQ(MakeAccessible({cFirst}), S_OK);
    EXPECT_EQ(DaclOf(cFirst), cWorldAccess);
}

TEST_F(RegKeySecurityTest, OnlyTheListedKeysAreOpened) {
    CreateKey(HKEY_LOCAL_MACHINE, cThird);
    const std::wstring before = DaclOf(cThird);
    EXPECT_EQ(MakeAccessible({cRoot, cFirst}), S_OK);
    EXPECT_EQ(DaclOf(cThird), before);
    EXPECT_NE(before, cWorldAccess);
}

TEST_F(RegKeySecurityTest, TheFirstFailureEndsTheWorkAndWhatWasMadeStays) {
    CreateVolatileSecond();
    EXPECT_EQ(MakeAccessible({cFirst, cBelowSecond, cThird}), E_FAIL);
    EXPECT_EQ(DaclOf(cFirst), cWorldAccess);
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cThird));
}

TEST_F(RegKeySecurityTest, CreatingAKeyHandsOutItsHandle) {
    UniqueRegKey key;
    EXPECT_EQ(RegKeySecurity::CreateRegKey(cFirst, key.Put()), S_OK);
    EXPECT_EQ(RegSetValueExW(key.Get(), L"n", 0, REG_SZ, nullptr, 0), ERROR_SUCCESS);
}

TEST_F(RegKeySecurityTest, CreatingWithoutANameOrAPlaceForTheHandleFails) {
    HKEY hKey = nullptr;
    EXPECT_EQ(RegKeySecurity::CreateRegKey(nullptr, &hKey), E_FAIL);
    EXPECT_EQ(hKey, nullptr);
    EXPECT_EQ(RegKeySecurity::CreateRegKey(cFirst, nullptr), E_FAIL);
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
    ASSERT_EQ(RegKeySecurity::CreateRegKey(cFirst, key.Put()), S_OK);
    RegKeySecurity::ListSecurityString(key.Get());
    EXPECT_EQ(isSecurityOn(), before);
    {
        const PrivilegeHold hold(SE_SECURITY_NAME);
        EXPECT_TRUE(isSecurityOn());
    }
    EXPECT_EQ(isSecurityOn(), before);
}

TEST_F(RegKeySecurityTest, APrivilegeThatDoesNotExistIsNoTrouble) {
    SetLastError(4711);
    const PrivilegeHold hold(L"SeNoSuchPrivilege");
    EXPECT_EQ(MakeAccessible({cFirst}), S_OK);
}

TEST_F(RegKeySecurityTest, ATextThatIsNoDescriptorGivesNone) {
    EXPECT_FALSE(SecurityDescriptor::FromSddl(L"nonsense"));
    EXPECT_NE(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
}

TEST_F(RegKeySecurityTest, ADescriptorWithoutAnAccessListHasNone) {
    const SecurityDescriptor descriptor = SecurityDescriptor::FromSddl(L"O:BA");
    ASSERT_TRUE(descriptor);
    EXPECT_EQ(descriptor.Dacl(), nullptr);
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
    EXPECT_EQ(Run({cBelowSecond}, trace::eSecurity),
              (std::vector<std::string>{
                  "RegKeySecurity::CreateRegKey Create reg key SOFTWARE\\KORA4 key security "
                  "test\\Second\\Below code: 1021",
                  "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
                  "SOFTWARE\\KORA4 key security test\\Second\\Below"}));
}

TEST_F(RegKeySecurityTrace, AKeyThatMayNotBeOpenedTellsAccessDenied) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    SetDaclOf(cFirst, L"D:(A;;KR;;;WD)(A;;WDSDRC;;;BA)");
    EXPECT_EQ(Run({cFirst}, trace::eSecurity),
              (std::vector<std::string>{
                  "RegKeySecurity::CreateRegKey Create reg key SOFTWARE\\KORA4 key security "
                  "test\\First code: 5",
                  "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
                  "SOFTWARE\\KORA4 key security test\\First"}));
    SetDaclOf(cFirst, cWorldAccess);
}

TEST_F(RegKeySecurityTrace, AKeyWhoseAccessListMayNotBeChangedTellsSo) {
    CreateKey(HKEY_LOCAL_MACHINE, cFirst);
    // An owner may always change the list: the key has to belong to somebody else.
    GiveToSystem(cFirst);
    SetDaclOf(cFirst, L"D:(A;;0x3001B;;;WD)");
    const auto texts = Run({cFirst}, trace::eSecurity);
    EXPECT_NE(std::find(texts.begin(), texts.end(),
                        "RegKeySecurity::MakeRegKey Error setting world DACL"),
              texts.end());
    EXPECT_EQ(texts.back(),
              "RegKeySecurity::MakeRegKeysAccessible MakeRegKey hr: 0x80004005 name: "
              "SOFTWARE\\KORA4 key security test\\First");
}

TEST_F(RegKeySecurityTrace, EntryAndExitLinesKeepTheirMarkers) {
    EXPECT_EQ(
        Run({cRoot}, trace::eApiEntryExit),
        (std::vector<std::string>{
            "RegKeySecurity::MakeRegKeysAccessible >>", "RegKeySecurity::MakeRegKey >>",
            "RegKeySecurity::CreateRegKey >>", "RegKeySecurity::CreateRegKey << hr: 0x00000000",
            "RegKeySecurity::ListSecurityString >>",
            "RegKeySecurity::ListSecurityString << hr: 0x80004005",
            "RegKeySecurity::ListSecurityString >>",
            "RegKeySecurity::ListSecurityString << hr: 0x80004005",
            "RegKeySecurity::MakeRegKey >> hr: 0x00000000",
            "RegKeySecurity::MakeRegKeysAccessible << hr: 0x00000000"}));
}

TEST_F(RegKeySecurityTrace, TheDescriptorIsListedBeforeAndAfterTheChange) {
    const auto texts = Run({cRoot}, trace::eSecurity);
    const std::string name = "SOFTWARE\\KORA4 key security test";
    ASSERT_EQ(texts.size(), 6u);
    EXPECT_EQ(texts[0], "RegKeySecurity::CreateRegKey Create reg key " + name + " code: 0");
    EXPECT_EQ(texts[1],
              "RegKeySecurity::MakeRegKey Post creation security string for: " + name);
    EXPECT_EQ(texts[3], "RegKeySecurity::MakeRegKey Post-set security string for: " + name);
    // The text of the descriptor, or the reason that there is none.
    for (const std::string& listed : {texts[2], texts[4]}) {
        EXPECT_TRUE(listed.starts_with("RegKeySecurity::ListSecurityString securityString: ") ||
                    listed ==
                        "RegKeySecurity::ListSecurityString Error getting security "
                        "descriptor 5")
            << listed;
    }
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Registrar scripts on the real registry.
#include "server/registrar.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

constexpr wchar_t cPlayground[] = L"Software\\KORA4 registrar test";

constexpr std::array cParameters{
    ScriptParameter{"PATH", u"C:\\it's 100% {a} \u00fc\u4e2d\\%PATH%\\x.dll"}};

// The items of a script inside the playground key, which stays.
std::string Script(const std::string& items) {
    return "HKCU { NoRemove Software { NoRemove 'KORA4 registrar test' { " + items + " } } }";
}

class Registrar : public ::testing::Test {
  protected:
    void SetUp() override { RemoveKey(HKEY_CURRENT_USER, cPlayground); }
    void TearDown() override { RemoveKey(HKEY_CURRENT_USER, cPlayground); }

    static HRESULT Register(const std::string& items) {
        return RegisterScript(Script(items), cParameters);
    }
    static HRESULT Unregister(const std::string& items) {
        return UnregisterScript(Script(items), cParameters);
    }
    static void Put(const std::wstring& subkey, const std::wstring& name) {
        WriteValue(HKEY_CURRENT_USER, cPlayground + (L"\\" + subkey), name, REG_SZ, L"1", 4);
    }
    static std::string Dump() { return DumpKey(HKEY_CURRENT_USER, cPlayground); }
};

TEST_F(Registrar, RegistrationCreatesKeysAndValues) {
    EXPECT_EQ(S_OK, Register("a = s 'x' { val n = s 'y' b } c"));
    EXPECT_EQ("[]\n[a]\n REG_SZ x\nn REG_SZ y\n[a\\b]\n[c]\n", Dump());
}

TEST_F(Registrar, ReplacedPathsArriveAsTheyAre) {
    EXPECT_EQ(S_OK, Register("a = s '%PATH%'"));
    EXPECT_EQ(L"C:\\it's 100% {a} \u00fc\u4e2d\\%PATH%\\x.dll",
              ReadString(HKEY_CURRENT_USER, cPlayground + std::wstring(L"\\a"), L""));
}

TEST_F(Registrar, RegistrationKeepsWhatElseIsInAnOrdinaryKey) {
    Put(L"a", L"old");
    EXPECT_EQ(S_OK, Register("a { val n = s y }"));
    EXPECT_EQ("[]\n[a]\nn REG_SZ y\nold REG_SZ 1\n", Dump());
}

TEST_F(Registrar, RegistrationReplacesAForceRemoveKeyWhole) {
    Put(L"a", L"old");
    Put(L"a\\b\\c", L"old");
    EXPECT_EQ(S_OK, Register("ForceRemove a { val n = s y }"));
    EXPECT_EQ("[]\n[a]\nn REG_SZ y\n", Dump());
}

TEST_F(Registrar, RegisteringTwiceIsRegisteringOnce) {
    const std::string items = "ForceRemove a = s x { b { val n = s y } } c";
    EXPECT_EQ(S_OK, Register(items));
    const std::string once = Dump();
    EXPECT_EQ(S_OK, Register(items));
    EXPECT_EQ(once, Dump());
}

TEST_F(Registrar, UnregistrationRemovesWhatRegistrationMade) {
    const std::string items = "ForceRemove a = s x { b { val n = s y } } c { d } e = s z";
    EXPECT_EQ(S_OK, Register(items));
    EXPECT_EQ(S_OK, Unregister(items));
    EXPECT_EQ("[]\n", Dump());
}

TEST_F(Registrar, UnregistrationRemovesAForceRemoveKeyWithItsSubtree) {
    Put(L"a\\foreign\\deep", L"n");
    EXPECT_EQ(S_OK, Unregister("ForceRemove a { b }"));
    EXPECT_EQ("[]\n", Dump());
}

TEST_F(Registrar, UnregistrationKeepsNoRemoveKeysButNotTheirScriptedContents) {
    const std::string items = "NoRemove a { b val n = s y }";
    EXPECT_EQ(S_OK, Register(items));
    EXPECT_EQ(S_OK, Unregister(items));
    EXPECT_EQ("[]\n[a]\n", Dump());
}

TEST_F(Registrar, UnregistrationKeepsAnOrdinaryKeyThatHoldsForeignKeys) {
    EXPECT_EQ(S_OK, Register("a { b val n = s y }"));
    Put(L"a\\foreign", L"n");
    EXPECT_EQ(S_OK, Unregister("a { b val n = s y }"));
    EXPECT_EQ("[]\n[a]\n[a\\foreign]\nn REG_SZ 1\n", Dump());
}

TEST_F(Registrar, UnregisteringWhatIsNotThereSucceeds) {
    CreateKey(HKEY_CURRENT_USER, cPlayground);
    EXPECT_EQ(S_OK, Unregister("ForceRemove a { b } c { d { val n = s y } } val n = s y"));
    EXPECT_EQ("[]\n", Dump());
}

TEST_F(Registrar, AMalformedScriptTouchesNothing) {
    EXPECT_EQ(E_FAIL, Register("a = s x b = s"));
    EXPECT_EQ("", Dump());
    Put(L"a", L"n");
    EXPECT_EQ(E_FAIL, Unregister("ForceRemove a %WHO%"));
    EXPECT_EQ("[]\n[a]\nn REG_SZ 1\n", Dump());
}

TEST_F(Registrar, ARegistryErrorIsAFailure) {
    UniqueRegKey key;  // under a volatile key only volatile ones can be created
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_CURRENT_USER, cPlayground, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_WRITE, nullptr, key.Put(), nullptr));
    EXPECT_EQ(E_FAIL, Register("a"));
}

TEST_F(Registrar, EveryRootIsItsPredefinedKey) {
    const struct {
        const char* word;
        HKEY root;
        const wchar_t* path;
    } roots[] = {
        {"HKCR", HKEY_CLASSES_ROOT, L"KORA4 registrar test"},
        {"HKCU", HKEY_CURRENT_USER, L"KORA4 registrar test"},
        {"HKLM", HKEY_LOCAL_MACHINE, L"Software\\KORA4 registrar test"},
        {"HKU", HKEY_USERS, L".Default\\KORA4 registrar test"},
    };
    for (const auto& [word, root, path] : roots) {
        const std::wstring wide(path);
        const std::size_t slash = wide.find(L'\\');
        const std::string parent(wide.begin(),
                                 wide.begin() + static_cast<std::ptrdiff_t>(
                                                    slash == std::wstring::npos ? 0 : slash));
        const std::string key = "'KORA4 registrar test'";
        const std::string script =
            std::string(word) + " { " +
            (parent.empty() ? key : "NoRemove " + parent + " { " + key + " }") + " }";
        EXPECT_EQ(S_OK, RegisterScript(script, {})) << word;
        EXPECT_TRUE(KeyExists(root, path)) << word;
        EXPECT_EQ(S_OK, UnregisterScript(script, {})) << word;
        EXPECT_FALSE(KeyExists(root, path)) << word;
    }
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// The reader of registrar scripts, without a registry.
#include "server/registrar_script.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace kora4::test {
namespace {

// Writes what it receives as one text, so that order, count and arguments are compared
// together.
class RecordingSink final : public RegistrarScriptSink {
  public:
    HRESULT OnRoot(ScriptRoot root) override {
        m_log += "root " + std::to_string(static_cast<int>(root)) + "\n";
        return Answer();
    }
    HRESULT OnKey(std::size_t depth, ScriptKeyMode mode, ScriptText name,
                  const ScriptText& text) override {
        static constexpr const char* cModes[] = {"key", "NoRemove", "ForceRemove"};
        m_log += std::to_string(depth) + " " + cModes[static_cast<int>(mode)] + " <" +
                 Narrow(name) + ">" + (text ? " = <" + Narrow(text) + ">" : "") + "\n";
        return Answer();
    }
    HRESULT OnValue(std::size_t depth, const ScriptText& name,
                    const ScriptText& text) override {
        m_log +=
            std::to_string(depth) + " val <" + Narrow(name) + "> = <" + Narrow(text) + ">\n";
        return Answer();
    }
    HRESULT OnKeyEnd(std::size_t depth) override {
        m_log += std::to_string(depth) + " end\n";
        return Answer();
    }

    void FailAtCall(int call) { m_failAt = call; }
    const std::string& Log() const { return m_log; }

  private:
    static std::string Narrow(const ScriptText& text) {
        std::string narrow;
        for (std::size_t i = 0; i < text.Length(); ++i)
            narrow += static_cast<char>(text.Get()[i]);
        EXPECT_EQ(u'\0', text.Get()[text.Length()]);
        return narrow;
    }
    HRESULT Answer() { return ++m_calls == m_failAt ? result::cOutOfMemory : result::cOk; }

    std::string m_log;
    int m_calls = 0;
    int m_failAt = 0;
};

constexpr std::array cParameters{
    ScriptParameter{"NAME", u"value"},
    ScriptParameter{"HARD", u"C:\\it's 100% {a} %NAME% 'x'\\"},
    ScriptParameter{"EMPTY", u""},
};

std::string Walk(std::string_view script) {
    RecordingSink sink;
    const HRESULT hr = WalkRegistrarScript(script, cParameters, sink);
    EXPECT_EQ(hr, CheckRegistrarScript(script, cParameters));
    return hr == result::cOk ? sink.Log() : "error";
}

TEST(RegistrarScript, AnEmptyScriptHasNothingToDo) {
    EXPECT_EQ("", Walk(""));
    EXPECT_EQ("", Walk(" \r\n\t"));
}

TEST(RegistrarScript, KeysNestAndEndInOrder) {
    EXPECT_EQ(
        "root 0\n1 key <a>\n2 key <b>\n2 end\n2 key <c>\n3 key <d>\n3 end\n2 end\n"
        "1 end\n1 key <e>\n1 end\n",
        Walk("HKCR { a { b c { d } } e }"));
}

TEST(RegistrarScript, EveryRootIsKnown) {
    EXPECT_EQ("root 0\nroot 1\nroot 2\nroot 3\n", Walk("HKCR { } HKCU { } HKLM { } HKU { }"));
}

TEST(RegistrarScript, ModesBelongToTheKeyThatFollows) {
    EXPECT_EQ("root 0\n1 NoRemove <a>\n2 ForceRemove <b>\n2 end\n1 end\n1 key <c>\n1 end\n",
              Walk("HKCR { NoRemove a { ForceRemove b } c }"));
}

TEST(RegistrarScript, KeysMayHaveADefaultValue) {
    EXPECT_EQ("root 0\n1 key <a> = <x y>\n2 key <b> = <z>\n2 end\n1 end\n",
              Walk("HKCR { a = s 'x y' { b = s z } }"));
}

TEST(RegistrarScript, ValuesBelongToTheKeyAroundThem) {
    EXPECT_EQ("root 0\n0 val <r> = <1>\n1 key <a>\n1 val <n m> = <x>\n1 end\n",
              Walk("HKCR { val r = s 1 a { val 'n m' = s 'x' } }"));
}

TEST(RegistrarScript, ABracedGuidIsAName) {
    EXPECT_EQ("root 0\n1 ForceRemove <{16CC-D9}> = <x>\n1 end\n",
              Walk("HKCR { ForceRemove {16CC-D9} = s 'x' { } }"));
}

TEST(RegistrarScript, QuotedTokensAreNeverKeywordsOrBraces) {
    EXPECT_EQ(
        "root 0\n1 key <NoRemove>\n1 end\n1 key <val>\n1 end\n1 key <{>\n1 end\n"
        "1 key <}>\n1 end\n1 key <=>\n1 end\n",
        Walk("HKCR { 'NoRemove' 'val' '{' '}' '=' }"));
}

TEST(RegistrarScript, ADoubledApostropheStandsForOne) {
    EXPECT_EQ("root 0\n1 key <it's> = <'x'>\n1 end\n", Walk("HKCR { 'it''s' = s '''x''' }"));
}

TEST(RegistrarScript, AQuotedTextMayBeEmpty) {
    EXPECT_EQ("root 0\n1 key <a> = <>\n1 end\n", Walk("HKCR { a = s '' }"));
}

TEST(RegistrarScript, ParametersAreReplacedInNamesAndTexts) {
    EXPECT_EQ("root 0\n1 key <value> = <avaluebvalue>\n1 val <value> = <value>\n1 end\n",
              Walk("HKCR { %NAME% = s 'a%NAME%b%NAME%' { val '%NAME%' = s %NAME% } }"));
}

TEST(RegistrarScript, AParameterMayBeEmpty) {
    EXPECT_EQ("root 0\n1 key <a> = <>\n1 end\n", Walk("HKCR { a = s '%EMPTY%' }"));
}

TEST(RegistrarScript, AReplacementIsNeverLookedAtAgain) {
    EXPECT_EQ(
        "root 0\n1 key <a> = <C:\\it's 100% {a} %NAME% 'x'\\>\n1 end\n"
        "1 key <b> = <C:\\it's 100% {a} %NAME% 'x'\\>\n1 end\n",
        Walk("HKCR { a = s '%HARD%' b = s %HARD% }"));
}

TEST(RegistrarScript, ADoubledPerCentSignStandsForOne) {
    EXPECT_EQ("root 0\n1 key <a> = <100% %NAME%>\n1 end\n",
              Walk("HKCR { a = s '100%% %%NAME%%' }"));
}

class MalformedScript : public ::testing::TestWithParam<const char*> {};

TEST_P(MalformedScript, IsRefused) {
    EXPECT_EQ("error", Walk(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, MalformedScript,
    ::testing::Values("HKXX { }", "'HKCR' { }", "HKCR", "HKCR a", "HKCR {", "HKCR { a {",
                      "HKCR { a { }", "HKCR { } }", "{ }", "HKCR { { } }", "HKCR { = s x }",
                      "HKCR { a = }", "HKCR { a = s }", "HKCR { a = d 1 }", "HKCR { a = s { }",
                      "HKCR { a = s = }", "HKCR { a s x = }", "HKCR { val }", "HKCR { val a }",
                      "HKCR { val a = }", "HKCR { val = s x }", "HKCR { val a = b 1 }",
                      "HKCR { NoRemove }", "HKCR { ForceRemove",
                      "HKCR { NoRemove val a = s x }", "HKCR { 'a }", "HKCR { a = s 'b }",
                      "HKCR { 'a'' }", "HKCR { '' }", "HKCR { %EMPTY% }", "HKCR { %WHO% }",
                      "HKCR { 50% }", "HKCR { a = s '%' }", "HKCR { a = s '%NAME' }",
                      "HKCR { a\\b }", "HKCR { '%HARD%' }", "HKCR { \x01 } }",
                      "HKCR { \xC3\xA4 }", "HKCR { a = s '\xFF' }", "HKCR{ a }"));

TEST(RegistrarScript, NestingHasALimit) {
    const auto nested = [](std::size_t depth) {
        std::string script = "HKCR { ";
        for (std::size_t i = 0; i < depth; ++i)
            script += "k { ";
        for (std::size_t i = 0; i <= depth; ++i)
            script += "} ";
        return script;
    };
    EXPECT_EQ(result::cOk, CheckRegistrarScript(nested(cMaxScriptDepth), {}));
    EXPECT_EQ(result::cFail, CheckRegistrarScript(nested(cMaxScriptDepth + 1), {}));
}

TEST(RegistrarScript, AFailureOfTheSinkEndsTheWalkAndIsItsResult) {
    constexpr std::string_view script = "HKCR { a { val b = s c } }";
    for (int call = 1; call <= 4; ++call) {
        RecordingSink sink;
        sink.FailAtCall(call);
        EXPECT_EQ(result::cOutOfMemory, WalkRegistrarScript(script, {}, sink));
        EXPECT_EQ(std::count(sink.Log().begin(), sink.Log().end(), '\n'), call);
    }
}

}  // namespace
}  // namespace kora4::test

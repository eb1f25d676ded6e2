// SPDX-License-Identifier: MIT
// How the values of a trace line become text.
#include "trace/line_text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace kora4 {
namespace {

constexpr unsigned cWestern = 1252;

template <typename... Arguments>
std::string In(unsigned codePage, const char* format, Arguments... arguments) {
    trace::LineText text(codePage);
    text.Append(format, arguments...);
    const std::string line = text.End();
    EXPECT_TRUE(line.ends_with('\n')) << line;
    return line.substr(0, line.size() - 1);
}

template <typename... Arguments>
std::string Formatted(const char* format, Arguments... arguments) {
    return In(cWestern, format, arguments...);
}

// What the platform makes of it in the locale that a program begins with.
template <typename... Arguments>
std::string Printed(const char* format, Arguments... arguments) {
    char text[500];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

// --- numbers ----------------------------------------------------------------------------

TEST(LineNumbers, AreThoseOfThePlatform) {
    for (const int value : {0, 1, -1, 7, 2147483647, -2147483647 - 1}) {
        for (const char* format : {"%d", "%4d", "%12d", "%u", "%u|%d", "%x", "%X", "%08x",
                                   "0x%04X", "%04x", "%0x", "%ld"})
            EXPECT_EQ(Printed(format, value, value), Formatted(format, value, value)) << format;
    }
}

TEST(LineNumbers, OfPointersHaveSixteenDigits) {
    EXPECT_EQ("0000000000000000", Formatted("%p", nullptr));
    EXPECT_EQ("00000000DEADBEEF",
              Formatted("%p", reinterpret_cast<void*>(std::uintptr_t{0xDEADBEEF})));
    EXPECT_EQ("FFFFFFFFFFFFFFFF", Formatted("%p", reinterpret_cast<void*>(~std::uintptr_t{})));
}

constexpr double cFloats[] = {0.0,  -0.0,     0.5,  -2.25,   1e-7,  0.0000005,
                              1e21, 15625000, 3e38, -3.4e38, 1e308, -1e308};

// Those of the platform's own run-time, which is the library's, not of the compiler's.
std::string PrintedFloat(const char* format, double value) {
    char text[500] = {};
    _snprintf(text, sizeof text - 1, format, value);
    return text;
}

TEST(LineNumbers, WithAPointAreThoseOfThePlatform) {
    for (const double value : cFloats) {
        EXPECT_EQ(PrintedFloat("%f", value), Formatted("%f", value));
        EXPECT_EQ(PrintedFloat("%10f", value), Formatted("%10f", value));
    }
}

TEST(LineNumbers, ThatAreNoneAreThoseOfThePlatform) {
    for (const double value :
         {std::nan(""), -std::nan(""), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(PrintedFloat("%f", value), Formatted("%f", value));
}

TEST(LineNumbers, HaveAPointInEveryLocale) {
    for (const char* locale : {"German", "French", "Russian"}) {
        ASSERT_TRUE(std::setlocale(LC_ALL, locale)) << locale;
        EXPECT_EQ("0,500000", PrintedFloat("%f", 0.5)) << locale;  // or there is no test
        EXPECT_EQ("0.500000", Formatted("%f", 0.5)) << locale;
        EXPECT_EQ(" -2.250000|", Formatted("%10f|", -2.25)) << locale;
        const std::string large = Formatted("%f", 3e38);
        std::setlocale(LC_ALL, "C");
        EXPECT_EQ(large, PrintedFloat("%f", 3e38)) << locale;
    }
}

// --- texts ------------------------------------------------------------------------------

TEST(LineTexts, HaveTheirPlaceAndTheirWidth) {
    EXPECT_EQ("a      eGraphicEQ|b wide too 5",
              Formatted("a%16s|%s %S %ls %d", "eGraphicEQ", "b", L"wide", L"too", 5));
    EXPECT_EQ("longer than four", Formatted("%4s", "longer than four"));
}

TEST(LineTexts, ThatAreMissingAreSaidToBe) {
    EXPECT_EQ("(null) (null) (null)", Formatted("%s %S %ls", static_cast<const char*>(nullptr),
                                                static_cast<const wchar_t*>(nullptr),
                                                static_cast<const wchar_t*>(nullptr)));
}

TEST(LineTexts, FromOutsideHaveNoControlCharacters) {
    for (wchar_t c = 1; c <= 0xFF; ++c) {
        const wchar_t text[] = {L'a', c, L'b', L'\0'};
        const bool isControl = c < 0x20 || (c >= 0x7F && c <= 0x9F);
        for (const char* format : {"%S", "%ls"}) {
            const std::string line = Formatted(format, text);
            EXPECT_EQ(isControl ? "a?b" : std::string("a") + static_cast<char>(c) + "b", line)
                << static_cast<int>(c);
        }
    }
}

TEST(LineTexts, OfTheLibraryKeepTheirTabsAndAreOneLineToo) {
    EXPECT_EQ("Movie\t(0)\tProfile", Formatted("%s", "Movie\t(0)\tProfile"));
    EXPECT_EQ("a?b?c?d", Formatted("%s",
                                   "a\nb\rc\x7F"
                                   "d"));
}

TEST(LineTexts, AreWrittenInCodePagesThatAcceptNoFlagsToo) {
    EXPECT_EQ("a+AOk-b", In(CP_UTF7, "%S", L"a\u00E9b"));
}

TEST(LineTexts, ThatTheCodePageLacksGoOnBehindAQuestionMark) {
    EXPECT_EQ("Kino ??, \xE4\x80!", Formatted("%S!", L"Kino \x416\x4E2D, \xE4\x20AC"));
    EXPECT_EQ("Kino \xC6?", In(1251, "%S", L"Kino \x416\x4E2D"));
    EXPECT_EQ("Kino \x84\x47\x92\x86", In(932, "%S", L"Kino \x416\x4E2D"));
    EXPECT_EQ("Kino \xD0\x96\xE4\xB8\xAD", In(CP_UTF8, "%S", L"Kino \x416\x4E2D"));
}

// One question mark for one character, and none that a code page would put in its place: a
// best fit for some is a newline.
TEST(LineTexts, HaveNoBestFit) {
    EXPECT_EQ("a?b", Formatted("%S",
                               L"a\xD83D\xDE00"
                               L"b"));
    EXPECT_EQ(
        "a\xF0\x9F\x98\x80"
        "b",
        In(CP_UTF8, "%S",
           L"a\xD83D\xDE00"
           L"b"));
    for (const unsigned codePage : {437u, 1252u, 932u, unsigned{CP_UTF8}}) {
        EXPECT_EQ("a?b?c", In(codePage, "%S",
                              L"a\xD83D"
                              L"b\xDE00"
                              L"c"));
        EXPECT_EQ("a?", In(codePage, "%S", L"a\xD83D"));
        for (unsigned c = 1; c < 0xFFFF; ++c) {
            const wchar_t text[] = {static_cast<wchar_t>(c), L'\0'};
            const std::string line = In(codePage, "%S", text);
            ASSERT_FALSE(line.empty()) << codePage << " " << c;
            for (const char byte : line)
                ASSERT_FALSE((byte >= 0 && byte < 0x20) || byte == 0x7F)
                    << codePage << " " << c;
        }
    }
    EXPECT_EQ("?", Formatted("%S", L"\x2192"));
}

// --- the line ---------------------------------------------------------------------------

TEST(LineEnds, AreCutBeforeACharacterThatDoesNotFit) {
    for (std::size_t length = trace::cLineChars - 8; length < trace::cLineChars; ++length) {
        const std::string text = In(932, "%s%S", std::string(length, 'x').c_str(), L"\x4E2D!");
        const std::size_t most = trace::cLineChars - 2;
        const std::string whole = std::string(length, 'x') + "\x92\x86!";
        const std::size_t end = length == most - 1 ? length : std::min(most, whole.size());
        EXPECT_EQ(whole.substr(0, end), text) << length;
    }
}

TEST(LineFormats, KeepTheirOwnNewlinesAndTabs) {
    EXPECT_EQ("a\n\tb 5\n", Formatted("a\n\tb %d\n\n", 5));
    EXPECT_EQ("", Formatted("\n"));
    EXPECT_EQ("", Formatted(""));
}

TEST(LineFormats, ThatNobodyKnowsAreWrittenAsTheyStand) {
    EXPECT_EQ("5 %q %d %s", Formatted("%d %q %d %s", 5));
    EXPECT_EQ("%.3f", Formatted("%.3f", 0.5));
    EXPECT_EQ("100 %", Formatted("%d %", 100));
    EXPECT_EQ("%-4d", Formatted("%-4d", 1));
}

}  // namespace
}  // namespace kora4

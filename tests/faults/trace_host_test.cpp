// SPDX-License-Identifier: MIT
// Lines of the built library in hosts that choose a locale, and with names from outside.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "faults/debug_output.h"
#include "support/com_client.h"
#include "support/raw_store.h"
#include "support/trace_capture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr DWORD cMessagesToFiles = 0x01000400;

std::string ReadLog(const char* name) {
    std::ifstream file(std::string("C:\\KalLogs\\") + name + ".log", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TraceHost : public testing::Test {
  protected:
    void SetUp() override {
        RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), cMessagesToFiles);
        ASSERT_TRUE(m_library.IsLoaded()) << "QXA64T.dll";
        m_spApi = m_library.Create();
        ASSERT_TRUE(m_spApi);
        ASSERT_EQ(S_OK, m_spApi->Initialize());
        Begin();
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }

    void Begin() {
        m_log.Clear();
        m_output.Clear();
    }

    // The messages since Begin; the same came out on all three ways.
    std::vector<std::string> Said() {
        const std::string told = m_output.Log();
        std::string asFile;
        for (const char c : told)
            asFile += c == '\n' ? std::string("\r\n") : std::string(1, c);
        EXPECT_EQ(asFile, ReadLog("KORA4ASL"));
        EXPECT_EQ(asFile, ReadLog("KalTrace"));
        Begin();
        std::vector<std::string> messages;
        for (const TraceLine& line : ParseTrace(told))
            messages.push_back(line.message);
        return messages;
    }

    std::vector<std::string> SaidOf(const std::wstring& name) {
        m_spApi->SetCustomProfileName(4, name.c_str());
        return Said();
    }

    void SetEnhancer(float amount) {
        KORA4PatchValueUnion value{eDialogEnhancer, {0}};
        value.m_values.m_enhancementSlider = amount;
        m_spApi->SetSimplePatchValue(&value);
    }

    TraceLog m_log;
    const RawStore m_store;
    const Apartment m_apartment{COINIT_APARTMENTTHREADED};
    ApiLibrary m_library;
    ComPtr<IVeltoKORA4API> m_spApi;
    DebugOutput m_output;
};

using Lines = std::vector<std::string>;

TEST_F(TraceHost, WithALocaleOfItsOwnGetsNumbersWithAPoint) {
    for (const char* locale : {"German", "French", "Russian"}) {
        ASSERT_TRUE(std::setlocale(LC_ALL, locale)) << locale;
        char number[32];
        _snprintf(number, sizeof number, "%f", 0.5);
        ASSERT_STREQ("0,500000", number) << "this host has a point";
        SetEnhancer(0.5f);
        SetEnhancer(7.0f);
        KORA4PatchValueUnion value{eDialogEnhancer, {0}};
        m_spApi->GetSimplePatchValue(&value);
        GraphicEQData eq{};
        eq.m_bands = 1;
        eq.m_gain[0] = -20.0f;
        m_spApi->SetGraphicEQData(&eq);
        EXPECT_EQ((Lines{"eDialogEnhancer set to 0.500000",
                         "**** Error: eDialogEnhancer value of 7.000000 > "
                         "cDialogEnhancerAmountMax (1.000000). Returning E_INVALIDARG",
                         "eDialogEnhancer = 0.500000",
                         "Graphic EQ gain band 0 limited to -12.000000 (was -20.000000)."}),
                  Said())
            << locale;
    }
}

// In the code page of this process; it has a question mark for what it lacks.
std::string Shown(const std::wstring& text) {
    char bytes[64] = {};
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, bytes, sizeof bytes, nullptr, nullptr);
    return bytes;
}

TEST_F(TraceHost, SeesTheRestOfALineBehindWhatTheCodePageLacks) {
    for (const char* locale : {"C", "German"}) {
        std::setlocale(LC_ALL, locale);
        for (const wchar_t* name : {L"Kino \u0416\u4E2D!", L"Gr\u00F6\u00DFe \u20AC \u0416!"})
            EXPECT_EQ(Lines{"(4, " + Shown(name) + ")"}, SaidOf(name));
    }
}

// Nothing that a name holds begins a line of its own.
TEST_F(TraceHost, GetsOneLineForOneText) {
    EXPECT_EQ(Lines{"(4, a?KORA4ASL:    1 F:b??c?d)"},
              SaidOf(L"a\nKORA4ASL:    1 F:b\r\nc\td"));
    for (wchar_t c = 1; c <= 0x9F; ++c) {
        const bool isControl = c < 0x20 || c >= 0x7F;
        const std::string shown(1, isControl ? '?' : static_cast<char>(c));
        EXPECT_EQ(Lines{"(4, a" + shown + "b)"}, SaidOf(std::wstring(L"a") + c + L"b"))
            << int{c};
    }
    EXPECT_EQ(Lines{"(4, a?b)"}, SaidOf(L"a\x2028"
                                        L"b"));
    EXPECT_EQ(Lines{"(4, a?b)"}, SaidOf(L"a\x25D9"
                                        L"b"));
}

TEST_F(TraceHost, GetsTheTabsOfTheProfilesNames) {
    LONG profile = 0;
    m_spApi->GetActiveProfile(&profile);
    EXPECT_EQ(Lines{" is Movie\t(0)\tProfile"}, Said());
}

TEST_F(TraceHost, GetsALongNameCutAndTheNextLineWhole) {
    const Lines lines = SaidOf(std::wstring(1500, L'\x416'));
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ("(4, " + std::string(lines[0].size() - 4, '?'), lines[0]);
    EXPECT_EQ(Lines{"(4, b)"}, SaidOf(L"b"));
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// The sampling period, the engine's levels in twenty bands, and the companion commands.
#include <cstring>

#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename Value>
void Append(Bytes& bytes, Value value) {
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), begin, begin + sizeof value);
}

struct Record {
    std::vector<float> gains;
    std::vector<float> excitations;
};

Bytes Blob(const std::vector<Record>& records) {
    Bytes bytes;
    Append(bytes, std::uint32_t{0xAAAAAAAA});
    Append(bytes, static_cast<std::uint32_t>(records.size()));
    for (const Record& record : records) {
        bytes.insert(bytes.end(), 16, 0x55);
        Append(bytes, static_cast<std::uint32_t>(record.gains.size()));
        Append(bytes, std::uint32_t{0xBBBBBBBB});
        for (float gain : record.gains)
            Append(bytes, gain);
        for (float excitation : record.excitations)
            Append(bytes, excitation);
    }
    return bytes;
}

Record Flat(std::size_t bands, float gain, float excitation) {
    return {std::vector<float>(bands, gain), std::vector<float>(bands, excitation)};
}

class ApiVisualization : public ApiTest {
  protected:
    void SetUp() override {
        ApiTest::SetUp();
        m_spApi = Initialized();
    }
    HRESULT Read(const Bytes& blob) {
        RawStore::SetBytes(cStatic, SettingName(cBlobPid), blob);
        return m_spApi->GetVisualizationData(m_gain, m_excitation);
    }
    ComPtr<IVeltoKORA4API> m_spApi;
    float m_gain[KORA4_VISUALIZATION_BANDS] = {1};
    float m_excitation[KORA4_VISUALIZATION_BANDS] = {1};
};

TEST_F(ApiVisualization, ThePeriodIsFiftyWhenNoneIsStored) {
    ULONG period = 0;
    EXPECT_EQ(S_OK, m_spApi->GetVisualizationSamplingPeriod(&period));
    EXPECT_EQ(50u, period);
    RawStore::SetText(cStatic, SettingName(cPeriodPid), L"no number");
    EXPECT_EQ(S_OK, m_spApi->GetVisualizationSamplingPeriod(&period));
    EXPECT_EQ(50u, period);
}

TEST_F(ApiVisualization, AnyPeriodIsStoredAsItIs) {
    for (ULONG written : {0u, 1000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(S_OK, m_spApi->SetVisualizationSamplingPeriod(written));
        EXPECT_EQ(written, RawStore::Number(cStatic, SettingName(cPeriodPid)));
        ULONG read = 7;
        EXPECT_EQ(S_OK, m_spApi->GetVisualizationSamplingPeriod(&read));
        EXPECT_EQ(written, read);
    }
}

TEST_F(ApiVisualization, WithoutDataTheArraysAreLeft) {
    EXPECT_EQ(S_FALSE, m_spApi->GetVisualizationData(m_gain, m_excitation));
    EXPECT_EQ(1.0f, m_gain[0]);
    EXPECT_EQ(1.0f, m_excitation[0]);
}

TEST_F(ApiVisualization, BandsThatNobodyHasReadAsTheFloor) {
    EXPECT_EQ(S_OK, Read(Blob({Flat(10, -3.0f, -40.0f)})));
    for (int band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        EXPECT_EQ(band < 10 ? -3.0f : KORA4_SILENT_GAIN, m_gain[band]) << band;
        EXPECT_EQ(band < 10 ? -4.0f : KORA4_SILENT_EXCITATION, m_excitation[band]) << band;
    }
}

TEST_F(ApiVisualization, EachBandIsTheLoudestOfAllRecords) {
    Record first = Flat(KORA4_VISUALIZATION_BANDS, -30.0f, -30.0f);
    Record second = Flat(4, -30.0f, -30.0f);
    first.gains[3] = -20.0f;
    second.gains[3] = -10.0f;
    first.excitations[3] = 1.0f;
    EXPECT_EQ(S_OK, Read(Blob({first, second})));
    EXPECT_EQ(-10.0f, m_gain[3]);
    EXPECT_EQ(37.0f, m_excitation[3]);
    EXPECT_EQ(-30.0f, m_gain[19]);
}

TEST_F(ApiVisualization, NothingIsBelowTheFloor) {
    EXPECT_EQ(S_OK, Read(Blob({Flat(25, -200.0f, -200.0f)})));
    EXPECT_THAT(m_gain, testing::Each(KORA4_SILENT_GAIN));
    EXPECT_THAT(m_excitation, testing::Each(KORA4_SILENT_EXCITATION));
}

TEST_F(ApiVisualization, AShortBlobHoldsTheRecordsThatFit) {
    Bytes blob = Blob({Flat(KORA4_VISUALIZATION_BANDS, -5.0f, -5.0f),
                       Flat(KORA4_VISUALIZATION_BANDS, -1.0f, -1.0f)});
    blob.pop_back();
    EXPECT_EQ(S_OK, Read(blob));
    EXPECT_THAT(m_gain, testing::Each(-5.0f));
    EXPECT_EQ(S_OK, Read(Bytes{1, 2, 3}));
    EXPECT_THAT(m_gain, testing::Each(KORA4_SILENT_GAIN));
}

TEST_F(ApiVisualization, WhatFollowsTheStatedNumberOfRecordsDoesNotCount) {
    Bytes blob = Blob({Flat(KORA4_VISUALIZATION_BANDS, -5.0f, -5.0f),
                       Flat(KORA4_VISUALIZATION_BANDS, -1.0f, -1.0f)});
    blob[4] = 1;
    EXPECT_EQ(S_OK, Read(blob));
    EXPECT_THAT(m_gain, testing::Each(-5.0f));
    blob[4] = 0;
    EXPECT_EQ(S_OK, Read(blob));
    EXPECT_THAT(m_gain, testing::Each(KORA4_SILENT_GAIN));
    EXPECT_THAT(m_excitation, testing::Each(KORA4_SILENT_EXCITATION));
}

using Command = HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*)(LPWSTR*);
const std::pair<std::uint32_t, Command> cCommands[] = {
    {61, &IVeltoKORA4API::GetVeltoProfileEditorCommand},
    {62, &IVeltoKORA4API::GetVeltoProfileSelectorCommand},
    {63, &IVeltoKORA4API::GetVeltoDemoAppCommand}};

TEST_F(ApiVisualization, ACommandThatIsNotStoredIsNull) {
    for (const auto& [pid, command] : cCommands) {
        LPWSTR pwCommand = const_cast<LPWSTR>(L"something");
        EXPECT_EQ(S_OK, (m_spApi.Get()->*command)(&pwCommand));
        EXPECT_EQ(nullptr, pwCommand);
    }
}

TEST_F(ApiVisualization, ACommandIsTheOneOfInitialize) {
    for (const auto& [pid, command] : cCommands) {
        const std::wstring text = L"\"C:\\Program Files\\tool.exe\" /" + std::to_wstring(pid);
        RawStore::SetText(cApp, SettingName(pid), text);
        ComPtr<IVeltoKORA4API> spApi = Initialized();
        RawStore::SetText(cApp, SettingName(pid), L"later");
        for (int call = 0; call < 2; ++call) {
            LPWSTR pwCommand = nullptr;
            EXPECT_EQ(S_OK, (spApi.Get()->*command)(&pwCommand));
            EXPECT_STREQ(text.c_str(), pwCommand);
            CoTaskMemFree(pwCommand);
        }
    }
}

TEST_F(ApiVisualization, ACommandStoredAsAnEmptyTextIsAnEmptyString) {
    for (const auto& [pid, command] : cCommands) {
        RawStore::SetText(cApp, SettingName(pid), L"");
        LPWSTR pwCommand = nullptr;
        EXPECT_EQ(S_OK, (Initialized().Get()->*command)(&pwCommand));
        EXPECT_STREQ(L"", pwCommand);
        CoTaskMemFree(pwCommand);
    }
}

class ApiVisualizationTrace : public ApiTraceTest {};

TEST_F(ApiVisualizationTrace, ThePeriodAndTheDataAreTold) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    float gain[KORA4_VISUALIZATION_BANDS];
    float excitation[KORA4_VISUALIZATION_BANDS];
    ULONG period = 0;
    spApi->SetVisualizationSamplingPeriod(40);
    spApi->GetVisualizationSamplingPeriod(&period);
    spApi->GetVisualizationData(gain, excitation);
    const std::string ok = "<< hr: 0x00000000";
    EXPECT_EQ((Lines{">>", "set to 40 milliseconds", ok}),
              LinesOf("SetVisualizationSamplingPeriod"));
    EXPECT_EQ((Lines{">>", "= 40 milliseconds", ok}),
              LinesOf("GetVisualizationSamplingPeriod"));
    EXPECT_EQ((Lines{">>", "**** Error getting Visualization Data, hr: 0x00000001",
                     "<< hr: 0x00000001"}),
              LinesOf("GetVisualizationData"));
}

TEST_F(ApiVisualizationTrace, APeriodThatCannotBeStoredIsToldAndReturned) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    RawStore::DeleteKeys();
    m_log.Clear();
    EXPECT_EQ(E_FAIL, spApi->SetVisualizationSamplingPeriod(40));
    EXPECT_EQ((Lines{">>",
                     "**** Error setting Visualization Sampling Period to 40 msecs, "
                     "hr: 0x80004005",
                     "<< hr: 0x80004005"}),
              LinesOf("SetVisualizationSamplingPeriod"));
}

TEST_F(ApiVisualizationTrace, TheBlobIsDumpedAsReadByTheApi) {
    RawStore::SetBytes(cStatic, SettingName(cBlobPid), Blob({Flat(1, -3.0f, -4.0f)}));
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    m_log.Clear();
    float gain[KORA4_VISUALIZATION_BANDS];
    float excitation[KORA4_VISUALIZATION_BANDS];
    EXPECT_EQ(S_OK, spApi->GetVisualizationData(gain, excitation));
    const Lines dump = MessagesOf(m_log.Read("KORA4VisKeyData"), "KORA4VisKeyData::DebugPrint");
    EXPECT_THAT(dump, testing::Contains("Vis Key Data: Module: " + PointerText(spApi.Get()) +
                                        ": Visualization key Data READ (API)"));
    EXPECT_THAT(dump,
                testing::Contains("        (Band 0) gain:  -3.000000 excitation:  -4.000000"));
}

TEST_F(ApiVisualizationTrace, CommandsHaveNoMessage) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    LPWSTR pwCommand = nullptr;
    spApi->GetVeltoDemoAppCommand(&pwCommand);
    EXPECT_EQ((Lines{">>", "<< hr: 0x00000000"}), LinesOf("GetVeltoDemoAppCommand"));
}

}  // namespace
}  // namespace kora4::test

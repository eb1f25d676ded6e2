// SPDX-License-Identifier: MIT
// The trial of switches, values, levels and commands.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "faults/store_trial.h"

namespace kora4::test {

namespace {

// Decibels, of a band without a level.
constexpr float cNoLevel = -144.0f;

constexpr RawTechnology cOffsets[] = {
    RawTechnology::eVolume,      RawTechnology::eStandardEQ, RawTechnology::eDynamicEQ,
    RawTechnology::eEnhancement, RawTechnology::eHeadphone,  RawTechnology::eVirtualSurround};

// The API's technologies, and where in its record each has its value.
struct Slider {
    KORA4APITechnology technology;
    std::size_t field;
    bool real;
    float highest;  // the lowest is 0
};

constexpr Slider cSliders[] = {
    {eVolumeLeveler, 0, false, 10}, {eIntelligentEQ, 2, false, 5},
    {eDialogEnhancer, 0, true, 1},  {eVirtualizerHP, 0, true, 6},
    {eVirtualizerSpkr, 0, true, 6},
};

const Technology& TechnologyOf(KORA4APITechnology technology) {
    return kora4::test::TechnologyOf(cOffsets[technology]);
}

const Technology& StandardEQ() {
    return TechnologyOf(eGraphicEQ);
}

std::uint32_t BitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

struct Levels {
    float gain[KORA4_VISUALIZATION_BANDS];
    float excitation[KORA4_VISUALIZATION_BANDS];
};

// The loudest of the stated records, as far as they lie in the blob.
Levels LevelsOf(const std::vector<std::uint8_t>& blob) {
    Levels levels;
    std::fill(std::begin(levels.gain), std::end(levels.gain), cNoLevel);
    std::fill(std::begin(levels.excitation), std::end(levels.excitation), cNoLevel);
    const auto number = [&](std::size_t at) {
        std::uint32_t value = 0;
        std::memcpy(&value, blob.data() + at, sizeof value);
        return value;
    };
    const auto level = [&](std::size_t at) {
        float value = 0;
        std::memcpy(&value, blob.data() + at, sizeof value);
        return value;
    };
    std::uint32_t left = blob.size() >= 8 ? number(4) : 0;
    for (std::size_t at = 8; left != 0 && at + 24 <= blob.size(); --left) {
        const std::size_t bands = number(at + 16);
        if (bands * 8 > blob.size() - at - 24)
            break;
        for (std::size_t band = 0; band < bands && band < KORA4_VISUALIZATION_BANDS; ++band) {
            const float gain = level(at + 24 + 4 * band);
            const float excitation = level(at + 24 + 4 * (bands + band));
            if (gain > levels.gain[band])
                levels.gain[band] = gain;
            if (excitation > levels.excitation[band])
                levels.excitation[band] = excitation;
        }
        at += 24 + 8 * bands;
    }
    for (float& excitation : levels.excitation)
        excitation += 36.0f;
    return levels;
}

}  // namespace

// ---- Period, levels, commands -----------------------------------------------------------

void StoreTrial::CheckGetPeriod() {
    ULONG period = 0xBAD;
    EXPECT_EQ(S_OK, m_spApi->GetVisualizationSamplingPeriod(&period));
    EXPECT_EQ(m_reader.NumberOr(StoreKeys::eStatic, SettingName(cPeriodPid), 50), period);
}

void StoreTrial::CheckSetPeriod() {
    const std::uint32_t period = m_damage.SomeNumber();
    EXPECT_EQ(S_OK, m_spApi->SetVisualizationSamplingPeriod(period));
    EXPECT_EQ(period, m_reader.Number(StoreKeys::eStatic, SettingName(cPeriodPid)));
}

void StoreTrial::CheckLevels() {
    const auto blob = m_keys.Read(StoreKeys::eStatic, SettingName(cBlobPid));
    const HRESULT expected = !blob ? S_FALSE : blob->type == REG_BINARY ? S_OK : E_FAIL;
    Levels levels;
    std::fill(std::begin(levels.gain), std::end(levels.gain), 77.0f);
    std::fill(std::begin(levels.excitation), std::end(levels.excitation), 78.0f);
    const Levels untouched = levels;
    const auto before = SometimesEverything();
    const HRESULT hr = m_spApi->GetVisualizationData(levels.gain, levels.excitation);
    EXPECT_EQ(expected, hr);
    Note("GetVisualizationData", hr);
    ExpectUntouched(before);
    const Levels right = expected == S_OK ? LevelsOf(blob->data) : untouched;
    for (std::size_t band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        EXPECT_EQ(BitsOf(right.gain[band]), BitsOf(levels.gain[band])) << band;
        EXPECT_EQ(BitsOf(right.excitation[band]), BitsOf(levels.excitation[band])) << band;
    }
}

void StoreTrial::ExpectCommand(std::size_t index,
                               HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*method)(LPWSTR*)) {
    wchar_t stale[] = L"stale";
    LPWSTR command = stale;
    EXPECT_EQ(S_OK, (m_spApi.Get()->*method)(&command));
    ASSERT_NE(stale, command);
    const bool readable = m_commands[index].state == TextState::eReadable;
    EXPECT_EQ(readable, command != nullptr);
    if (readable && command) {
        EXPECT_EQ(m_commands[index].text, command);
    }
    CoTaskMemFree(command);
}

void StoreTrial::CheckEditorCommand() {
    ExpectCommand(0, &IVeltoKORA4API::GetVeltoProfileEditorCommand);
}

void StoreTrial::CheckSelectorCommand() {
    ExpectCommand(1, &IVeltoKORA4API::GetVeltoProfileSelectorCommand);
}

void StoreTrial::CheckDemoCommand() {
    ExpectCommand(2, &IVeltoKORA4API::GetVeltoDemoAppCommand);
}

// ---- Switches ---------------------------------------------------------------------------

void StoreTrial::CheckGetEnable() {
    const auto before = SometimesEverything();
    BOOL enable = 77;
    EXPECT_EQ(S_OK, m_spApi->GetVeltoEnable(&enable));
    EXPECT_EQ(m_reader.Enable() ? TRUE : FALSE, enable);
    ExpectUntouched(before);
}

void StoreTrial::CheckSetEnable() {
    const BOOL enable = static_cast<BOOL>(m_damage.OneIn(2) ? 0 : m_damage.SomeNumber());
    EXPECT_EQ(S_OK, m_spApi->SetVeltoEnable(enable));
    EXPECT_EQ(enable ? 1u : 0u, m_reader.Number(StoreKeys::eDynamic, SettingName(cEnablePid)));
}

void StoreTrial::CheckToggleEnable() {
    const bool before = m_reader.Enable();
    BOOL enable = 77;
    EXPECT_EQ(S_OK, m_spApi->ToggleVeltoEnable(&enable));
    EXPECT_EQ(before ? FALSE : TRUE, enable);
    EXPECT_EQ(before ? 0u : 1u, m_reader.Number(StoreKeys::eDynamic, SettingName(cEnablePid)));
}

void StoreTrial::CheckMask() {
    ULONG mask = 0xBAD;
    EXPECT_EQ(S_OK, m_spApi->GetTechnologyMasterEnables(&mask));
    EXPECT_EQ(m_mask, mask);
}

void StoreTrial::CheckGetSwitch() {
    const auto before = SometimesEverything();
    const std::uint32_t profile = m_reader.Profile();
    for (int t = 0; t < eNumberKORA4APITechnologies; ++t) {
        const auto technology = static_cast<KORA4APITechnology>(t);
        BOOL on = 77;
        EXPECT_EQ(S_OK, m_spApi->GetTechnologyOnElseOff(technology, &on)) << t;
        EXPECT_EQ(m_reader.Flag(TechnologyOf(technology), profile) ? TRUE : FALSE, on) << t;
    }
    ExpectUntouched(before);
}

void StoreTrial::CheckSetSwitch() {
    const auto technology =
        static_cast<KORA4APITechnology>(m_damage.Pick(eNumberKORA4APITechnologies));
    const BOOL on = static_cast<BOOL>(m_damage.Pick(3));
    const std::uint32_t profile = m_reader.Profile();
    const auto before = IsSelectable(profile) ? std::nullopt : SometimesEverything();
    EXPECT_EQ(S_OK, m_spApi->SetTechnologyOnElseOff(technology, on));
    ExpectUntouched(before);
    if (IsSelectable(profile)) {
        EXPECT_EQ(on ? 1u : 0u, m_reader.Number(StoreKeys::eDynamic,
                                                PatchName(cOffsets[technology], profile, 0)));
    }
}

// ---- Values -----------------------------------------------------------------------------

StoreTrial::Values StoreTrial::ValuesOf(const Technology& technology, std::uint32_t profile) {
    Values values;
    for (const Field& field : technology.fields)
        values.push_back(m_reader.Value(technology, field, profile));
    return values;
}

void StoreTrial::ExpectStored(const Technology& technology, std::uint32_t profile, bool flag,
                              const Values& values) {
    EXPECT_EQ(flag ? 1u : 0u,
              m_reader.Number(StoreKeys::eDynamic, PatchName(technology.offset, profile, 0)));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Field& field = technology.fields[i];
        const std::wstring name = PatchName(technology.offset, profile, field.pid);
        EXPECT_TRUE(m_keys.Read(StoreKeys::eStatic, name)) << field.pid;
        EXPECT_TRUE(AfterWriting(field, values[i]) ==
                    m_reader.Value(technology, field, profile))
            << "field " << field.pid << " of " << static_cast<unsigned>(technology.offset);
    }
}

void StoreTrial::CheckGetValue() {
    const auto before = SometimesEverything();
    const std::uint32_t profile = m_reader.Profile();
    for (const Slider& slider : cSliders) {
        const Technology& technology = TechnologyOf(slider.technology);
        KORA4PatchValueUnion value{slider.technology, {0xBADBAD}};
        EXPECT_EQ(S_OK, m_spApi->GetSimplePatchValue(&value));
        const FieldValue right =
            m_reader.Shown(technology, technology.fields[slider.field], profile);
        EXPECT_EQ(slider.technology, value.m_technology);
        EXPECT_EQ(slider.real ? BitsOf(right.real) : right.number,
                  value.m_values.m_volumeSlider)
            << slider.technology;
    }
    ExpectUntouched(before);
}

void StoreTrial::CheckSetValue() {
    const Slider& slider = cSliders[m_damage.Pick(std::size(cSliders))];
    const Technology& technology = TechnologyOf(slider.technology);
    const std::wstring trigger = TriggerName(technology.offset);
    const std::uint32_t profile = m_reader.Profile();
    KORA4PatchValueUnion value{slider.technology, {0}};
    float real = m_damage.OneIn(3)
                     ? m_damage.SomeFloat()
                     : static_cast<float>(m_damage.Pick(1001)) / 1000 * slider.highest;
    std::uint32_t number = m_damage.OneIn(3) ? m_damage.SomeNumber() : m_damage.Pick(6);
    if (slider.real)
        value.m_values.m_enhancementSlider = real;
    else
        value.m_values.m_volumeSlider = number;
    const bool good = slider.real
                          ? real >= 0 && real <= slider.highest
                          : static_cast<double>(number) <= static_cast<double>(slider.highest);

    Values values;
    for (const Field& field : technology.fields)
        values.push_back(m_reader.Shown(technology, field, profile));
    values[slider.field].real = slider.real ? real : 0;
    values[slider.field].number = slider.real ? 0 : number;
    const bool flag = m_reader.Flag(technology, profile);
    const std::uint32_t count = m_reader.NumberOr(StoreKeys::eDynamic, trigger, 0);
    const bool stores = good && IsSelectable(profile);
    const auto before = stores ? std::nullopt : SometimesEverything();

    const HRESULT hr = m_spApi->SetSimplePatchValue(&value);
    EXPECT_EQ(good ? S_OK : E_INVALIDARG, hr);
    Note("SetSimplePatchValue", hr);
    ExpectUntouched(before);
    if (stores) {
        ExpectStored(technology, profile, flag, values);
        EXPECT_EQ(count + 1, m_reader.Number(StoreKeys::eDynamic, trigger));
    }
}

GraphicEQData StoreTrial::ExpectedEQ() {
    const Technology& eq = StandardEQ();
    const std::uint32_t profile = m_reader.Profile();
    const FieldValue freq = m_reader.Shown(eq, eq.fields[0], profile);
    const FieldValue gain = m_reader.Shown(eq, eq.fields[1], profile);
    GraphicEQData data{};
    data.m_bands = freq.count;
    std::copy_n(freq.elements.begin(), freq.count, data.m_freq);
    std::copy_n(gain.elements.begin(), freq.count, data.m_gain);
    return data;
}

void StoreTrial::CheckGetEQ() {
    const auto before = SometimesEverything();
    const GraphicEQData right = ExpectedEQ();
    GraphicEQData data;
    std::memset(&data, 0x5A, sizeof data);
    EXPECT_EQ(S_OK, m_spApi->GetGraphicEQData(&data));
    EXPECT_EQ(right.m_bands, data.m_bands);
    for (std::size_t i = 0; i < cMostElements; ++i) {
        EXPECT_EQ(right.m_freq[i], data.m_freq[i]) << i;
        EXPECT_EQ(right.m_gain[i], data.m_gain[i]) << i;
    }
    ExpectUntouched(before);
}

GraphicEQData StoreTrial::SomeEQ() {
    GraphicEQData data;
    data.m_bands = m_damage.OneIn(4) ? m_damage.SomeNumber() : m_damage.Pick(41);
    for (float& freq : data.m_freq)
        freq =
            m_damage.OneIn(5) ? m_damage.SomeFloat() : static_cast<float>(m_damage.Pick(20000));
    for (float& gain : data.m_gain)
        gain = m_damage.SomeFloat();
    return data;
}

void StoreTrial::CheckSetEQ() {
    const Technology& eq = StandardEQ();
    const std::wstring trigger = TriggerName(eq.offset);
    const std::uint32_t profile = m_reader.Profile();
    GraphicEQData data = SomeEQ();
    const GraphicEQData given = data;
    Values values(2);
    values[0].count = values[1].count = std::min<std::uint32_t>(given.m_bands, cMostElements);
    for (std::uint32_t i = 0; i < values[0].count; ++i) {
        const float gain = given.m_gain[i];
        values[0].elements[i] = given.m_freq[i];
        values[1].elements[i] = gain > 12.0f ? 12.0f : gain >= -12.0f ? gain : -12.0f;
    }
    const bool flag = m_reader.Flag(eq, profile);
    const std::uint32_t count = m_reader.NumberOr(StoreKeys::eDynamic, trigger, 0);
    const auto before = IsSelectable(profile) ? std::nullopt : SometimesEverything();
    EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&data));
    EXPECT_EQ(0, std::memcmp(&given, &data, sizeof data));
    ExpectUntouched(before);
    if (IsSelectable(profile)) {
        ExpectStored(eq, profile, flag, values);
        EXPECT_EQ(count + 1, m_reader.Number(StoreKeys::eDynamic, trigger));
    }
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Weighted draws of methods and arguments, odd values among them.
#include "model/random_calls.h"

#include <limits>

#include "model/encodings.h"

namespace kora4::test {

namespace {

struct Weighted {
    Action action;
    std::uint32_t weight;
};

// The last demo profile is left to the driver.
constexpr Weighted cActions[] = {
    {Action::eGetActiveProfile, 3},       {Action::eSetActiveProfile, 12},
    {Action::eRevertActiveProfile, 2},    {Action::eSetDemoProfileAndEnable, 4},
    {Action::eRevertFromDemoMode, 4},     {Action::eForceRevertFromDemoMode, 2},
    {Action::eGetSamplingPeriod, 1},      {Action::eSetSamplingPeriod, 1},
    {Action::eGetVeltoEnable, 2},         {Action::eSetVeltoEnable, 6},
    {Action::eToggleVeltoEnable, 4},      {Action::eGetProfileTable, 1},
    {Action::eSetCustomProfileName, 2},   {Action::eCreateCustomProfile, 4},
    {Action::eDeleteCustomProfile, 2},    {Action::eGetTechnologyMasterEnables, 1},
    {Action::eGetTechnologyOnElseOff, 4}, {Action::eSetTechnologyOnElseOff, 14},
    {Action::eGetSimplePatchValue, 6},    {Action::eSetSimplePatchValue, 16},
    {Action::eSetGraphicEQData, 7},       {Action::eGetGraphicEQData, 3},
};

constexpr std::uint32_t TotalWeight() {
    std::uint32_t total = 0;
    for (const Weighted& weighted : cActions)
        total += weighted.weight;
    return total;
}

constexpr LONG cOddNumbers[] = {9, 10, 239, 243, -1, 0x7FFFFFFF, static_cast<LONG>(0x80000001)};
constexpr float cOddFloats[] = {-0.0f,
                                1.0f,
                                6.0f,
                                6.0000005f,
                                1.0000001f,
                                -1.0e-7f,
                                5.0e-7f,
                                1.0e-40f,
                                0.0000015f,
                                std::numeric_limits<float>::infinity(),
                                -std::numeric_limits<float>::infinity(),
                                std::numeric_limits<float>::quiet_NaN()};
constexpr float cOddElements[] = {40000.0f,
                                  65535.9f,
                                  -32769.0f,
                                  -0.99f,
                                  12.0f,
                                  -12.0f,
                                  12.001f,
                                  1.0e19f,
                                  3.0e9f,
                                  std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::quiet_NaN()};

}  // namespace

std::uint32_t RandomCalls::Below(std::uint32_t bound) {
    return static_cast<std::uint32_t>(m_random()) % bound;
}

float RandomCalls::Between(float lowest, float highest) {
    constexpr std::uint32_t cSteps = 1u << 24;
    return lowest + (highest - lowest) * static_cast<float>(Below(cSteps + 1)) / cSteps;
}

Command RandomCalls::Next() {
    std::uint32_t drawn = Below(TotalWeight());
    const Weighted* pWeighted = cActions;
    while (drawn >= pWeighted->weight)
        drawn -= (pWeighted++)->weight;
    Command command{};
    command.action = pWeighted->action;
    DrawArguments(&command);
    return command;
}

void RandomCalls::DrawArguments(Command* pCommand) {
    const bool odd = OneIn(25);
    switch (pCommand->action) {
        case Action::eSetActiveProfile:
            // Custom profiles are few, so that they are met again.
            pCommand->number = static_cast<LONG>(Below(5));
            if (OneIn(10))
                pCommand->number =
                    static_cast<LONG>(OneIn(4) ? cDemoMovie : Below(cProfileBound));
            break;
        case Action::eSetDemoProfileAndEnable:
            pCommand->number = static_cast<LONG>(cDemoMovie + Below(2));
            break;
        case Action::eSetCustomProfileName:
        case Action::eCreateCustomProfile:
        case Action::eDeleteCustomProfile:
            pCommand->number =
                static_cast<LONG>(OneIn(8) ? Below(cProfileBound) : cFirstCustom + Below(2));
            DrawName(pCommand->name);
            break;
        case Action::eSetSamplingPeriod:
            pCommand->number = static_cast<LONG>(OneIn(2) ? Below(100) : m_random());
            break;
        case Action::eGetTechnologyOnElseOff:
        case Action::eSetTechnologyOnElseOff:
            pCommand->number = static_cast<LONG>(Below(6));
            break;
        case Action::eGetSimplePatchValue:
        case Action::eSetSimplePatchValue:
            pCommand->value = SliderValue();
            break;
        case Action::eSetGraphicEQData:
            pCommand->eq = EQ();
            break;
        default:
            break;
    }
    if (odd && pCommand->action != Action::eSetSamplingPeriod)
        pCommand->number = cOddNumbers[Below(std::size(cOddNumbers))];
    pCommand->flag = OneIn(20) ? 2 : static_cast<BOOL>(Below(2));
}

void RandomCalls::DrawName(wchar_t* name) {
    static constexpr wchar_t cLetters[] = L"abcXYZ 019,;{}%\u00E4\u20AC\u4E2D";
    const std::uint32_t length = Below(20);
    for (std::uint32_t i = 0; i < length; ++i)
        name[i] = cLetters[Below(std::size(cLetters) - 1)];
}

KORA4PatchValueUnion RandomCalls::SliderValue() {
    KORA4PatchValueUnion value{};
    value.m_technology = static_cast<KORA4APITechnology>(Below(6));
    if (OneIn(30))
        value.m_technology = static_cast<KORA4APITechnology>(6 + Below(3));
    const bool odd = OneIn(10);
    switch (value.m_technology) {
        case eVolumeLeveler:
            value.m_values.m_volumeSlider = odd ? 11 + Below(0xFFFF) : Below(11);
            break;
        case eIntelligentEQ:
            value.m_values.m_dynamicEQPatchIndex = odd ? 6 + Below(3) : Below(6);
            break;
        default:
            value.m_values.m_enhancementSlider =
                odd ? cOddFloats[Below(std::size(cOddFloats))]
                    : Between(0.0f, value.m_technology == eDialogEnhancer ? 1.0f : 6.0f);
    }
    return value;
}

GraphicEQData RandomCalls::EQ() {
    GraphicEQData eq{};
    eq.m_bands = OneIn(10) ? cMaxBands + Below(3) : Below(13);
    for (ULONG i = 0; i < std::size(eq.m_freq); ++i) {
        eq.m_freq[i] =
            OneIn(40) ? cOddElements[Below(std::size(cOddElements))] : Between(20.0f, 20000.0f);
        eq.m_gain[i] =
            OneIn(40) ? cOddElements[Below(std::size(cOddElements))] : Between(-13.0f, 13.0f);
    }
    return eq;
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// What was asked and what was told, in words, for the report of a difference.
#include <array>
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "model/encodings.h"
#include "model/seats.h"

namespace kora4::test {

namespace {

constexpr std::array cActionNames = {
    "Open",
    "Close",
    "RegisterChangeNotifications",
    "RegisterChangeNotifications (another)",
    "UnregisterChangeNotifications",
    "GetActiveProfile",
    "SetActiveProfile",
    "RevertActiveProfile",
    "SetDemoProfileAndEnable",
    "RevertFromDemoMode",
    "ForceRevertFromDemoMode",
    "GetVisualizationSamplingPeriod",
    "SetVisualizationSamplingPeriod",
    "GetVeltoEnable",
    "SetVeltoEnable",
    "ToggleVeltoEnable",
    "GetProfileTable",
    "SetCustomProfileName",
    "CreateCustomProfile",
    "DeleteCustomProfile",
    "GetTechnologyMasterEnables",
    "GetTechnologyOnElseOff",
    "SetTechnologyOnElseOff",
    "GetSimplePatchValue",
    "SetSimplePatchValue",
    "SetGraphicEQData",
    "GetGraphicEQData",
};
static_assert(cActionNames.size() == static_cast<std::size_t>(Action::eGetGraphicEQData) + 1);

bool IsInteger(LONG technology) {
    return technology == eVolumeLeveler || technology == eIntelligentEQ;
}

std::string ValueText(LONG technology, ULONG bits) {
    if (IsInteger(technology))
        return std::to_string(bits);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    char text[64];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

std::string EQText(const GraphicEQData& eq) {
    std::string text = std::to_string(eq.m_bands) + " bands";
    for (ULONG i = 0; i < eq.m_bands && i < cMaxBands; ++i) {
        char band[64];
        std::snprintf(band, sizeof band, " %g:%g", static_cast<double>(eq.m_freq[i]),
                      static_cast<double>(eq.m_gain[i]));
        text += band;
    }
    return text;
}

}  // namespace

bool Reply::SaysSame(const Reply& other) const {
    bool same = number == other.number && Same(eq, other.eq) &&
                std::memcmp(&value, &other.value, sizeof value) == 0;
    for (std::size_t i = 0; i < cProfiles; ++i)
        same = same && named[i] == other.named[i] && std::wcscmp(names[i], other.names[i]) == 0;
    return same;
}

bool Told::Says(const Told& other) const {
    return kind == other.kind && number == other.number && flag == other.flag &&
           value == other.value && Same(eq, other.eq);
}

std::string Told::Text() const {
    switch (kind) {
        case ToldKind::eProfile:
            return "profile " + std::to_string(number);
        case ToldKind::eEnable:
            return "enable " + std::to_string(number);
        case ToldKind::eTable:
            return "table";
        case ToldKind::eOnElseOff:
            return "switch of technology " + std::to_string(number) + ": " +
                   std::to_string(flag);
        case ToldKind::eValue:
            return "value of technology " + std::to_string(number) + ": " +
                   ValueText(number, value);
        case ToldKind::eEQ:
            return "graphic EQ " + EQText(eq);
    }
    return "?";
}

std::string Text(const Command& command) {
    std::string text = cActionNames[static_cast<std::size_t>(command.action)];
    switch (command.action) {
        case Action::eSetGraphicEQData:
            return text + " " + EQText(command.eq);
        case Action::eSetSimplePatchValue:
        case Action::eGetSimplePatchValue:
            return text + " " + std::to_string(command.value.m_technology) + " " +
                   ValueText(command.value.m_technology, command.value.m_values.m_volumeSlider);
        case Action::eCreateCustomProfile:
        case Action::eSetCustomProfileName: {
            const std::wstring name = command.name;
            text += " " + std::to_string(command.number) + " '";
            for (const wchar_t c : name)
                text += c < 0x7F ? static_cast<char>(c) : '?';
            return text + "'";
        }
        default:
            return text + " " + std::to_string(command.number) + " " +
                   std::to_string(command.flag);
    }
}

}  // namespace kora4::test

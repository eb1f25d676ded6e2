// SPDX-License-Identifier: MIT
// One function for each kind of value that trace lines print.
#include "kora4ctl/explain/explain_values.h"

#include <kora4api.h>
#include <kora4/result_codes.hpp>

#include <algorithm>

#include "base/results.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/general_settings.h"
#include "contract/messages/log_texts.h"
#include "contract/profiles.h"
#include "registry/store_access.h"
#include "settings/names.h"
#include "settings/schema.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

std::string OfResult(std::uint32_t code) {
    return InWords(static_cast<HRESULT>(code));
}

std::string OfError(std::uint32_t number) {
    return number == 0 ? "success" : OfResult(cWin32Results | (number & 0xFFFF));
}

std::string OfProfile(std::uint32_t number) {
    return IsAllowableProfile(number) ? ProfileName(number) : "no profile";
}

std::string OfTechnology(std::uint32_t number) {
    for (const TechnologyWord& technology : AllTechnologies())
        if (technology.apiNumber == number)
            return technology.word;
    return "no technology";
}

// Trace lines show the API's enumerators by name.
std::string OfTechnologyName(std::string_view name) {
    return OfTechnology(static_cast<std::uint32_t>(
        std::ranges::find(text::cTechnologyNames, name) - text::cTechnologyNames));
}

std::string OfSwitch(std::string_view text) {
    return text == "0" || text == text::OfSwitch(false) || text == text::OfEnable(false) ? "off"
                                                                                         : "on";
}

std::string OfMask(std::uint32_t mask) {
    const char* const pName = NameOfEngine(mask);
    return pName ? pName : "no known configuration";
}

std::string OfReason(std::uint32_t reason) {
    constexpr const char* cReasons[] = {"a process detaches", "a process attaches",
                                        "a thread attaches", "a thread detaches"};
    return reason < std::size(cReasons) ? cReasons[reason] : "";
}

std::string OfCurve(std::uint32_t curve) {
    const std::vector<std::string>& names = CurveNames();
    return curve < names.size() ? names[curve] : "no curve";
}

// What a value of the store is, in words: "volume-leveler of music", "active profile".
std::string OfSchemaValue(const SchemaValue& value) {
    std::string words;
    if (const Setting* const pSetting = SettingOf(value))
        words = pSetting->name;
    else if (const auto* const pGeneral = contract::FindGeneralSetting(value.key))
        words = pGeneral->meaning;
    else if (value.role == Role::eTrigger)
        words = std::string("counts the changes of the ") + WordOf(value.technology).title;
    else if (value.role == Role::eName)
        words = "name";
    if (!words.empty() && value.profile)
        words += " of " + ProfileName(*value.profile);
    return words;
}

std::string OfValueName(std::string_view name) {
    const std::optional<PropertyKey> key = ParseValueName(name);
    if (!key)
        return {};
    for (const KORA4KeySet keySet : {eKeySetDynamic, eKeySetStatic, eKeySetApp})
        if (const SchemaValue* const pValue = FindInSchema(keySet, *key))
            return OfSchemaValue(*pValue);
    return "not a value of the store";
}

// The kinds about which there is something to say: numbers in a base, and texts.
using contract::TraceKind;

struct NumberKind {
    TraceKind kind;
    int base;
    std::string (*meaning)(std::uint32_t number);
};
constexpr NumberKind cNumberKinds[] = {
    {TraceKind::eResult, 16, OfResult},   {TraceKind::eError, 10, OfError},
    {TraceKind::eProfile, 10, OfProfile}, {TraceKind::eHexError, 16, OfError},
    {TraceKind::eMask, 16, OfMask},       {TraceKind::eTechnology, 10, OfTechnology},
    {TraceKind::eCurve, 10, OfCurve},     {TraceKind::eAttachReason, 16, OfReason}};

struct TextKind {
    TraceKind kind;
    std::string (*meaning)(std::string_view text);
};
constexpr TextKind cTextKinds[] = {{TraceKind::eTechnologyName, OfTechnologyName},
                                   {TraceKind::eSwitch, OfSwitch},
                                   {TraceKind::eValueName, OfValueName}};

}  // namespace

std::optional<std::uint32_t> NumberIn(std::string_view text, int base) {
    const auto number = ReadNumber<std::int64_t>(text, base);
    if (!number || *number < (base == 10 ? INT32_MIN : 0) || *number > UINT32_MAX)
        return {};
    return static_cast<std::uint32_t>(*number);
}

std::string MeaningOfValue(TraceKind kind, std::string_view text) {
    for (const NumberKind& known : cNumberKinds) {
        const auto number = kind == known.kind ? NumberIn(text, known.base) : std::nullopt;
        if (number)
            return known.meaning(*number);
    }
    for (const TextKind& known : cTextKinds)
        if (kind == known.kind)
            return known.meaning(text);
    return {};
}

}  // namespace kora4::tools

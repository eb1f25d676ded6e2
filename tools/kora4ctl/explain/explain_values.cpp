// SPDX-License-Identifier: MIT
// One function for each kind of value that trace lines print.
#include "kora4ctl/explain/explain_values.h"

#include <kora4api.h>
#include <kora4/result_codes.hpp>

#include "base/results.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/general_settings.h"
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
#define KORA4_NAMED(technology) \
    { technology, #technology }
    constexpr struct {
        KORA4APITechnology technology;
        std::string_view name;
    } cTechnologies[] = {KORA4_NAMED(eVolumeLeveler), KORA4_NAMED(eGraphicEQ),
                         KORA4_NAMED(eIntelligentEQ), KORA4_NAMED(eDialogEnhancer),
                         KORA4_NAMED(eVirtualizerHP), KORA4_NAMED(eVirtualizerSpkr)};
#undef KORA4_NAMED
    for (const auto& known : cTechnologies)
        if (name == known.name)
            return OfTechnology(static_cast<std::uint32_t>(known.technology));
    return "no technology";
}

std::string OfSwitch(std::string_view text) {
    if (text == "0" || text == "Off" || text == "Disabled")
        return "off";
    return "on";
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

// What kinds of values there are: numbers in a base, and texts.
struct NumberKind {
    std::string_view name;
    int base;
    std::string (*meaning)(std::uint32_t number);
};
constexpr NumberKind cNumberKinds[] = {
    {"result", 16, OfResult},   {"error", 10, OfError},
    {"profile", 10, OfProfile}, {"hexadecimal error", 16, OfError},
    {"mask", 16, OfMask},       {"technology", 10, OfTechnology},
    {"reason", 16, OfReason},   {"curve", 10, OfCurve}};

struct TextKind {
    std::string_view name;
    std::string (*meaning)(std::string_view text);
};
constexpr TextKind cTextKinds[] = {
    {"technology name", OfTechnologyName}, {"switch", OfSwitch}, {"value name", OfValueName}};

}  // namespace

std::optional<std::uint32_t> NumberIn(std::string_view text, int base) {
    const auto number = ReadNumber<std::int64_t>(text, base);
    if (!number || *number < (base == 10 ? INT32_MIN : 0) || *number > UINT32_MAX)
        return {};
    return static_cast<std::uint32_t>(*number);
}

std::string MeaningOfValue(std::string_view kind, std::string_view text) {
    for (const NumberKind& known : cNumberKinds) {
        const auto number = kind == known.name ? NumberIn(text, known.base) : std::nullopt;
        if (number)
            return known.meaning(*number);
    }
    for (const TextKind& known : cTextKinds)
        if (kind == known.name)
            return known.meaning(text);
    return {};
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// One function for each kind of value that trace lines print.
#include "kora4ctl/explain/explain_values.h"

#include <kora4api.h>
#include <kora4/result_codes.hpp>

#include <charconv>

#include "base/results.h"
#include "contract/engine_masks.h"
#include "contract/general_settings.h"
#include "contract/profiles.h"
#include "registry/store_access.h"
#include "settings/names.h"
#include "settings/schema.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

std::string OfError(std::optional<std::uint32_t> number) {
    if (!number)
        return {};
    if (*number == 0)
        return "success";
    return InWords(static_cast<HRESULT>(cWin32Results | (*number & 0xFFFF)));
}

std::string OfProfile(std::optional<std::uint32_t> number) {
    if (!number)
        return {};
    return IsAllowableProfile(*number) ? ProfileName(*number) : "no profile";
}

std::string OfTechnology(std::optional<std::uint32_t> number) {
    for (const TechnologyWord& technology : AllTechnologies())
        if (number && technology.apiNumber == number)
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

std::string OfMask(std::optional<std::uint32_t> mask) {
    if (!mask)
        return {};
    const char* const pName = NameOfEngine(*mask);
    return pName ? pName : "no known configuration";
}

std::string OfReason(std::optional<std::uint32_t> reason) {
    constexpr const char* cReasons[] = {"a process detaches", "a process attaches",
                                        "a thread attaches", "a thread detaches"};
    return reason && *reason < std::size(cReasons) ? cReasons[*reason] : "";
}

std::string OfCurve(std::optional<std::uint32_t> curve) {
    const std::vector<std::string>& names = CurveNames();
    return curve && *curve < names.size() ? names[*curve] : "no curve";
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

}  // namespace

std::optional<std::uint32_t> NumberIn(std::string_view text, int base) {
    std::int64_t number = 0;
    const char* const pEnd = text.data() + text.size();
    const auto [pRead, error] = std::from_chars(text.data(), pEnd, number, base);
    if (error != std::errc{} || pRead != pEnd || number < (base == 10 ? INT32_MIN : 0) ||
        number > UINT32_MAX)
        return {};
    return static_cast<std::uint32_t>(number);
}

std::string MeaningOfValue(std::string_view kind, std::string_view text) {
    if (kind == "result") {
        const auto code = NumberIn(text, 16);
        return code ? InWords(static_cast<HRESULT>(*code)) : "";
    }
    if (kind == "error" || kind == "hexadecimal error")
        return OfError(NumberIn(text, kind == "error" ? 10 : 16));
    if (kind == "profile")
        return OfProfile(NumberIn(text, 10));
    if (kind == "technology")
        return OfTechnology(NumberIn(text, 10));
    if (kind == "technology name")
        return OfTechnologyName(text);
    if (kind == "switch")
        return OfSwitch(text);
    if (kind == "mask")
        return OfMask(NumberIn(text, 16));
    if (kind == "reason")
        return OfReason(NumberIn(text, 16));
    if (kind == "curve")
        return OfCurve(NumberIn(text, 10));
    if (kind == "value name")
        return OfValueName(text);
    return {};
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// Checks of the engine's side of the store.
#include "kora4ctl/doctor/checks.h"

#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/general_settings.h"
#include "contract/registry_paths.h"
#include "platform/handles.h"
#include "settings/schema.h"

namespace kora4::tools {
namespace {

constexpr PropertyKey cLevels = pkey::Setting(pkey::cVisualizationDataPid);
constexpr const contract::GeneralSetting& cPeriod =
    *contract::FindGeneralSetting(pkey::Setting(pkey::cSamplingPeriodPid));

// Above this a display looks frozen. Milliseconds, like all periods here.
constexpr std::uint32_t cSlowest = 10000;
// How long the levels are watched: two periods, within these bounds.
constexpr std::uint32_t cShortestWatch = 250;
constexpr std::uint32_t cLongestWatch = 2000;
constexpr DWORD cLookPeriod = 20;

// What changes when the engine writes: the levels, or, when it writes the same again, the
// time of the last write to the key.
struct Picture {
    std::optional<StoredValue> levels;
    std::uint64_t written = 0;

    friend bool operator==(const Picture&, const Picture&) = default;
};

Picture Look(const Examination& examination) {
    Picture picture;
    const OpenedStore opened(examination);
    picture.levels = opened->Read(eKeySetStatic, cLevels);
    UniqueRegKey key;
    FILETIME time{};
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, cStaticKeysPath, 0, KEY_READ | KEY_WOW64_64KEY,
                      key.Put()) == ERROR_SUCCESS &&
        RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr, &time) == ERROR_SUCCESS)
        picture.written = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return picture;
}

// What `lint` says of the levels; empty when they are well-formed.
std::string Malformation(const Examination& examination) {
    const OpenedStore opened(examination);
    for (const Finding& finding : Lint(*opened)) {
        if (finding.keySet == eKeySetStatic && finding.valueName == ValueName(cLevels) &&
            finding.severity != Severity::eNote)
            return finding.problem;
    }
    return {};
}

bool ChangesWithin(const Examination& examination, const Picture& first,
                   std::uint32_t milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (GetTickCount64() < end) {
        if (examination.context.interrupt.WaitFor(cLookPeriod))
            return true;
        if (Look(examination) != first)
            return true;
    }
    return false;
}

}  // namespace

CheckResult CheckEngine(Examination& examination) {
    const SchemaValue place = EngineMaskValue();
    const OpenedStore opened(examination);
    const std::optional<StoredValue> stored = opened->Read(place.keySet, place.key);
    const std::uint32_t mask = stored ? stored->AsDword().value_or(0) : 0;
    examination.hasEngine = mask != 0;
    const char* const name = NameOfEngine(mask);
    CheckResult result;
    result.summary = name ? std::string(name) + " (mask " + Hex(mask, 4) + ")" : "";
    if (!stored)
        result.Note("No engine is installed: the engine mask is not set.",
                    "Install the product's engine, or run kora4sim in its place.");
    else if (!stored->AsDword())
        result.Error("The engine mask cannot be read: " + Describe(*stored, 30),
                     "Reinstall the engine, or run: kora4ctl lint --fix");
    else if (!name)
        result.Warning(
            "The engine mask " + Hex(mask, 4) + " is not that of a known engine.",
            "Reinstall the engine; known engines have " +
                [] {
                    std::vector<std::string> masks;
                    for (const EngineConfiguration& known : cEngineConfigurations)
                        masks.push_back(Hex(known.mask, 4));
                    return Join(masks, ", ");
                }() +
                ".");
    return result;
}

CheckResult CheckLevels(Examination& examination) {
    CheckResult result;
    const std::uint32_t period =
        OpenedStore(examination)->Number(cPeriod.keySet, cPeriod.key, cPeriod.defaultNumber);
    if (period == 0 || period > cSlowest)
        result.Warning("The sampling period is " + std::to_string(period) + " ms: " +
                           (period == 0 ? "displays may refresh without pause."
                                        : "displays will hardly move."),
                       "Set it to the default: kora4ctl set sampling-period " +
                           std::to_string(cPeriod.defaultNumber));
    // Expected as long as no engine is installed.
    const Severity severity = examination.hasEngine ? Severity::eWarning : Severity::eNote;
    const Picture first = Look(examination);
    if (!first.levels) {
        result.Add(severity, "No levels are published: displays stay empty.",
                   "Start the engine, or kora4sim.");
        return result;
    }
    if (const std::string problem = Malformation(examination); !problem.empty())
        result.Error("The engine's levels are malformed: " + problem + ".",
                     "Restart the engine; if that does not help, reinstall it.");
    const std::uint32_t watch = std::clamp(period > cLongestWatch ? cLongestWatch : period * 2,
                                           cShortestWatch, cLongestWatch);
    if (!ChangesWithin(examination, first, watch))
        result.Add(examination.isSilent ? Severity::eNote : severity,
                   "The levels have not changed for " + std::to_string(watch) +
                       (examination.isSilent ? " ms: there is only silence."
                                             : " ms: the engine does not answer."),
                   examination.isSilent ? "Play something and run this again."
                                        : "Play something; if the levels still do not change, "
                                          "restart the engine.");
    result.summary = "published and changing";
    return result;
}

}  // namespace kora4::tools

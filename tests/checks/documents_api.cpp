// SPDX-License-Identifier: MIT
// docs/api.md against the interface definition, the public headers and the library at work.
#include <gtest/gtest.h>
#include <kora4/result_codes.hpp>

#include <functional>
#include <map>

#include "checks/documents_compare.h"
#include "checks/documents_sources.h"
#include "checks/documents_store_use.h"
#include "contract/defaults.h"
#include "contract/display_levels.h"
#include "contract/field_tables.h"
#include "contract/patch_limits.h"
#include "contract/version.h"
#include "store/clients/ui_keys_client.h"
#include "support/memory_key_access.h"

namespace kora4::test {

namespace {

constexpr char cConstants[] = "sdk/include/kora4api_constants.h";
constexpr char cApiInterface[] = "IVeltoKORA4API";
constexpr char cCallbackInterface[] = "IVeltoKORA4APICallback";
constexpr std::uint32_t cFirstSlot = 3;  // behind those of IUnknown

// --- methods ----------------------------------------------------------------------------

std::vector<Row> Slots(const char* interfaceName) {
    std::vector<Row> rows;
    for (const IdlMethod& method : MethodsOf(interfaceName))
        rows.push_back({Text(cFirstSlot + rows.size()), method.name, method.parameters});
    return rows;
}

std::vector<Row> Methods(const Document&) {
    std::vector<Row> rows = Slots(cApiInterface);
    for (Row& row : rows)
        row.push_back(ChecksOf(row[1]));
    return rows;
}

std::vector<Row> Callbacks(const Document&) {
    return Slots(cCallbackInterface);
}

std::vector<Row> StoreUse(const Document&) {
    std::vector<Row> rows;
    for (const IdlMethod& method : MethodsOf(cApiInterface)) {
        const MethodUse& use = UseOf(method.name);
        EXPECT_TRUE(use.known) << method.name;
        std::string told;
        for (const std::string& callback : use.told)
            told += (told.empty() ? "" : ", ") + callback;
        rows.push_back({method.name, use.mutex ? "yes" : "no", Described(use.accesses, false),
                        Described(use.accesses, true), told});
    }
    return rows;
}

std::vector<Row> Identifiers(const Document&) {
    std::vector<Row> rows;
    for (const auto& [name, guid] : IdlIdentifiers())
        rows.push_back({name, guid});
    return rows;
}

// --- results and numbers ------------------------------------------------------------------

std::string Hexadecimal(std::uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(number));
    return text;
}

std::vector<Row> Results(const Document&) {
    std::vector<Row> rows;
    for (const ResultCode& result : cApiResults)
        rows.push_back({Hexadecimal(result.code), result.name, result.meaning});
    return rows;
}

std::vector<Row> Constants(const Document&) {
    // The lengths of the arrays that the interface definition writes as numbers.
    const std::map<std::string, std::uint32_t> lengths = {
        {"GetProfileTable", KORA4_PROFILE_TABLE_ENTRIES},
        {"GetVisualizationData", KORA4_VISUALIZATION_BANDS}};
    for (const IdlMethod& method : MethodsOf(cApiInterface)) {
        if (const auto found = lengths.find(method.name); found != lengths.end()) {
            const std::string length = "[" + Text(found->second) + "]";
            EXPECT_NE(std::string::npos, method.parameters.find(length)) << method.name;
        }
    }
    return {
        {"version", KORA4_VERSION_TEXT},
        {"profile table entries", Text(cSelectableProfileBound)},
        {"graphic EQ bands", Text(cMaxArrayElements)},
        {"graphic EQ bytes", Text(sizeof(ApiGraphicEQ))},
        {"patch value bytes", Text(sizeof(ApiPatchValue))},
        {"custom name length", Text(cMaxTextBytes / sizeof(char16_t) - 1)},
        {"leveler of Movie", Text(defaults::cVolumeAmount[cMovieProfile])},
        {"speaker virtualizer", FloatText(defaults::cVirtualSurroundBoost[cMovieProfile])},
        {"graphic EQ lowest gain", FloatText(cGraphicEQGainMin)},
        {"graphic EQ highest gain", FloatText(cGraphicEQGainMax)},
        {"display bands", Text(cDisplayBands)},
        {"level floor", FloatText(cLevelFloor)},
        {"excitation offset", FloatText(cExcitationOffset)},
        {"silent excitation", FloatText(KORA4_SILENT_EXCITATION)},
        {"sampling period", Text(defaults::cSamplingPeriod)},
    };
}

std::vector<Row> ProfileConstants(const Document&) {
    std::vector<Row> rows;
    for (const NamedNumber& macro : MacrosOf(cConstants, "KORA4_PROFILE_"))
        if (macro.name != "KORA4_PROFILE_TABLE_ENTRIES")
            rows.push_back({macro.name, Text(macro.number)});
    return rows;
}

// The range of profile numbers for which a method does not say E_INVALIDARG.
std::vector<Row> AcceptedProfiles(const Document&) {
    using Method = HRESULT (*)(KORA4UIKeysClient&, std::uint32_t);
    const std::pair<const char*, Method> methods[] = {
        {"SetActiveProfile", [](auto& c, auto p) { return c.SetActiveProfile(p); }},
        {"SetDemoProfileAndEnable",
         [](auto& c, auto p) { return c.SetDemoProfileAndEnable(p, true); }},
        {"SetCustomProfileName",
         [](auto& c, auto p) { return c.SetCustomProfileName(p, u""); }},
        {"CreateCustomProfile", [](auto& c, auto p) { return c.CreateCustomProfile(p, u""); }},
        {"DeleteCustomProfile", [](auto& c, auto p) { return c.DeleteCustomProfile(p); }},
    };
    std::vector<Row> rows;
    for (const auto& [name, method] : methods) {
        MemoryKeyAccess store;
        KORA4UIKeysClient client(&store);
        client.ObjInitialize();
        client.InitialKeysLoad();
        std::vector<std::uint32_t> accepted;
        for (std::uint32_t profile = 0; profile < 300; ++profile)
            if (method(client, profile) != result::cInvalidArg)
                accepted.push_back(profile);
        for (const std::uint32_t negative : {0xFFFFFFFFu, 0x80000000u, 0x100F0u})
            EXPECT_EQ(result::cInvalidArg, method(client, negative)) << name;
        const bool oneRange =
            !accepted.empty() && accepted.back() - accepted.front() + 1 == accepted.size();
        rows.push_back({name, oneRange ? Text(accepted.front()) : "?",
                        oneRange ? Text(accepted.back()) : "?"});
    }
    return rows;
}

// --- technologies
// -----------------------------------------------------------------------------

struct Limits {
    std::string lowest, highest, unit;
};

constexpr char cEnginesScale[] = "none; the engine's own scale";

Limits LimitsOf(ApiTechnology technology) {
    switch (technology) {
        case ApiTechnology::eVolumeLeveler:
            return {"0", Text(cVeltoVolumeLevelerAmountMax), cEnginesScale};
        case ApiTechnology::eIntelligentEQ:
            return {"0", Text(eNumberIEQPatches - 1), "none; the number of a curve"};
        case ApiTechnology::eDialogEnhancer:
            return {FloatText(cDialogEnhancerAmountMin), FloatText(cDialogEnhancerAmountMax),
                    "none; a share"};
        case ApiTechnology::eVirtualizerHP:
        case ApiTechnology::eVirtualizerSpkr:
            return {FloatText(cSurroundCompBoostMin), FloatText(cSurroundCompBoostMax),
                    cEnginesScale};
        default:
            return {"", "", "Hz, dB"};
    }
}

// The property ids under which a set value of the technology is stored: those whose stored
// value differs between two values.
std::string PidsOf(ApiTechnology technology) {
    Snapshot stored[2];
    for (const int round : {0, 1}) {
        MemoryKeyAccess store;
        KORA4UIKeysClient client(&store);
        client.ObjInitialize();
        client.InitialKeysLoad();
        ApiGraphicEQ eq = {1, {100}, {1}};
        std::uint32_t number = 1;
        float real = 0.25f;
        if (round == 1) {
            eq = {1, {200}, {2}};
            number = 2;
            real = 0.5f;
        }
        const bool isNumber = technology == ApiTechnology::eVolumeLeveler ||
                              technology == ApiTechnology::eIntelligentEQ;
        const void* const pValue = technology == ApiTechnology::eGraphicEQ
                                       ? static_cast<const void*>(&eq)
                                   : isNumber ? static_cast<const void*>(&number)
                                              : &real;
        EXPECT_EQ(result::cOk,
                  client.SetPatchValue(technology, ASLPatchSizeOf(technology), pValue));
        stored[round] = store.Values();
    }
    std::vector<std::uint32_t> pids;
    for (const auto& [address, value] : stored[0])
        if (stored[1][address] != value) {
            const std::string name = Narrow(address.second);
            pids.push_back(
                static_cast<std::uint32_t>(std::stoul(name.substr(name.find(',') + 1))));
        }
    return Numbers(pids);
}

std::vector<Row> ApiTechnologies(const Document&) {
    auto members = PatchValueMembers();
    const auto storeNames =
        EnumeratorsOf("src/contract/technologies.h", "KORA4PresetTechnology");
    std::vector<Row> rows;
    for (const auto& [name, number] :
         EnumeratorsOf("idl/veltokora4api.idl", "KORA4APITechnology")) {
        const auto technology = static_cast<ApiTechnology>(number);
        if (technology == ApiTechnology::eNumberKORA4APITechnologies)
            continue;
        const KORA4PresetTechnology preset = PresetTechOf(technology);
        EXPECT_EQ(technology, APITechOf(preset)) << name;
        const auto [type, member] = members[name];
        const Limits limits = LimitsOf(technology);
        rows.push_back({Text(number), name, member, type, limits.lowest, limits.highest,
                        storeNames.at(preset).name, PidsOf(technology), limits.unit});
    }
    return rows;
}

}  // namespace

const std::vector<Comparison> cApiComparisons = {
    {"methods", 4, &Methods},
    {"store use", 5, &StoreUse},
    {"results", 3, &Results},
    {"constants", 2, &Constants},
    {"profile constants", 2, &ProfileConstants},
    {"accepted profiles", 3, &AcceptedProfiles},
    {"api technologies", 9, &ApiTechnologies},
    {"callbacks", 3, &Callbacks},
    {"identifiers", 2, &Identifiers},
};

}  // namespace kora4::test

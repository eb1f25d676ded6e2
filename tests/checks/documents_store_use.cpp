// SPDX-License-Identifier: MIT
// Runs every method in each of its situations on a store in memory, and turns the recorded
// operations into rows.
#include "checks/documents_store_use.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "checks/documents_compare.h"
#include "store/clients/ui_keys_client.h"
#include "support/memory_key_access.h"
#include "support/native_named_mutex.h"

namespace kora4::test {

using Pids = Family::Pids;

const std::vector<Family> cFamilies = {
    {"settings", pkey::cSettingsGuid, false, false, Pids::eAll},
    {"engine mask", pkey::cMasterEnablesGuid, false, false, Pids::eZero},
    {"switches", pkey::cPresetPatchGuid, true, true, Pids::eZero},
    {"fields", pkey::cPresetPatchGuid, true, true, Pids::eOthers},
    {"triggers", pkey::cPresetTriggerGuid, true, false, Pids::eZero},
    {"global switches", pkey::cGlobalPatchGuid, true, false, Pids::eZero},
    {"global fields", pkey::cGlobalPatchGuid, true, false, Pids::eOthers},
    {"global triggers", pkey::cGlobalTriggerGuid, true, false, Pids::eZero},
    {"names", pkey::cProfileNameGuid, false, true, Pids::eZero},
};

namespace {

// One run of a method: what comes before it, and the call itself.
struct Scenario {
    std::function<void(MemoryKeyAccess&, KORA4UIKeysClient&)> prepare;
    std::function<void(MemoryKeyAccess&, KORA4UIKeysClient&)> run;
};

constexpr std::uint32_t cExisting = 3;
constexpr std::uint32_t cMissing = 4;

void Nothing(MemoryKeyAccess&, KORA4UIKeysClient&) {}

void EnterDemo(MemoryKeyAccess&, KORA4UIKeysClient& client) {
    client.SetDemoProfileAndEnable(cDemoMusicProfile, false);
}

template <typename Run>
std::vector<Scenario> Call(Run run) {
    return {{&Nothing, [=](MemoryKeyAccess&, KORA4UIKeysClient& client) { run(client); }}};
}

template <typename Run>
std::vector<Scenario> CallInDemo(Run run) {
    return {{&EnterDemo, [=](MemoryKeyAccess&, KORA4UIKeysClient& client) { run(client); }}};
}

template <typename Run>
std::vector<Scenario> CallAfter(std::function<void(MemoryKeyAccess&)> prepare, Run run) {
    return {{[=](MemoryKeyAccess& store, KORA4UIKeysClient&) { prepare(store); },
             [=](MemoryKeyAccess&, KORA4UIKeysClient& client) { run(client); }}};
}

// What Initialize does beside the load: it reads the trace word.
void Load(MemoryKeyAccess& store, KORA4UIKeysClient& client) {
    std::uint32_t flags = 0;
    store.ReadUINT(eKeySetStatic, pkey::Setting(pkey::cTraceFlagsPid), &flags);
    client.InitialKeysLoad();
}

std::vector<Scenario> CallForCommand(CompanionCommand command) {
    return Call([=](KORA4UIKeysClient& client) {
        TaskPtr<char16_t> text;
        client.GetCommand(command, text.Put());
    });
}

void SetSlider(KORA4UIKeysClient& client) {
    const std::uint32_t slider = 5;
    client.SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof slider, &slider);
}

void GetSlider(KORA4UIKeysClient& client) {
    std::uint32_t slider = 0;
    client.GetPatchValue(ApiTechnology::eVolumeLeveler, sizeof slider, &slider);
}

void SetGraphicEQ(KORA4UIKeysClient& client) {
    const ApiGraphicEQ eq = {2, {100, 200}, {1, 2}};
    client.SetPatchValue(ApiTechnology::eGraphicEQ, sizeof eq, &eq);
}

void GetGraphicEQ(KORA4UIKeysClient& client) {
    ApiGraphicEQ eq;
    client.GetPatchValue(ApiTechnology::eGraphicEQ, sizeof eq, &eq);
}

void GetTable(KORA4UIKeysClient& client) {
    char16_t* names[cSelectableProfileBound];
    client.GetProfileTable(names);
    for (char16_t* name : names)
        FreeTaskMemory(name);
}

void GetBlob(KORA4UIKeysClient& client) {
    std::uint32_t size = 0;
    TaskPtr<std::uint8_t> data;
    client.GetVisualizationBlob(&size, data.Put());
}

using Client = KORA4UIKeysClient;

const std::map<std::string, std::vector<Scenario>>& Scenarios() {
    static std::uint32_t number;
    static bool flag;
    static const std::map<std::string, std::vector<Scenario>> scenarios = {
        {"GetVeltoKORA4Version", {}},
        {"Initialize", {{&Nothing, &Load}}},
        {"RegisterChangeNotifications", {}},
        {"UnregisterChangeNotifications", {}},
        {"GetActiveProfile", Call([](Client& c) { c.GetActiveProfile(&number); })},
        {"SetActiveProfile", Call([](Client& c) { c.SetActiveProfile(cExisting); })},
        {"RevertActiveProfile", CallAfter(
                                    [](MemoryKeyAccess& store) {
                                        store.Put(eKeySetDynamic,
                                                  PresetPatchKey(eVolumeTech, cDemoMovieProfile,
                                                                 pkey::cSwitchPid),
                                                  0u);
                                    },
                                    [](Client& c) { c.RevertActiveProfile(); })},
        {"SetDemoProfileAndEnable",
         Call([](Client& c) { c.SetDemoProfileAndEnable(cDemoMovieProfile, false); })},
        {"RevertFromDemoMode", CallInDemo([](Client& c) { c.RevertFromDemoMode(); })},
        {"ForceRevertFromDemoMode", CallInDemo([](Client& c) { c.ForceRevertFromDemoMode(); })},
        {"GetVisualizationSamplingPeriod",
         Call([](Client& c) { c.GetSamplingPeriod(&number); })},
        {"SetVisualizationSamplingPeriod", Call([](Client& c) { c.SetSamplingPeriod(1); })},
        {"GetVisualizationData", Call(&GetBlob)},
        {"GetVeltoProfileEditorCommand", CallForCommand(CompanionCommand::eProfileEditor)},
        {"GetVeltoProfileSelectorCommand", CallForCommand(CompanionCommand::eProfileSelector)},
        {"GetVeltoDemoAppCommand", CallForCommand(CompanionCommand::eDemoApp)},
        {"GetVeltoEnable", Call([](Client& c) { c.GetVeltoEnable(&flag); })},
        {"SetVeltoEnable", Call([](Client& c) { c.SetVeltoEnable(false); })},
        {"ToggleVeltoEnable", Call([](Client& c) { c.ToggleVeltoEnable(&flag); })},
        {"GetProfileTable", Call(&GetTable)},
        {"SetCustomProfileName",
         Call([](Client& c) { c.SetCustomProfileName(cExisting, u"new"); })},
        {"CreateCustomProfile",
         Call([](Client& c) { c.CreateCustomProfile(cMissing, u"new"); })},
        {"DeleteCustomProfile", Call([](Client& c) { c.DeleteCustomProfile(cExisting); })},
        {"GetTechnologyMasterEnables", Call([](Client& c) { number = c.MasterEnables(); })},
        {"GetTechnologyOnElseOff",
         Call([](Client& c) { c.GetTechnologyOnElseOff(eVolumeTech, &flag); })},
        {"SetTechnologyOnElseOff",
         Call([](Client& c) { c.SetTechnologyOnElseOff(eVolumeTech, false); })},
        {"GetSimplePatchValue", Call(&GetSlider)},
        {"SetSimplePatchValue", Call(&SetSlider)},
        {"SetGraphicEQData", Call(&SetGraphicEQ)},
        {"GetGraphicEQData", Call(&GetGraphicEQ)},
    };
    return scenarios;
}

// The callbacks that a pass of another client makes, in their order.
std::vector<std::string> Told(Client& other) {
    ChangeSet changes;
    EXPECT_EQ(result::cOk, other.AnalyseChanges(&changes));
    std::set<std::string> technologies;
    for (std::uint32_t t = eVolumeTech; t < eNGSurroundTech; ++t) {
        if (changes.onElseOffChanged[t])
            technologies.insert("1OnTechnologyOnElseOffChange");
        if (changes.patchChanged[t])
            technologies.insert(t == eStandardEQTech ? "3OnGraphicEQChange"
                                                     : "2OnSimplePatchValueChange");
    }
    std::vector<std::string> told;
    if (changes.enableChanged)
        told.push_back("OnEnableStateChange");
    if (changes.profileChanged)
        told.push_back("OnActiveProfileChange");
    else
        for (const std::string& technology : technologies)
            told.push_back(technology.substr(1));
    if (changes.tableChanged)
        told.push_back("OnCustomProfileTableChange");
    return told;
}

bool IsOf(const Family& family, std::uint32_t data1, const std::string& rest,
          std::uint32_t pid) {
    const std::uint32_t placed =
        (family.hasOffset ? 0xFFu : 0) | (family.hasProfile ? 0xFF00u : 0);
    char16_t name[cValueNameCapacity];
    FormatValueName({family.base, 0}, name);
    return (data1 & ~placed) == (family.base.data1 & ~placed) &&
           rest == Narrow(std::u16string(name + 9, 29)) &&
           (family.pids == Pids::eAll || (pid == 0) == (family.pids == Pids::eZero));
}

// Of an entry like "RT2 {5E0A0403-2C71-4B9E-8F36-D41A07C9B2E5},3".
Access AccessOf(const std::string& entry) {
    const std::size_t brace = entry.find('{');
    const std::string operation = entry.substr(0, brace - 2);
    Access access{entry, operation[0] != 'R', "", 0, 0};
    if (operation != "D")
        access.type = operation.ends_with('T')   ? "text"
                      : operation.ends_with('B') ? "blob"
                                                 : "DWORD";
    access.keySet = static_cast<std::uint32_t>(entry[brace - 2] - '0');
    access.pid = static_cast<std::uint32_t>(std::stoul(entry.substr(entry.find("},") + 2)));
    const auto data1 =
        static_cast<std::uint32_t>(std::stoul(entry.substr(brace + 1, 8), nullptr, 16));
    for (const Family& family : cFamilies)
        if (IsOf(family, data1, entry.substr(brace + 9, 29), access.pid))
            access.family = family.name;
    return access;
}

MethodUse Recorded(const std::vector<Scenario>& scenarios) {
    MethodUse use{.known = true, .mutex = false, .accesses = {}, .told = {}};
    for (const Scenario& scenario : scenarios) {
        MemoryKeyAccess store;
        store.Put(eKeySetStatic, ProfileNameKey(cExisting), std::u16string(u"old"));
        Client client(&store);
        Client other(&store);
        for (Client* pClient : {&client, &other}) {
            EXPECT_EQ(result::cOk, pClient->ObjInitialize());
            EXPECT_EQ(result::cOk, pClient->InitialKeysLoad());
        }
        scenario.prepare(store, client);
        Told(other);
        store.ClearLog();
        StoreMutex().Clear();
        scenario.run(store, client);
        use.mutex |= StoreMutex().acquired != 0;
        for (const std::string& entry : store.Log())
            use.accesses.push_back(AccessOf(entry));
        std::ranges::copy(Told(other), std::back_inserter(use.told));
    }
    return use;
}

}  // namespace

const MethodUse& UseOf(const std::string& method) {
    static std::map<std::string, MethodUse> uses;
    const auto scenarios = Scenarios().find(method);
    if (!uses.contains(method))
        uses[method] =
            scenarios != Scenarios().end() ? Recorded(scenarios->second) : MethodUse{};
    return uses[method];
}

const std::vector<Access>& EveryAccess() {
    static const std::vector<Access> every = [] {
        std::vector<Access> all;
        for (const auto& [method, scenarios] : Scenarios())
            std::ranges::copy(UseOf(method).accesses, std::back_inserter(all));
        return all;
    }();
    return every;
}

std::string Described(const std::vector<Access>& accesses, bool writes) {
    std::string described;
    std::set<std::string> known;
    const auto add = [&](const std::string& text) {
        described += (described.empty() ? "" : ", ") + text;
    };
    for (const Family& family : cFamilies) {
        known.insert(family.name);
        std::set<std::uint32_t> pids;
        for (const Access& access : accesses)
            if (access.write == writes && access.family == family.name)
                pids.insert(access.pid);
        if (pids.empty())
            continue;
        const bool numbered = family.pids == Pids::eAll;
        add(family.name +
            (numbered ? " (" + Numbers({pids.begin(), pids.end()}) + ")" : std::string()));
    }
    for (const Access& access : accesses)
        if (access.write == writes && !known.contains(access.family))
            add(access.family);
    return described;
}

}  // namespace kora4::test

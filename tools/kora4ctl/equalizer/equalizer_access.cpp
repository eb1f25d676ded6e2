// SPDX-License-Identifier: MIT
// Reads and writes the bands through the library for the active profile, and through the store
// for any other.
#include "kora4ctl/equalizer/equalizer_access.h"

#include "base/results.h"
#include "contract/field_ids.h"
#include "contract/patch_records.h"
#include "contract/technologies.h"

namespace kora4::tools {

namespace {

constexpr Technology cGraphicEq{Family::ePreset, eStandardEQTech};

Equalizer ReadStored(SettingAccess& access, std::uint32_t profile) {
    const HeldStore store = access.Store(OpenMode::eRead);
    Equalizer equalizer;
    equalizer.profile = profile;
    const std::optional<Value> isOn = Effective(SwitchValue(cGraphicEq, profile), *store);
    equalizer.isOn = isOn && std::get<bool>(*isOn);
    equalizer.bands = BandsOf(GraphicEqArray(pkey::cStandardEQFreqPid, profile, *store),
                              GraphicEqArray(pkey::cStandardEQGainPid, profile, *store));
    return equalizer;
}

void WriteArray(std::uint32_t pid, std::uint32_t profile, const std::vector<float>& array,
                StoreAccess& store) {
    const SchemaValue value = FieldValue(cGraphicEq, profile, pid);
    store.Write(value.keySet, value.key, Encode(value, array));
}

void WriteStored(SettingAccess& access, std::optional<std::uint32_t> named,
                 const Bands& bands) {
    std::vector<float> frequencies;
    std::vector<float> gains;
    for (const Band& band : bands) {
        frequencies.push_back(band.frequency);
        gains.push_back(band.gain);
    }
    const HeldStore store = access.Store(OpenMode::eReadWrite);
    const std::uint32_t profile = named ? *named : StoredActiveProfile(*store);
    if (!named)
        CheckSettable(profile);
    WriteArray(pkey::cStandardEQFreqPid, profile, frequencies, *store);
    WriteArray(pkey::cStandardEQGainPid, profile, gains, *store);
    store->Bump(TriggerValue(cGraphicEq).key);
}

bool IsServedByApi(SettingAccess& access, std::optional<std::uint32_t> profile) {
    return access.WayOf(SettingNamed("graphic-eq.on"), profile) == Way::eApi;
}

}  // namespace

Equalizer ReadEqualizer(SettingAccess& access, std::optional<std::uint32_t> profile) {
    if (!IsServedByApi(access, profile))
        return ReadStored(access, *profile);
    Equalizer equalizer;
    equalizer.bands = Check(access.Api().GetGraphicEQData(), "Reading the graphic equalizer");
    equalizer.isOn = Check(access.Api().GetTechnologyOnElseOff(eGraphicEQ),
                           "Reading the switch of the graphic equalizer");
    equalizer.profile = profile ? *profile : access.ActiveProfile();
    return equalizer;
}

void WriteEqualizer(SettingAccess& access, std::optional<std::uint32_t> profile,
                    const Bands& bands, Limits limits) {
    CheckNotFactory(SettingNamed("graphic-eq.on"), profile, limits);
    if (limits == Limits::eStore || !IsServedByApi(access, profile)) {
        WriteStored(access, profile, bands);
        return;
    }
    Check(access.Api().SetGraphicEQData(bands), "Setting the graphic equalizer");
    CheckWasSet(access.ActiveProfile(), profile);
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// One function for each method of the API with the calls that it cannot do without.
#include "windows/bare_methods.h"

#include <array>
#include <cstdio>

#include "contract/profiles.h"

namespace kora4::bench::bare {
namespace {

constexpr std::array cTechnologies = {eVolumeTech,     eEnhancementTech, eDynamicEQTech,
                                      eStandardEQTech, eHeadphoneTech,   eVirtualSurroundTech,
                                      eNGSurroundTech};

constexpr std::uint32_t cFirstFieldPid = 3;

class Hold {
  public:
    explicit Hold(Bare& bare) : m_bare(bare) { m_bare.Wait(); }
    ~Hold() { m_bare.Release(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

  private:
    Bare& m_bare;
};

void ReadPatch(Bare& bare, const PatchValues& patch) {
    bare.Number(patch.flag);
    for (const Value& field : patch.fields)
        bare.Read(field);
}

void ReadPatches(Bare& bare, std::uint32_t profile) {
    for (const KORA4PresetTechnology technology : cTechnologies)
        ReadPatch(bare, bare.Store().Patch(profile, technology));
}

// A field's text of a usual length; `number` makes it differ from the one before.
std::u16string FieldText(std::uint32_t number) {
    std::u16string text = u"0.500000";
    text[3] = static_cast<char16_t>(u'0' + number % 10);
    return text;
}

std::u16string EqualizerText(const char16_t* begin, std::uint32_t number) {
    std::u16string text = begin;
    for (std::uint32_t band = 0; band < 10; ++band)
        text += u",0120";
    text.back() = static_cast<char16_t>(u'0' + number % 10);
    return text;
}

void WriteField(Bare& bare, const Value& field, std::uint32_t number) {
    if (field.type == REG_DWORD)
        bare.SetNumber(field, number);
    else
        bare.SetText(field, FieldText(number));
}

void WritePatch(Bare& bare, const PatchValues& patch, KORA4PresetTechnology technology) {
    bare.SetNumber(patch.flag, 1);
    if (technology == eStandardEQTech) {
        bare.SetText(patch.fields[0], EqualizerText(u"0001,000a", 0));
        bare.SetText(patch.fields[1], EqualizerText(u"0100,000a", 0));
        return;
    }
    if (technology == eDynamicEQTech) {
        bare.SetText(patch.fields[0], FieldText(5));
        bare.SetText(patch.fields[1], EqualizerText(u"0001,000a", 0));
        bare.SetNumber(patch.fields[2], 1);
        return;
    }
    for (const Value& field : patch.fields)
        WriteField(bare, field, 1);
}

void Bump(Bare& bare, const Value& counter) {
    bare.SetNumber(counter, bare.Number(counter) + 1);
}

}  // namespace

void GetSetting(Bare& bare, const Value& value) {
    const Hold hold(bare);
    bare.Read(value);
}

void SetSetting(Bare& bare, const Value& value, std::uint32_t number) {
    const Hold hold(bare);
    bare.SetNumber(value, number);
}

void ReplaceSetting(Bare& bare, const Value& value, std::uint32_t number) {
    const Hold hold(bare);
    bare.Number(value);
    bare.SetNumber(value, number);
}

void ToggleSetting(Bare& bare, const Value& value) {
    const Hold hold(bare);
    bare.SetNumber(value, bare.Number(value) == 0);
}

void SwitchProfile(Bare& bare, std::uint32_t profile) {
    const Hold hold(bare);
    bare.Number(bare.Store().profile);
    if (IsCustomProfile(profile))
        bare.Text(bare.Store().names[profile]);
    bare.SetNumber(bare.Store().profile, profile);
    ReadPatches(bare, profile);
}

void Revert(Bare& bare) {
    const Hold hold(bare);
    const std::uint32_t profile = bare.Number(bare.Store().profile);
    ReadPatches(bare, DemoProfileOf(profile));
    for (const KORA4PresetTechnology technology : cTechnologies) {
        const PatchValues& patch = bare.Store().Patch(profile, technology);
        bare.Number(patch.flag);
        WritePatch(bare, patch, technology);
        Bump(bare, bare.Store().Trigger(technology));
    }
}

void EnterDemo(Bare& bare, std::uint32_t demoProfile) {
    const Hold hold(bare);
    Place& store = bare.Store();
    const std::uint32_t profile = bare.Number(store.profile);
    const std::uint32_t enable = bare.Number(store.enable);
    bare.SetNumber(store.profile, demoProfile);
    bare.SetNumber(store.enable, 1);
    ReadPatches(bare, demoProfile);
    bare.SetNumber(store.savedProfile, profile);
    bare.SetNumber(store.savedEnable, enable);
}

void LeaveDemo(Bare& bare) {
    const Hold hold(bare);
    Place& store = bare.Store();
    bare.Number(store.profile);
    const std::uint32_t profile = bare.Number(store.savedProfile);
    const std::uint32_t enable = bare.Number(store.savedEnable);
    bare.Number(store.enable);
    bare.SetNumber(store.profile, profile);
    bare.SetNumber(store.enable, enable);
    ReadPatches(bare, profile);
}

void GetTable(Bare& bare) {
    const Hold hold(bare);
    for (std::uint32_t p = cFirstCustomProfile; p < cSelectableProfileBound; ++p)
        bare.Text(bare.Store().names[p]);
}

void Rename(Bare& bare, std::uint32_t profile) {
    const Hold hold(bare);
    bare.Text(bare.Store().names[profile]);
    bare.SetText(bare.Store().names[profile], u"A profile of my own");
    Bump(bare, bare.Store().table);
}

void Create(Bare& bare, std::uint32_t profile) {
    const Hold hold(bare);
    Place& store = bare.Store();
    bare.Text(store.names[profile]);
    const std::uint32_t active = bare.Number(store.profile);
    ReadPatches(bare, active);
    for (const KORA4PresetTechnology technology : cTechnologies)
        WritePatch(bare, store.Patch(profile, technology), technology);
    bare.SetText(store.names[profile], u"A profile of my own");
    Bump(bare, store.table);
}

void Delete(Bare& bare, std::uint32_t profile) {
    const Hold hold(bare);
    bare.Number(bare.Store().profile);
    bare.Delete(bare.Store().names[profile]);
    Bump(bare, bare.Store().table);
}

void GetLevels(Bare& bare) {
    const Hold hold(bare);
    bare.Blob(bare.Store().levels);
}

void GetCommand(Bare& bare) {
    CoTaskMemFree(bare.Allocate(100));
}

void GetSwitch(Bare& bare, KORA4PresetTechnology technology) {
    const Hold hold(bare);
    const std::uint32_t profile = bare.Number(bare.Store().profile);
    bare.Number(bare.Store().Patch(profile, technology).flag);
}

void SetSwitch(Bare& bare, KORA4PresetTechnology technology, std::uint32_t flag) {
    const Hold hold(bare);
    const std::uint32_t profile = bare.Number(bare.Store().profile);
    const Value& value = bare.Store().Patch(profile, technology).flag;
    bare.Number(value);
    bare.SetNumber(value, flag);
}

void GetPatch(Bare& bare, KORA4PresetTechnology technology) {
    const Hold hold(bare);
    const std::uint32_t profile = bare.Number(bare.Store().profile);
    ReadPatch(bare, bare.Store().Patch(profile, technology));
}

void SetSlider(Bare& bare, KORA4PresetTechnology technology, std::uint32_t own,
               std::uint32_t number) {
    const Hold hold(bare);
    const std::uint32_t profile = bare.Number(bare.Store().profile);
    const PatchValues& patch = bare.Store().Patch(profile, technology);
    const std::size_t ownIndex = own - cFirstFieldPid;
    bare.Number(patch.flag);
    for (std::size_t i = 0; i < patch.fields.size(); ++i)
        if (i != ownIndex)
            bare.Read(patch.fields[i]);
    bare.SetNumber(patch.flag, 1);
    for (std::size_t i = 0; i < patch.fields.size(); ++i) {
        if (technology == eDynamicEQTech && i == 1)
            bare.SetText(patch.fields[i], EqualizerText(u"0001,000a", 0));
        else
            WriteField(bare, patch.fields[i], i == ownIndex ? number : 1);
    }
    Bump(bare, bare.Store().Trigger(technology));
}

void SetEqualizer(Bare& bare, std::uint32_t number) {
    const Hold hold(bare);
    const std::uint32_t profile = bare.Number(bare.Store().profile);
    const PatchValues& patch = bare.Store().Patch(profile, eStandardEQTech);
    bare.Number(patch.flag);
    bare.SetNumber(patch.flag, 1);
    bare.SetText(patch.fields[0], EqualizerText(u"0001,000a", 0));
    bare.SetText(patch.fields[1], EqualizerText(u"0100,000a", number));
    Bump(bare, bare.Store().Trigger(eStandardEQTech));
}

void LoadAll(Bare& bare) {
    const Hold hold(bare);
    Place& store = bare.Store();
    bare.Number(store.masks);
    for (const Value& value : store.switches)
        bare.Number(value);
    for (const Value& value : store.commands)
        bare.Text(value);
    for (std::uint32_t t = ePeakLimiterTech; t < eNumberKORA4GlobalTechnologies; ++t)
        ReadPatch(bare, store.globals[t]);
    const std::uint32_t profile = bare.Number(store.profile);
    bare.Number(store.enable);
    bare.Number(store.dynamicSwitch);
    bare.Number(store.table);
    for (std::uint32_t t = eVolumeTech; t < eNumberKORA4PresetTechnologies; ++t)
        bare.Number(store.presetTriggers[t]);
    for (std::uint32_t t = ePeakLimiterTech; t < eNumberKORA4GlobalTechnologies; ++t)
        bare.Number(store.globalTriggers[t]);
    ReadPatches(bare, profile);
}

void Analyse(Bare& bare, KORA4PresetTechnology changed) {
    const Hold hold(bare);
    Place& store = bare.Store();
    const std::uint32_t profile = bare.Number(store.profile);
    bare.Number(store.enable);
    bare.Number(store.table);
    for (std::uint32_t t = eVolumeTech; t < eNumberKORA4PresetTechnologies; ++t)
        bare.Number(store.presetTriggers[t]);
    for (std::uint32_t t = ePeakLimiterTech; t < eNumberKORA4GlobalTechnologies; ++t)
        bare.Number(store.globalTriggers[t]);
    for (const KORA4PresetTechnology technology : cTechnologies)
        bare.Number(store.Patch(profile, technology).flag);
    for (std::uint32_t t = ePeakLimiterTech; t < eNumberKORA4GlobalTechnologies; ++t)
        bare.Number(store.globals[t].flag);
    if (changed != ePresetNoTech)
        for (const Value& field : store.Patch(profile, changed).fields)
            bare.Read(field);
}

}  // namespace kora4::bench::bare

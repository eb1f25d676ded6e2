// SPDX-License-Identifier: MIT
// Property keys: how every value of the store is addressed, and the GUIDs and property ids of
// the store.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/technologies.h"

namespace kora4 {

// Same layout as the platform's GUID and PROPERTYKEY.
struct KeyGuid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::uint8_t data4[8];

    friend constexpr bool operator==(const KeyGuid&, const KeyGuid&) = default;
};

// The address of a value within its key set.
struct PropertyKey {
    KeyGuid fmtid;
    std::uint32_t pid;

    friend constexpr bool operator==(const PropertyKey&, const PropertyKey&) = default;
};

// Key sets: where a value lives.
enum KORA4KeySet : std::uint32_t {
    eKeySetPropertyStore = 1,
    eKeySetStatic = 2,   // field values, static switches, profile names
    eKeySetDynamic = 3,  // enable, active preset, switches, counters and triggers
    eKeySetApp = 4,      // companion-application commands; never written from here
};

namespace pkey {

// The store's own settings and the values of the user interfaces.
inline constexpr KeyGuid cSettingsGuid{
    0x5C2E8A47, 0x91D3, 0x4B6F, {0xA0, 0xE2, 0x3F, 0x7C, 0x19, 0xB8, 0x4D, 0x60}};
// Which technologies the installed engine supports.
inline constexpr KeyGuid cMasterEnablesGuid{
    0x2B7E1F93, 0x6C40, 0x4D85, {0xA1, 0xF7, 0x93, 0xD0, 0xC5, 0xE8, 0xB4, 0x26}};
// The families below reserve the low bits of the first field for technology and profile.
inline constexpr KeyGuid cPresetPatchGuid{
    0x5E0A0000, 0x2C71, 0x4B9E, {0x8F, 0x36, 0xD4, 0x1A, 0x07, 0xC9, 0xB2, 0xE5}};
inline constexpr KeyGuid cPresetTriggerGuid{
    0x3D95E200, 0x7A1C, 0x4F08, {0x9B, 0x64, 0xC2, 0xE8, 0x51, 0x0F, 0xA9, 0x3D}};
inline constexpr KeyGuid cGlobalPatchGuid{
    0x8F3B6A00, 0xD24C, 0x4E71, {0x9C, 0x05, 0xB7, 0xE2, 0x16, 0x4A, 0x3D, 0x98}};
inline constexpr KeyGuid cGlobalTriggerGuid{
    0xC6417F00, 0x0B5E, 0x4A2D, {0x8E, 0x93, 0x6F, 0x21, 0xD4, 0xB7, 0xA0, 0x58}};
// Names of the custom profiles; profile number in bits 8 to 15 of the first field.
inline constexpr KeyGuid cProfileNameGuid{
    0x71C40000, 0x3FA8, 0x4D12, {0xB6, 0x5B, 0x0E, 0x92, 0x7D, 0xA4, 0xC8, 0x13}};

// Property ids under cSettingsGuid. Dynamic keys:
inline constexpr std::uint32_t cMasterEnablePid = 1;
inline constexpr std::uint32_t cActivePresetPid = 2;
inline constexpr std::uint32_t cProfileTableCounterPid = 5;
inline constexpr std::uint32_t cDynamicSwitchPid = 6;
// Static keys:
inline constexpr std::uint32_t cSamplingPeriodPid = 3;
inline constexpr std::uint32_t cVisualizationDataPid = 4;
inline constexpr std::uint32_t cSavedEnablePid = 7;
inline constexpr std::uint32_t cSavedProfilePid = 8;
inline constexpr std::uint32_t cFirstRefreshSwitchPid = 50;
inline constexpr std::uint32_t cFirstRefreshSwitchDemoPid = 51;
inline constexpr std::uint32_t cSecondRefreshSwitchPid = 52;
inline constexpr std::uint32_t cSecondRefreshSwitchDemoPid = 53;
inline constexpr std::uint32_t cStaticSwitch54Pid = 54;
inline constexpr std::uint32_t cStaticSwitch55Pid = 55;
inline constexpr std::uint32_t cStaticSwitch56Pid = 56;
inline constexpr std::uint32_t cStaticNumber57Pid = 57;
inline constexpr std::uint32_t cStaticNumber58Pid = 58;
inline constexpr std::uint32_t cStaticSwitch59Pid = 59;
inline constexpr std::uint32_t cTraceFlagsPid = 404;
// App keys:
inline constexpr std::uint32_t cProfileEditorCommandPid = 61;
inline constexpr std::uint32_t cProfileSelectorCommandPid = 62;
inline constexpr std::uint32_t cDemoAppCommandPid = 63;

// Under cMasterEnablesGuid, and the switch or trigger word under the technology families.
// Fields of a technology have their own ids.
inline constexpr std::uint32_t cMasterEnablesPid = 0;
inline constexpr std::uint32_t cSwitchPid = 0;
inline constexpr std::uint32_t cTriggerPid = 0;
inline constexpr std::uint32_t cProfileNamePid = 0;

// The key of a general setting.
constexpr PropertyKey Setting(std::uint32_t pid) {
    return PropertyKey{cSettingsGuid, pid};
}

}  // namespace pkey

// Builds the keys of a family: places a technology's offset into bits 0 to 7 and a
// profile into bits 8 to 15 of the first field of the GUID.
class KORA4PropKeyBase {
  public:
    // `pid` is kept as it is.
    constexpr KORA4PropKeyBase(const KeyGuid& base, std::uint32_t pid) : m_key{base, pid} {}

    // Places the low eight bits of a technology's offset (sm_presetTechGUIDOffset and its
    // like).
    constexpr void SetTechField(std::uint32_t offset) { Place(offset, 0); }

    // Places the low eight bits of `profile`.
    constexpr void PlaceProfile(std::uint32_t profile) { Place(profile, 8); }

    constexpr const PropertyKey& Key() const { return m_key; }

  private:
    constexpr void Place(std::uint32_t number, unsigned shift) {
        m_key.fmtid.data1 =
            (m_key.fmtid.data1 & ~(0xFFu << shift)) | ((number & 0xFFu) << shift);
    }

    PropertyKey m_key;
};

// The keys of the technologies. A number that is not a technology gets offset 0; a negative
// profile leaves the profile bits 0.
PropertyKey PresetTriggerKey(KORA4PresetTechnology technology);
PropertyKey GlobalPatchKey(KORA4GlobalTechnology technology, std::uint32_t pid);
PropertyKey GlobalTriggerKey(KORA4GlobalTechnology technology);

namespace pkey {

PropertyKey PresetPatch(KORA4PresetTechnology technology, std::uint32_t profile,
                        std::uint32_t pid);
PropertyKey ProfileName(std::uint32_t profile);

}  // namespace pkey

// In the registry a key is a value name: the braced GUID in upper case, a comma and the
// pid in decimal.
inline constexpr std::size_t cValueNameCapacity = 64;

// Writes the name with its terminator and returns its length in characters.
std::size_t FormatValueName(const PropertyKey& key, char16_t (&name)[cValueNameCapacity]);

}  // namespace kora4

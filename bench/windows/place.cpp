// SPDX-License-Identifier: MIT
// Creates, fills and removes the keys of a store, and makes every value name beforehand.
#include "windows/place.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "contract/defaults.h"
#include "contract/general_settings.h"
#include "contract/profiles.h"
#include "contract/registry_paths.h"
#include "contract/store_mutex.h"

namespace kora4::bench {
namespace {

constexpr std::uint32_t cDemoProfiles = 3;
constexpr std::uint32_t cKeptProfiles = cSelectableProfileBound + cDemoProfiles;

constexpr std::uint32_t RowOf(std::uint32_t profile) {
    return profile < cSelectableProfileBound
               ? profile
               : cSelectableProfileBound + profile - cDemoMovieProfile;
}
constexpr std::uint32_t ProfileOf(std::uint32_t row) {
    return row < cSelectableProfileBound ? row
                                         : row - cSelectableProfileBound + cDemoMovieProfile;
}

UniqueRegKey OpenKey(const std::wstring& path, bool make) {
    UniqueRegKey key;
    const LSTATUS status =
        make ? RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0,
                               KEY_READ | KEY_WRITE, nullptr, key.Put(), nullptr)
             : RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WRITE,
                             key.Put());
    if (status != ERROR_SUCCESS)
        Fail("a registry key cannot be opened");
    return key;
}

bool IsNumber(const KORA4FieldDef& field) {
    return field.typeCode == cUnsignedField || field.typeCode == cBooleanField ||
           field.typeCode == cSelectedArrayField;
}

// A text of the field's type, as the library would store it.
std::u16string SampleText(const KORA4FieldDef& field) {
    if (field.typeCode == cFloatField)
        return u"0.500000";
    return static_cast<const char16_t* const* const*>(field.pDefaults)[0][0];
}

}  // namespace

void Fail(const std::string& what) {
    std::fprintf(stderr, "kora4_bench: %s\n", what.c_str());
    std::fflush(stderr);
    std::_Exit(1);
}

Place Place::Library() {
    return Place(cBaseKeyPath, reinterpret_cast<const wchar_t*>(cStoreMutexName), true);
}

Place Place::Twin() {
    return Place(std::wstring(cBaseKeyPath) + L"Twin", L"KORA4.Twin", true);
}

Place Place::Existing() {
    return Place(cBaseKeyPath, reinterpret_cast<const wchar_t*>(cStoreMutexName), false);
}

Place::Place(const std::wstring& base, std::wstring mutexName, bool make)
    : m_base(base), m_mutexName(std::move(mutexName)), m_made(make) {
    const std::wstring own = cBaseKeyPath;
    const auto below = [&](const wchar_t* path) {
        return base + std::wstring(path).substr(own.size());
    };
    m_staticPath = below(cStaticKeysPath);
    m_dynamicPath = below(cDynamicKeysPath);
    m_appPath = below(cAppKeysPath);
    if (make)
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, base.c_str());
    m_static = OpenKey(m_staticPath, make);
    m_dynamic = OpenKey(m_dynamicPath, make);
    m_app = OpenKey(m_appPath, make);
    m_mutex.Reset(CreateMutexW(nullptr, FALSE, m_mutexName.c_str()));
    MakeNames();
    MakePatches();
}

Place::~Place() {
    if (m_made && m_static)
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_base.c_str());
}

Value Place::Make(KORA4KeySet keySet, const PropertyKey& key, DWORD type) const {
    Value value;
    value.key = keySet == eKeySetStatic    ? m_static.Get()
                : keySet == eKeySetDynamic ? m_dynamic.Get()
                                           : m_app.Get();
    value.type = type;
    FormatValueName(key, value.name);
    return value;
}

Value Place::Setting(KORA4KeySet keySet, std::uint32_t pid, DWORD type) const {
    return Make(keySet, pkey::Setting(pid), type);
}

void Place::MakeNames() {
    profile = Setting(eKeySetDynamic, pkey::cActivePresetPid);
    enable = Setting(eKeySetDynamic, pkey::cMasterEnablePid);
    table = Setting(eKeySetDynamic, pkey::cProfileTableCounterPid);
    dynamicSwitch = Setting(eKeySetDynamic, pkey::cDynamicSwitchPid);
    period = Setting(eKeySetStatic, pkey::cSamplingPeriodPid);
    levels = Setting(eKeySetStatic, pkey::cVisualizationDataPid, REG_BINARY);
    savedEnable = Setting(eKeySetStatic, pkey::cSavedEnablePid);
    savedProfile = Setting(eKeySetStatic, pkey::cSavedProfilePid);
    traceWord = Setting(eKeySetStatic, pkey::cTraceFlagsPid);
    masks = Make(eKeySetStatic, {pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid}, REG_DWORD);
    const auto hasName = [this](const Value& value) {
        return std::ranges::any_of(
            std::array{&period, &levels, &savedEnable, &savedProfile, &traceWord, &masks},
            [&](const Value* pNamed) {
                return std::u16string_view(pNamed->name) == value.name;
            });
    };
    for (const contract::GeneralSetting& setting : contract::cGeneralSettings) {
        const Value value = Make(setting.keySet, setting.key,
                                 setting.kind == ValueKind::eText ? REG_SZ : REG_DWORD);
        if (setting.keySet == eKeySetApp)
            commands.push_back(value);
        else if (setting.keySet == eKeySetStatic && !hasName(value))
            switches.push_back(value);
    }
    for (std::uint32_t p = 0; p < cSelectableProfileBound; ++p)
        names.push_back(Make(eKeySetStatic, pkey::ProfileName(p), REG_SZ));
}

void Place::MakePatches() {
    const auto fieldsOf = [&](const fields::RecordDef& record, PropertyKey key) {
        std::vector<Value> values;
        for (std::uint32_t i = 0; i < record.numberFields; ++i) {
            const KORA4FieldDef& field = record.pFields[i];
            const std::uint32_t count = field.m_numArrays == 0 ? 1 : field.m_numArrays;
            for (std::uint32_t n = 0; n < count; ++n) {
                key.pid = field.pid + n;
                values.push_back(
                    Make(eKeySetStatic, key, IsNumber(field) ? REG_DWORD : REG_SZ));
            }
        }
        return values;
    };
    for (std::uint32_t t = 0; t < eNumberKORA4PresetTechnologies; ++t)
        presetTriggers.push_back(Make(eKeySetDynamic,
                                      PresetTriggerKey(static_cast<KORA4PresetTechnology>(t)),
                                      REG_DWORD));
    for (std::uint32_t t = 0; t < eNumberKORA4GlobalTechnologies; ++t) {
        const auto technology = static_cast<KORA4GlobalTechnology>(t);
        const PropertyKey key = GlobalPatchKey(technology, pkey::cSwitchPid);
        globalTriggers.push_back(Make(eKeySetDynamic, GlobalTriggerKey(technology), REG_DWORD));
        globals.push_back(
            {Make(eKeySetDynamic, key, REG_DWORD), fieldsOf(fields::cGlobalRecords[t], key)});
    }
    for (std::uint32_t row = 0; row < cKeptProfiles; ++row) {
        std::vector<PatchValues>& patches = m_patches.emplace_back();
        for (std::uint32_t t = 0; t < eNumberKORA4PresetTechnologies; ++t) {
            const PropertyKey key = pkey::PresetPatch(static_cast<KORA4PresetTechnology>(t),
                                                      ProfileOf(row), pkey::cSwitchPid);
            patches.push_back({Make(eKeySetDynamic, key, REG_DWORD),
                               fieldsOf(fields::cPresetRecords[t], key)});
        }
    }
}

const PatchValues& Place::Patch(std::uint32_t ofProfile,
                                KORA4PresetTechnology technology) const {
    return m_patches[RowOf(ofProfile)][technology];
}

void Place::Fill() {
    const auto fill = [](const PatchValues& patch, const fields::RecordDef& record) {
        Put(patch.flag, 1);
        std::size_t next = 0;
        for (std::uint32_t i = 0; i < record.numberFields; ++i) {
            const KORA4FieldDef& field = record.pFields[i];
            const std::uint32_t count = field.m_numArrays == 0 ? 1 : field.m_numArrays;
            for (std::uint32_t n = 0; n < count; ++n, ++next) {
                if (IsNumber(field))
                    Put(patch.fields[next], 1);
                else
                    Put(patch.fields[next], SampleText(field));
            }
        }
    };
    Put(profile, cMovieProfile);
    Put(enable, 1);
    Put(table, 1);
    Put(dynamicSwitch, 1);
    Put(period, defaults::cSamplingPeriod);
    // Two records of 20 bands would be this long; none is in it.
    Put(levels, std::vector<std::uint8_t>(344));
    Put(savedEnable, 1);
    Put(savedProfile, cMovieProfile);
    Put(traceWord, 0);
    Put(masks, 1);
    for (const Value& value : switches)
        Put(value, 0);
    for (const Value& value : commands)
        Put(value, u"C:\\Program Files\\Velto\\Companion.exe /settings");
    for (std::uint32_t p = cFirstCustomProfile; p < cSelectableProfileBound; ++p)
        Put(names[p], u"A profile of my own");
    for (std::uint32_t t = ePresetNoTech + 1; t < eNumberKORA4PresetTechnologies; ++t)
        Put(presetTriggers[t], 1);
    for (std::uint32_t t = eGlobalNoTech + 1; t < eNumberKORA4GlobalTechnologies; ++t) {
        Put(globalTriggers[t], 1);
        fill(globals[t], fields::cGlobalRecords[t]);
    }
    for (const std::vector<PatchValues>& patches : m_patches)
        for (std::uint32_t t = ePresetNoTech + 1; t < eNumberKORA4PresetTechnologies; ++t)
            fill(patches[t], fields::cPresetRecords[t]);
}

namespace {

void Store(const Value& value, DWORD type, const void* data, std::size_t size) {
    if (RegSetKeyValueW(value.key, nullptr, value.Name(), type, data,
                        static_cast<DWORD>(size)) != ERROR_SUCCESS)
        Fail("a value cannot be written");
}

}  // namespace

void Put(const Value& value, std::uint32_t number) {
    Store(value, REG_DWORD, &number, sizeof number);
}

void Put(const Value& value, const std::u16string& text) {
    Store(value, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(char16_t));
}

void Put(const Value& value, const std::vector<std::uint8_t>& bytes) {
    Store(value, REG_BINARY, bytes.data(), bytes.size());
}

void Remove(const Value& value) {
    RegDeleteValueW(value.key, value.Name());
}

std::uint32_t Get(const Value& value, std::uint32_t fallback) {
    std::uint32_t number = 0;
    DWORD size = sizeof number;
    const bool read =
        RegQueryValueExW(value.key, value.Name(), nullptr, nullptr,
                         reinterpret_cast<BYTE*>(&number), &size) == ERROR_SUCCESS;
    return read ? number : fallback;
}

}  // namespace kora4::bench

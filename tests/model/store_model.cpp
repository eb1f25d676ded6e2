// SPDX-License-Identifier: MIT
// The tables of fields and defaults, and each method as a change of the model, written apart
// from the library.
#include "model/store_model.h"

#include <algorithm>
#include <bit>
#include <cwchar>

#include "kora4api_codes.h"
#include "model/encodings.h"

namespace kora4::test {

namespace {

constexpr std::uint32_t cSavedEnablePid = 7;
constexpr std::uint32_t cSavedProfilePid = 8;
constexpr std::uint32_t cDefaultPeriod = 50;

using Value = StoreModel::Value;
using Texts = const wchar_t*;

// A field and its built-in values for Movie, Music and Games.
struct Field {
    RawTechnology technology;
    std::uint32_t pid;
    std::array<Value, 3> builtIn;
};

std::array<Value, 3> Numbers(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    return {a, b, c};
}
std::array<Value, 3> Texts3(Texts a, Texts b, Texts c) {
    return {std::wstring(a), std::wstring(b), std::wstring(c)};
}
std::array<Value, 3> Texts1(Texts text) {
    return Texts3(text, text, text);
}

const std::vector<Field>& Fields() {
    using enum RawTechnology;
    static const std::vector<Field> fields = {
        {eVolume, 3, Numbers(cMovieVolume, 0, 0)},
        {eVolume, 4, Numbers(1, 1, 1)},
        {eVolume, 5, Numbers(0, 0, 0)},
        {eVolume, 6, Texts1(L"-20.000000")},
        {eVolume, 7, Texts1(L"-20.000000")},
        {eVolume, 8, Texts1(L"0.000000")},
        {eEnhancement, 3, Texts1(L"0.330000")},
        {eEnhancement, 4, Texts1(L"0.000000")},
        {eDynamicEQ, 3, Texts1(L"0.600000")},
        {eDynamicEQ, 4,
         Texts1(L"0001,0014,0041,0088,00df,014c,01d3,027a,0349,044a,0588,0714,08fe,0b5d,0e4f,"
                L"11f6,167c,1c1a,2310,2bb2,3667,43ae")},
        {eDynamicEQ, 5, Numbers(0, 1, 0)},
        {eStandardEQ, 3,
         Texts1(L"0001,000a,0020,0040,007d,00fa,01f4,03e8,07d0,0fa0,1f40,3e80")},
        {eStandardEQ, 4,
         Texts1(L"0100,000a,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000")},
        {eHeadphone, 3, Texts3(L"6.000000", L"3.000000", L"0.000000")},
        {eHeadphone, 4, Texts1(L"0.000000")},
        {eVirtualSurround, 3, Texts1(L"10.000000")},
        {eVirtualSurround, 4, Texts3(L"6.000000", L"0.000000", L"0.000000")},
    };
    return fields;
}

// All that a profile has settings of, in the order of the store.
constexpr RawTechnology cTechnologies[] = {
    RawTechnology::eVolume,     RawTechnology::eEnhancement, RawTechnology::eDynamicEQ,
    RawTechnology::eStandardEQ, RawTechnology::eHeadphone,   RawTechnology::eVirtualSurround,
    RawTechnology::eNGSurround};

// By profile, or by the one that a demo shows; a custom one has those of Movie.
std::size_t RowOf(std::uint32_t profile) {
    if (IsDemo(profile))
        return profile - cDemoMovie;
    return IsPreset(profile) ? profile : 0;
}

// A custom profile has everything on.
bool BuiltInSwitch(RawTechnology technology, std::uint32_t profile) {
    const std::uint32_t shown = IsDemo(profile) ? profile - cDemoMovie : profile;
    switch (technology) {
        case RawTechnology::eEnhancement:
            return shown != 1 && shown != 2;
        case RawTechnology::eDynamicEQ:
            return shown != 0 && shown != 2;
        case RawTechnology::eVirtualSurround:
            return shown != 1;
        default:
            return true;
    }
}

bool IsWithinLimits(const KORA4PatchValueUnion& value) {
    const float number = std::bit_cast<float>(value.m_values.m_volumeSlider);
    switch (value.m_technology) {
        case eVolumeLeveler:
            return value.m_values.m_volumeSlider <= 10;
        case eIntelligentEQ:
            return value.m_values.m_dynamicEQPatchIndex <= 5;
        case eDialogEnhancer:
            return number >= 0.0f && number <= 1.0f;
        default:
            return number >= 0.0f && number <= 6.0f;
    }
}

Value& FieldOf(std::vector<std::pair<std::uint32_t, Value>>& record, std::uint32_t pid) {
    return std::find_if(record.begin(), record.end(),
                        [=](const auto& field) { return field.first == pid; })
        ->second;
}
const Value& FieldOf(const std::vector<std::pair<std::uint32_t, Value>>& record,
                     std::uint32_t pid) {
    return std::find_if(record.begin(), record.end(),
                        [=](const auto& field) { return field.first == pid; })
        ->second;
}

// Where the API's value of a technology is kept.
std::uint32_t PidOf(KORA4APITechnology technology) {
    return technology == eIntelligentEQ ? 5 : 3;
}

}  // namespace

const ToldTechnology* FindTechnology(LONG api) {
    const auto found = std::find_if(cToldTechnologies.begin(), cToldTechnologies.end(),
                                    [=](const ToldTechnology& t) { return t.api == api; });
    return found == cToldTechnologies.end() ? nullptr : &*found;
}

std::size_t IndexOf(LONG api) {
    return static_cast<std::size_t>(FindTechnology(api) - cToldTechnologies.data());
}

std::uint32_t StoreModel::Number(const Address& address, std::uint32_t fallback) const {
    const auto found = m_stored.find(address);
    return found == m_stored.end() ? fallback : std::get<std::uint32_t>(found->second);
}

std::uint32_t StoreModel::Setting(bool dynamic, std::uint32_t pid,
                                  std::uint32_t fallback) const {
    return Number({dynamic, SettingName(pid)}, fallback);
}

void StoreModel::Write(const Address& address, const Value& value) {
    m_stored[address] = value;
    m_touched.push_back(address);
}

void StoreModel::WriteSetting(bool dynamic, std::uint32_t pid, std::uint32_t value) {
    Write({dynamic, SettingName(pid)}, value);
}

void StoreModel::WriteSwitch(RawTechnology technology, std::uint32_t profile, bool on) {
    Write({true, PatchName(technology, profile, 0)}, std::uint32_t{on});
}

void StoreModel::WriteField(RawTechnology technology, std::uint32_t profile, std::uint32_t pid,
                            const Value& value) {
    Write({false, PatchName(technology, profile, pid)}, value);
}

bool StoreModel::HasName(std::uint32_t profile) const {
    return m_stored.contains({false, ProfileNameName(profile)});
}

bool StoreModel::Switch(RawTechnology technology, std::uint32_t profile) const {
    return Number({true, PatchName(technology, profile, 0)},
                  BuiltInSwitch(technology, profile)) != 0;
}

StoreModel::Record StoreModel::ReadRecord(RawTechnology technology, std::uint32_t profile,
                                          bool builtIn) const {
    Record record;
    for (const Field& field : Fields()) {
        if (field.technology != technology)
            continue;
        const auto stored = m_stored.find({false, PatchName(technology, profile, field.pid)});
        const bool useStored = !builtIn && stored != m_stored.end();
        record.emplace_back(field.pid,
                            useStored ? stored->second : field.builtIn[RowOf(profile)]);
    }
    return record;
}

ULONG StoreModel::ApiValue(const ToldTechnology& technology, const Record& record) const {
    const Value& value = FieldOf(record, PidOf(technology.api));
    if (const auto* pNumber = std::get_if<std::uint32_t>(&value))
        return *pNumber;
    return std::bit_cast<std::uint32_t>(FloatOf(std::get<std::wstring>(value)));
}

View StoreModel::Look() const {
    View view{};
    view.profile = Profile();
    view.enable = Enable();
    view.table = Setting(true, cTablePid, 0);
    for (std::size_t i = 0; i < cToldTechnologies.size(); ++i) {
        const ToldTechnology& technology = cToldTechnologies[i];
        view.triggers[i] = Number({true, TriggerName(technology.raw)}, 0);
        view.switches[i] = Switch(technology.raw, view.profile);
        const Record record = ReadRecord(technology.raw, view.profile, IsDemo(view.profile));
        if (technology.api == eGraphicEQ)
            view.eq = EQOf(std::get<std::wstring>(FieldOf(record, 3)),
                           std::get<std::wstring>(FieldOf(record, 4)));
        else
            view.values[i] = ApiValue(technology, record);
    }
    return view;
}

void StoreModel::Announce(const std::wstring& counter) {
    const Address address{true, counter};
    Write(address, Number(address, 0) + 1);
}

void StoreModel::WriteRecord(RawTechnology technology, std::uint32_t profile, bool on,
                             const Record& record) {
    WriteSwitch(technology, profile, on);
    for (const auto& [pid, value] : record)
        WriteField(technology, profile, pid, value);
}

// A demo's values cannot be changed.
void StoreModel::SetValue(const ToldTechnology& technology, const Record& changes) {
    const std::uint32_t profile = Profile();
    if (IsDemo(profile))
        return;
    Record record = ReadRecord(technology.raw, profile, false);
    for (const auto& [pid, value] : changes)
        FieldOf(record, pid) = value;
    WriteRecord(technology.raw, profile, Switch(technology.raw, profile), record);
    Announce(TriggerName(technology.raw));
}

void StoreModel::SwitchTo(std::uint32_t profile, bool enable) {
    WriteSetting(true, cProfilePid, profile);
    WriteSetting(true, cEnablePid, enable);
}

void StoreModel::LeaveDemo() {
    SwitchTo(Setting(false, cSavedProfilePid, 0), Setting(false, cSavedEnablePid, 1) != 0);
}

// What the demo of a profile stores are the values to which the profile goes back.
void StoreModel::Revert() {
    const std::uint32_t profile = Profile();
    for (const RawTechnology technology : cTechnologies) {
        WriteRecord(technology, profile, Switch(technology, profile + cDemoMovie),
                    ReadRecord(technology, profile + cDemoMovie, false));
        Announce(TriggerName(technology));
    }
}

void StoreModel::Create(std::uint32_t profile) {
    const std::uint32_t active = Profile();
    for (const RawTechnology technology : cTechnologies)
        WriteRecord(technology, profile, Switch(technology, active),
                    ReadRecord(technology, active, false));
}

HRESULT StoreModel::Result(const Command& command, bool inDemo) const {
    const auto number = static_cast<std::uint32_t>(command.number);
    const bool demoActive = IsDemo(Profile());
    switch (command.action) {
        case Action::eSetActiveProfile:
            if (number > 8)
                return E_INVALIDARG;
            if (demoActive)
                return KORA4_S_DEMO_MODE_ACTIVE;
            return IsCustom(number) && !HasName(number) ? KORA4_S_NO_SUCH_CUSTOM_PROFILE : S_OK;
        case Action::eRevertActiveProfile:
            return IsPreset(Profile()) ? S_OK : KORA4_S_NOT_A_PRESET_PROFILE;
        case Action::eSetDemoProfileAndEnable:
            if (!IsDemo(number))
                return E_INVALIDARG;
            return demoActive && !inDemo ? KORA4_S_DEMO_MODE_ACTIVE : S_OK;
        case Action::eRevertFromDemoMode:
            if (!inDemo)
                return KORA4_S_DEMO_MODE_ACTIVE;
            return demoActive ? S_OK : KORA4_S_NOT_IN_DEMO_PROFILE;
        case Action::eCreateCustomProfile:
            if (!IsCustom(number))
                return E_INVALIDARG;
            return HasName(number) ? E_FAIL : S_OK;
        case Action::eSetCustomProfileName:
            if (!IsCustom(number))
                return E_INVALIDARG;
            return HasName(number) ? S_OK : E_FAIL;
        case Action::eDeleteCustomProfile:
            if (!IsCustom(number))
                return E_INVALIDARG;
            if (Profile() == number)
                return E_FAIL;
            return HasName(number) ? S_OK : S_FALSE;
        case Action::eGetTechnologyOnElseOff:
        case Action::eSetTechnologyOnElseOff:
            return FindTechnology(command.number) ? S_OK : E_INVALIDARG;
        case Action::eGetSimplePatchValue:
        case Action::eSetSimplePatchValue:
            if (command.value.m_technology == eGraphicEQ ||
                !FindTechnology(command.value.m_technology))
                return E_INVALIDARG;
            return command.action == Action::eGetSimplePatchValue ||
                           IsWithinLimits(command.value)
                       ? S_OK
                       : E_INVALIDARG;
        default:
            return S_OK;
    }
}

void StoreModel::Perform(const Command& command, Reply* pReply) {
    m_touched.clear();
    if (command.action < Action::eGetTechnologyMasterEnables)
        PerformProfiles(command, pReply);
    else
        PerformValues(command, pReply);
}

void StoreModel::PerformProfiles(const Command& command, Reply* pReply) {
    const auto number = static_cast<std::uint32_t>(command.number);
    const std::uint32_t profile = Profile();
    const bool enable = Enable();
    switch (command.action) {
        case Action::eGetActiveProfile:
            pReply->number = static_cast<LONG>(profile);
            break;
        case Action::eSetActiveProfile:
            WriteSetting(true, cProfilePid, number);
            break;
        case Action::eRevertActiveProfile:
            Revert();
            break;
        case Action::eSetDemoProfileAndEnable:
            SwitchTo(number, command.flag != 0);
            if (!IsDemo(profile)) {
                WriteSetting(false, cSavedProfilePid, profile);
                WriteSetting(false, cSavedEnablePid, enable);
            }
            break;
        case Action::eForceRevertFromDemoMode:
        case Action::eRevertFromDemoMode:
            if (IsDemo(profile))
                LeaveDemo();
            break;
        case Action::eGetSamplingPeriod:
            pReply->number = static_cast<LONG>(Setting(false, cPeriodPid, cDefaultPeriod));
            break;
        case Action::eSetSamplingPeriod:
            WriteSetting(false, cPeriodPid, number);
            break;
        case Action::eGetVeltoEnable:
            pReply->number = enable;
            break;
        case Action::eToggleVeltoEnable:
            pReply->number = !enable;
            WriteSetting(true, cEnablePid, !enable);
            break;
        case Action::eSetVeltoEnable:
            WriteSetting(true, cEnablePid, command.flag != 0);
            break;
        case Action::eGetProfileTable:
            for (std::uint32_t p = 0; p < cProfiles; ++p) {
                pReply->named[p] = HasName(p);
                if (pReply->named[p])
                    std::wcscpy(pReply->names[p],
                                std::get<std::wstring>(m_stored.at({false, ProfileNameName(p)}))
                                    .c_str());
            }
            break;
        case Action::eCreateCustomProfile:
            Create(number);
            [[fallthrough]];
        case Action::eSetCustomProfileName:
            Write({false, ProfileNameName(number)}, std::wstring(command.name));
            Announce(SettingName(cTablePid));
            break;
        case Action::eDeleteCustomProfile:
            m_stored.erase({false, ProfileNameName(number)});
            m_touched.emplace_back(false, ProfileNameName(number));
            Announce(SettingName(cTablePid));
            break;
        default:
            break;
    }
}

void StoreModel::PerformValues(const Command& command, Reply* pReply) {
    const std::uint32_t profile = Profile();
    const ToldTechnology* pTechnology = FindTechnology(command.number);
    switch (command.action) {
        case Action::eGetTechnologyMasterEnables:
            pReply->number = static_cast<LONG>(Number({false, MasterEnablesName()}, 0));
            break;
        case Action::eGetTechnologyOnElseOff:
            pReply->number = Switch(pTechnology->raw, profile);
            break;
        case Action::eSetTechnologyOnElseOff:
            if (!IsDemo(profile))
                WriteSwitch(pTechnology->raw, profile, command.flag != 0);
            break;
        case Action::eGetSimplePatchValue: {
            const ToldTechnology& technology = *FindTechnology(command.value.m_technology);
            pReply->value.m_values.m_volumeSlider =
                ApiValue(technology, ReadRecord(technology.raw, profile, IsDemo(profile)));
            break;
        }
        case Action::eSetSimplePatchValue: {
            const ToldTechnology& technology = *FindTechnology(command.value.m_technology);
            const ULONG bits = command.value.m_values.m_volumeSlider;
            const bool integer =
                technology.api == eVolumeLeveler || technology.api == eIntelligentEQ;
            SetValue(technology, {{PidOf(technology.api),
                                   integer ? Value(std::uint32_t{bits})
                                           : Value(FloatText(std::bit_cast<float>(bits)))}});
            break;
        }
        case Action::eSetGraphicEQData: {
            const GraphicEQData eq = Limited(command.eq);
            SetValue(*FindTechnology(eGraphicEQ),
                     {{3, ArrayText(eq.m_freq, eq.m_bands, cHertzScale)},
                      {4, ArrayText(eq.m_gain, eq.m_bands, cGainScale)}});
            break;
        }
        case Action::eGetGraphicEQData:
            pReply->eq = Look().eq;
            break;
        default:
            break;
    }
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Reading and setting through the API.
#include "panel/worker/connection.h"

#include <utility>

namespace panel {

namespace {

static_assert(static_cast<int>(Technology::eVolumeLeveler) == eVolumeLeveler &&
              static_cast<int>(Technology::eGraphicEq) == eGraphicEQ &&
              static_cast<int>(Technology::eIntelligentEq) == eIntelligentEQ &&
              static_cast<int>(Technology::eDialogEnhancer) == eDialogEnhancer &&
              static_cast<int>(Technology::eHeadphoneVirtualizer) == eVirtualizerHP &&
              static_cast<int>(Technology::eSpeakerVirtualizer) == eVirtualizerSpkr);

// Runs on a thread of the library's and only passes on what has changed. The worker reads the
// content itself: between two answers to the same question the later one counts, which could
// not be told of a content that was on its way while the worker set another one.
class Listener final : public kora4::Callback {
  public:
    explicit Listener(Inbox& inbox) : m_inbox(inbox) {}

  private:
    void OnProfile(LONG) override {
        m_inbox.Announce([](Announced& announced) { announced.isAll = true; });
    }
    void OnEnable(bool) override {
        m_inbox.Announce([](Announced& announced) { announced.isEnable = true; });
    }
    void OnProfileTable() override {
        m_inbox.Announce([](Announced& announced) { announced.isTable = true; });
    }
    void OnSwitch(KORA4APITechnology technology, bool) override {
        m_inbox.Announce([&](Announced& announced) { Mark(announced.switches, technology); });
    }
    void OnValue(const kora4::Value& value) override {
        m_inbox.Announce(
            [&](Announced& announced) { Mark(announced.values, value.Technology()); });
    }
    void OnGraphicEq(const kora4::Bands&) override {
        m_inbox.Announce([](Announced& announced) { announced.isBands = true; });
    }

    static void Mark(std::array<bool, KORA4_TECHNOLOGIES>& marks,
                     KORA4APITechnology technology) {
        if (technology >= 0 && technology < eNumberKORA4APITechnologies)
            marks[static_cast<std::size_t>(technology)] = true;
    }

    Inbox& m_inbox;
};

}  // namespace

KORA4APITechnology ApiTechnology(std::size_t index) {
    return static_cast<KORA4APITechnology>(index);
}

ApiLink::ApiLink(kora4::Api api, Microsoft::WRL::ComPtr<kora4::Callback> listener)
    : m_api(std::move(api)), m_listener(std::move(listener)) {}

ApiLink::~ApiLink() {
    static_cast<void>(m_api.UnregisterChangeNotifications());
}

std::unique_ptr<ApiLink> ApiLink::Open(Inbox& inbox, HRESULT& code) {
    kora4::Result<kora4::Api> api = kora4::Api::Open();
    code = api.Code();
    if (!api)
        return nullptr;
    const auto listener = kora4::MakeCallback<Listener>(inbox);
    // Not the guarded registration: the panel sets nothing but what its user does, so there is
    // no echo to hold back.
    code = api->RegisterChangeNotifications(listener.Get()).Code();
    if (code != S_OK)
        return nullptr;
    std::unique_ptr<ApiLink> link(new ApiLink(*std::move(api), listener));
    if (!link->ReadAll()) {
        code = E_FAIL;
        return nullptr;
    }
    return link;
}

bool ApiLink::ReadAll() {
    const auto profile = m_api.GetActiveProfile();
    if (!profile || !ReadEnable())
        return false;
    m_settings.profile = *profile;
    ReadTable();
    for (const Technology technology : cTechnologies) {
        ReadSwitch(IndexOf(technology));
        if (technology != Technology::eGraphicEq)
            ReadValue(IndexOf(technology));
    }
    ReadBands();
    return true;
}

bool ApiLink::Read(const Announced& announced) {
    if (announced.isAll)
        return ReadAll();
    bool isThere = !announced.isEnable || ReadEnable();
    if (announced.isTable)
        ReadTable();
    for (std::size_t i = 0; i < KORA4_TECHNOLOGIES; ++i) {
        if (announced.switches[i])
            ReadSwitch(i);
        if (announced.values[i])
            ReadValue(i);
    }
    if (announced.isBands)
        ReadBands();
    // The values belong to the profile that was active when they were read.
    const auto profile = m_api.GetActiveProfile();
    isThere = isThere && profile;
    return isThere && (*profile == m_settings.profile || ReadAll());
}

// What cannot be read stays as it was shown: one damaged value does not take the rest along.
void ApiLink::ReadSwitch(std::size_t technology) {
    const auto isOn = m_api.GetTechnologyOnElseOff(ApiTechnology(technology));
    m_settings.switches[technology] = isOn.ValueOr(m_settings.switches[technology]);
}

void ApiLink::ReadValue(std::size_t technology) {
    if (const auto value = m_api.GetSimplePatchValue(ApiTechnology(technology)))
        m_settings.values[technology] = value->Amount();
}

void ApiLink::ReadBands() {
    if (auto bands = m_api.GetGraphicEQData())
        m_settings.bands = *std::move(bands);
}

void ApiLink::ReadTable() {
    if (auto table = m_api.GetProfileTable())
        m_settings.names = *std::move(table);
}

bool ApiLink::ReadEnable() {
    const auto isEnabled = m_api.GetVeltoEnable();
    m_settings.isEnabled = isEnabled.ValueOr(m_settings.isEnabled);
    return static_cast<bool>(isEnabled);
}

HRESULT ApiLink::Set(const Item& item) {
    HRESULT code = S_OK;
    switch (item.subject) {
        case Subject::eProfile:
            return SetProfile(static_cast<long>(item.number));
        case Subject::eEnable:
            code = m_api.SetVeltoEnable(item.number > 0).Code();
            ReadEnable();
            return code;
        case Subject::eSwitch:
            code =
                m_api.SetTechnologyOnElseOff(ApiTechnology(item.index), item.number > 0).Code();
            ReadSwitch(item.index);
            return code;
        case Subject::eValue:
            code = m_api.SetSimplePatchValue({ApiTechnology(item.index), item.number}).Code();
            ReadValue(item.index);
            return code;
        case Subject::eBands:
            code = m_api.SetGraphicEQData(item.bands).Code();
            ReadBands();
            return code;
        case Subject::eName:
            return SetName(item);
        case Subject::eBand:
            break;
    }
    return E_INVALIDARG;
}

HRESULT ApiLink::SetProfile(long profile) {
    const kora4::Status status = IsDemo(profile) ? m_api.SetDemoProfileAndEnable(profile, true)
                                                 : m_api.SetActiveProfile(profile);
    ReadAll();
    return status.Code();
}

// A profile without a name does not exist.
HRESULT ApiLink::SetName(const Item& item) {
    const auto profile = static_cast<long>(item.index);
    const kora4::Status status = item.name ? m_api.SetCustomProfileName(profile, *item.name)
                                           : m_api.DeleteCustomProfile(profile);
    ReadTable();
    const bool isGone = item.name && !m_settings.names[item.index];
    return isGone && FAILED(status.Code()) ? KORA4_S_NO_SUCH_CUSTOM_PROFILE : status.Code();
}

HRESULT ApiLink::Create(const std::wstring& name) {
    ReadTable();
    while (const auto profile = FreeCustomProfile(m_settings)) {
        const HRESULT code = m_api.CreateCustomProfile(*profile, name).Code();
        ReadTable();
        if (code == S_OK)
            return SetProfile(*profile);
        // Unless somebody was faster, the next place is no better.
        if (!m_settings.names[static_cast<std::size_t>(*profile)])
            return code;
    }
    return cNoFreeProfile;
}

HRESULT ApiLink::LeaveDemo() {
    kora4::Status status = m_api.RevertFromDemoMode();
    // Another program entered it; whoever watches this panel must get out all the same.
    if (status.Code() == KORA4_S_DEMO_MODE_ACTIVE)
        status = m_api.ForceRevertFromDemoMode();
    ReadAll();
    return status.Code();
}

}  // namespace panel

// SPDX-License-Identifier: MIT
// One pass of notifications: which callback method tells which change, in which order, and
// when the pass ends early.
#include "api/notification_pass.h"

#include "api/public_records.h"
#include "store/clients/api_conversion.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

constexpr trace::Site cSite = trace::SiteOf("CKORA4ASL::CallbackNotifications");

constexpr OvertakenItems::Items cAlways = 0;

class NotificationPass {
  public:
    NotificationPass(IVeltoKORA4APICallback* pICallback, const std::uint32_t& registration,
                     const OvertakenItems& overtaken)
        : m_pICallback(pICallback),
          m_registration(registration),
          m_started(registration),
          m_overtaken(overtaken) {}

    // `item`: what an own write may have overtaken; cAlways for none.
    template <typename... Parameters, typename... Arguments>
    void Tell(OvertakenItems::Items item,
              HRESULT (STDMETHODCALLTYPE IVeltoKORA4APICallback::*method)(Parameters...),
              Arguments... arguments) {
        if (SUCCEEDED(m_hr) && m_registration == m_started && !m_overtaken.Contains(item))
            m_hr = (m_pICallback->*method)(arguments...);
    }

    HRESULT Result() const { return m_hr; }

  private:
    IVeltoKORA4APICallback* m_pICallback;
    const std::uint32_t& m_registration;
    const std::uint32_t m_started;
    const OvertakenItems& m_overtaken;
    HRESULT m_hr = S_OK;
};

void TellValue(NotificationPass& pass, ChangeSet& changes, KORA4PresetTechnology technology,
               ApiTechnology apiTechnology) {
    const OvertakenItems::Items item = OvertakenItems::Value(technology);
    if (technology == eStandardEQTech) {
        pass.Tell(item, &IVeltoKORA4APICallback::OnGraphicEQChange,
                  ToPublic(&changes.graphicEQ));
        return;
    }
    ApiPatchValue& value = changes.presetPatchValues[technology];
    KALASSERT(cSite, msg::cAssertNotifiable,
              IsValidASLTechnology(static_cast<std::uint32_t>(value.m_technology)));
    KALASSERT(cSite, msg::cAssertSameTechnology, apiTechnology == value.m_technology);
    pass.Tell(item, &IVeltoKORA4APICallback::OnSimplePatchValueChange, ToPublic(&value));
}

void TellTechnology(NotificationPass& pass, ChangeSet& changes,
                    KORA4PresetTechnology technology) {
    const ApiTechnology apiTechnology = APITechOf(technology);
    if (apiTechnology == ApiTechnology::eNumberKORA4APITechnologies)
        return;
    if (changes.onElseOffChanged[technology])
        pass.Tell(OvertakenItems::Switch(technology),
                  &IVeltoKORA4APICallback::OnTechnologyOnElseOffChange, ToPublic(apiTechnology),
                  changes.onElseOff[technology] ? TRUE : FALSE);
    if (changes.patchChanged[technology])
        TellValue(pass, changes, technology, apiTechnology);
}

}  // namespace

HRESULT CallbackNotifications(IVeltoKORA4APICallback* pICallback, ChangeSet& changes,
                              const std::uint32_t& registration,
                              const OvertakenItems& overtaken) {
    KALASSERT(cSite, msg::cAssertCallback, pICallback != NULL);
    if (!pICallback)
        return S_OK;
    NotificationPass pass(pICallback, registration, overtaken);
    if (changes.enableChanged)
        pass.Tell(OvertakenItems::cEnable, &IVeltoKORA4APICallback::OnEnableStateChange,
                  changes.enable ? TRUE : FALSE);
    if (changes.profileChanged) {
        // A switch replaces every value: the client reads what it shows again.
        pass.Tell(OvertakenItems::cProfile, &IVeltoKORA4APICallback::OnActiveProfileChange,
                  static_cast<LONG>(changes.profile));
    } else {
        for (const KORA4PresetTechnology technology : cPresetTechnologies)
            TellTechnology(pass, changes, technology);
    }
    if (changes.tableChanged)
        pass.Tell(cAlways, &IVeltoKORA4APICallback::OnCustomProfileTableChange);
    return pass.Result();
}

}  // namespace kora4

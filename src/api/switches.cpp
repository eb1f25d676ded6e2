// SPDX-License-Identifier: MIT
// The master enable and the technologies' switches.
#include "api/kora4asl.h"
#include "api/public_records.h"
#include "contract/engine_masks.h"
#include "contract/messages/log_texts.h"

namespace kora4 {
namespace {

constexpr bool IsValid(KORA4APITechnology technology) {
    return IsValidASLTechnology(static_cast<std::uint32_t>(technology));
}

constexpr const char* NameOf(KORA4APITechnology technology) {
    return text::OfTechnology(static_cast<std::uint32_t>(technology));
}

void TraceMasterEnables(std::uint32_t mask) {
    if (mask == 0) {
        KALTRACE(msg::cNoMasterEnables);
        return;
    }
    if (const char* name = NameOfEngine(mask)) {
        KALTRACE(msg::cKnownMasterEnables, name, mask);
        return;
    }
    KALTRACE(msg::cCustomMasterEnables, mask);
}

}  // namespace

STDMETHODIMP CKORA4ASL::GetVeltoEnable(BOOL* pVeltoEnable) {
    static constexpr Method cMethod{msg::cGetVeltoEnableNull};
    return RunMethod(cMethod, m_initialized, pVeltoEnable != nullptr, [&] {
        bool enable = false;
        const HRESULT hr = m_uiKeysClient.GetVeltoEnable(&enable);
        if (SUCCEEDED(hr))
            *pVeltoEnable = enable ? TRUE : FALSE;
        KALTRACE(msg::cGetVeltoEnable, text::OfEnable(enable));
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetVeltoEnable(BOOL VeltoEnable) {
    static constexpr Method cMethod{msg::cSetVeltoEnable.function};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const bool enable = VeltoEnable != FALSE;
        const HRESULT hr = m_uiKeysClient.SetVeltoEnable(enable);
        KALTRACE(msg::cSetVeltoEnable, text::OfEnable(enable));
        return hr;
    });
}

// The new state is handed out also when writing it failed. A refused call leaves its exit
// line only.
STDMETHODIMP CKORA4ASL::ToggleVeltoEnable(BOOL* pVeltoEnable) {
    static constexpr Method cMethod{msg::cToggleVeltoEnable.function,
                                    {.tellsNotInitialized = false}};
    return RunMethod(cMethod, m_initialized, pVeltoEnable != nullptr, [&] {
        bool enable = false;
        const HRESULT hr = m_uiKeysClient.ToggleVeltoEnable(&enable);
        *pVeltoEnable = enable ? TRUE : FALSE;
        KALTRACE(msg::cToggleVeltoEnable, text::OfEnable(enable));
        return hr;
    });
}

// A refused call leaves its exit line only.
STDMETHODIMP CKORA4ASL::GetTechnologyMasterEnables(ULONG* pdwMasterEnables) {
    static constexpr Method cMethod{msg::cKnownMasterEnables.function,
                                    {.tellsNotInitialized = false}};
    return RunMethod(cMethod, m_initialized, pdwMasterEnables != nullptr, [&] {
        const std::uint32_t mask = m_uiKeysClient.MasterEnables();
        *pdwMasterEnables = mask;
        TraceMasterEnables(mask);
        return S_OK;
    });
}

STDMETHODIMP CKORA4ASL::GetTechnologyOnElseOff(KORA4APITechnology technology,
                                               BOOL* pOnElseOff) {
    static constexpr Method cMethod{msg::cGetTechnologyOnElseOffBad};
    return RunMethod(cMethod, m_initialized, IsValid(technology) && pOnElseOff, [&] {
        bool on = false;
        const HRESULT hr =
            m_uiKeysClient.GetTechnologyOnElseOff(PresetTechOf(FromPublic(technology)), &on);
        if (SUCCEEDED(hr))
            *pOnElseOff = on ? TRUE : FALSE;
        KALTRACE(msg::cGetTechnologyOnElseOff, NameOf(technology), text::OfSwitch(on));
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetTechnologyOnElseOff(KORA4APITechnology technology, BOOL onElseOff) {
    static constexpr Method cMethod{msg::cSetTechnologyOnElseOffBad};
    return RunMethod(cMethod, m_initialized, IsValid(technology), [&] {
        const bool on = onElseOff != FALSE;
        const HRESULT hr =
            m_uiKeysClient.SetTechnologyOnElseOff(PresetTechOf(FromPublic(technology)), on);
        KALTRACE(msg::cSetTechnologyOnElseOff, NameOf(technology), text::OfSwitch(on));
        return hr;
    });
}

}  // namespace kora4

// SPDX-License-Identifier: MIT
// The master enable and the technologies' switches.
#include "api/kora4asl.h"
#include "api/log_texts.h"
#include "api/public_records.h"
#include "contract/engine_masks.h"

namespace kora4 {
namespace {

constexpr bool IsValid(KORA4APITechnology technology) {
    return IsValidASLTechnology(static_cast<std::uint32_t>(technology));
}

constexpr const char* NameOf(KORA4APITechnology technology) {
    return text::OfTechnology(static_cast<std::uint32_t>(technology));
}

void TraceMasterEnables(const trace::Site& site, std::uint32_t mask) {
    if (mask == 0) {
        KALTRACE(trace::eMessages, site, "**** Error: no technologies are enabled\n");
        return;
    }
    if (const char* name = NameOfEngine(mask)) {
        KALTRACE(trace::eMessages, site, "%s configuration (0x%04X)\n", name, mask);
        return;
    }
    KALTRACE(trace::eMessages, site, "**** Error: custom configuration 0x%0x\n", mask);
}

}  // namespace

STDMETHODIMP CKORA4ASL::GetVeltoEnable(BOOL* pVeltoEnable) {
    static constexpr Method cMethod{"CKORA4ASL::GetVeltoEnable",
                                    {.badArgument = "pVeltoEnable is Null"}};
    return RunMethod(cMethod, m_initialized, pVeltoEnable != nullptr, [&] {
        bool enable = false;
        const HRESULT hr = m_uiKeysClient.GetVeltoEnable(&enable);
        if (SUCCEEDED(hr))
            *pVeltoEnable = enable ? TRUE : FALSE;
        KALTRACE(trace::eMessages, cMethod.site, " is %s\n", text::OfEnable(enable));
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetVeltoEnable(BOOL VeltoEnable) {
    static constexpr Method cMethod{"CKORA4ASL::SetVeltoEnable"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const bool enable = VeltoEnable != FALSE;
        const HRESULT hr = m_uiKeysClient.SetVeltoEnable(enable);
        KALTRACE(trace::eMessages, cMethod.site, " to %s\n", text::OfEnable(enable));
        return hr;
    });
}

// The new state is handed out also when writing it failed. A refused call leaves its exit
// line only.
STDMETHODIMP CKORA4ASL::ToggleVeltoEnable(BOOL* pVeltoEnable) {
    static constexpr Method cMethod{"CKORA4ASL::ToggleVeltoEnable",
                                    {.tellsNotInitialized = false}};
    return RunMethod(cMethod, m_initialized, pVeltoEnable != nullptr, [&] {
        bool enable = false;
        const HRESULT hr = m_uiKeysClient.ToggleVeltoEnable(&enable);
        *pVeltoEnable = enable ? TRUE : FALSE;
        KALTRACE(trace::eMessages, cMethod.site, "is now %s\n", text::OfEnable(enable));
        return hr;
    });
}

// A refused call leaves its exit line only.
STDMETHODIMP CKORA4ASL::GetTechnologyMasterEnables(ULONG* pdwMasterEnables) {
    static constexpr Method cMethod{"CKORA4ASL::GetTechnologyMasterEnables",
                                    {.tellsNotInitialized = false}};
    return RunMethod(cMethod, m_initialized, pdwMasterEnables != nullptr, [&] {
        const std::uint32_t mask = m_uiKeysClient.MasterEnables();
        *pdwMasterEnables = mask;
        TraceMasterEnables(cMethod.site, mask);
        return S_OK;
    });
}

STDMETHODIMP CKORA4ASL::GetTechnologyOnElseOff(KORA4APITechnology technology,
                                               BOOL* pOnElseOff) {
    static constexpr Method cMethod{
        "CKORA4ASL::GetTechnologyOnElseOff",
        {.badArgument = "pOnElseOff is Null or invalid technology ID"}};
    return RunMethod(cMethod, m_initialized, IsValid(technology) && pOnElseOff, [&] {
        bool on = false;
        const HRESULT hr =
            m_uiKeysClient.GetTechnologyOnElseOff(PresetTechOf(FromPublic(technology)), &on);
        if (SUCCEEDED(hr))
            *pOnElseOff = on ? TRUE : FALSE;
        KALTRACE(trace::eMessages, cMethod.site, "%16s is %s\n", NameOf(technology),
                 text::OfSwitch(on));
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetTechnologyOnElseOff(KORA4APITechnology technology, BOOL onElseOff) {
    static constexpr Method cMethod{"CKORA4ASL::SetTechnologyOnElseOff",
                                    {.badArgument = "IsValidASLTechnology failed"}};
    return RunMethod(cMethod, m_initialized, IsValid(technology), [&] {
        const bool on = onElseOff != FALSE;
        const HRESULT hr =
            m_uiKeysClient.SetTechnologyOnElseOff(PresetTechOf(FromPublic(technology)), on);
        KALTRACE(trace::eMessages, cMethod.site, "%16s to %s\n", NameOf(technology),
                 text::OfSwitch(on));
        return hr;
    });
}

}  // namespace kora4

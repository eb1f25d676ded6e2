// SPDX-License-Identifier: MIT
// The active profile, demo mode and the custom profiles.
#include "api/kora4asl.h"
#include "api/log_texts.h"
#include "api/public_records.h"

namespace kora4 {

STDMETHODIMP CKORA4ASL::GetActiveProfile(LONG* pProfileID) {
    static constexpr Method cMethod{"CKORA4ASL::GetActiveProfile",
                                    {.badArgument = "NULL == pProfile"}};
    return RunMethod(cMethod, m_initialized, pProfileID != nullptr, [&] {
        std::uint32_t profile = cNoProfile;
        const HRESULT hr = m_uiKeysClient.GetActiveProfile(&profile);
        if (SUCCEEDED(hr))
            *pProfileID = static_cast<LONG>(profile);
        KALTRACE(trace::eMessages, cMethod.site, " is %s\n", text::OfProfile(profile).read);
        return hr;
    });
}

// The lines after the calls below do not look at the result; the exit line has it.

STDMETHODIMP CKORA4ASL::SetActiveProfile(LONG profileID) {
    static constexpr Method cMethod{"CKORA4ASL::SetActiveProfile",
                                    {.entry = "%s: %4d %s:>> profile: %d\n"}};
    return RunMethod(
        cMethod, m_initialized, cNothingToCheck,
        [&] {
            const auto profile = static_cast<std::uint32_t>(profileID);
            const HRESULT hr = m_uiKeysClient.SetActiveProfile(profile);
            KALTRACE(trace::eMessages, cMethod.site, " to %s\n",
                     text::OfProfile(profile).chosen);
            return hr;
        },
        static_cast<int>(profileID));
}

STDMETHODIMP CKORA4ASL::RevertActiveProfile() {
    static constexpr Method cMethod{"CKORA4ASL::RevertActiveProfile"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr = m_uiKeysClient.RevertActiveProfile();
        KALTRACE(trace::eMessages, cMethod.site, " Successfully Reverted Active Profile\n");
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetDemoProfileAndEnable(LONG demoProfileID, BOOL demoVeltoEnable) {
    static constexpr Method cMethod{
        "CKORA4ASL::SetDemoProfileAndEnable",
        {.entry = "%s: %4d %s:>> demoProfileID: %d demoVeltoEnable: %d\n"}};
    return RunMethod(
        cMethod, m_initialized, cNothingToCheck,
        [&] {
            const auto profile = static_cast<std::uint32_t>(demoProfileID);
            const HRESULT hr =
                m_uiKeysClient.SetDemoProfileAndEnable(profile, demoVeltoEnable != FALSE);
            KALTRACE(trace::eMessages, cMethod.site, " to %s\n", text::OfDemoProfile(profile));
            return hr;
        },
        static_cast<int>(demoProfileID), static_cast<int>(demoVeltoEnable));
}

STDMETHODIMP CKORA4ASL::RevertFromDemoMode() {
    static constexpr Method cMethod{"CKORA4ASL::RevertFromDemoMode"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr = m_uiKeysClient.RevertFromDemoMode();
        KALTRACE(trace::eMessages, cMethod.site, " Successfully Reverted from Demo Mode\n");
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::ForceRevertFromDemoMode() {
    static constexpr Method cMethod{"CKORA4ASL::ForceRevertFromDemoMode"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck,
                     [&] { return m_uiKeysClient.ForceRevertFromDemoMode(); });
}

STDMETHODIMP CKORA4ASL::GetProfileTable(LPWSTR* pwProfileNames) {
    static constexpr Method cMethod{"CKORA4ASL::GetProfileTable",
                                    {.badArgument = "pwPresetNames is Null"}};
    return RunMethod(cMethod, m_initialized, pwProfileNames != nullptr, [&] {
        const HRESULT hr =
            m_uiKeysClient.GetProfileTable(reinterpret_cast<char16_t**>(pwProfileNames));
        KALTRACE(trace::eMessages, cMethod.site, "() completed\n");
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetCustomProfileName(LONG customProfileID,
                                             LPCWSTR pwCustomProfileName) {
    static constexpr Method cMethod{"CKORA4ASL::SetCustomProfileName",
                                    {.badArgument = "pwCustomPresetName is Null"}};
    return RunMethod(cMethod, m_initialized, pwCustomProfileName != nullptr, [&] {
        const HRESULT hr = m_uiKeysClient.SetCustomProfileName(
            static_cast<std::uint32_t>(customProfileID), FromPublic(pwCustomProfileName));
        KALTRACE(trace::eMessages, cMethod.site, "(%d, %ls)\n",
                 static_cast<int>(customProfileID), pwCustomProfileName);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::CreateCustomProfile(LONG customProfileID, LPCWSTR pwName) {
    static constexpr Method cMethod{"CKORA4ASL::CreateCustomProfile",
                                    {.badArgument = "pwName is Null"}};
    return RunMethod(cMethod, m_initialized, pwName != nullptr, [&] {
        const HRESULT hr = m_uiKeysClient.CreateCustomProfile(
            static_cast<std::uint32_t>(customProfileID), FromPublic(pwName));
        KALTRACE(trace::eMessages, cMethod.site, "(%d)\n", static_cast<int>(customProfileID));
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::DeleteCustomProfile(LONG customProfileID) {
    static constexpr Method cMethod{"CKORA4ASL::DeleteCustomProfile"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr =
            m_uiKeysClient.DeleteCustomProfile(static_cast<std::uint32_t>(customProfileID));
        KALTRACE(trace::eMessages, cMethod.site, "(%d)\n", static_cast<int>(customProfileID));
        return hr;
    });
}

}  // namespace kora4

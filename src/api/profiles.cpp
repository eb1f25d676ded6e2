// SPDX-License-Identifier: MIT
// The active profile, demo mode and the custom profiles.
#include "api/kora4asl.h"
#include "api/public_records.h"
#include "contract/messages/log_texts.h"

namespace kora4 {

STDMETHODIMP CKORA4ASL::GetActiveProfile(LONG* pProfileID) {
    static constexpr Method cMethod{msg::cGetActiveProfileNull};
    return RunMethod(cMethod, m_initialized, pProfileID != nullptr, [&] {
        std::uint32_t profile = cNoProfile;
        const HRESULT hr = m_uiKeysClient.GetActiveProfile(&profile);
        if (SUCCEEDED(hr))
            *pProfileID = static_cast<LONG>(profile);
        KALTRACE(msg::cGetActiveProfile, text::OfProfile(profile).read);
        return hr;
    });
}

// The lines after the calls below do not look at the result; the exit line has it.

STDMETHODIMP CKORA4ASL::SetActiveProfile(LONG profileID) {
    static constexpr Method cMethod{msg::cSetActiveProfileEntry.function};
    return RunMethod<msg::cSetActiveProfileEntry>(
        cMethod, m_initialized, cNothingToCheck,
        [&] {
            const auto profile = static_cast<std::uint32_t>(profileID);
            const HRESULT hr = m_uiKeysClient.SetActiveProfile(profile);
            KALTRACE(msg::cSetActiveProfile, text::OfProfile(profile).chosen);
            return hr;
        },
        profileID);
}

STDMETHODIMP CKORA4ASL::RevertActiveProfile() {
    static constexpr Method cMethod{msg::cRevertActiveProfile.function};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr = m_uiKeysClient.RevertActiveProfile();
        KALTRACE(msg::cRevertActiveProfile);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetDemoProfileAndEnable(LONG demoProfileID, BOOL demoVeltoEnable) {
    static constexpr Method cMethod{msg::cSetDemoProfileEntry.function};
    return RunMethod<msg::cSetDemoProfileEntry>(
        cMethod, m_initialized, cNothingToCheck,
        [&] {
            const auto profile = static_cast<std::uint32_t>(demoProfileID);
            const HRESULT hr =
                m_uiKeysClient.SetDemoProfileAndEnable(profile, demoVeltoEnable != FALSE);
            KALTRACE(msg::cSetDemoProfile, text::OfDemoProfile(profile));
            return hr;
        },
        demoProfileID, demoVeltoEnable);
}

STDMETHODIMP CKORA4ASL::RevertFromDemoMode() {
    static constexpr Method cMethod{msg::cRevertFromDemoMode.function};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr = m_uiKeysClient.RevertFromDemoMode();
        KALTRACE(msg::cRevertFromDemoMode);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::ForceRevertFromDemoMode() {
    static constexpr Method cMethod{"CKORA4ASL::ForceRevertFromDemoMode"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck,
                     [&] { return m_uiKeysClient.ForceRevertFromDemoMode(); });
}

STDMETHODIMP CKORA4ASL::GetProfileTable(LPWSTR* pwProfileNames) {
    static constexpr Method cMethod{msg::cGetProfileTableNull};
    return RunMethod(cMethod, m_initialized, pwProfileNames != nullptr, [&] {
        const HRESULT hr =
            m_uiKeysClient.GetProfileTable(reinterpret_cast<char16_t**>(pwProfileNames));
        KALTRACE(msg::cGetProfileTable);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetCustomProfileName(LONG customProfileID,
                                             LPCWSTR pwCustomProfileName) {
    static constexpr Method cMethod{msg::cSetCustomProfileNameNull};
    return RunMethod(cMethod, m_initialized, pwCustomProfileName != nullptr, [&] {
        const HRESULT hr = m_uiKeysClient.SetCustomProfileName(
            static_cast<std::uint32_t>(customProfileID), FromPublic(pwCustomProfileName));
        KALTRACE(msg::cSetCustomProfileName, customProfileID, pwCustomProfileName);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::CreateCustomProfile(LONG customProfileID, LPCWSTR pwName) {
    static constexpr Method cMethod{msg::cCreateCustomProfileNull};
    return RunMethod(cMethod, m_initialized, pwName != nullptr, [&] {
        const HRESULT hr = m_uiKeysClient.CreateCustomProfile(
            static_cast<std::uint32_t>(customProfileID), FromPublic(pwName));
        KALTRACE(msg::cCreateCustomProfile, customProfileID);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::DeleteCustomProfile(LONG customProfileID) {
    static constexpr Method cMethod{msg::cDeleteCustomProfile.function};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr =
            m_uiKeysClient.DeleteCustomProfile(static_cast<std::uint32_t>(customProfileID));
        KALTRACE(msg::cDeleteCustomProfile, customProfileID);
        return hr;
    });
}

}  // namespace kora4

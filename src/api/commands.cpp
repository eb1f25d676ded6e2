// SPDX-License-Identifier: MIT
// The command lines of the companion applications.
#include "api/kora4asl.h"
#include "api/public_records.h"

namespace kora4 {
namespace {

// Unlike the other methods these look at the pointer last.
constexpr MethodRules cCommandRules = {.badArgument = msg::cGetCommandNull,
                                       .initialization = InitializationCheck::eBeforeArguments};

}  // namespace

STDMETHODIMP CKORA4ASL::GetVeltoProfileEditorCommand(LPWSTR* ppwVeltoProfileEditorCommand) {
    static constexpr Method cMethod{"CKORA4ASL::GetVeltoProfileEditorCommand", cCommandRules};
    return GetCommand(cMethod, CompanionCommand::eProfileEditor, ppwVeltoProfileEditorCommand);
}

STDMETHODIMP CKORA4ASL::GetVeltoProfileSelectorCommand(LPWSTR* ppwVeltoProfileSelectorCommand) {
    static constexpr Method cMethod{"CKORA4ASL::GetVeltoProfileSelectorCommand", cCommandRules};
    return GetCommand(cMethod, CompanionCommand::eProfileSelector,
                      ppwVeltoProfileSelectorCommand);
}

STDMETHODIMP CKORA4ASL::GetVeltoDemoAppCommand(LPWSTR* ppwVeltoDemoAppCommand) {
    static constexpr Method cMethod{"CKORA4ASL::GetVeltoDemoAppCommand", cCommandRules};
    return GetCommand(cMethod, CompanionCommand::eDemoApp, ppwVeltoDemoAppCommand);
}

HRESULT CKORA4ASL::GetCommand(const Method& method, CompanionCommand command,
                              LPWSTR* ppwCommand) {
    return RunMethod(method, m_initialized, ppwCommand != nullptr, [&] {
        char16_t* pwCommand = nullptr;
        const HRESULT hr = m_uiKeysClient.GetCommand(command, &pwCommand);
        *ppwCommand = ToPublic(pwCommand);
        return hr;
    });
}

}  // namespace kora4

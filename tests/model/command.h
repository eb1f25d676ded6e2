// SPDX-License-Identifier: MIT
// The calls that a seat can be asked to make, and what they leave behind.
#ifndef KORA4_TESTS_MODEL_COMMAND_H
#define KORA4_TESTS_MODEL_COMMAND_H

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "kora4api.h"
#include "support/raw_store.h"

namespace kora4::test {

// The calls, those that make and register an object among them.
enum class Action : std::uint32_t {
    eOpen,   // makes, initialises and registers an object, in place of one that is there
    eClose,  // releases it
    eRegister,
    eRegisterOther,  // a new callback, in place of the one that is there
    eUnregister,
    eGetActiveProfile,
    eSetActiveProfile,
    eRevertActiveProfile,
    eSetDemoProfileAndEnable,
    eRevertFromDemoMode,
    eForceRevertFromDemoMode,
    eGetSamplingPeriod,
    eSetSamplingPeriod,
    eGetVeltoEnable,
    eSetVeltoEnable,
    eToggleVeltoEnable,
    eGetProfileTable,
    eSetCustomProfileName,
    eCreateCustomProfile,
    eDeleteCustomProfile,
    eGetTechnologyMasterEnables,
    eGetTechnologyOnElseOff,
    eSetTechnologyOnElseOff,
    eGetSimplePatchValue,
    eSetSimplePatchValue,
    eSetGraphicEQData,
    eGetGraphicEQData,
};

inline constexpr std::size_t cNameCapacity = 32;
inline constexpr std::size_t cProfiles = cProfileBound;

// `number` is a profile, a technology or a period; `flag` an enable or a switch.
struct Command {
    Action action;
    LONG number;
    BOOL flag;
    KORA4PatchValueUnion value;
    GraphicEQData eq;
    wchar_t name[cNameCapacity];
};

// What a call leaves in its out arguments; what it does not touch is as Reply::Untouched.
struct Reply {
    HRESULT hr;
    LONG number;
    KORA4PatchValueUnion value;
    GraphicEQData eq;
    bool named[cProfiles];
    wchar_t names[cProfiles][cNameCapacity];

    static Reply Untouched();
    bool SaysSame(const Reply& other) const;  // the results apart
};

std::string Text(const Command& command);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_COMMAND_H

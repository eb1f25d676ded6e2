// SPDX-License-Identifier: MIT
// HRESULTs in words.
#pragma once

#include <kora4/result.hpp>

#include <string>
#include <string_view>
#include <utility>

#include "base/failure.h"

namespace kora4::tools {

// "KORA4_S_DEMO_MODE_ACTIVE (0x00040200): nothing changed, a demo profile is active": the
// name, the number and the meaning; for codes that nobody published what the platform says
// of them. Never a bare number.
std::string InWords(HRESULT hr);

// Passes S_OK and S_FALSE through. An informational code of the library throws Failure with
// eRefused, APOERR_NOT_INITIALIZED with eNotReady, E_INVALIDARG with eBadInput, every other
// failure with eFailed. doing: "reading the active profile".
HRESULT Check(HRESULT hr, std::string_view doing);
inline HRESULT Check(const Status& status, std::string_view doing) {
    return Check(status.Code(), doing);
}

// What Check throws for that result.
Failure RefusalOf(HRESULT hr, std::string_view doing);

// The value of a call; without one, what Check throws.
template <typename T>
T Check(Result<T> result, std::string_view doing) {
    if (!result)
        throw RefusalOf(result.Code(), doing);
    return *std::move(result);
}

}  // namespace kora4::tools

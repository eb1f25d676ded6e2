// SPDX-License-Identifier: MIT
// HRESULT and the result codes of the store, without a platform header.
#pragma once

#include <cstdint>

#include "kora4api_codes.h"

#if defined(_WIN32)
typedef long HRESULT;  // the platform's own definition, repeated
#else
typedef std::int32_t HRESULT;
#endif

namespace kora4::result {

inline constexpr HRESULT cOk = 0;
inline constexpr HRESULT cFalse = 1;  // in the store: the value is absent
inline constexpr HRESULT cFail = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT cPointer = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT cInvalidArg = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT cOutOfMemory = static_cast<HRESULT>(0x8007000E);

// Success codes include those that tell that nothing was changed, cFalse among them.
constexpr bool Succeeded(HRESULT hr) {
    return hr >= 0;
}
constexpr bool Failed(HRESULT hr) {
    return hr < 0;
}

}  // namespace kora4::result

// SPDX-License-Identifier: MIT
// What a value of the store is, and so how it is stored.
#ifndef KORA4_CONTRACT_VALUE_KIND_H
#define KORA4_CONTRACT_VALUE_KIND_H

#include <cstddef>

#include "kora4api_constants.h"

namespace kora4 {

// The numbers of those that fields may be are the type codes of the field tables.
enum class ValueKind : char16_t {
    eSwitch = u'b',        // REG_DWORD; every number but 0 is on, the library writes 0 or 1
    eNumber = u'u',        // REG_DWORD
    eCurveIndex = u'S',    // REG_DWORD below the number of curves
    eFloat = u'f',         // REG_SZ, one decimal number
    eNumericArray = u'F',  // REG_SZ
    eFlagArray = u'B',     // REG_SZ
    eText = u't',          // REG_SZ
    eBlob = u'x',          // REG_BINARY
};

// The kind as the documents and `kora4ctl describe` name it.
constexpr const char* NameOf(ValueKind kind) {
    switch (kind) {
        case ValueKind::eSwitch:
            return "switch";
        case ValueKind::eNumber:
            return "number";
        case ValueKind::eCurveIndex:
            return "curve";
        case ValueKind::eFloat:
            return "float";
        case ValueKind::eNumericArray:
            return "numbers";
        case ValueKind::eFlagArray:
            return "flags";
        case ValueKind::eText:
            return "text";
        case ValueKind::eBlob:
            break;
    }
    return "blob";
}

// The largest REG_SZ that a reader takes, terminator included; longer ones count as absent.
inline constexpr std::size_t cMaxTextBytes = 4096;
// The same in UTF-16 characters, without the terminator.
inline constexpr std::size_t cMaxTextChars = cMaxTextBytes / sizeof(char16_t) - 1;
static_assert(cMaxTextChars == KORA4_CUSTOM_NAME_MAX_LENGTH);

}  // namespace kora4

#endif  // KORA4_CONTRACT_VALUE_KIND_H

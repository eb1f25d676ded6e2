// SPDX-License-Identifier: MIT
// The bare reads of texts and blobs, and the bare line to the debugger.
#include "windows/bare.h"

#include <cstring>

#include "contract/value_kind.h"

namespace kora4::bench {

bool Bare::Text(const Value& value) {
    Note(call::cText);
    BYTE text[cMaxTextBytes];
    DWORD size = sizeof text;
    if (Query(value, text, &size) != ERROR_SUCCESS)
        return false;
    void* const copy = Allocate(size);
    if (copy)
        std::memcpy(copy, text, size);
    CoTaskMemFree(copy);
    return true;
}

// Its size first: it has no limit.
void Bare::Blob(const Value& value) {
    Note(call::cBlob);
    DWORD size = 0;
    Query(value, nullptr, &size);
    void* const data = Allocate(size);
    Note(call::cBlob);
    Query(value, data, &size);
    CoTaskMemFree(data);
}

void Bare::Line() {
    OutputDebugStringA("KORA4ASL:   80 CKORA4ASL::SomeMethodOfTheObject: is Enabled\n");
}

}  // namespace kora4::bench

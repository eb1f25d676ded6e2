// SPDX-License-Identifier: MIT
// Task memory from COM's allocator. Native tests have one of their own.
#include "store/access/task_memory.h"

#include <objbase.h>
#include <windows.h>

#include <cstring>
#include <string>

namespace kora4 {

void* AllocTaskMemory(std::size_t bytes) {
    return CoTaskMemAlloc(bytes);
}

void FreeTaskMemory(void* memory) {
    CoTaskMemFree(memory);
}

char16_t* DuplicateTaskText(const char16_t* text) {
    const std::size_t bytes = (std::char_traits<char16_t>::length(text) + 1) * sizeof(char16_t);
    auto* const copy = static_cast<char16_t*>(AllocTaskMemory(bytes));
    if (copy)
        std::memcpy(copy, text, bytes);
    return copy;
}

}  // namespace kora4

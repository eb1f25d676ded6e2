// SPDX-License-Identifier: MIT
// Task memory of native test programs: the C allocator, so that the sanitizers see every
// block that is lost or freed twice.
#include <cstdlib>
#include <cstring>
#include <string>

#include "store/access/task_memory.h"

namespace kora4 {

void* AllocTaskMemory(std::size_t bytes) {
    return std::malloc(bytes);
}

void FreeTaskMemory(void* memory) {
    std::free(memory);
}

char16_t* DuplicateTaskText(const char16_t* text) {
    const std::size_t bytes = (std::char_traits<char16_t>::length(text) + 1) * sizeof(char16_t);
    auto* const copy = static_cast<char16_t*>(AllocTaskMemory(bytes));
    if (copy)
        std::memcpy(copy, text, bytes);
    return copy;
}

}  // namespace kora4

// SPDX-License-Identifier: MIT
// Checks what a loaded module does with the memory that it allocates, when the environment has
// KORA4_HEAP_CHECK: each block ends at a page that nobody may touch, what is in front of it and
// between it and the page is compared when it is freed, and a freed block becomes such pages.
// So an overrun and a use after free end the process, and so does a second free.
#ifndef KORA4_TESTS_SUPPORT_HEAP_CHECK_H
#define KORA4_TESTS_SUPPORT_HEAP_CHECK_H

#include <windows.h>

#include <cstddef>

namespace kora4::test {

// The exit code of a process that ends at a block that was spoilt or freed twice.
inline constexpr UINT cHeapFault = 97;

// Leads the allocations of the module, of the C runtime and of COM, to checked blocks. COM is
// checked in the whole process, because a block that one module allocates another one frees.
// Does nothing unless the environment asks for it.
void CheckHeapOf(HMODULE module);

// How many blocks have been checked so far.
std::size_t CheckedBlocks();

// The checked blocks themselves.
void* AllocateChecked(std::size_t size, void* pPlatforms = nullptr);
// False when it is none. What the platform had allocated in its place comes back.
bool FreeChecked(void* p, void** ppPlatforms = nullptr);

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_HEAP_CHECK_H

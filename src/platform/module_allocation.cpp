// SPDX-License-Identifier: MIT
// The library's own allocation functions. Those of the C++ runtime throw when there is no
// memory, also behind `new (std::nothrow)`; a throw needs memory itself, and without any it
// exhausts the stack of the host. The throwing ones are missing here on purpose: nothing may
// use them.
#include <cstdlib>
#include <new>

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}

void operator delete(void* p) noexcept {
    std::free(p);
}

void operator delete[](void* p) noexcept {
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}

// SPDX-License-Identifier: MIT
// Owning types for what the platform hands out.
#pragma once

#include <windows.h>

#include <utility>

namespace kora4 {

// Owns one value that `Traits::Close` gives back; the value-initialised one means none.
template <typename Traits>
class UniqueResource {
  public:
    using Type = typename Traits::Type;

    UniqueResource() = default;
    explicit UniqueResource(Type value) : m_value(value) {}
    UniqueResource(UniqueResource&& other) noexcept : m_value(other.Detach()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept {
        Reset(other.Detach());
        return *this;
    }
    ~UniqueResource() { Reset(); }

    Type Get() const { return m_value; }
    explicit operator bool() const { return m_value != Type{}; }

    // The place for an `out` argument; gives back what was held.
    Type* Put() {
        Reset();
        return &m_value;
    }

    // Gives the value away; the caller closes it.
    Type Detach() { return std::exchange(m_value, Type{}); }

    // Gives back what was held and takes over `value`.
    void Reset(Type value = Type{}) {
        const Type old = std::exchange(m_value, value);
        if (old != Type{})
            Traits::Close(old);
    }

  private:
    Type m_value{};
};

// Closes a kernel handle. INVALID_HANDLE_VALUE is not taken for "none".
struct HandleTraits {
    using Type = HANDLE;
    static void Close(HANDLE handle) { CloseHandle(handle); }
};

// Closes a registry key.
struct RegKeyTraits {
    using Type = HKEY;
    static void Close(HKEY key) { RegCloseKey(key); }
};

// Frees what the platform allocated with LocalAlloc.
struct LocalMemoryTraits {
    using Type = void*;
    static void Close(void* memory) { LocalFree(memory); }
};

using UniqueHandle = UniqueResource<HandleTraits>;
using UniqueRegKey = UniqueResource<RegKeyTraits>;
using UniqueLocalMemory = UniqueResource<LocalMemoryTraits>;

}  // namespace kora4

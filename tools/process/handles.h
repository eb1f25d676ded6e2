// SPDX-License-Identifier: MIT
// Owning types for what the platform hands out.
#ifndef KORA4_PROCESS_HANDLES_H
#define KORA4_PROCESS_HANDLES_H

#include <windows.h>

#include <utility>

namespace kora4::tools {

// Owns one handle that `Close` gives back; null means none.
template <typename Type, auto Close>
class Unique {
  public:
    Unique() = default;
    explicit Unique(Type value) : m_value(value) {}
    Unique(Unique&& other) noexcept : m_value(std::exchange(other.m_value, nullptr)) {}
    Unique& operator=(Unique&& other) noexcept {
        Reset(std::exchange(other.m_value, nullptr));
        return *this;
    }
    ~Unique() { Reset(); }

    Type Get() const { return m_value; }
    explicit operator bool() const { return m_value != nullptr; }

    // The place for an `out` argument; gives back what was held.
    Type* Put() {
        Reset();
        return &m_value;
    }

    // Gives back what was held and takes over `value`.
    void Reset(Type value = nullptr) {
        if (const Type old = std::exchange(m_value, value))
            Close(old);
    }

  private:
    Type m_value = nullptr;
};

using UniqueHandle = Unique<HANDLE, CloseHandle>;
using UniqueRegKey = Unique<HKEY, RegCloseKey>;

}  // namespace kora4::tools

#endif  // KORA4_PROCESS_HANDLES_H

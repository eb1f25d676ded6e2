// SPDX-License-Identifier: MIT
// Memory that changes hands across an interface: the platform's task allocator.
#pragma once

#include <cstddef>
#include <utility>

namespace kora4 {

// Null when there is no memory.
void* AllocTaskMemory(std::size_t bytes);

// Null is accepted.
void FreeTaskMemory(void* memory);

// A zero-terminated copy of `text`; null when there is no memory.
char16_t* DuplicateTaskText(const char16_t* text);

// Owns one block of task memory.
template <typename T>
class TaskPtr {
  public:
    TaskPtr() = default;
    explicit TaskPtr(T* memory) : m_memory(memory) {}
    TaskPtr(TaskPtr&& other) noexcept : m_memory(other.Detach()) {}
    TaskPtr& operator=(TaskPtr&& other) noexcept {
        Reset(other.Detach());
        return *this;
    }
    ~TaskPtr() { Reset(); }

    T* Get() const { return m_memory; }
    explicit operator bool() const { return m_memory != nullptr; }

    // The place for an `out` argument; frees what was held.
    T** Put() {
        Reset();
        return &m_memory;
    }
    T* Detach() { return std::exchange(m_memory, nullptr); }
    void Reset(T* memory = nullptr) {
        if (T* old = std::exchange(m_memory, memory))
            FreeTaskMemory(old);
    }

  private:
    T* m_memory = nullptr;
};

}  // namespace kora4

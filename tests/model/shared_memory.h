// SPDX-License-Identifier: MIT
// What the processes of one test have in common: the program started again, memory that
// all of them see, and the end of the program when there is no going on.
#ifndef KORA4_TESTS_MODEL_SHARED_MEMORY_H
#define KORA4_TESTS_MODEL_SHARED_MEMORY_H

#include <windows.h>

#include <cstddef>
#include <string>

#include "platform/handles.h"

namespace kora4::test {

// Says what is wrong and ends the program with 1.
[[noreturn]] void Die(const std::string& what);

// This program with that one argument; the handle of the process.
UniqueHandle StartChild(const std::wstring& argument);

void* MapShared(HANDLE section, std::size_t size);

// A T that every process sees that knows its name; all zeros at the start.
template <typename T>
class SharedMemory {
  public:
    explicit SharedMemory(const std::wstring& name)
        : m_section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                       sizeof(T), name.c_str())),
          m_p(static_cast<T*>(MapShared(m_section.Get(), sizeof(T)))) {}
    ~SharedMemory() { UnmapViewOfFile(m_p); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    T& operator*() { return *m_p; }
    T* operator->() { return m_p; }

  private:
    UniqueHandle m_section;
    T* const m_p;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_SHARED_MEMORY_H

// SPDX-License-Identifier: MIT
// The bare platform calls: what any program would have to make to do what a method does, with
// ready-made value names and nothing around it.
#ifndef KORA4_BENCH_BARE_H
#define KORA4_BENCH_BARE_H

#include <objbase.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "windows/call_list.h"
#include "windows/place.h"

namespace kora4::bench {

class Bare {
  public:
    explicit Bare(Place& place) : m_place(place) {}

    Place& Store() { return m_place; }
    // Notes the kinds of the calls there while it is not null.
    void RecordTo(CallList* pRecord) { m_pRecord = pRecord; }

    void Wait() {
        Note(call::cWait);
        WaitForSingleObject(m_place.Mutex(), INFINITE);
    }
    void Release() {
        Note(call::cRelease);
        ReleaseMutex(m_place.Mutex());
    }
    std::uint32_t Number(const Value& value) {
        Note(call::cNumber);
        std::uint32_t number = 0;
        DWORD size = sizeof number;
        Query(value, &number, &size);
        return number;
    }
    // A text that is stored is copied into memory of its own.
    bool Text(const Value& value);
    void Blob(const Value& value);
    void Read(const Value& value) {
        if (value.type == REG_DWORD)
            Number(value);
        else
            Text(value);
    }
    void SetNumber(const Value& value, std::uint32_t number) {
        Set(value, REG_DWORD, &number, sizeof number);
    }
    void SetText(const Value& value, const std::u16string& text) {
        Set(value, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    }
    void Delete(const Value& value) {
        Note(call::cDelete);
        RegDeleteValueW(value.key, value.Name());
    }
    void* Allocate(std::size_t bytes) {
        Note(call::cAllocation);
        return CoTaskMemAlloc(bytes);
    }
    // What one message line of the trace costs.
    void Line();

  private:
    void Note(const char* kind) {
        if (m_pRecord) [[unlikely]]
            m_pRecord->push_back(kind);
    }
    static LSTATUS Query(const Value& value, void* pData, DWORD* pSize) {
        DWORD type = REG_NONE;
        return RegQueryValueExW(value.key, value.Name(), nullptr, &type,
                                static_cast<BYTE*>(pData), pSize);
    }
    void Set(const Value& value, DWORD type, const void* pData, std::size_t size) {
        Note(call::cSet);
        RegSetKeyValueW(value.key, nullptr, value.Name(), type, pData,
                        static_cast<DWORD>(size));
    }

    Place& m_place;
    CallList* m_pRecord = nullptr;
};

}  // namespace kora4::bench

#endif  // KORA4_BENCH_BARE_H

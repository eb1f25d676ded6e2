// SPDX-License-Identifier: MIT
// A place where settings live: the library's store, or a twin of it that the library does
// not know. Every value name is ready-made.
#ifndef KORA4_BENCH_PLACE_H
#define KORA4_BENCH_PLACE_H

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "contract/field_tables.h"
#include "contract/property_key.h"
#include "platform/handles.h"

namespace kora4::bench {

struct Value {
    HKEY key = nullptr;
    char16_t name[cValueNameCapacity] = {};
    DWORD type = REG_DWORD;

    const wchar_t* Name() const { return reinterpret_cast<const wchar_t*>(name); }
};

// One technology in one profile, or a global one.
struct PatchValues {
    Value flag;
    std::vector<Value> fields;  // in the order of the library's field table
};

class Place {
  public:
    // The library's own store; what is in it goes.
    static Place Library();
    static Place Twin();
    // The library's store as another process has left it.
    static Place Existing();

    Place(Place&&) = default;
    // Takes the keys along if it made them.
    ~Place();

    // Every value that the library knows, as in a store that has been in use.
    void Fill();

    const PatchValues& Patch(std::uint32_t profile, KORA4PresetTechnology technology) const;
    const Value& Trigger(KORA4PresetTechnology technology) const {
        return presetTriggers[technology];
    }

    const std::wstring& DynamicPath() const { return m_dynamicPath; }
    const std::wstring& StaticPath() const { return m_staticPath; }
    const std::wstring& AppPath() const { return m_appPath; }
    const std::wstring& MutexName() const { return m_mutexName; }
    HANDLE Mutex() const { return m_mutex.Get(); }

    Value profile, enable, table, dynamicSwitch;
    Value period, levels, savedEnable, savedProfile, traceWord, masks;
    std::vector<Value> switches;  // the other static settings, in the order of the first load
    std::vector<Value> commands;
    std::vector<Value> names;  // by profile; those of the presets are not used
    std::vector<Value> presetTriggers, globalTriggers;  // by technology; 0 is not used
    std::vector<PatchValues> globals;                   // by technology; 0 is not used

  private:
    Place(const std::wstring& base, std::wstring mutexName, bool make);

    Value Make(KORA4KeySet keySet, const PropertyKey& key, DWORD type) const;
    Value Setting(KORA4KeySet keySet, std::uint32_t pid, DWORD type = REG_DWORD) const;
    void MakeNames();
    void MakePatches();

    std::wstring m_base, m_staticPath, m_dynamicPath, m_appPath, m_mutexName;
    bool m_made = false;
    UniqueRegKey m_static, m_dynamic, m_app;
    UniqueHandle m_mutex;
    // By profile and technology, see Patch.
    std::vector<std::vector<PatchValues>> m_patches;
};

// Writes as any program would. Ends the program when the registry refuses: figures of a
// half-prepared store would mean nothing.
void Put(const Value& value, std::uint32_t number);
void Put(const Value& value, const std::u16string& text);
void Put(const Value& value, const std::vector<std::uint8_t>& bytes);
void Remove(const Value& value);
std::uint32_t Get(const Value& value, std::uint32_t fallback);

// Says what went wrong and ends the program.
[[noreturn]] void Fail(const std::string& what);

}  // namespace kora4::bench

#endif  // KORA4_BENCH_PLACE_H

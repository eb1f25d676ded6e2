// SPDX-License-Identifier: MIT
// The real store in the registry, for tests that run on it: reset, raw values of any type
// and size, the whole store as text, and the library registered for a while.
#ifndef KORA4_TESTS_SUPPORT_REGISTRY_FIXTURE_H
#define KORA4_TESTS_SUPPORT_REGISTRY_FIXTURE_H

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "contract/property_key.h"
#include "platform/handles.h"

namespace kora4::test {

// Everything below ends the test program with a message when the registry refuses what a
// test prepares: a test on a half-prepared store would prove nothing.

// A value as the registry holds it.
struct RawValue {
    DWORD type = REG_NONE;
    std::vector<std::uint8_t> data;

    friend bool operator==(const RawValue&, const RawValue&) = default;
};

// ---- Any key ----------------------------------------------------------------------------

bool KeyExists(HKEY root, const std::wstring& path);
void CreateKey(HKEY root, const std::wstring& path);
// With its subkeys. An absent key is not an error.
void RemoveKey(HKEY root, const std::wstring& path);

void WriteValue(HKEY root, const std::wstring& path, const std::wstring& name, DWORD type,
                const void* data, std::size_t size);
std::optional<RawValue> ReadValue(HKEY root, const std::wstring& path,
                                  const std::wstring& name);
// The text without its terminator; none when the value is absent or no REG_SZ.
std::optional<std::wstring> ReadString(HKEY root, const std::wstring& path,
                                       const std::wstring& name);

// A key with everything in it as text, sorted, one line a key or value:
//   "[Sub\Key]", "Name REG_SZ text", "Name REG_DWORD 0000002a", "Name type(3) 01 02".
// Absent keys give an empty text.
std::string DumpKey(HKEY root, const std::wstring& path);

// ---- The store --------------------------------------------------------------------------

// The path of a registry key set under HKEY_LOCAL_MACHINE.
std::wstring KeySetPath(KORA4KeySet keySet);

void RemoveStore();
// The store as registration leaves it: base, static and dynamic keys, no value.
void ResetStore();

void WriteRaw(KORA4KeySet keySet, const PropertyKey& key, DWORD type, const void* data,
              std::size_t size);
void WriteStoredUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value);
void WriteStoredText(KORA4KeySet keySet, const PropertyKey& key, const std::wstring& text);
void WriteStoredBlob(KORA4KeySet keySet, const PropertyKey& key,
                     const std::vector<std::uint8_t>& data);
void DeleteStored(KORA4KeySet keySet, const PropertyKey& key);

std::optional<RawValue> ReadRaw(KORA4KeySet keySet, const PropertyKey& key);
std::optional<std::uint32_t> ReadStoredUINT(KORA4KeySet keySet, const PropertyKey& key);
std::optional<std::wstring> ReadStoredText(KORA4KeySet keySet, const PropertyKey& key);

// The whole store as text, see DumpKey.
std::string StoreSnapshot();

// ---- The library ------------------------------------------------------------------------

// The folder of the test program, and the library beside it.
std::wstring ProgramFolder();
std::wstring LibraryPath();

// A loaded library, for UniqueResource.
struct LibraryTraits {
    using Type = HMODULE;
    static void Close(HMODULE module) { FreeLibrary(module); }
};
using UniqueLibrary = UniqueResource<LibraryTraits>;

// The library, loaded; its entry points by name.
class LoadedLibrary {
  public:
    explicit LoadedLibrary(const std::wstring& path = LibraryPath());

    bool IsLoaded() const { return static_cast<bool>(m_library); }
    HMODULE Module() const { return m_library.Get(); }

    HRESULT RegisterServer() const { return CallPlain("DllRegisterServer"); }
    HRESULT UnregisterServer() const { return CallPlain("DllUnregisterServer"); }
    HRESULT CanUnloadNow() const { return CallPlain("DllCanUnloadNow"); }
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** ppv) const;

  private:
    HRESULT CallPlain(const char* name) const;

    UniqueLibrary m_library;
};

// Registers the library for the length of a scope. The store's keys stay afterwards.
class RegisteredLibrary {
  public:
    explicit RegisteredLibrary(const std::wstring& path = LibraryPath());
    ~RegisteredLibrary();
    RegisteredLibrary(const RegisteredLibrary&) = delete;
    RegisteredLibrary& operator=(const RegisteredLibrary&) = delete;

    const LoadedLibrary& Library() const { return m_library; }

  private:
    LoadedLibrary m_library;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_REGISTRY_FIXTURE_H

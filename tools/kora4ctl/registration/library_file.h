// SPDX-License-Identifier: MIT
// The library as a file.
#pragma once

#include <windows.h>

#include <string>

#include "platform/handles.h"

namespace kora4::tools {

// What a file is, from its headers; none of its code runs.
enum class FileKind {
    eAbsent,
    eUnreadable,   // there, and this user may not read it
    eNoProgram,    // no executable file of the platform
    eNoLibrary,    // a program, but no DLL
    eOtherSystem,  // a DLL for another processor than x64
    eLibrary,
};
FileKind KindOfFile(const std::string& path);
// "is not a 64-bit library"; empty for eLibrary.
std::string WhatIsWrong(FileKind kind);

// "7.2.7000.4"
std::string VersionText(const ULONG (&parts)[4]);

// That of the version resource; empty without one.
std::string FileVersion(const std::string& path);

struct ModuleTraits {
    using Type = HMODULE;
    static void Close(HMODULE module) { FreeLibrary(module); }
};

// A loaded library that registers itself.
class RegistrableLibrary {
  public:
    // Failure with eBadInput for a file that is not such a library, in one sentence.
    explicit RegistrableLibrary(const std::string& path);

    // Calls the library's own DllRegisterServer or DllUnregisterServer and returns its result.
    HRESULT Register() const { return m_register(); }
    HRESULT Unregister() const { return m_unregister(); }

  private:
    using Entry = HRESULT(WINAPI*)();
    Entry Find(const char* name, const std::string& path) const;

    UniqueResource<ModuleTraits> m_module;
    Entry m_register;
    Entry m_unregister;
};

}  // namespace kora4::tools

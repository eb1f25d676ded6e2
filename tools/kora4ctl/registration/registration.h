// SPDX-License-Identifier: MIT
// The library as a file, and as the machine's registration knows it.
#ifndef KORA4_KORA4CTL_REGISTRATION_REGISTRATION_H
#define KORA4_KORA4CTL_REGISTRATION_REGISTRATION_H

#include <windows.h>

#include <optional>
#include <string>

#include "kora4ctl/recording/observation.h"

namespace kora4::tools {

// "QXA64T.dll" beside this program. Paths are UTF-8.
std::string LibraryBesideTool();

// The path made absolute; as it is when that fails.
std::string FullPath(const std::string& path);

// ---- The file ---------------------------------------------------------------------------

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

// "7.2.7000.4" of the version resource; empty without one.
std::string FileVersion(const std::string& path);

// A loaded library that registers itself.
class RegistrableLibrary {
  public:
    // Failure with eBadInput for a file that is not such a library, in one sentence.
    explicit RegistrableLibrary(const std::string& path);
    ~RegistrableLibrary();
    RegistrableLibrary(const RegistrableLibrary&) = delete;
    RegistrableLibrary& operator=(const RegistrableLibrary&) = delete;

    // Calls the library's own DllRegisterServer or DllUnregisterServer and returns its result.
    HRESULT Register() const { return m_register(); }
    HRESULT Unregister() const { return m_unregister(); }

  private:
    using Entry = HRESULT(WINAPI*)();
    Entry Find(const char* name, const std::string& path) const;

    HMODULE m_module;
    Entry m_register;
    Entry m_unregister;
};

// ---- The registration -------------------------------------------------------------------

// For whom the class is registered.
enum class RegisteredFor { eNobody, eMachine, eUser };

// What COM finds, key by key; texts are empty where there is nothing.
struct Registration {
    RegisteredFor where = RegisteredFor::eNobody;
    // Both have an entry: the one of the user is in force, unless a program runs elevated.
    bool hidesMachine = false;
    std::string path;  // of the class's server
    std::string title;
    std::string threadingModel;
    std::string appId;        // "{...}", of the file's own entry
    std::string appTitle;     // of the entry that this leads to
    std::string typeLibrary;  // the file with the type library
    std::string fileVersion;  // of the registered file
    std::string apiVersion;   // what an object of the class says
    FileKind file = FileKind::eAbsent;
    HRESULT creation = S_OK;  // of making an object; not tried without a file

    // Whether the class is registered, or anything of the library at all.
    bool IsThere() const { return where != RegisteredFor::eNobody; }
    bool IsAnythingThere() const { return IsThere() || !appId.empty() || !typeLibrary.empty(); }
};

// The identifier of the class that the library serves, "{16CC6CDB-...}".
std::string ServedClass();

// Reads everything that COM would, and makes an object to see whether that works.
Registration ReadRegistration();

// What is wrong with it; empty: all right. `expectedPath` may be empty: any file will do.
Observations Examine(const Registration& registration, const std::string& expectedPath = {});

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_REGISTRATION_REGISTRATION_H

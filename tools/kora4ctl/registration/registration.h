// SPDX-License-Identifier: MIT
// The library as the machine's registration knows it.
#pragma once

#include <objbase.h>

#include <string>

#include "kora4ctl/doctor/diagnosis.h"
#include "kora4ctl/registration/library_file.h"

namespace kora4::tools {

// "QXA64T.dll" beside this program. Paths are UTF-8.
std::string LibraryBesideTool();

// The path made absolute; as it is when that fails.
std::string FullPath(const std::string& path);

// Whether both name the same file, which need not exist.
bool IsSamePath(const std::string& one, const std::string& other);

// For whom the class is registered.
enum class RegisteredFor { eNobody, eMachine, eUser };

// What COM finds, key by key; texts are empty where there is nothing.
struct Registration {
    RegisteredFor where = RegisteredFor::eNobody;
    // Both have an entry: the one of the user is in force, unless a program runs elevated.
    bool hasBoth = false;
    std::string path;  // of the class's server that is in force for this program
    // As the machine and as this user have it.
    std::string ofMachine;
    std::string ofUser;
    std::string title;
    std::string threadingModel;
    std::string appId;        // "{...}", of the file's own entry
    std::string appTitle;     // of the entry that this leads to
    std::string typeLibrary;  // the file with the type library
    std::string fileVersion;  // of the registered file
    std::string apiVersion;   // what an object of the class says
    FileKind file = FileKind::eAbsent;
    // Of making an object. Not tried without a file, nor by an elevated process while the user
    // has a registration of their own: whoever writes that one would choose what runs elevated.
    // (Windows looks at the machine's alone then; Wine does not.)
    bool isTried = false;
    HRESULT creation = S_OK;

    // Whether the class is registered, or anything of the library at all.
    bool IsThere() const { return where != RegisteredFor::eNobody; }
    bool IsAnythingThere() const { return IsThere() || !appId.empty() || !typeLibrary.empty(); }
};

// The identifier of the class that the library serves, "{16CC6CDB-...}".
std::string ServedClass();

// Reads everything that COM would, and makes an object to see whether that works.
Registration ReadRegistration();

// What is wrong with it; empty: all right. `expectedPath` may be empty: any file will do.
Diagnosis Examine(const Registration& registration, const std::string& expectedPath = {});

}  // namespace kora4::tools

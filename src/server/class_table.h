// SPDX-License-Identifier: MIT
// The classes that the library serves.
#pragma once

#include <windows.h>

#include <span>

namespace kora4 {

// A class with how it is made and registered.
struct ServedClass {
    const CLSID* clsid;
    HRESULT (*create)(REFIID iid, void** ppv);
    int script;  // the resource with its registrar script
};

// All rows. The table is static.
std::span<const ServedClass> ClassTable();

// Null for a class that is not served.
const ServedClass* FindServedClass(REFCLSID clsid);

}  // namespace kora4

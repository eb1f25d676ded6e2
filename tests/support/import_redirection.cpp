// SPDX-License-Identifier: MIT
// Walks the import table of a module in memory and changes one entry.
#include "support/import_redirection.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kora4::test {
namespace {

template <typename T>
T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(module) + offset);
}

// Visits (name of the other module, name of the function, place in the table) for each import
// by name.
template <typename Visit>
void VisitImports(HMODULE module, Visit visit) {
    const auto* const pDos = At<const IMAGE_DOS_HEADER>(module, 0);
    const auto* const pHeaders =
        At<const IMAGE_NT_HEADERS64>(module, static_cast<DWORD>(pDos->e_lfanew));
    const DWORD imports =
        pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* pDll = At<const IMAGE_IMPORT_DESCRIPTOR>(module, imports);
         pDll->OriginalFirstThunk != 0; ++pDll) {
        const auto* pName = At<const std::uint64_t>(module, pDll->OriginalFirstThunk);
        auto* pSlot = At<std::uintptr_t>(module, pDll->FirstThunk);
        for (; *pName != 0; ++pName, ++pSlot)
            if (!(*pName & IMAGE_ORDINAL_FLAG64))
                visit(At<const char>(module, pDll->Name),
                      At<const IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(*pName))->Name,
                      pSlot);
    }
}

}  // namespace

std::vector<std::string> Imports(HMODULE module) {
    std::vector<std::string> names;
    VisitImports(module, [&](const char* from, const char* function, std::uintptr_t*) {
        if (std::ranges::find(names, from) == names.end())
            names.emplace_back(from);
        names.emplace_back(function);
    });
    return names;
}

std::uintptr_t* FindImport(HMODULE module, const char* function) {
    std::uintptr_t* pFound = nullptr;
    VisitImports(module, [&](const char*, const char* name, std::uintptr_t* pSlot) {
        if (!pFound && std::strcmp(name, function) == 0)
            pFound = pSlot;
    });
    return pFound;
}

void WriteImport(std::uintptr_t* pSlot, std::uintptr_t value) {
    DWORD before = 0;
    if (!VirtualProtect(pSlot, sizeof value, PAGE_READWRITE, &before))
        std::abort();
    *pSlot = value;
    VirtualProtect(pSlot, sizeof value, before, &before);
}

}  // namespace kora4::test

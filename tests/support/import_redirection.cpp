// SPDX-License-Identifier: MIT
// Walks the import table of a module in memory and changes one entry.
#include "support/import_redirection.h"

#include <cstdlib>
#include <cstring>

namespace kora4::test {
namespace {

template <typename T>
T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(module) + offset);
}

}  // namespace

std::uintptr_t* FindImport(HMODULE module, const char* function) {
    const auto* const pDos = At<const IMAGE_DOS_HEADER>(module, 0);
    const auto* const pHeaders =
        At<const IMAGE_NT_HEADERS64>(module, static_cast<DWORD>(pDos->e_lfanew));
    const DWORD imports =
        pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* pDll = At<const IMAGE_IMPORT_DESCRIPTOR>(module, imports);
         pDll->OriginalFirstThunk != 0; ++pDll) {
        const auto* pName = At<const std::uint64_t>(module, pDll->OriginalFirstThunk);
        auto* pSlot = At<std::uintptr_t>(module, pDll->FirstThunk);
        for (; *pName != 0; ++pName, ++pSlot) {
            const auto* const pImport =
                At<const IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(*pName));
            if (!(*pName & IMAGE_ORDINAL_FLAG64) && std::strcmp(pImport->Name, function) == 0)
                return pSlot;
        }
    }
    return nullptr;
}

void ImportRedirection::Write(std::uintptr_t value) const {
    DWORD before = 0;
    if (!VirtualProtect(m_pSlot, sizeof value, PAGE_READWRITE, &before))
        std::abort();
    *m_pSlot = value;
    VirtualProtect(m_pSlot, sizeof value, before, &before);
}

}  // namespace kora4::test

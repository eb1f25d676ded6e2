// SPDX-License-Identifier: MIT
// Leads one imported function of a loaded module elsewhere.
#ifndef KORA4_TESTS_SUPPORT_IMPORT_REDIRECTION_H
#define KORA4_TESTS_SUPPORT_IMPORT_REDIRECTION_H

#include <windows.h>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

namespace kora4::test {

// Every name that a module takes from another one, and the other one's name.
std::vector<std::string> Imports(HMODULE module);

// The place in a module's import table that leads to `function`; null when it imports none of
// that name.
std::uintptr_t* FindImport(HMODULE module, const char* function);

// Changes that place, which is write-protected.
void WriteImport(std::uintptr_t* pSlot, std::uintptr_t value);

// As long as it lives, the module's calls of `function` go to `replacement`, which has the same
// type. The module must stay loaded, and no thread may call meanwhile that expects the old one.
class ImportRedirection {
  public:
    template <typename Function>
    ImportRedirection(HMODULE module, const char* function, Function* replacement)
        : m_pSlot(FindImport(module, function)) {
        if (m_pSlot) {
            m_original = *m_pSlot;
            WriteImport(m_pSlot, std::bit_cast<std::uintptr_t>(replacement));
        }
    }
    ~ImportRedirection() {
        if (m_pSlot)
            WriteImport(m_pSlot, m_original);
    }
    ImportRedirection(const ImportRedirection&) = delete;
    ImportRedirection& operator=(const ImportRedirection&) = delete;

    // False: the module does not import it, and nothing is redirected.
    bool IsInPlace() const { return m_pSlot != nullptr; }

  private:
    std::uintptr_t* const m_pSlot;
    std::uintptr_t m_original = 0;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_IMPORT_REDIRECTION_H

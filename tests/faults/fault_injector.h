// SPDX-License-Identifier: MIT
// Makes the platform calls of a loaded module fail, or the process die at one of them: the
// module's import table leads through here.
#ifndef KORA4_TESTS_FAULTS_FAULT_INJECTOR_H
#define KORA4_TESTS_FAULTS_FAULT_INJECTOR_H

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "faults/failing_functions.h"
#include "support/import_redirection.h"

namespace kora4::test {

// The exit code of a process that died at a call.
inline constexpr UINT cKilled = 98;

// A call that can fail, and how.
struct FailingCall {
    std::string function;
    std::vector<std::uint32_t> codes;  // those that the platform can really give
    bool isOnceOnly;
};

enum class Repeat {
    eOnce,
    eFromThenOn,  // the same function fails until Disarm
};

enum class Death { eBefore, eAfter };

// A fault that happened.
struct Fault {
    std::string function;
    std::uint32_t code;
    Repeat repeat;
};

// One at a time. The module must stay loaded. Calls of all threads count.
class FaultInjector {
  public:
    explicit FaultInjector(HMODULE module);
    ~FaultInjector();
    FaultInjector(const FaultInjector&) = delete;
    FaultInjector& operator=(const FaultInjector&) = delete;

    // From now on the calls are noted, and none fails.
    void Count();
    // From now on the call with this number, the first is 0, fails with its code of this
    // number. If its function has fewer codes, in a run that goes another way, the last is
    // taken.
    void Arm(std::size_t call, std::size_t code, Repeat repeat);
    // From now on the process dies at the registry write with this number, the first is 0.
    void KillAt(std::size_t write, Death death);
    // No call is noted or fails any more.
    void Disarm();

    // What was noted since Count or Arm, in order.
    std::vector<FailingCall> Calls() const;
    // How many registry writes there were since Count.
    std::size_t Writes() const;
    // How many calls have failed since Arm.
    std::size_t Injected() const;
    // What failed first; there must have been one.
    Fault First() const;
    // The blocks of memory that the module has allocated and neither it nor the program, which
    // gets some handed out, has freed since the import table was changed.
    long Blocks() const;

  private:
    void Lead(HMODULE module, const ImportedFunction& function);

    std::list<ImportRedirection> m_redirections;
};

// For example "RegSetKeyValueW fails with 5 once".
std::string Text(const Fault& fault);
std::string CodeText(std::uint32_t code);

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_FAULT_INJECTOR_H

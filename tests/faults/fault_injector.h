// SPDX-License-Identifier: MIT
// Makes the platform calls of a loaded module fail: its import table leads through here.
#ifndef KORA4_TESTS_FAULTS_FAULT_INJECTOR_H
#define KORA4_TESTS_FAULTS_FAULT_INJECTOR_H

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kora4::test {

// A call that can fail, and how.
struct FailingCall {
    std::string function;
    std::vector<std::uint32_t> codes;  // those that the platform can really give
};

enum class Repeat {
    eOnce,
    eFromThenOn,  // the same function fails until Disarm
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
    // number; its function has fewer codes in a run that goes another way: the last is taken.
    void Arm(std::size_t call, std::size_t code, Repeat repeat);
    // No call is noted or fails any more.
    void Disarm();

    // What was noted since Count or Arm, in order.
    std::vector<FailingCall> Calls() const;
    // How many calls have failed since Arm.
    std::size_t Injected() const;
    // What failed first, for example "RegSetKeyValueW fails with 5"; empty when nothing did.
    std::string Description() const;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_FAULT_INJECTOR_H

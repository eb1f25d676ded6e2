// SPDX-License-Identifier: MIT
// The platform's functions that can fail, how each shows it, and with which codes.
#ifndef KORA4_TESTS_FAULTS_FAILING_FUNCTIONS_H
#define KORA4_TESTS_FAULTS_FAILING_FUNCTIONS_H

#include <cstdint>
#include <vector>

namespace kora4::test {

// How a function shows that it failed.
enum class Failing {
    eResult,         // the code is the result: LSTATUS and HRESULT
    eFalse,          // the result is zero or null, the code is the last error
    eInvalidHandle,  // INVALID_HANDLE_VALUE, and the last error
    eWait,           // WAIT_FAILED, and the last error
};

enum class Role {
    eOther,
    eWrites,     // changes what the registry holds
    eAllocates,  // hands out a block of memory
    eFrees,      // gets one back
};

struct ImportedFunction {
    const char* name;
    Failing failing;
    // Those that the platform can really give; none for a function that is only watched.
    std::vector<std::uint32_t> codes;
    Role role;
    // Only one call of it may fail: if none worked any more, the subject would be another one.
    bool isOnceOnly;
    void* replacement;
    void** original;  // where the replacement finds the platform's
    const ImportedFunction** self;
};

// All of them, in no order. Each has one replacement: one module at a time can lead there.
std::vector<ImportedFunction>& ImportedFunctions();

// What is to become of a call.
enum class Fate { eGoOn, eFail, eDieBefore, eDieAfter };

// Asked by each replacement; called by any thread.
Fate FateOf(const ImportedFunction& function);
// What a call that fails gives.
std::uint32_t CodeOf(const ImportedFunction& function);
// A block was handed out (1) or came back (-1).
void CountBlocks(int change);

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_FAILING_FUNCTIONS_H

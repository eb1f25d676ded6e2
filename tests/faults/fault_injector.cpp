// SPDX-License-Identifier: MIT
// What is to fail and what was called, and the entries of the import table.
#include "faults/fault_injector.h"

#include <atomic>
#include <cstdio>
#include <string_view>

namespace kora4::test {
namespace {

constexpr std::size_t cMostCalls = 16384;

const ImportedFunction* s_calls[cMostCalls];
std::atomic<std::size_t> s_count{0};
std::atomic<std::size_t> s_writes{0};
std::atomic<std::size_t> s_injected{0};
std::atomic<long> s_blocks{0};
std::atomic<const ImportedFunction*> s_failing{nullptr};  // from then on
std::atomic<bool> s_isNoting{false};
std::atomic<bool> s_isArmed{false};
std::atomic<bool> s_isDeadly{false};
std::size_t s_call = 0;
std::size_t s_code = 0;
Repeat s_repeat = Repeat::eOnce;
Death s_death = Death::eBefore;

bool IsToFail(const ImportedFunction& function, std::size_t call) {
    if (!s_isArmed)
        return false;
    if (call == s_call) {
        if (s_repeat == Repeat::eFromThenOn && !function.isOnceOnly)
            s_failing = &function;
        return true;
    }
    return s_failing == &function;
}

}  // namespace

Fate FateOf(const ImportedFunction& function) {
    if (!s_isNoting || function.codes.empty())
        return Fate::eGoOn;
    const std::size_t call = s_count.fetch_add(1);
    if (call < cMostCalls)
        s_calls[call] = &function;
    if (function.role == Role::eWrites && s_writes.fetch_add(1) == s_call && s_isDeadly)
        return s_death == Death::eBefore ? Fate::eDieBefore : Fate::eDieAfter;
    if (!IsToFail(function, call))
        return Fate::eGoOn;
    ++s_injected;
    return Fate::eFail;
}

std::uint32_t CodeOf(const ImportedFunction& function) {
    return function.codes[std::min(s_code, function.codes.size() - 1)];
}

void CountBlocks(int change) {
    s_blocks += change;
}

// ---- The import table ----------------------------------------------------------------------

void FaultInjector::Lead(HMODULE module, const ImportedFunction& function) {
    const std::uintptr_t* const pSlot = FindImport(module, function.name);
    if (!pSlot)
        return;
    *function.original = reinterpret_cast<void*>(*pSlot);
    *function.self = &function;
    m_redirections.emplace_back(module, function.name,
                                reinterpret_cast<void (*)()>(function.replacement));
}

FaultInjector::FaultInjector(HMODULE module) {
    for (const ImportedFunction& function : ImportedFunctions()) {
        Lead(module, function);
        // What the module hands out is freed by the program.
        if (std::string_view(function.name) == "CoTaskMemFree")
            Lead(GetModuleHandleW(nullptr), function);
    }
}

FaultInjector::~FaultInjector() {
    Disarm();
}

void FaultInjector::Count() {
    Disarm();
    s_count = 0;
    s_writes = 0;
    s_isNoting = true;
}

void FaultInjector::Arm(std::size_t call, std::size_t code, Repeat repeat) {
    Disarm();
    s_count = 0;
    s_injected = 0;
    s_call = call;
    s_code = code;
    s_repeat = repeat;
    s_isArmed = true;
    s_isNoting = true;
}

void FaultInjector::KillAt(std::size_t write, Death death) {
    Disarm();
    s_count = 0;
    s_writes = 0;
    s_call = write;
    s_death = death;
    s_isDeadly = true;
    s_isNoting = true;
}

void FaultInjector::Disarm() {
    s_isNoting = false;
    s_isArmed = false;
    s_isDeadly = false;
    s_failing = nullptr;
}

std::vector<FailingCall> FaultInjector::Calls() const {
    std::vector<FailingCall> calls;
    for (std::size_t i = 0; i < std::min(s_count.load(), cMostCalls); ++i)
        calls.push_back({s_calls[i]->name, s_calls[i]->codes, s_calls[i]->isOnceOnly});
    return calls;
}

std::size_t FaultInjector::Writes() const {
    return s_writes;
}

std::size_t FaultInjector::Injected() const {
    return s_injected;
}

Fault FaultInjector::First() const {
    const ImportedFunction& function = *s_calls[s_call];
    return {function.name, CodeOf(function), s_repeat};
}

long FaultInjector::Blocks() const {
    return s_blocks;
}

std::string CodeText(std::uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, code < 0x10000 ? "%u" : "0x%08X",
                  static_cast<unsigned>(code));
    return text;
}

std::string Text(const Fault& fault) {
    return fault.function + " fails with " + CodeText(fault.code) +
           (fault.repeat == Repeat::eOnce ? " once" : " from then on");
}

}  // namespace kora4::test

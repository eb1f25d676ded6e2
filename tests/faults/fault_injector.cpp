// SPDX-License-Identifier: MIT
// What is to fail and what was called, and the entries of the import table.
#include "faults/fault_injector.h"

#include <atomic>
#include <cstdio>
#include <string_view>
#include <utility>

#include "faults/failing_functions.h"

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

namespace {

template <typename T>
T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(module) + offset);
}

// The entry of the import table for a function; null when the module does not import it.
void** FindImport(HMODULE module, std::string_view function) {
    const auto* const pDos = At<const IMAGE_DOS_HEADER>(module, 0);
    const auto* const pHeaders =
        At<const IMAGE_NT_HEADERS64>(module, static_cast<DWORD>(pDos->e_lfanew));
    const DWORD imports =
        pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* pDll = At<const IMAGE_IMPORT_DESCRIPTOR>(module, imports);
         pDll->OriginalFirstThunk != 0; ++pDll) {
        const auto* pName = At<const std::uint64_t>(module, pDll->OriginalFirstThunk);
        auto* pSlot = At<void*>(module, pDll->FirstThunk);
        for (; *pName != 0; ++pName, ++pSlot)
            if (!(*pName & IMAGE_ORDINAL_FLAG64) &&
                At<const IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(*pName))->Name ==
                    function)
                return pSlot;
    }
    return nullptr;
}

void Put(void** pSlot, void* function) {
    DWORD before = 0;
    VirtualProtect(pSlot, sizeof function, PAGE_READWRITE, &before);
    *pSlot = function;
    VirtualProtect(pSlot, sizeof function, before, &before);
}

std::vector<std::pair<void**, void*>> s_patched;

void Lead(HMODULE module, const ImportedFunction& function) {
    void** const pSlot = FindImport(module, function.name);
    if (!pSlot)
        return;
    *function.original = *pSlot;
    *function.self = &function;
    s_patched.emplace_back(pSlot, *pSlot);
    Put(pSlot, function.replacement);
}

}  // namespace

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
    for (const auto& [pSlot, original] : s_patched)
        Put(pSlot, original);
    s_patched.clear();
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

// SPDX-License-Identifier: MIT
// Replaces entries of an import table by functions that fail on demand and otherwise go on to
// the platform.
#include "faults/fault_injector.h"

#include <objbase.h>

#include <atomic>
#include <cstdlib>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kora4::test {
namespace {

enum class Failing {
    eResult,  // the code is the result: LSTATUS and HRESULT
    eFalse,   // the result is zero or null, the code is the last error
    eWait,    // WAIT_FAILED, and the last error
};

struct Function {
    const char* name;
    Failing failing;
    std::vector<std::uint32_t> codes;
    void* replacement;
    void** original;  // where the replacement finds the platform's
    const Function** self;
};

// ---- What is to fail -----------------------------------------------------------------------

constexpr std::size_t cMostCalls = 16384;

const Function* s_calls[cMostCalls];
std::atomic<std::size_t> s_count{0};
std::atomic<std::size_t> s_injected{0};
std::atomic<const Function*> s_failing{nullptr};  // from then on
std::atomic<bool> s_isNoting{false};
std::atomic<bool> s_isArmed{false};
std::size_t s_call = 0;
std::size_t s_code = 0;
Repeat s_repeat = Repeat::eOnce;

std::uint32_t CodeOf(const Function& function) {
    return function.codes[std::min(s_code, function.codes.size() - 1)];
}

// Whether this call is to fail.
bool Fails(const Function& function) {
    if (!s_isNoting)
        return false;
    const std::size_t index = s_count.fetch_add(1);
    if (index < cMostCalls)
        s_calls[index] = &function;
    if (!s_isArmed)
        return false;
    if (index == s_call) {
        if (s_repeat == Repeat::eFromThenOn)
            s_failing = &function;
    } else if (s_failing != &function) {
        return false;
    }
    ++s_injected;
    return true;
}

// ---- The replacements ----------------------------------------------------------------------

// What a failing call leaves behind besides its result.
template <typename... A>
void BeforeFailing(const Function&, A...) {}

// The value has grown since its size was asked.
void BeforeFailing(const Function& function, HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE,
                   LPDWORD pSize) {
    if (CodeOf(function) == ERROR_MORE_DATA && pSize)
        *pSize = *pSize * 2 + 1;
}

// The stream is released in any case.
void BeforeFailing(const Function&, LPSTREAM pStream, REFIID, LPVOID*) {
    CoReleaseMarshalData(pStream);
    pStream->Release();
}

template <typename F, typename Unique>
struct Replacement;

// `Unique` keeps functions of the same signature apart.
template <typename R, typename... A, typename Unique>
struct Replacement<R (*)(A...), Unique> {
    static R Call(A... arguments) {
        if (!Fails(*s_self))
            return reinterpret_cast<R (*)(A...)>(s_original)(arguments...);
        BeforeFailing(*s_self, arguments...);
        const std::uint32_t code = CodeOf(*s_self);
        if constexpr (std::is_pointer_v<R>) {
            SetLastError(code);
            return nullptr;
        } else {
            if (s_self->failing == Failing::eResult)
                return static_cast<R>(code);
            SetLastError(code);
            return static_cast<R>(s_self->failing == Failing::eWait ? WAIT_FAILED : 0);
        }
    }

    static inline void* s_original = nullptr;
    static inline const Function* s_self = nullptr;
};

// On x64 there is one calling convention.
template <typename F, typename Unique = decltype([] {})>
Function Row(const char* name, Failing failing, std::vector<std::uint32_t> codes) {
    using Replaced = Replacement<F, Unique>;
    return {name,
            failing,
            std::move(codes),
            reinterpret_cast<void*>(&Replaced::Call),
            &Replaced::s_original,
            &Replaced::s_self};
}

constexpr std::uint32_t cOutOfMemory = ERROR_NOT_ENOUGH_MEMORY;
constexpr auto cNoMemory = static_cast<std::uint32_t>(E_OUTOFMEMORY);

std::vector<Function>& Functions() {
    using enum Failing;
    static std::vector<Function> functions = {
        Row<decltype(&RegOpenKeyExW)>("RegOpenKeyExW", eResult,
                                      {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, cOutOfMemory,
                                       ERROR_KEY_DELETED}),
        Row<decltype(&RegCreateKeyExW)>(
            "RegCreateKeyExW", eResult,
            {ERROR_ACCESS_DENIED, cOutOfMemory, ERROR_KEY_DELETED}),
        Row<decltype(&RegQueryValueExW)>("RegQueryValueExW", eResult,
                                         {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED,
                                          ERROR_INVALID_HANDLE, cOutOfMemory, ERROR_MORE_DATA,
                                          ERROR_KEY_DELETED}),
        Row<decltype(&RegQueryInfoKeyW)>(
            "RegQueryInfoKeyW", eResult,
            {ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE, cOutOfMemory, ERROR_KEY_DELETED}),
        Row<decltype(&RegSetKeyValueW)>(
            "RegSetKeyValueW", eResult,
            {ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE, cOutOfMemory, ERROR_KEY_DELETED}),
        Row<decltype(&RegSetValueExW)>(
            "RegSetValueExW", eResult,
            {ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE, cOutOfMemory, ERROR_KEY_DELETED}),
        Row<decltype(&RegDeleteValueW)>("RegDeleteValueW", eResult,
                                        {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED,
                                         ERROR_INVALID_HANDLE, ERROR_KEY_DELETED}),
        Row<decltype(&RegDeleteKeyW)>(
            "RegDeleteKeyW", eResult,
            {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_KEY_DELETED}),
        Row<decltype(&RegDeleteTreeW)>(
            "RegDeleteTreeW", eResult,
            {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_KEY_DELETED}),
        Row<decltype(&RegNotifyChangeKeyValue)>(
            "RegNotifyChangeKeyValue", eResult,
            {ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE, cOutOfMemory, ERROR_KEY_DELETED}),
        Row<decltype(&RegSetKeySecurity)>("RegSetKeySecurity", eResult,
                                          {ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE}),
        Row<decltype(&CreateEventW)>("CreateEventW", eFalse, {cOutOfMemory}),
        Row<decltype(&CreateMutexW)>(
            "CreateMutexW", eFalse, {ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE, cOutOfMemory}),
        Row<decltype(&OpenMutexW)>(
            "OpenMutexW", eFalse, {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, cOutOfMemory}),
        Row<decltype(&CreateThread)>("CreateThread", eFalse, {cOutOfMemory}),
        Row<decltype(&DuplicateHandle)>("DuplicateHandle", eFalse, {cOutOfMemory}),
        Row<decltype(&GetModuleHandleExW)>("GetModuleHandleExW", eFalse, {cOutOfMemory}),
        Row<decltype(&GetModuleFileNameW)>("GetModuleFileNameW", eFalse, {cOutOfMemory}),
        Row<decltype(&malloc)>("malloc", eFalse, {cOutOfMemory}),
        Row<decltype(&calloc)>("calloc", eFalse, {cOutOfMemory}),
        Row<decltype(&realloc)>("realloc", eFalse, {cOutOfMemory}),
        Row<decltype(&CoTaskMemAlloc)>("CoTaskMemAlloc", eFalse, {cOutOfMemory}),
        Row<decltype(&CoGetApartmentType)>(
            "CoGetApartmentType", eResult,
            {cNoMemory, static_cast<std::uint32_t>(CO_E_NOTINITIALIZED)}),
        Row<decltype(&CoInitializeEx)>(
            "CoInitializeEx", eResult,
            {cNoMemory, static_cast<std::uint32_t>(RPC_E_CHANGED_MODE)}),
        Row<decltype(&CoIncrementMTAUsage)>("CoIncrementMTAUsage", eResult, {cNoMemory}),
        Row<decltype(&CoRegisterInitializeSpy)>("CoRegisterInitializeSpy", eResult,
                                                {cNoMemory}),
        Row<decltype(&CoRegisterClassObject)>("CoRegisterClassObject", eResult, {cNoMemory}),
        Row<decltype(&CoRegisterPSClsid)>("CoRegisterPSClsid", eResult, {cNoMemory}),
        Row<decltype(&CoMarshalInterThreadInterfaceInStream)>(
            "CoMarshalInterThreadInterfaceInStream", eResult,
            {cNoMemory, static_cast<std::uint32_t>(E_NOINTERFACE)}),
        Row<decltype(&CoGetInterfaceAndReleaseStream)>(
            "CoGetInterfaceAndReleaseStream", eResult,
            {cNoMemory, static_cast<std::uint32_t>(RPC_E_DISCONNECTED)}),
        Row<decltype(&CoDisableCallCancellation)>("CoDisableCallCancellation", eResult,
                                                  {cNoMemory}),
        Row<decltype(&CoDisconnectObject)>("CoDisconnectObject", eResult, {cNoMemory}),
    };
    return functions;
}

// ---- The import table ----------------------------------------------------------------------

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

}  // namespace

FaultInjector::FaultInjector(HMODULE module) {
    for (const Function& function : Functions()) {
        void** const pSlot = FindImport(module, function.name);
        if (!pSlot)
            continue;
        *function.original = *pSlot;
        *function.self = &function;
        s_patched.emplace_back(pSlot, *pSlot);
        Put(pSlot, function.replacement);
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

void FaultInjector::Disarm() {
    s_isNoting = false;
    s_isArmed = false;
    s_failing = nullptr;
}

std::vector<FailingCall> FaultInjector::Calls() const {
    std::vector<FailingCall> calls;
    for (std::size_t i = 0; i < std::min(s_count.load(), cMostCalls); ++i)
        calls.push_back({s_calls[i]->name, s_calls[i]->codes});
    return calls;
}

std::size_t FaultInjector::Injected() const {
    return s_injected;
}

std::string FaultInjector::Description() const {
    if (s_injected == 0 || s_call >= cMostCalls)
        return {};
    const Function& function = *s_calls[s_call];
    return "call " + std::to_string(s_call) + ", " + function.name + " fails with " +
           std::to_string(CodeOf(function)) +
           (s_repeat == Repeat::eOnce ? " once" : " from then on");
}

}  // namespace kora4::test

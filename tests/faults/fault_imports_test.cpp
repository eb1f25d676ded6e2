// SPDX-License-Identifier: MIT
// That the table of failing functions has every import of the library, but for those that
// cannot fail in a way that anybody could prepare for.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "faults/failing_functions.h"
#include "support/com_client.h"
#include "support/import_redirection.h"

namespace kora4::test {
namespace {

// They have no way to fail, or fail for wrong arguments only.
constexpr const char* cCannotFail[] = {
    "AcquireSRWLockExclusive",
    "CoGetApartmentType",  // fails on a thread without an apartment, which is an answer
    "GetCurrentProcess",
    "GetCurrentProcessId",
    "GetCurrentThread",
    "GetCurrentThreadId",
    "GetLastError",
    "GetModuleHandleW",
    "GetProcAddress",
    "GetProcessIdOfThread",
    "GetThreadId",
    "GetTickCount64",
    "InitializeCriticalSectionEx",  // since Windows Vista
    "IsDebuggerPresent",
    "LockResource",
    "OutputDebugStringA",
    "PeekMessageW",
    "PostQuitMessage",
    "ReleaseSRWLockExclusive",
    "SetEvent",
    "SetLastError",
    "SizeofResource",
    "Sleep",
    "WideCharToMultiByte",
    "_snprintf",
    "memchr",
    "memcmp",
    "memcpy",
    "memmove",
    "memset",
    "strlen",
    "strncmp",
    "strrchr",
    "wcslen",
};

// They give something back: who calls one has nothing left to do if it fails.
constexpr const char* cGivesBack[] = {
    "CloseHandle",
    "CoDecrementMTAUsage",
    "CoReleaseMarshalData",
    "CoRevokeClassObject",
    "CoRevokeInitializeSpy",
    "CoUninitialize",
    "DeleteCriticalSection",
    "FreeLibrary",
    "FreeLibraryAndExitThread",
    "LocalFree",
    "PropVariantClear",
    "RegCloseKey",
    "ReleaseMutex",
    "TerminateThread",  // of a thread that hangs
};

// The library's own code calls none of them: the start of the C runtime and its last words, the
// type library's helper, and the proxies and stubs, which the platform calls by their tables.
constexpr const char* cNotOurs[] = {
    "CStdStubBuffer_AddRef",
    "CStdStubBuffer_Connect",
    "CStdStubBuffer_CountRefs",
    "CStdStubBuffer_DebugServerQueryInterface",
    "CStdStubBuffer_DebugServerRelease",
    "CStdStubBuffer_Disconnect",
    "CStdStubBuffer_Invoke",
    "CStdStubBuffer_IsIIDSupported",
    "CStdStubBuffer_QueryInterface",
    "EnterCriticalSection",
    "GetStartupInfoW",
    "GetThreadLocale",
    "IUnknown_AddRef_Proxy",
    "IUnknown_QueryInterface_Proxy",
    "IUnknown_Release_Proxy",
    "InitializeCriticalSection",
    "LeaveCriticalSection",
    "NdrCStdStubBuffer_Release",
    "NdrClientCall2",
    "NdrDllCanUnloadNow",
    "NdrOleAllocate",
    "NdrOleFree",
    "SetThreadLocale",
    "TlsGetValue",
    "VirtualProtect",
    "VirtualQuery",
    "__iob_func",
    "_amsg_exit",
    "_initterm",
    "_lock",
    "_unlock",
    "abort",
    "calloc",
    "fwrite",
    "realloc",
    "vfprintf",
};

bool IsIn(std::span<const char* const> names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

TEST(FaultImports, OfTheLibraryAllFailOrHaveAReasonNotTo) {
    const ApiLibrary library;
    std::vector<std::string> failing;
    for (const ImportedFunction& function : ImportedFunctions())
        failing.emplace_back(function.name);
    const std::vector<std::string> imports = Imports(GetModuleHandleW(L"QXA64T.dll"));
    for (const std::string& function : failing)
        EXPECT_EQ(1, std::ranges::count(imports, function)) << function << " is never called";
#ifdef NDEBUG
    // Unoptimised, the library also has what its optimised code does without.
    for (const std::string& import : imports)
        EXPECT_EQ(1, std::ranges::count(failing, import) + IsIn(cCannotFail, import) +
                         IsIn(cGivesBack, import) + IsIn(cNotOurs, import) +
                         import.ends_with(".dll"))
            << import;
#endif
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Counts handles, threads and the next TLS index; handles by the system's table, since Wine 8
// reports none by GetProcessHandleCount.
#include "multiprocess/process_counts.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <bit>
#include <cstdio>
#include <vector>

#include "platform/handles.h"
#include "support/com_client.h"

namespace kora4::test {
namespace {

struct HandleEntry {
    void* object;
    ULONG_PTR processId;
    ULONG_PTR handle;
    ULONG access;
    USHORT creatorIndex;
    USHORT objectType;
    ULONG attributes;
    ULONG reserved;
};

struct HandleTable {
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry entries[1];
};

// With the class of information as a number: the header has no name for this one.
using QuerySystem = NTSTATUS(NTAPI*)(ULONG kind, void* pData, ULONG size, ULONG* pNeeded);
constexpr ULONG cExtendedHandles = 64;
constexpr NTSTATUS cTooSmall = static_cast<NTSTATUS>(0xC0000004);

std::size_t CountHandles(DWORD processId) {
    const auto query = std::bit_cast<QuerySystem>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation"));
    std::vector<ULONG_PTR> memory(0x4000);
    NTSTATUS status = cTooSmall;
    while (status == cTooSmall) {
        memory.resize(memory.size() * 2);
        const auto size = static_cast<ULONG>(memory.size() * sizeof memory[0]);
        ULONG needed = 0;
        status = query(cExtendedHandles, memory.data(), size, &needed);
    }
    if (status != 0)
        return 0;
    const auto* const pTable = reinterpret_cast<const HandleTable*>(memory.data());
    std::size_t handles = 0;
    for (ULONG_PTR i = 0; i < pTable->count; ++i)
        handles += pTable->entries[i].processId == processId;
    return handles;
}

std::size_t CountThreads(DWORD processId) {
    const UniqueHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t threads = 0;
    for (BOOL more = Thread32First(snapshot.Get(), &entry); more;
         more = Thread32Next(snapshot.Get(), &entry))
        threads += entry.th32OwnerProcessID == processId;
    return threads;
}

DWORD NextTlsIndex() {
    const DWORD index = TlsAlloc();
    TlsFree(index);
    return index;
}

}  // namespace

ProcessCounts ProcessCounts::Now() {
    const DWORD processId = GetCurrentProcessId();
    return {CountHandles(processId), CountThreads(processId), NextTlsIndex()};
}

ProcessCounts ProcessCounts::Of(DWORD processId) {
    return {CountHandles(processId), CountThreads(processId), 0};
}

ProcessCounts ProcessCounts::AtMost(const ProcessCounts& expected) {
    ProcessCounts counts = Now();
    PumpUntil(
        [&] {
            counts = Now();
            return counts.handles <= expected.handles && counts.threads <= expected.threads;
        },
        nullptr, 3000);
    return counts;
}

std::size_t HeapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(ARRAYSIZE(heaps), heaps);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count && i < ARRAYSIZE(heaps); ++i) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
                bytes += entry.cbData;
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

bool MustGiveMemoryBack() {
#ifdef NDEBUG
    return true;
#else
    std::printf("the library is not optimised: its memory is not compared\n");
    return false;
#endif
}

}  // namespace kora4::test

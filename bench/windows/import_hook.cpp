// SPDX-License-Identifier: MIT
// Patches a module's import table with thunks in machine code that count a call and jump on;
// counts the calls through the gate as well.
#include "windows/import_hook.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

#include "comcallbackgate.h"
#include "windows/place.h"

namespace kora4::bench {
namespace {

// Not noted: they end inside the process, or nobody waits for them.
constexpr char cSilent[] = "";
// The kind of a query is that of the value.
constexpr char cQuery[] = "query";

struct FunctionKind {
    std::string_view function;
    const char* kind;
};

constexpr FunctionKind cKinds[] = {
    {"RegQueryValueExW", cQuery},
    {"RegSetKeyValueW", call::cSet},
    {"RegSetValueExW", call::cSet},
    {"RegDeleteValueW", call::cDelete},
    {"RegNotifyChangeKeyValue", call::cArm},
    {"RegOpenKeyExW", call::cOpen},
    {"RegCreateKeyExW", call::cOpen},
    {"RegCloseKey", call::cClose},
    {"CloseHandle", call::cClose},
    {"WaitForSingleObject", call::cWait},
    {"WaitForMultipleObjects", call::cWait},
    {"CoWaitForMultipleHandles", call::cWait},
    {"ReleaseMutex", call::cRelease},
    {"CreateEventW", call::cCreate},
    {"CreateMutexW", call::cCreate},
    {"OpenMutexW", call::cOpen},
    {"CreateThread", call::cCreate},
    {"DuplicateHandle", call::cCreate},
    {"SetEvent", call::cSignal},
    {"OutputDebugStringA", call::cLine},
    {"CoTaskMemAlloc", call::cAllocation},
    {"malloc", call::cAllocation},
    {"calloc", call::cAllocation},
    {"realloc", call::cAllocation},
    {"GetModuleHandleW", call::cModule},
    {"GetModuleHandleExW", call::cModule},
    {"GetProcAddress", call::cModule},
    {"FreeLibrary", call::cModule},
    {"FreeLibraryAndExitThread", call::cModule},
    {"PeekMessageW", call::cMessage},
    {"PostThreadMessageW", call::cMessage},
    {"RegisterWindowMessageW", call::cMessage},
    {"NdrClientCall2", call::cCom},
    // An allocation is given back; it is counted once.
    {"CoTaskMemFree", cSilent},
    {"IUnknown_AddRef_Proxy", cSilent},
    {"IUnknown_QueryInterface_Proxy", cSilent},
    {"IUnknown_Release_Proxy", cSilent},
    {"PropVariantClear", cSilent},
    {"CoGetApartmentType", cSilent},
    {"AcquireSRWLockExclusive", cSilent},
    {"ReleaseSRWLockExclusive", cSilent},
    {"InitializeCriticalSection", cSilent},
    {"InitializeCriticalSectionEx", cSilent},
    {"EnterCriticalSection", cSilent},
    {"TryEnterCriticalSection", cSilent},
    {"LeaveCriticalSection", cSilent},
    {"DeleteCriticalSection", cSilent},
    {"GetCurrentProcess", cSilent},
    {"GetCurrentProcessId", cSilent},
    {"GetCurrentThread", cSilent},
    {"GetCurrentThreadId", cSilent},
    {"GetLastError", cSilent},
    {"SetLastError", cSilent},
    {"GetTickCount64", cSilent},
    {"IsDebuggerPresent", cSilent},
    {"GetStartupInfoW", cSilent},
    {"TlsGetValue", cSilent},
    {"MultiByteToWideChar", cSilent},
    {"WideCharToMultiByte", cSilent},
    {"IsDBCSLeadByteEx", cSilent},
};

const char* KindOf(const char* dll, const char* function) {
    const auto found =
        std::find_if(std::begin(cKinds), std::end(cKinds),
                     [function](const FunctionKind& row) { return row.function == function; });
    if (found != std::end(cKinds))
        return found->kind;
    // Of the C run-time only the allocations count, of the stubs nothing: they are the
    // other half of a call that is counted where it is made.
    if (_stricmp(dll, "msvcrt.dll") == 0 || _stricmp(dll, "rpcrt4.dll") == 0)
        return cSilent;
    if (_stricmp(dll, "ole32.dll") == 0 || _stricmp(dll, "combase.dll") == 0)
        return call::cCom;
    return function;
}

// What a thunk leaves on the stack when it asks: the register arguments, the return address
// and, above the caller's own room for the former, the stack arguments.
struct Arguments {
    std::uintptr_t r9, r8, rdx, rcx;
    std::uintptr_t returnAddress;
    std::uintptr_t home[4];
    std::uintptr_t fifth, sixth;
};

struct Note {
    const char* kind;
    DWORD thread;
    HKEY key;
    wchar_t value[cValueNameCapacity];
};

constexpr std::size_t cMostNotes = 8192;
Note s_notes[cMostNotes];
std::atomic<std::size_t> s_count{0};
std::atomic<bool> s_on{false};

// A reader brings four bytes for a number, no room yet for a blob, and the most that it would
// take for a text. A value that is stored says it itself.
const char* KindOfQuery(const Arguments& arguments) {
    const auto key = reinterpret_cast<HKEY>(arguments.rcx);
    const auto* const name = reinterpret_cast<const wchar_t*>(arguments.rdx);
    DWORD type = REG_NONE;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, nullptr) == ERROR_SUCCESS)
        return type == REG_DWORD ? call::cNumber : type == REG_SZ ? call::cText : call::cBlob;
    if (arguments.fifth == 0)
        return call::cBlob;
    return *reinterpret_cast<const DWORD*>(arguments.sixth) == sizeof(DWORD) ? call::cNumber
                                                                             : call::cText;
}

void Notice(const char* kind, const Arguments* pArguments) {
    if (!s_on.load())
        return;
    const DWORD error = GetLastError();
    const std::size_t index = s_count.fetch_add(1);
    if (index < cMostNotes) {
        Note& note = s_notes[index];
        note.thread = GetCurrentThreadId();
        note.key = nullptr;
        note.value[0] = L'\0';
        note.kind = kind;
        if (kind == cQuery) {
            note.kind = KindOfQuery(*pArguments);
            note.key = reinterpret_cast<HKEY>(pArguments->rcx);
            std::wcsncpy(note.value, reinterpret_cast<const wchar_t*>(pArguments->rdx),
                         cValueNameCapacity - 1);
        }
    }
    SetLastError(error);
}

// The gate that the monitor calls through: such a call leaves the module through a table of
// the platform's, which no import shows.
class CountedGate final : public ICOMCallbackGate {
  public:
    explicit CountedGate(ICOMCallbackGate* pGate) : m_pGate(pGate) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        return m_pGate->QueryInterface(iid, ppv);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            Notice(call::cCom, nullptr);
            m_pGate->Release();
            delete this;
        }
        return left;
    }
    STDMETHODIMP Callback(ULONG value) override {
        Notice(call::cCom, nullptr);
        return m_pGate->Callback(value);
    }

  private:
    ~CountedGate() = default;

    ICOMCallbackGate* const m_pGate;
    std::atomic<ULONG> m_references{1};
};

HRESULT WINAPI UnmarshalCounted(IStream* pStream, REFIID iid, void** ppv) {
    const HRESULT hr = CoGetInterfaceAndReleaseStream(pStream, iid, ppv);
    if (SUCCEEDED(hr) && iid == __uuidof(ICOMCallbackGate))
        *ppv = new CountedGate(static_cast<ICOMCallbackGate*>(*ppv));
    return hr;
}

// Saves what carries arguments, calls Notice(kind, saved) and goes on to the function as if
// nothing had been.
constexpr std::uint8_t cThunk[] = {
    0x51,                                            // push rcx
    0x52,                                            // push rdx
    0x41, 0x50,                                      // push r8
    0x41, 0x51,                                      // push r9
    0x48, 0x83, 0xEC, 0x68,                          // sub rsp, 68h
    0xF3, 0x0F, 0x7F, 0x44, 0x24, 0x20,              // movdqu [rsp+20h], xmm0
    0xF3, 0x0F, 0x7F, 0x4C, 0x24, 0x30,              // movdqu [rsp+30h], xmm1
    0xF3, 0x0F, 0x7F, 0x54, 0x24, 0x40,              // movdqu [rsp+40h], xmm2
    0xF3, 0x0F, 0x7F, 0x5C, 0x24, 0x50,              // movdqu [rsp+50h], xmm3
    0x48, 0xB9, 0,    0,    0,    0,    0, 0, 0, 0,  // mov rcx, kind
    0x48, 0x8D, 0x54, 0x24, 0x68,                    // lea rdx, [rsp+68h]
    0x48, 0xB8, 0,    0,    0,    0,    0, 0, 0, 0,  // mov rax, Notice
    0xFF, 0xD0,                                      // call rax
    0xF3, 0x0F, 0x6F, 0x44, 0x24, 0x20,              // movdqu xmm0, [rsp+20h]
    0xF3, 0x0F, 0x6F, 0x4C, 0x24, 0x30,              // movdqu xmm1, [rsp+30h]
    0xF3, 0x0F, 0x6F, 0x54, 0x24, 0x40,              // movdqu xmm2, [rsp+40h]
    0xF3, 0x0F, 0x6F, 0x5C, 0x24, 0x50,              // movdqu xmm3, [rsp+50h]
    0x48, 0x83, 0xC4, 0x68,                          // add rsp, 68h
    0x41, 0x59,                                      // pop r9
    0x41, 0x58,                                      // pop r8
    0x5A,                                            // pop rdx
    0x59,                                            // pop rcx
    0x48, 0xB8, 0,    0,    0,    0,    0, 0, 0, 0,  // mov rax, function
    0xFF, 0xE0,                                      // jmp rax
};
constexpr std::size_t cKindAt = 36;
constexpr std::size_t cNoticeAt = 51;
constexpr std::size_t cFunctionAt = sizeof cThunk - 10;
static_assert(cThunk[cKindAt - 2] == 0x48 && cThunk[cKindAt - 1] == 0xB9);
static_assert(cThunk[cNoticeAt - 2] == 0x48 && cThunk[cNoticeAt - 1] == 0xB8);
static_assert(cThunk[cFunctionAt - 2] == 0x48 && cThunk[cFunctionAt - 1] == 0xB8);

template <typename Pointer>
void PutPointer(std::uint8_t* pAt, Pointer pointer) {
    std::memcpy(pAt, &pointer, sizeof pointer);
}

template <typename T>
T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(module) + offset);
}

}  // namespace

struct ImportHook::Thunks {
    struct Patch {
        std::uintptr_t* pSlot;
        std::uintptr_t function;
    };

    ~Thunks() {
        s_on = false;
        for (const Patch& patch : patches)
            Write(patch.pSlot, patch.function);
        if (pCode)
            VirtualFree(pCode, 0, MEM_RELEASE);
    }

    static void Write(std::uintptr_t* pSlot, std::uintptr_t value) {
        DWORD before = 0;
        if (!VirtualProtect(pSlot, sizeof value, PAGE_READWRITE, &before))
            Fail("the import table cannot be changed");
        *pSlot = value;
        VirtualProtect(pSlot, sizeof value, before, &before);
    }

    void Lead(std::uintptr_t* pSlot, const char* kind, std::uintptr_t function) {
        std::uint8_t* const pThunk = pCode + patches.size() * sizeof cThunk;
        std::memcpy(pThunk, cThunk, sizeof cThunk);
        PutPointer(pThunk + cKindAt, kind);
        PutPointer(pThunk + cNoticeAt, &Notice);
        PutPointer(pThunk + cFunctionAt, function);
        patches.push_back({pSlot, *pSlot});
        Write(pSlot, reinterpret_cast<std::uintptr_t>(pThunk));
    }

    std::uint8_t* pCode = nullptr;
    std::vector<Patch> patches;
};

ImportHook::ImportHook(HMODULE module) : m_thunks(std::make_unique<Thunks>()) {
    constexpr std::size_t cMostImports = 512;
    m_thunks->pCode = static_cast<std::uint8_t*>(
        VirtualAlloc(nullptr, cMostImports * sizeof cThunk, MEM_COMMIT | MEM_RESERVE,
                     PAGE_EXECUTE_READWRITE));
    if (!m_thunks->pCode)
        Fail("no memory for code");
    const auto* const pDos = At<const IMAGE_DOS_HEADER>(module, 0);
    const auto* const pHeaders =
        At<const IMAGE_NT_HEADERS64>(module, static_cast<DWORD>(pDos->e_lfanew));
    const DWORD imports =
        pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* pDll = At<const IMAGE_IMPORT_DESCRIPTOR>(module, imports);
         pDll->OriginalFirstThunk != 0; ++pDll) {
        const auto* pName = At<const std::uint64_t>(module, pDll->OriginalFirstThunk);
        auto* pSlot = At<std::uintptr_t>(module, pDll->FirstThunk);
        for (; *pName != 0 && m_thunks->patches.size() < cMostImports; ++pName, ++pSlot) {
            if (*pName & IMAGE_ORDINAL_FLAG64)
                Fail("an import without a name");
            const char* const dll = At<const char>(module, pDll->Name);
            const char* const function =
                At<const IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(*pName))->Name;
            const bool isUnmarshal =
                std::string_view(function) == "CoGetInterfaceAndReleaseStream";
            if (const char* const kind = KindOf(dll, function); kind != cSilent)
                m_thunks->Lead(
                    pSlot, kind,
                    isUnmarshal ? reinterpret_cast<std::uintptr_t>(&UnmarshalCounted) : *pSlot);
        }
    }
}

ImportHook::~ImportHook() = default;

void ImportHook::Start() {
    s_count = 0;
    s_on = true;
}

void ImportHook::Stop() {
    s_on = false;
    if (s_count.load() > cMostNotes)
        Fail("more calls than can be noted");
}

std::vector<ImportedCall> ImportHook::Calls() const {
    std::vector<ImportedCall> calls;
    const std::size_t count = s_count.load();
    for (std::size_t i = 0; i < count && i < cMostNotes; ++i) {
        const Note& note = s_notes[i];
        calls.push_back({note.kind, note.thread, note.value, note.key});
    }
    return calls;
}

CallList ImportHook::Kinds(bool own) const {
    CallList list;
    for (const ImportedCall& imported : Calls())
        if ((imported.thread == GetCurrentThreadId()) == own)
            list.push_back(imported.kind);
    return list;
}

CallList ImportHook::OwnCalls() const {
    return Kinds(true);
}

CallList ImportHook::OtherCalls() const {
    return Kinds(false);
}

bool ImportHook::AwaitRest() const {
    const ULONGLONG end = GetTickCount64() + 10000;
    for (CallList others = OtherCalls(); others.empty() || others.back() != call::cWait;
         others = OtherCalls()) {
        if (GetTickCount64() > end)
            return false;
        Sleep(10);
    }
    return true;
}

}  // namespace kora4::bench

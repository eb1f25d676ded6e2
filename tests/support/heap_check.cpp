// SPDX-License-Identifier: MIT
// Blocks at the ends of pages, and the ways by which a module and COM come to them.
#include "support/heap_check.h"

#include <objbase.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>

#include "support/import_redirection.h"

namespace kora4::test {

namespace {

constexpr std::size_t cPage = 4096;
constexpr std::size_t cAlignment = 16;
constexpr std::size_t cFront = 64;  // bytes in front of a block that are compared
constexpr std::uint8_t cFill = 0xA5;
constexpr std::size_t cKeptPages = 4096;  // of freed blocks, before their addresses are reused

struct Block {
    std::size_t size;
    std::uint8_t* pBase;
    std::size_t pages;
    void* pPlatforms;
};

struct State {
    SRWLOCK lock = SRWLOCK_INIT;
    std::map<void*, Block> live;
    std::map<void*, Block> freed;
    std::deque<void*> freedInOrder;
    std::size_t keptPages = 0;
    std::size_t checked = 0;
};

State& TheState() {
    static State& state = *new State;
    return state;
}

class Hold {
  public:
    Hold() { AcquireSRWLockExclusive(&TheState().lock); }
    ~Hold() { ReleaseSRWLockExclusive(&TheState().lock); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
};

[[noreturn]] void Complain(const char* what, const void* p, std::size_t size) {
    std::fprintf(stderr, "heap check: %s: block %p of %zu bytes\n", what, p, size);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), cHeapFault);
    std::abort();
}

bool IsFilled(const std::uint8_t* pBegin, const std::uint8_t* pEnd) {
    for (; pBegin != pEnd; ++pBegin)
        if (*pBegin != cFill)
            return false;
    return true;
}

void Forget(State& state, void* p, const Block& block) {
    state.freed[p] = block;
    state.freedInOrder.push_back(p);
    state.keptPages += block.pages;
    while (state.keptPages > cKeptPages) {
        const auto oldest = state.freed.find(state.freedInOrder.front());
        state.freedInOrder.pop_front();
        state.keptPages -= oldest->second.pages;
        VirtualFree(oldest->second.pBase, 0, MEM_RELEASE);
        state.freed.erase(oldest);
    }
}

// Ends the process at a touch of the page behind a block, or of a freed one, before the
// platform asks for a debugger.
LONG CALLBACK OnException(EXCEPTION_POINTERS* pPointers) {
    const EXCEPTION_RECORD& record = *pPointers->ExceptionRecord;
    if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION)
        return EXCEPTION_CONTINUE_SEARCH;
    const auto* const pTouched =
        reinterpret_cast<const std::uint8_t*>(record.ExceptionInformation[1]);
    for (const auto* pBlocks : {&TheState().live, &TheState().freed})
        for (const auto& [p, block] : *pBlocks)
            if (pTouched >= block.pBase && pTouched < block.pBase + (block.pages + 1) * cPage)
                Complain(pBlocks == &TheState().live ? "touched behind" : "touched after free",
                         p, block.size);
    return EXCEPTION_CONTINUE_SEARCH;
}

// A block's size; 0 when it is not checked.
std::size_t SizeOf(void* p) {
    const Hold hold;
    const auto found = TheState().live.find(p);
    return found == TheState().live.end() ? 0 : found->second.size;
}

// ---- The C runtime
// ---------------------------------------------------------------------------

void* __cdecl CheckedMalloc(std::size_t size) {
    return AllocateChecked(size);
}

void* __cdecl CheckedCalloc(std::size_t count, std::size_t size) {
    if (size != 0 && count > SIZE_MAX / size)
        return nullptr;
    void* const p = AllocateChecked(count * size);
    return p ? std::memset(p, 0, count * size) : nullptr;
}

// What was allocated before the import table was changed is the runtime's own.
void __cdecl CheckedFree(void* p) {
    if (p && !FreeChecked(p))
        std::free(p);
}

void* __cdecl CheckedRealloc(void* p, std::size_t size) {
    const std::size_t before = p ? SizeOf(p) : 0;
    if (p && before == 0)
        return std::realloc(p, size);
    void* const pNew = AllocateChecked(size);
    if (pNew && p) {
        std::memcpy(pNew, p, before < size ? before : size);
        FreeChecked(p);
    }
    return pNew;
}

// ---- COM
// -------------------------------------------------------------------------------------

// The platform allocates a small block and is handed the checked one in its place. It calls one
// method at a time.
class Spy final : public IMallocSpy {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        const bool isOurs = iid == IID_IUnknown || iid == IID_IMallocSpy;
        *ppv = isOurs ? this : nullptr;
        return isOurs ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override {
        m_size = size;
        return cAlignment;
    }
    STDMETHODIMP_(void*) PostAlloc(void* pPlatforms) override {
        return pPlatforms ? AllocateChecked(m_size, pPlatforms) : nullptr;
    }
    STDMETHODIMP_(void*) PreFree(void* p, BOOL isSpied) override {
        void* pPlatforms = p;
        if (p && isSpied)
            FreeChecked(p, &pPlatforms);
        return pPlatforms;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}

    STDMETHODIMP_(SIZE_T)
    PreRealloc(void* p, SIZE_T size, void** ppPlatforms, BOOL isSpied) override {
        m_pOld = isSpied ? p : nullptr;
        m_size = size;
        *ppPlatforms = p;
        if (!m_pOld)
            return size;
        const Hold hold;
        *ppPlatforms = TheState().live.at(p).pPlatforms;
        return cAlignment;
    }
    STDMETHODIMP_(void*) PostRealloc(void* pPlatforms, BOOL isSpied) override {
        if (!isSpied || !m_pOld || !pPlatforms)
            return pPlatforms;
        void* const pNew = AllocateChecked(m_size, pPlatforms);
        const std::size_t before = SizeOf(m_pOld);
        std::memcpy(pNew, m_pOld, before < m_size ? before : m_size);
        FreeChecked(m_pOld);
        return pNew;
    }
    STDMETHODIMP_(void*) PreGetSize(void* p, BOOL isSpied) override {
        m_size = isSpied ? SizeOf(p) : 0;
        return Platforms(p, isSpied);
    }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL isSpied) override {
        return isSpied ? m_size : size;
    }
    STDMETHODIMP_(void*) PreDidAlloc(void* p, BOOL isSpied) override {
        return Platforms(p, isSpied);
    }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int isOurs) override { return isOurs; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

  private:
    static void* Platforms(void* p, BOOL isSpied) {
        const Hold hold;
        const auto found = TheState().live.find(p);
        return isSpied && found != TheState().live.end() ? found->second.pPlatforms : p;
    }

    SIZE_T m_size = 0;
    void* m_pOld = nullptr;
};

void Replace(HMODULE module, const char* function, void* pReplacement) {
    if (std::uintptr_t* const pSlot = FindImport(module, function))
        WriteImport(pSlot, std::bit_cast<std::uintptr_t>(pReplacement));
}

}  // namespace

void* AllocateChecked(std::size_t size, void* pPlatforms) {
    static void* const pHandler = AddVectoredExceptionHandler(1, OnException);
    static_cast<void>(pHandler);
    const std::size_t rounded = (size + cAlignment - 1) / cAlignment * cAlignment;
    const std::size_t pages = (cFront + rounded + cPage - 1) / cPage;
    auto* const pBase = static_cast<std::uint8_t*>(
        VirtualAlloc(nullptr, (pages + 1) * cPage, MEM_RESERVE, PAGE_NOACCESS));
    if (!pBase || !VirtualAlloc(pBase, pages * cPage, MEM_COMMIT, PAGE_READWRITE))
        return nullptr;
    std::memset(pBase, cFill, pages * cPage);
    std::uint8_t* const p = pBase + pages * cPage - rounded;
    const Hold hold;
    TheState().live[p] = {size, pBase, pages, pPlatforms};
    ++TheState().checked;
    return p;
}

bool FreeChecked(void* p, void** ppPlatforms) {
    const Hold hold;
    State& state = TheState();
    const auto found = state.live.find(p);
    if (found == state.live.end()) {
        if (const auto freed = state.freed.find(p); freed != state.freed.end())
            Complain("freed twice", p, freed->second.size);
        return false;
    }
    const Block block = found->second;
    const auto* const pBytes = static_cast<const std::uint8_t*>(p);
    if (!IsFilled(pBytes - cFront, pBytes))
        Complain("written in front", p, block.size);
    if (!IsFilled(pBytes + block.size, block.pBase + block.pages * cPage))
        Complain("written behind", p, block.size);
    VirtualFree(block.pBase, block.pages * cPage, MEM_DECOMMIT);
    state.live.erase(found);
    Forget(state, p, block);
    if (ppPlatforms)
        *ppPlatforms = block.pPlatforms;
    return true;
}

void CheckHeapOf(HMODULE module) {
    if (!std::getenv("KORA4_HEAP_CHECK"))
        return;
    static Spy spy;
    static const HRESULT hr = CoRegisterMallocSpy(&spy);
    if (FAILED(hr))
        Complain("COM cannot be watched", nullptr, 0);
    // A run that checked nothing must not look like one that found nothing.
    static const int isReported =
        std::atexit([] { std::fprintf(stderr, "heap check: %zu blocks\n", CheckedBlocks()); });
    static_cast<void>(isReported);
    Replace(module, "malloc", reinterpret_cast<void*>(&CheckedMalloc));
    Replace(module, "calloc", reinterpret_cast<void*>(&CheckedCalloc));
    Replace(module, "realloc", reinterpret_cast<void*>(&CheckedRealloc));
    Replace(module, "free", reinterpret_cast<void*>(&CheckedFree));
}

std::size_t CheckedBlocks() {
    const Hold hold;
    return TheState().checked;
}

}  // namespace kora4::test

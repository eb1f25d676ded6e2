// SPDX-License-Identifier: MIT
// Loading and storing patches takes no memory of its own: only what the key access hands
// over as text, and that is given back.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "contract/profiles.h"
#include "store/access/task_memory.h"
#include "store/patches/managed_patch_set.h"

namespace {

std::atomic<unsigned> g_allocations{0};

void* Allocate(std::size_t bytes) noexcept {
    ++g_allocations;
    if (void* const memory = std::malloc(bytes != 0 ? bytes : 1))
        return memory;
    std::abort();
}

}  // namespace

// Every form of new, because a sanitizer brings forms of its own that do not call another.
void* operator new(std::size_t bytes) {
    return Allocate(bytes);
}
void* operator new[](std::size_t bytes) {
    return Allocate(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return Allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return Allocate(bytes);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace kora4 {
namespace {

// Every number is 1 and every text an array of one element.
class ConstantStore final : public KORA4KeyAccess {
  public:
    HRESULT ReadUINT(KORA4KeySet, const PropertyKey&, std::uint32_t* pValue) override {
        *pValue = 1;
        return result::cOk;
    }
    HRESULT ReadText(KORA4KeySet, const PropertyKey&, char16_t** ppText) override {
        ++m_texts;
        *ppText = DuplicateTaskText(u"0001,0001,0001");
        return result::cOk;
    }
    HRESULT ReadBlob(KORA4KeySet, const PropertyKey&, std::uint32_t*, std::uint8_t**) override {
        return result::cFalse;
    }
    HRESULT WriteUINT(KORA4KeySet, const PropertyKey&, std::uint32_t) override {
        ++m_writes;
        return result::cOk;
    }
    HRESULT WriteText(KORA4KeySet, const PropertyKey&, const char16_t*) override {
        ++m_writes;
        return result::cOk;
    }
    HRESULT WriteBlob(KORA4KeySet, const PropertyKey&, std::uint32_t,
                      const std::uint8_t*) override {
        return result::cFail;
    }
    HRESULT Delete(KORA4KeySet, const PropertyKey&) override { return result::cFail; }

    unsigned m_texts = 0;
    unsigned m_writes = 0;
};

TEST(PatchSetHeap, IsNotUsedByLoadingAndStoring) {
    ConstantStore store;
    KORA4ManagedPatchSet patches;
    const unsigned before = g_allocations;
    patches.LoadPresetPatches(store, cMusicProfile, false);
    patches.LoadGlobalPatches(store);
    patches.LoadTriggers(store);
    patches.LoadPresetOnElseOff(store, cMusicProfile);
    for (std::uint32_t t = eVolumeTech; t < eNumberKORA4PresetTechnologies; ++t)
        patches.WritePresetPatch(store, cMusicProfile, KORA4PresetTechnology(t), true);
    EXPECT_EQ(before, g_allocations);
    EXPECT_LT(0u, store.m_texts);
    EXPECT_LT(0u, store.m_writes);
}

TEST(PatchSetHeap, IsWatchedByThisProgram) {
    const unsigned before = g_allocations;
    ::operator delete(::operator new(8));
    ::operator delete(::operator new(8, std::nothrow));
    ::operator delete[](::operator new[](8));
    ::operator delete[](::operator new[](8, std::nothrow));
    EXPECT_EQ(before + 4, g_allocations);
}

}  // namespace
}  // namespace kora4

// SPDX-License-Identifier: MIT
// The check of the heap itself: what it is to find it finds, and the library's blocks are
// really checked.
#include "support/heap_check.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdlib>

#include "support/com_client.h"

namespace kora4::test {
namespace {

// Volatile, so that no faulty access is optimised away.
volatile char* Bytes(void* p) {
    return static_cast<volatile char*>(p);
}

constexpr std::size_t cOdd = 13;

// Which platform says how a process ended at an access violation differs; that it ended does
// not.
using HeapCheckDeathTest = ::testing::Test;

TEST_F(HeapCheckDeathTest, AWriteBehindABlockIsFoundWhenTheBlockIsFreed) {
    EXPECT_DEATH(
        {
            void* const p = AllocateChecked(cOdd);
            Bytes(p)[cOdd] = 0;
            FreeChecked(p);
        },
        "written behind");
}

TEST_F(HeapCheckDeathTest, AWriteInFrontOfABlockIsFoundWhenTheBlockIsFreed) {
    EXPECT_DEATH(
        {
            void* const p = AllocateChecked(cOdd);
            Bytes(p)[-1] = 0;
            FreeChecked(p);
        },
        "written in front");
}

TEST_F(HeapCheckDeathTest, ASecondFreeIsFound) {
    EXPECT_DEATH(
        {
            void* const p = AllocateChecked(cOdd);
            FreeChecked(p);
            FreeChecked(p);
        },
        "freed twice");
}

TEST_F(HeapCheckDeathTest, AReadFarBehindABlockEndsTheProcess) {
    EXPECT_DEATH(static_cast<void>(Bytes(AllocateChecked(cOdd))[16]), "touched behind");
}

TEST_F(HeapCheckDeathTest, AReadOfAFreedBlockEndsTheProcess) {
    EXPECT_DEATH(
        {
            void* const p = AllocateChecked(cOdd);
            FreeChecked(p);
            static_cast<void>(Bytes(p)[0]);
        },
        "touched after free");
}

TEST(HeapCheck, BlocksOfTheLibraryAndOfComAreChecked) {
    _putenv("KORA4_HEAP_CHECK=1");
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    const ApiLibrary library;
    const std::size_t before = CheckedBlocks();
    const auto pApi = library.Create();
    ASSERT_NE(nullptr, pApi);
    const std::size_t afterObject = CheckedBlocks();
    EXPECT_LT(before, afterObject);
    void* const p = CoTaskMemAlloc(cOdd);
    CoTaskMemFree(p);
    EXPECT_EQ(afterObject + 1, CheckedBlocks());
}

}  // namespace
}  // namespace kora4::test

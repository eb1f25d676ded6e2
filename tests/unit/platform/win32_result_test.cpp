// SPDX-License-Identifier: MIT
// Which result each Win32 error becomes, for values, keys and writes.
#include "platform/win32_result.h"

#include <gtest/gtest.h>

namespace kora4 {
namespace {

// No platform at hand says ERROR_PATH_NOT_FOUND of a value; where one does, the value is
// unreadable and not absent.
TEST(Win32Result, OnlyAKeyIsAbsentWithItsPath) {
    const struct {
        LSTATUS status;
        HRESULT ofValue;
        HRESULT ofKey;
        HRESULT ofWrite;
    } rows[] = {
        {ERROR_SUCCESS, S_OK, S_OK, S_OK},
        {ERROR_FILE_NOT_FOUND, S_FALSE, S_FALSE, E_FAIL},
        {ERROR_PATH_NOT_FOUND, E_FAIL, S_FALSE, E_FAIL},
        {ERROR_ACCESS_DENIED, E_FAIL, E_FAIL, E_FAIL},
        {ERROR_MORE_DATA, E_FAIL, E_FAIL, E_FAIL},
        {ERROR_KEY_DELETED, E_FAIL, E_FAIL, E_FAIL},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.ofValue, ResultOfValueLookup(row.status)) << row.status;
        EXPECT_EQ(row.ofKey, ResultOfKeyLookup(row.status)) << row.status;
        EXPECT_EQ(row.ofWrite, ResultOfWrite(row.status)) << row.status;
    }
}

}  // namespace
}  // namespace kora4

// SPDX-License-Identifier: MIT
// What the tests change on a machine, as it was before: keys with every value and access list,
// and folders, which are renamed meanwhile.
#ifndef KORA4_TESTS_SELFTEST_SAVED_STATE_H
#define KORA4_TESTS_SELFTEST_SAVED_STATE_H

#include <string>
#include <vector>

namespace kora4::selftest {

// The keys that registering the library or its proxies writes, and those of the settings; each
// with its subkeys.
std::vector<std::wstring> SavedKeys();

// Whether the library is registered for the machine or the user, or has settings; where.
std::vector<std::wstring> WhatIsThere();

// False, with a message on standard error, when something cannot be read, written or renamed.
// The file is complete or not there.
bool SaveState(const std::wstring& file);
// Deletes the file when everything is as it was. May be repeated.
bool RestoreState(const std::wstring& file);

}  // namespace kora4::selftest

#endif  // KORA4_TESTS_SELFTEST_SAVED_STATE_H

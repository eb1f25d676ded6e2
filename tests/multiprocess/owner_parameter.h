// SPDX-License-Identifier: MIT
// Tests that run for each kind of owner.
#ifndef KORA4_TESTS_MULTIPROCESS_OWNER_PARAMETER_H
#define KORA4_TESTS_MULTIPROCESS_OWNER_PARAMETER_H

#include <gtest/gtest.h>

#include <string>

#include "multiprocess/apartment_thread.h"
#include "support/raw_store.h"

namespace kora4::test {

inline constexpr OwnerKind cEveryOwnerKind[] = {OwnerKind::eStaPumping, OwnerKind::eStaIdle,
                                                OwnerKind::eMta};

inline std::string NameOfOwner(const testing::TestParamInfo<OwnerKind>& tested) {
    return NameOf(tested.param);
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_OWNER_PARAMETER_H

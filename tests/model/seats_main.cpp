// SPDX-License-Identifier: MIT
// The entry of test programs that start themselves again to serve a seat.
#include <gtest/gtest.h>

#include "model/seats.h"
#include "support/desktop_hold.h"

int main(int argc, char** argv) {
    const int served = kora4::test::ServeSeatIfAsked(argc, argv);
    if (served >= 0)
        return served;
    testing::InitGoogleTest(&argc, argv);
    const kora4::test::DesktopHold desktop;
    return RUN_ALL_TESTS();
}

// SPDX-License-Identifier: MIT
// What the doctor says of a check that the user interrupts.
#include "kora4ctl/doctor/checks.h"

#include <gtest/gtest.h>

namespace kora4::tools {
namespace {

// Whoever is asked for nothing more has not seen anything hang.
TEST(Doctor, AnInterruptedCheckSaysNothingAgainstTheLibrary) {
    Output output;
    Interrupt interrupt;
    CLI::App root;
    const Context context{output, interrupt, root, {}};
    for (const auto check : {CheckLibrary, CheckNotifications}) {
        Examination examination{context};
        examination.patience = 60000;
        SetEvent(interrupt.Event());
        const CheckResult result = check(examination);
        ASSERT_EQ(1u, result.findings.size());
        EXPECT_EQ(Severity::eNote, result.findings[0].severity);
        EXPECT_EQ("Interrupted.", result.findings[0].what);
        EXPECT_EQ("", result.findings[0].next);
    }
}

}  // namespace
}  // namespace kora4::tools

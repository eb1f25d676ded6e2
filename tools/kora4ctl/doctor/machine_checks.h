// SPDX-License-Identifier: MIT
// Checks of what registration leaves on the machine, and of the mutex.
#ifndef KORA4_KORA4CTL_DOCTOR_MACHINE_CHECKS_H
#define KORA4_KORA4CTL_DOCTOR_MACHINE_CHECKS_H

#include "kora4ctl/doctor/doctor.h"

namespace kora4::tools {

CheckResult CheckRegistration(Examination& examination);
CheckResult CheckKeys(Examination& examination);
CheckResult CheckMutex(Examination& examination);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_DOCTOR_MACHINE_CHECKS_H

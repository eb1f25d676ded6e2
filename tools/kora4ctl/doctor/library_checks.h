// SPDX-License-Identifier: MIT
// Checks of the library as a client uses it.
#ifndef KORA4_KORA4CTL_DOCTOR_LIBRARY_CHECKS_H
#define KORA4_KORA4CTL_DOCTOR_LIBRARY_CHECKS_H

#include "kora4ctl/doctor/doctor.h"

namespace kora4::tools {

CheckResult CheckLibrary(Examination& examination);
CheckResult CheckNotifications(Examination& examination);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_DOCTOR_LIBRARY_CHECKS_H

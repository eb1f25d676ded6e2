// SPDX-License-Identifier: MIT
// The check of the access lists: registration grants everyone every right.
#ifndef KORA4_KORA4CTL_DOCTOR_ACCESS_CHECK_H
#define KORA4_KORA4CTL_DOCTOR_ACCESS_CHECK_H

#include "kora4ctl/doctor/doctor.h"

namespace kora4::tools {

CheckResult CheckAccess(Examination& examination);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_DOCTOR_ACCESS_CHECK_H

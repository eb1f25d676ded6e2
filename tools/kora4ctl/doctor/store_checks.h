// SPDX-License-Identifier: MIT
// Checks of what is stored.
#ifndef KORA4_KORA4CTL_DOCTOR_STORE_CHECKS_H
#define KORA4_KORA4CTL_DOCTOR_STORE_CHECKS_H

#include "kora4ctl/doctor/doctor.h"

namespace kora4::tools {

CheckResult CheckLoad(Examination& examination);
CheckResult CheckValues(Examination& examination);
CheckResult CheckProfile(Examination& examination);
CheckResult CheckCustomProfiles(Examination& examination);
CheckResult CheckTrace(Examination& examination);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_DOCTOR_STORE_CHECKS_H

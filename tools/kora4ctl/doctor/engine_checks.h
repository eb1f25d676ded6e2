// SPDX-License-Identifier: MIT
// Checks of the engine's side of the store.
#ifndef KORA4_KORA4CTL_DOCTOR_ENGINE_CHECKS_H
#define KORA4_KORA4CTL_DOCTOR_ENGINE_CHECKS_H

#include "kora4ctl/doctor/doctor.h"

namespace kora4::tools {

CheckResult CheckEngine(Examination& examination);
CheckResult CheckLevels(Examination& examination);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_DOCTOR_ENGINE_CHECKS_H

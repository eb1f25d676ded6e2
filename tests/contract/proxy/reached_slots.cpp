// SPDX-License-Identifier: MIT
// One record of reached slots for the whole test program.
#include "contract/proxy/recorder.h"

namespace kora4::test {

std::map<std::string, std::map<int, std::string>>& ReachedSlots() {
    static std::map<std::string, std::map<int, std::string>> slots;
    return slots;
}

}  // namespace kora4::test

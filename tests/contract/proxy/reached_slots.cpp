// SPDX-License-Identifier: MIT
#include "contract/proxy/recorder.h"

namespace kora4::test {

std::map<std::string, std::map<int, std::string>>& ReachedSlots() {
    static std::map<std::string, std::map<int, std::string>> slots;
    return slots;
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// The file that COM loads for the library's class.
#ifndef KORA4_PROCESS_REGISTERED_FILE_H
#define KORA4_PROCESS_REGISTERED_FILE_H

#include <string>

namespace kora4::tools {

// Its path in UTF-8, as registered; empty when the class is not registered.
std::string RegisteredFile();

// Whether a file is registered that does not exist.
bool IsRegisteredFileMissing();

}  // namespace kora4::tools

#endif  // KORA4_PROCESS_REGISTERED_FILE_H

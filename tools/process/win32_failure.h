// SPDX-License-Identifier: MIT
// What the platform refused, as a failure of the tool.
#pragma once

#include <windows.h>

#include <string>

#include "base/failure.h"
#include "base/results.h"

namespace kora4::tools {

// Says "<what>: <the error in words>.". Take `error` from GetLastError before anything else
// can change it.
class Win32Failure : public Failure {
  public:
    Win32Failure(DWORD error, const std::string& what, std::string next = {},
                 ExitCode code = ExitCode::eFailed)
        : Failure(code, what + ": " + tools::InWords(HRESULT_FROM_WIN32(error)) + ".",
                  std::move(next)) {}
};

}  // namespace kora4::tools

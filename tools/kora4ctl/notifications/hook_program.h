// SPDX-License-Identifier: MIT
// A program that is run for each notification. It gets what changed in its environment, so that
// nothing of it is ever read as a command.
#pragma once

#include <string>

#include "kora4ctl/notifications/notification_listener.h"
#include "process/program.h"

namespace kora4::tools {

class HookProgram {
  public:
    // command: the program, between double quotation marks if there are blanks in it, and its
    // arguments as they are. Failure with eBadInput when there is no such program, and for a
    // batch file, which a shell would read.
    explicit HookProgram(const std::string& command);

    // Runs it to its end, with KORA4_TIME, KORA4_EVENT, KORA4_NAME, KORA4_VALUE (as a line
    // shows it) and KORA4_JSON (the whole document) set; a text too long for the environment is
    // absent. Its output goes to standard error. Messages are taken meanwhile. Says when it
    // fails; false when Ctrl-C came first, which ends it. Failure with eFailed when it cannot
    // be started.
    bool Run(const Context& context, const Notification& told) const;

  private:
    std::wstring m_path;
    std::wstring m_commandLine;
};

}  // namespace kora4::tools

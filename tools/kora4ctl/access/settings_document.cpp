// SPDX-License-Identifier: MIT
// Locking, reading and printing that the verbs of the settings document share.
#include "kora4ctl/access/settings_document.h"

#include "base/failure.h"
#include "kora4ctl/access/setting_access.h"
#include "process/files.h"

namespace kora4::tools {

StoreLock HoldStore(const Context& context) {
    return StoreLock(cLockPatience, context.interrupt.Event());
}

void TellIfAbandoned(const Context& context, const StoreLock& lock) {
    if (lock.WasAbandoned())
        context.output.Say(
            "The program that held the settings store last died with it: what it was writing "
            "may be half done. 'kora4ctl doctor' looks at it.");
}

Plan ReadPlan(const std::string& path, Completeness completeness) {
    const std::string text = ReadWholeFile(path);
    try {
        return ReadDocument(text, completeness);
    } catch (const Failure& failure) {
        const std::string name = path == "-" ? "standard input" : path;
        throw Failure(failure.Code(), name + ": " + failure.what(), failure.Next());
    }
}

std::string ToText(const Json& document) {
    return document.dump(2) + "\n";
}

std::string CountOfValues(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " value" : " values");
}

void PrintDifferences(Output& output, const std::vector<Difference>& differences) {
    for (const Difference& difference : differences)
        output.Print(difference.Line());
}

Json DocumentOf(const std::vector<Difference>& differences) {
    Json list = Json::array();
    for (const Difference& difference : differences)
        list.push_back(difference.Document());
    return list;
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// What an inspection of the machine found.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "settings/lint.h"

namespace kora4::tools {

struct Observation {
    Severity severity = Severity::eNote;
    std::string what;  // sentences
    std::string next;  // what to do, a sentence or a command; may be empty
};

// {"severity", "what", "next"}
inline Json DocumentOf(const Observation& one) {
    return {{"severity", SeverityName(one.severity)}, {"what", one.what}, {"next", one.next}};
}

struct Diagnosis {
    std::vector<Observation> findings;

    void Add(Severity severity, std::string what, std::string next = {}) {
        findings.push_back({severity, std::move(what), std::move(next)});
    }
    void Error(std::string what, std::string next = {}) {
        Add(Severity::eError, std::move(what), std::move(next));
    }
    void Warning(std::string what, std::string next = {}) {
        Add(Severity::eWarning, std::move(what), std::move(next));
    }
    void Note(std::string what, std::string next = {}) {
        Add(Severity::eNote, std::move(what), std::move(next));
    }

    // Warnings and errors end a verb with findings, notes do not.
    bool NeedsRepair() const {
        return std::any_of(findings.begin(), findings.end(), [](const Observation& one) {
            return one.severity != Severity::eNote;
        });
    }
};

}  // namespace kora4::tools

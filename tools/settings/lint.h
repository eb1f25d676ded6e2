// SPDX-License-Identifier: MIT
// Each stored value against its type, its range and its encoding.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/output.h"
#include "registry/store_access.h"
#include "settings/document.h"

namespace kora4::tools {

// How bad a finding is.
enum class Severity {
    eNote,     // worth knowing; nothing to repair
    eWarning,  // read as it is, but nothing that clients should have set
    eError,    // not readable: the default is in force
};

// "note", "warning", "error".
const char* SeverityName(Severity severity);

// What is wrong with one stored value, and what can be done about it.
struct Finding {
    Severity severity = Severity::eNote;
    KORA4KeySet keySet = eKeySetStatic;
    std::string valueName;  // in the registry
    std::string name;       // the setting, or what the value is; may be empty
    std::optional<std::uint32_t> profile;
    std::string stored;   // what stands there
    std::string problem;  // a sentence without its full stop
    std::string repair;   // what --fix does; empty when nothing
    // What --fix makes of it: the value, and what it shall be (none: deleted, so that the
    // built-in default is in force).
    std::optional<PlannedValue> fix;

    // "music: volume-leveler: ... (stored: ...)"
    std::string Words() const;
    // "error: " and the words.
    std::string Line() const;

    // {"severity", "name", "profile", "keys", "value", "stored", "problem", "repair"}, absent:
    // null.
    Json Document() const;
};

// Whether the value of a demo profile, from which reverting takes its factory values, is stored
// and is not the built-in one.
bool IsChangedFactoryValue(const SchemaValue& value, const StoredValue& stored);

// Checks every stored value. Most severe first, then in the order of the schema. The caller
// holds the store's mutex.
std::vector<Finding> Lint(StoreAccess& store);

// The errors and warnings that the values of a plan would be once they are stored.
std::vector<Finding> LintPlan(const Plan& plan, StoreAccess& store);

// Errors and warnings: what makes `lint` end with findings. Notes do not.
bool HasFindings(const std::vector<Finding>& findings);

// Repairs all errors and warnings, for Apply.
Plan FixPlan(const std::vector<Finding>& findings);

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// What dump, load, diff and lint share: the document's way in and out, and lists of changes.
#pragma once

#include <string>
#include <vector>

#include "base/failure.h"
#include "kora4ctl/access/held_store.h"
#include "process/files.h"
#include "settings/document.h"

namespace kora4::tools {

// A program that died with the mutex may have left something half done: says so.
void TellIfAbandoned(const Context& context, const StoreLock& lock);

// What `parse` makes of the text of a file, or of standard input for "-". The Failure of a
// text that it does not take names the file.
template <typename Parse>
auto ParseFile(const std::string& path, Parse parse) {
    const std::string text = ReadWholeFile(path);
    try {
        return parse(text);
    } catch (const Failure& failure) {
        const std::string name = path == "-" ? "standard input" : path;
        throw Failure(failure.Code(), name + ": " + failure.what(), failure.Next());
    }
}

// Throws Failure with eFailed when Ctrl-C has come, as long as nothing was changed.
void EndIfInterrupted(const Context& context);

// The plan of the document in a file.
Plan ReadPlan(const Context& context, const std::string& path, Completeness completeness);

// What was changed, and the backup from before; empty when nothing changed.
struct ChangedSettings {
    std::vector<Difference> changes;
    std::string backup;
};

// Makes the store what the plan says, after keeping a backup; Ctrl-C undoes it.
ChangedSettings ApplyPlan(const Context& context, const Plan& plan, const HeldStore& store,
                          const std::string& verb);

// The indented text with its final newline, as dump writes it into a file.
std::string ToText(const Json& document);

// One line a change; nothing when there is none.
void PrintDifferences(Output& output, const std::vector<Difference>& differences);

// One JSON object per difference, as an array.
Json DocumentOf(const std::vector<Difference>& differences);

}  // namespace kora4::tools

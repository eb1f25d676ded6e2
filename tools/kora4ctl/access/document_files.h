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
        throw Failure(failure.Code(), NameOfInput(path) + ": " + failure.what(),
                      failure.Next());
    }
}

// Throws Failure with eFailed when Ctrl-C has come, as long as nothing was changed.
void EndIfInterrupted(const Context& context);

// The plan of the document in a file; of one that holds one profile.
Plan ReadPlan(const Context& context, const std::string& path, Completeness completeness);
Plan ReadProfilePlan(const Context& context, const std::string& path, std::uint32_t into,
                     Completeness completeness);

// Before the values of one profile go into another, which keeps its name if it has one. Failure
// with eBadInput for a demo profile, with eRefused for one that does not exist and gets no
// name.
void CheckTakesValues(Plan& plan, std::uint32_t into, StoreAccess& store);

// What was changed, and the backup from before; empty when nothing changed.
struct ChangedSettings {
    std::vector<Difference> changes;
    std::string backup;
};

// Makes the store what the plan says, after keeping a backup unless the verb is empty; Ctrl-C
// undoes it.
ChangedSettings ApplyPlan(const Context& context, const Plan& plan, const HeldStore& store,
                          const std::string& verb);

// The indented text with its final newline, as dump writes it into a file.
std::string ToText(const Json& document);

// One line a change; nothing when there is none.
void PrintDifferences(Output& output, const std::vector<Difference>& differences);

// One JSON object per difference, as an array.
Json DocumentOf(const std::vector<Difference>& differences);

// {"changes", "written", "deleted", "backup"}
Json DocumentOf(const ChangedSettings& changed);
// The end of a sentence about it: ": 2 written, 1 deleted. To undo it: kora4ctl undo 1"
std::string EndOf(const ChangedSettings& changed);

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// What dump, load, diff and lint share: the document's way in, and the lists of changes.
#ifndef KORA4_KORA4CTL_ACCESS_SETTINGS_DOCUMENT_H
#define KORA4_KORA4CTL_ACCESS_SETTINGS_DOCUMENT_H

#include <string>
#include <vector>

#include "process/program.h"
#include "registry/store_lock.h"
#include "settings/document.h"
#include "settings/transaction.h"

namespace kora4::tools {

// The mutex of the store. Failure with eTimedOut when another program holds it for half a
// minute, with eFailed when Ctrl-C comes first.
StoreLock HoldStore(const Context& context);

// A program that died with the mutex may have left something half done: says so.
void TellIfAbandoned(const Context& context, const StoreLock& lock);

// The plan of the document in a file, or of standard input for "-". Failure with eBadInput
// names the file, too.
Plan ReadPlan(const std::string& path, Completeness completeness);

// The indented text with its final newline, as dump writes it into a file.
std::string ToText(const Json& document);

// "3 values"
std::string CountOfValues(std::size_t count);

// One line a change; nothing when there is none.
void PrintDifferences(Output& output, const std::vector<Difference>& differences);

// One JSON object per difference, as an array.
Json DocumentOf(const std::vector<Difference>& differences);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_ACCESS_SETTINGS_DOCUMENT_H

// SPDX-License-Identifier: MIT
// kora4ctl ab: two states of the settings, and from one to the other with one command.
#include <algorithm>

#include "base/shown_text.h"
#include "base/text.h"
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"
#include "process/guarded_folder.h"

namespace kora4::tools {

namespace {

struct Options {
    std::vector<std::string> words;
};

constexpr char cFooter[] =
    "  ab save A    keeps the present settings as A; the same with B\n"
    "  ab A         loads A; the same with B\n"
    "  ab           loads the other one: B when the settings are those of A, else A\n"
    "A state holds what 'kora4ctl dump' writes, and is loaded as 'kora4ctl load' loads it. If\n"
    "the settings are neither those of A nor those of B, a backup of them is kept, and 'ab'\n"
    "alone changes nothing.\n";

const std::vector<std::string> cStates = {"A", "B"};

// The two, beside the backups.
class States {
  public:
    std::string Keep(const std::string& state, StoreAccess& store) const {
        m_folder.Write(FileOf(state), ToText(Dump(store, Scope::eUser)));
        return m_folder.PathOf(FileOf(state));
    }

    // Failure with eBadInput when nothing was saved as that.
    Plan Read(const std::string& state) const {
        if (m_folder.Find(FileOf(state)) != Standing::eTrusted)
            throw BadInput(
                "Nothing was saved as " + state + ".",
                "Save the present settings as " + state + ": kora4ctl ab save " + state);
        try {
            return ReadDocument(m_folder.Read(FileOf(state)));
        } catch (const Failure& failure) {
            throw Failure(
                failure.Code(),
                "What was saved as " + state + " cannot be read: " + failure.what(),
                "Save the present settings as " + state + ": kora4ctl ab save " + state);
        }
    }

    // Whether the settings are just those; one that cannot be read is none.
    bool Matches(const std::string& state, StoreAccess& store) const {
        try {
            return Compare(Read(state), store).empty();
        } catch (const Failure&) {
            return false;
        }
    }

  private:
    static std::string FileOf(const std::string& state) { return "ab-" + state + ".json"; }

    GuardedFolder m_folder{DataFolder()};
};

ExitCode Save(const Context& context, const std::string& state) {
    std::string file;
    {
        const HeldStore store(context, OpenMode::eRead);
        TellIfAbandoned(context, store.lock);
        file = States().Keep(state, *store);
    }
    if (context.output.json)
        context.output.PrintJson({{"state", state}, {"file", file}});
    else
        context.output.Say("The settings are saved as " + state + ".");
    return ExitCode::eDone;
}

// The state that is to follow; empty: the other one.
ExitCode SwitchTo(const Context& context, std::string state) {
    const States states;
    ChangedSettings changed;
    {
        const HeldStore store(context, OpenMode::eReadWrite);
        TellIfAbandoned(context, store.lock);
        const bool isA = states.Matches(cStates[0], *store);
        const bool isKept = isA || states.Matches(cStates[1], *store);
        if (state.empty()) {
            state = cStates[isA ? 1 : 0];
            for (const std::string& each : cStates)
                states.Read(each);
            if (!isKept)
                throw Failure(
                    ExitCode::eRefused,
                    "Nothing changed: the settings are neither those of A nor those "
                    "of B.",
                    "Save them with 'kora4ctl ab save A', or load one of the two with "
                    "'kora4ctl ab A'.");
        }
        changed = ApplyPlan(context, states.Read(state), store, isKept ? "" : "ab");
    }
    Output& output = context.output;
    if (output.json) {
        Json document = {{"state", state}};
        document.update(DocumentOf(changed));
        output.PrintJson(document);
        return ExitCode::eDone;
    }
    PrintDifferences(output, changed.changes);
    output.Say(changed.changes.empty() ? state + " was in effect already; nothing was written."
                                       : state + " is in effect" + EndOf(changed));
    return ExitCode::eDone;
}

std::string StateOf(const std::string& word) {
    for (const std::string& state : cStates)
        if (Lower(word) == Lower(state))
            return state;
    throw Failure(ExitCode::eUsage, "There is no state '" + word + "': the two are A and B.",
                  "More: kora4ctl ab --help");
}

ExitCode Ab(const Context& context, const Options& options) {
    const std::vector<std::string>& words = options.words;
    const bool isSave = !words.empty() && words[0] == "save";
    if (isSave && words.size() == 2)
        return Save(context, StateOf(words[1]));
    if (isSave || words.size() > 1)
        throw Failure(
            ExitCode::eUsage,
            isSave ? "Missing state: A or B." : "'ab' takes one state, or 'save' and one.",
            "More: kora4ctl ab --help");
    return SwitchTo(context, words.empty() ? "" : StateOf(words[0]));
}

}  // namespace

void AddAb(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "ab", "compare two states of the settings", Ab);
    verb.add_option("STATE", options.words, "A or B; 'save A' keeps the present settings as A")
        ->expected(0, 2);
    verb.footer(cFooter);
}

}  // namespace kora4::tools

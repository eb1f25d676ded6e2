// SPDX-License-Identifier: MIT
// kora4ctl diff: a document against the store.
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string file;
    bool merge = false;
};

constexpr char cFooter[] =
    "Each line shows the stored value and the document's. Exit code 7: they differ.\n";

ExitCode Diff(const Context& context, const Options& options) {
    const Plan plan = ReadPlan(context, options.file,
                               options.merge ? Completeness::eMerge : Completeness::eExact);
    std::vector<Difference> differences;
    {
        const HeldStore store(context, OpenMode::eRead);
        TellIfAbandoned(context, store.lock);
        differences = Compare(plan, *store);
    }
    Output& output = context.output;
    if (output.json)
        output.PrintJson(
            Json{{"same", differences.empty()}, {"differences", DocumentOf(differences)}});
    else if (differences.empty())
        output.Say("The settings match the document.");
    else
        PrintDifferences(output, differences);
    return differences.empty() ? ExitCode::eDone : ExitCode::eFindings;
}

}  // namespace

void AddDiff(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "diff", "compare the settings with a document", Diff);
    verb.add_option("FILE", options.file, "a document of 'dump', or - for standard input")
        ->required();
    verb.add_flag("--merge", options.merge, "ignore settings that the document does not have");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

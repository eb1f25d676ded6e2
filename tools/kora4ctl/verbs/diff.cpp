// SPDX-License-Identifier: MIT
// kora4ctl diff: a document against the store.
#include <memory>

#include "kora4ctl/access/settings_document.h"
#include "kora4ctl/verbs.h"
#include "registry/registry_store.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string file;
    bool merge = false;
};

constexpr char cFooter[] =
    "Each line shows what is stored, and what the document has. Exit code 7: they differ.\n";

ExitCode Diff(const Context& context, const Options& options) {
    const Plan plan =
        ReadPlan(options.file, options.merge ? Completeness::eMerge : Completeness::eExact);
    std::vector<Difference> differences;
    {
        const std::unique_ptr<StoreAccess> store = OpenStore(OpenMode::eRead);
        const StoreLock lock = HoldStore(context);
        TellIfAbandoned(context, lock);
        differences = Compare(plan, *store);
    }
    Output& output = context.output;
    if (output.json)
        output.PrintJson(
            Json{{"same", differences.empty()}, {"differences", DocumentOf(differences)}});
    else if (differences.empty())
        output.Say("The settings are those of the document.");
    else
        PrintDifferences(output, differences);
    return differences.empty() ? ExitCode::eDone : ExitCode::eFindings;
}

}  // namespace

void AddDiff(Context& context) {
    CLI::App* verb =
        context.root.add_subcommand("diff", "compare the settings with those of a document");
    const auto options = std::make_shared<Options>();
    verb->add_option("FILE", options->file, "a document of 'dump'; - is standard input")
        ->required();
    verb->add_flag("--merge", options->merge, "pass over what the document does not have");
    verb->footer(cFooter);
    OnRun(*verb, context, [&context, options] { return Diff(context, *options); });
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// kora4ctl dump: the settings as one JSON document.
#include <memory>

#include "kora4ctl/access/settings_document.h"
#include "kora4ctl/verbs.h"
#include "process/files.h"
#include "registry/registry_store.h"

namespace kora4::tools {

namespace {

struct Options {
    bool all = false;
    std::string file;
};

constexpr char cFooter[] =
    "Without --all: the active profile, the master enable, the sampling period, and the "
    "names,\n"
    "switches and values of the profiles movie to p6. With --all also the factory values of "
    "the\n"
    "demo profiles, the global technologies, and what the installer and support have set.\n"
    "A value that is not stored is not in the document. Counters, the state before a demo and\n"
    "the levels are no settings and never are. 'kora4ctl load' takes the document back.\n";

ExitCode Dump(const Context& context, const Options& options) {
    Json document;
    {
        const std::unique_ptr<StoreAccess> store = OpenStore(OpenMode::eRead);
        const StoreLock lock = HoldStore(context);
        TellIfAbandoned(context, lock);
        document = Dump(*store, options.all ? Scope::eAll : Scope::eUser);
    }
    if (options.file.empty()) {
        context.output.PrintJson(document);
        return ExitCode::eDone;
    }
    WriteWholeFile(options.file, ToText(document));
    if (context.output.json)
        context.output.PrintJson(Json{{"file", options.file}, {"scope", document["scope"]}});
    else
        context.output.Say("The settings are in " + options.file + ".");
    return ExitCode::eDone;
}

}  // namespace

void AddDump(Context& context) {
    CLI::App* verb =
        context.root.add_subcommand("dump", "write the settings as one JSON document");
    const auto options = std::make_shared<Options>();
    verb->add_flag("--all", options->all, "everything that is a setting, not the user's only");
    verb->add_option("FILE", options->file, "where to; without it, standard output");
    verb->footer(cFooter);
    OnRun(*verb, context, [&context, options] { return Dump(context, *options); });
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// kora4ctl dump: the settings as one JSON document.
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"

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
        const HeldStore store(context, OpenMode::eRead);
        TellIfAbandoned(context, store.lock);
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
    const auto [verb, options] = AddVerb<Options>(
        context.root, context, "dump", "write the settings as one JSON document", Dump);
    verb.add_flag("--all", options.all, "everything that is a setting, not the user's only");
    verb.add_option("FILE", options.file, "where to; without it, standard output");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

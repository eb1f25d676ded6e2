// SPDX-License-Identifier: MIT
// kora4ctl dump: the settings as one JSON document.
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Options {
    bool all = false;
    ProfileOption profile;
    std::string file;
};

constexpr char cFooter[] =
    "Without --all: the active profile, the master enable, the sampling period, and the\n"
    "names, switches and values of the profiles movie to p6. With --all, also the factory\n"
    "values of the demo profiles, the global technologies, and what the installer and\n"
    "support have set.\n"
    "Unset values are not included. Counters, the state before a demo and the levels are\n"
    "not settings and are never included. 'kora4ctl load' loads the\n"
    "document.\n"
    "With --profile: what is in effect in that profile, to share it; 'kora4ctl load --into'\n"
    "loads it into any profile.\n";

ExitCode Dump(const Context& context, const Options& options) {
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    Json document;
    {
        const HeldStore store(context, OpenMode::eRead);
        TellIfAbandoned(context, store.lock);
        document = profile ? DumpProfile(*store, *profile)
                           : Dump(*store, options.all ? Scope::eAll : Scope::eUser);
    }
    if (IsStream(options.file)) {
        context.output.PrintJson(document);
        return ExitCode::eDone;
    }
    WriteWholeFile(options.file, ToText(document));
    if (context.output.json)
        context.output.PrintJson(Json{{"file", options.file}, {"scope", document["scope"]}});
    else
        context.output.Say("The settings were written to '" + options.file + "'.");
    return ExitCode::eDone;
}

}  // namespace

void AddDump(Context& context) {
    const auto [verb, options] = AddVerb<Options>(
        context.root, context, "dump", "write the settings as one JSON document", Dump);
    auto* const all = verb.add_flag("--all", options.all, "all settings, not only the user's");
    options.profile.AddTo(verb, "only this profile, as a document to share").excludes(all);
    verb.add_option("FILE", options.file, "the output file; standard output if omitted or -");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

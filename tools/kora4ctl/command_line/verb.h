// SPDX-License-Identifier: MIT
// What verbs have in common: how one is put on the command line, options that several have,
// and the two forms of a result.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "kora4ctl/access/profile_names.h"
#include "process/help_text.h"
#include "process/program.h"

namespace kora4::tools {

// A verb and its options, which live as long as the command line.
template <typename Options>
struct Verb {
    CLI::App& app;
    Options& options;
};

// `run` is what the verb does, after the whole command line has been understood.
template <typename Options>
Verb<Options> AddVerb(CLI::App& parent, Context& context, const char* name, const char* summary,
                      ExitCode (*run)(const Context& context, const Options& options)) {
    const auto options = std::make_shared<Options>();
    CLI::App& app = *parent.add_subcommand(name, summary);
    OnRun(app, context, [&context, options, run] { return run(context, *options); });
    return {app, *options};
}

// A verb that only has verbs of its own.
inline CLI::App& AddGroup(Context& context, const char* name, const char* summary) {
    return *context.root.add_subcommand(name, summary)->require_subcommand(1);
}

// Of a verb without options.
struct NoOptions {};

// --profile P; not given: the active profile.
class ProfileOption {
  public:
    CLI::Option& AddTo(CLI::App& verb,
                       const char* help =
                           "use this profile (music, p1, its name, ...) instead "
                           "of the active one") {
        return *verb.add_option("--profile", m_word, help)->type_name("P");
    }
    // Failure with eBadInput when there is no such profile.
    std::optional<std::uint32_t> Get(const Context& context) const {
        return m_word ? std::optional(ProfileNamed(context, *m_word)) : std::nullopt;
    }

  private:
    std::optional<std::string> m_word;
};

// Prints a result: the document with --json, the line without.
inline ExitCode PrintResult(const Context& context, const std::string& line,
                            const Json& document) {
    if (context.output.json)
        context.output.PrintJson(document);
    else
        context.output.Print(line);
    return ExitCode::eDone;
}

}  // namespace kora4::tools

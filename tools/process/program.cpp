// SPDX-License-Identifier: MIT
// Parses a command line, and turns what is thrown into words and exit codes.
#include "process/program.h"

#include <algorithm>

#include "base/failure.h"
#include "base/shown_text.h"
#include "base/text.h"
#include "contract/version.h"
#include "process/complaint.h"
#include "process/help_text.h"
#include "process/man_page.h"

namespace kora4::tools {

namespace {

constexpr std::size_t cMostBrackets = 100;

// With --json a failure is one line of JSON, too, also of a command line that is not
// understood.
ExitCode Tell(Output& output, const char* name, const Failure& failure) {
    if (output.json) {
        const Json document = {{"error", failure.what()},
                               {"next", OrNull(failure.Next())},
                               {"exitCode", static_cast<int>(failure.Code())}};
        output.Complain(document.dump(-1, ' ', false, Json::error_handler_t::replace));
        return failure.Code();
    }
    // Each is one line, whatever names are in it.
    output.Complain(std::string(name) + ": " + ShownText(failure.what()));
    if (!failure.Next().empty())
        output.Complain(ShownText(failure.Next()));
    return failure.Code();
}

bool AsksForJson(const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    return std::find(arguments.begin(), end, "--json") != end;
}

}  // namespace

void PrepareCommandLine(CLI::App& root, Output& output) {
    root.formatter(std::make_shared<HelpFormatter>());
    root.fallthrough();
    // "/folder/file" is a file.
    root.allow_windows_style_options(false);
    root.add_flag("--json", output.json, "print the result as JSON");
    root.add_flag("--quiet,-q", output.quiet, "print results and errors only, no messages");
    root.set_version_flag("--version", KORA4_VERSION_TEXT, "print the version and exit");
    root.set_help_flag("--help,-h", "print this help and exit");
    // As the flag for the version, before anything is missed on the command line.
    root.add_flag_callback(
        "--man", [&root] { throw CLI::CallForVersion(ManPage(root), 0); },
        "print the manual page, in the format of man, and exit");
}

namespace {

ExitCode ParseAndRun(Context& context, const std::vector<std::string>& arguments) {
    try {
        ParseArguments(context.root, arguments);
    } catch (const CLI::CallForHelp&) {
        context.output.Write(context.root.help());
        return ExitCode::eDone;
    } catch (const CLI::CallForVersion& version) {
        const std::string text = version.what();
        context.output.Write(text + (text.ends_with('\n') ? "" : "\n"));
        return ExitCode::eDone;
    } catch (const Failure&) {
        context.output.json = AsksForJson(arguments);
        throw;
    }
    return context.run();
}

}  // namespace

void ParseArguments(CLI::App& root, const std::vector<std::string>& arguments) {
    // The parser also takes "[a,b]" for two arguments, and lists in lists until the stack is
    // full.
    if (std::ranges::any_of(arguments, [](const std::string& argument) {
            return argument.starts_with(std::string(cMostBrackets + 1, '['));
        }))
        throw Failure(ExitCode::eUsage, "An argument begins with too many brackets.");
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    // It would end the arguments of a command, without a word.
    if (std::find(arguments.begin(), end, cEndOfCommand) != end)
        throw ComplaintOf(CLI::ExtrasError({cEndOfCommand}), root, arguments);
    try {
        root.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success&) {
        throw;
    } catch (const CLI::ParseError& error) {
        throw ComplaintOf(error, root, arguments);
    }
}

std::vector<std::string> Arguments(int count, wchar_t** arguments) {
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i)
        texts.push_back(Narrow(arguments[i]));
    return texts;
}

int RunProgram(const char* name, const char* summary, const std::vector<std::string>& arguments,
               const std::function<void(Context&)>& add) {
    Output output;
    Interrupt interrupt;
    ExitCode code = ExitCode::eFailed;
    try {
        CLI::App root(summary, name);
        PrepareCommandLine(root, output);
        Context context{output, interrupt, root, {}};
        add(context);
        code = ParseAndRun(context, arguments);
        if (output.IsIncomplete())
            throw Failure(ExitCode::eFailed,
                          "Standard output cannot be written; the result is incomplete.");
    } catch (const Failure& failure) {
        code = Tell(output, name, failure);
    } catch (const std::bad_alloc&) {
        Tell(output, name, Failure(ExitCode::eFailed, "Out of memory."));
    } catch (const std::exception& error) {
        Tell(output, name,
             Failure(ExitCode::eFailed, std::string("Internal error: ") + error.what() + "."));
    }
    return static_cast<int>(code);
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// Parses a command line, complains in the tools' own words, and turns what is thrown into exit
// codes.
#include "process/program.h"

#include <algorithm>
#include <set>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/version.h"

namespace kora4::tools {

namespace {

std::vector<std::string> SubcommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(verb->get_name());
    return names;
}

std::vector<std::string> OptionNames(const CLI::App* app) {
    std::set<std::string> names;
    for (; app != nullptr; app = app->get_parent()) {
        for (const CLI::Option* option : app->get_options()) {
            for (const std::string& name : option->get_lnames())
                names.insert("--" + name);
        }
    }
    return {names.begin(), names.end()};
}

bool IsOption(const std::string& argument) {
    return argument.size() > 1 && argument[0] == '-' &&
           !(argument[1] >= '0' && argument[1] <= '9');
}

// Describes in the tools' own words what the parser refused.
class Complaint {
  public:
    Complaint(const CLI::App& root, const std::vector<std::string>& arguments) : m_app(&root) {
        for (const std::string& argument : arguments) {
            if (IsOption(argument))
                continue;
            const std::vector<std::string> names = SubcommandNames(*m_app);
            if (names.empty())
                break;
            if (std::find(names.begin(), names.end(), argument) == names.end()) {
                m_unknown = argument;
                break;
            }
            m_app = m_app->get_subcommand(argument);
        }
        m_arguments = arguments;
    }

    Failure Of(const CLI::ParseError& error) const {
        const std::vector<std::string> verbs = SubcommandNames(*m_app);
        if (!m_unknown.empty())
            return Usage("There is no '" + CommandLine() + m_unknown + "'. " +
                         Suggestion(m_unknown, verbs));
        if (const std::string option = UnknownOption(); !option.empty())
            return Usage("'" + option + "' is not an option here. " +
                         Suggestion(option, OptionNames(m_app)));
        if (!verbs.empty() && m_app->get_require_subcommand_min() > 0)
            return Usage("Say what to do: " + Join(verbs, ", ") + ".");
        return Usage(Sentence(error.what()));
    }

  private:
    Failure Usage(const std::string& what) const {
        const CLI::App* root = m_app;
        while (root->get_parent() != nullptr)
            root = root->get_parent();
        return Failure(ExitCode::eUsage, what,
                       "More: " + root->get_name() + " " + CommandLine() + "--help");
    }

    // "profile " for the subcommands of profile.
    std::string CommandLine() const {
        std::string names;
        for (const CLI::App* app = m_app; app->get_parent() != nullptr; app = app->get_parent())
            names = app->get_name() + " " + names;
        return names;
    }

    std::string UnknownOption() const {
        const std::vector<std::string> known = OptionNames(m_app);
        for (const std::string& argument : m_arguments) {
            if (argument == "--")
                break;
            const std::string name = argument.substr(0, argument.find('='));
            if (name.starts_with("--") &&
                std::find(known.begin(), known.end(), name) == known.end())
                return name;
        }
        return {};
    }

    static std::string Sentence(std::string text) {
        while (!text.empty() && (text.back() == '\n' || text.back() == '.'))
            text.pop_back();
        return text + ".";
    }

    const CLI::App* m_app;
    std::string m_unknown;
    std::vector<std::string> m_arguments;
};

ExitCode Tell(Output& output, const char* name, const Failure& failure) {
    output.Complain(std::string(name) + ": " + failure.what());
    if (!failure.Next().empty())
        output.Complain(failure.Next());
    return failure.Code();
}

void AddCommonOptions(CLI::App& root, Output& output) {
    root.add_flag("--json", output.json, "print the result as JSON");
    root.add_flag("--quiet,-q", output.quiet, "print results and errors only, no messages");
    root.set_version_flag("--version", KORA4_VERSION_TEXT);
    root.set_help_flag("--help,-h", "print this help and exit");
}

ExitCode ParseAndRun(Context& context, const std::vector<std::string>& arguments) {
    try {
        context.root.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        context.output.Write(context.root.help());
        return ExitCode::eDone;
    } catch (const CLI::CallForVersion& version) {
        context.output.Print(version.what());
        return ExitCode::eDone;
    } catch (const CLI::ParseError& error) {
        throw Complaint(context.root, arguments).Of(error);
    }
    return context.run();
}

}  // namespace

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
        root.fallthrough();
        // "/folder/file" is a file.
        root.allow_windows_style_options(false);
        Context context{output, interrupt, root, {}};
        AddCommonOptions(root, output);
        add(context);
        code = ParseAndRun(context, arguments);
        if (output.IsIncomplete())
            throw Failure(ExitCode::eFailed,
                          "Standard output cannot be written; the result is incomplete.");
    } catch (const Failure& failure) {
        code = Tell(output, name, failure);
    } catch (const std::bad_alloc&) {
        output.Complain(std::string(name) + ": Out of memory.");
    } catch (const std::exception& error) {
        output.Complain(std::string(name) + ": Internal error: " + error.what());
    }
    return static_cast<int>(code);
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// Finds out which argument the parser did not take, and says so. Its own texts are never shown;
// they only tell which option is meant.
#include "process/complaint.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>

#include "base/nearest.h"
#include "base/text.h"

namespace kora4::tools {
namespace {

std::string Quoted(const std::string& text) {
    return "'" + text + "'";
}

std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({}))
        names.push_back(command->get_name());
    return names;
}

// Those of the command and of the ones above it.
std::vector<const CLI::Option*> OptionsOf(const CLI::App* app) {
    std::vector<const CLI::Option*> options;
    for (; app != nullptr; app = app->get_parent())
        for (const CLI::Option* option : app->get_options())
            options.push_back(option);
    return options;
}

bool IsOption(const std::string& argument) {
    if (argument == cEndOfCommand)
        return true;
    return argument.size() > 1 && argument[0] == '-' &&
           !(argument[1] >= '0' && argument[1] <= '9');
}

class Complaint {
  public:
    Complaint(const CLI::App& root, const std::vector<std::string>& arguments)
        : m_app(&root), m_arguments(arguments) {
        for (const std::string& argument : arguments) {
            if (IsOption(argument))
                continue;
            if (CommandNames(*m_app).empty())
                break;
            const CLI::App* const command = FindCommand(*m_app, argument);
            if (command == nullptr) {
                m_unknown = argument;
                break;
            }
            m_app = command;
        }
    }

    Failure Of(const CLI::ParseError& error) const {
        const std::vector<std::string> commands = CommandNames(*m_app);
        if (!m_unknown.empty())
            return Usage(UnknownCommand(*m_app, CommandLine(), m_unknown));
        if (const std::string option = UnknownOption(); !option.empty())
            return OfUnknownOption(option);
        if (!commands.empty() && m_app->get_require_subcommand_min() > 0)
            return Usage("Missing command. Commands: " + Join(commands, ", ") + ".");
        return Usage(OfArgument(error));
    }

  private:
    Failure Usage(const std::string& what, const std::string& hint = {}) const {
        const CLI::App* root = m_app;
        while (root->get_parent() != nullptr)
            root = root->get_parent();
        return Failure(ExitCode::eUsage, what,
                       hint + "More: " + root->get_name() + " " + CommandLine() + "--help");
    }

    // "profile " for the commands of profile.
    std::string CommandLine() const {
        std::string names;
        for (const CLI::App* app = m_app; app->get_parent() != nullptr; app = app->get_parent())
            names = app->get_name() + " " + names;
        return names;
    }

    // "--x" and "-x" that no option is called. What follows "--" is no option.
    std::string UnknownOption() const {
        const std::vector<const CLI::Option*> options = OptionsOf(m_app);
        for (const std::string& argument : m_arguments) {
            if (argument == "--")
                break;
            if (!IsOption(argument))
                continue;
            const bool isLong = argument.starts_with("--");
            const std::string name =
                isLong ? argument.substr(0, argument.find('=')) : argument.substr(0, 2);
            if (std::none_of(options.begin(), options.end(),
                             [&](const CLI::Option* one) { return one->check_name(name); }))
                return isLong ? name : argument;
        }
        return {};
    }

    Failure OfUnknownOption(const std::string& option) const {
        std::set<std::string> names;
        for (const CLI::Option* one : OptionsOf(m_app))
            for (const std::string& name : one->get_lnames())
                names.insert("--" + name);
        const std::string what = "Unknown option " + Quoted(option) + ". ";
        if (option.starts_with("--"))
            return Usage(what + Suggestion(option, {names.begin(), names.end()}));
        // A name or a value may begin like an option.
        const bool takesArguments = std::ranges::any_of(
            m_app->get_options(), [](const CLI::Option* one) { return one->get_positional(); });
        return Usage(what + (takesArguments ? "If it is a value, put '--' before it."
                                            : "Short options are listed in the help."));
    }

    std::string OfArgument(const CLI::ParseError& error) const {
        if (dynamic_cast<const CLI::ExtrasError*>(&error))
            return "Unexpected argument " + Quoted(FirstExtra()) + ".";
        const CLI::Option* const option = Named(error.what());
        if (option == nullptr)
            return "The command line is not understood.";
        const std::string name = option->get_name();
        if (dynamic_cast<const CLI::RequiredError*>(&error))
            return "Missing " +
                   std::string(option->get_positional() ? "argument " : "option ") + name + ".";
        for (const CLI::Option* other : option->get_excludes())
            if (dynamic_cast<const CLI::ExcludesError*>(&error) && other->count() > 0)
                return "Options " + name + " and " + other->get_name() + " cannot be combined.";
        for (const CLI::Option* other : option->get_needs())
            if (dynamic_cast<const CLI::RequiresError*>(&error) && other->count() == 0)
                return "Option " + name + " requires " + other->get_name() + ".";
        return OfValue(*option, error);
    }

    static std::string OfValue(const CLI::Option& option, const CLI::ParseError& error) {
        const std::string name = option.get_name();
        const CLI::results_t& values = option.results();
        if (option.get_items_expected_max() == 0)
            return "Option " + name + " takes no value.";
        if (values.empty())
            return "Option " + name + " requires a value.";
        if (values.size() > static_cast<std::size_t>(option.get_items_expected_max()))
            return "Option " + name + " is given more than once.";
        // The tools' own checks explain themselves, behind "<name>: ".
        const std::string reason = dynamic_cast<const CLI::ValidationError*>(&error)
                                       ? std::string(error.what()).substr(name.size())
                                       : std::string();
        return "Invalid value " + Quoted(Join(values, " ")) + " for " + name + reason + ".";
    }

    // The option or argument whose name comes first in a text of the parser.
    const CLI::Option* Named(std::string_view text) const {
        const CLI::Option* named = nullptr;
        std::size_t first = text.size();
        const auto isPart = [](char c) {
            return c == '-' || c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                   (c >= 'a' && c <= 'z');
        };
        for (const CLI::Option* option : OptionsOf(m_app)) {
            const std::string name = option->get_name();
            const std::size_t at = text.find(name);
            if (at >= first || (at > 0 && isPart(text[at - 1])) ||
                (at + name.size() < text.size() && isPart(text[at + name.size()])))
                continue;
            named = option;
            first = at;
        }
        return named;
    }

    std::string FirstExtra() const {
        const CLI::App* root = m_app;
        while (root->get_parent() != nullptr)
            root = root->get_parent();
        const std::vector<std::string> extras = root->remaining(true);
        return extras.empty() ? std::string() : extras.front();
    }

    const CLI::App* m_app;
    std::string m_unknown;
    const std::vector<std::string>& m_arguments;
};

}  // namespace

Failure ComplaintOf(const CLI::ParseError& error, const CLI::App& root,
                    const std::vector<std::string>& arguments) {
    return Complaint(root, arguments).Of(error);
}

const CLI::App* FindCommand(const CLI::App& app, const std::string& name) {
    const std::vector<const CLI::App*> commands = app.get_subcommands({});
    const auto found = std::ranges::find_if(
        commands, [&](const CLI::App* one) { return one->check_name(name); });
    return found == commands.end() ? nullptr : *found;
}

std::string UnknownCommand(const CLI::App& app, const std::string& path,
                           const std::string& name) {
    const std::vector<std::string> names = CommandNames(app);
    return "Unknown command " + Quoted(path + name) + "." +
           (names.empty() ? "" : " " + Suggestion(name, names));
}

}  // namespace kora4::tools

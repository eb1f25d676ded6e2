#include "checks/trace_statements.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

#include "checks/documents_markdown.h"

namespace kora4::test {

namespace {

// The end of the literal that begins at `at`.
std::size_t EndOfLiteral(const std::string& text, std::size_t at) {
    for (++at; text[at] != '"'; ++at)
        at += text[at] == '\\';
    return at + 1;
}

// The arguments of a macro, whose parenthesis opens before `at`.
std::vector<std::string> ArgumentsAt(const std::string& text, std::size_t at) {
    std::vector<std::string> arguments(1);
    for (int depth = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') {
            const std::size_t end = EndOfLiteral(text, at);
            arguments.back() += text.substr(at, end - at);
            at = end - 1;
            continue;
        }
        if (c == '(' || c == '{' || c == '[')
            ++depth;
        if ((c == ')' || c == '}' || c == ']') && --depth < 0)
            break;
        if (c == ',' && depth == 0)
            arguments.emplace_back();
        else
            arguments.back() += c;
    }
    return arguments;
}

std::string OnOneLine(const std::string& text) {
    static const std::regex blanks(R"([\s\\]+)");
    std::string line = std::regex_replace(text, blanks, " ");
    while (line.starts_with(' '))
        line.erase(0, 1);
    while (line.ends_with(' '))
        line.pop_back();
    return line;
}

char Unescaped(char c) {
    return c == 'n' ? '\n' : c == 't' ? '\t' : c;
}

// What neighbouring literals make, with a %s for each argument made a text.
std::string TextOf(const std::string& expression) {
    std::string text;
    for (std::size_t at = 0; at < expression.size(); ++at) {
        if (expression[at] == '#') {
            text += "%s";
        } else if (expression[at] == '"') {
            const std::size_t end = EndOfLiteral(expression, at);
            for (++at; at < end - 1; ++at)
                text += expression[at] == '\\' ? Unescaped(expression[++at]) : expression[at];
        }
    }
    return text;
}

std::string WithoutNewline(std::string text) {
    if (text.ends_with('\n'))
        text.pop_back();
    return text;
}

constexpr char cAssertion[] = "KALASSERT failed: ";
constexpr char cHead[] = "%s: %4d %s:";

// The sources but those of the trace itself and of the tables.
std::vector<std::string> TracingSources() {
    const std::filesystem::path root(KORA4_ROOT);
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "src")) {
        const std::string path = std::filesystem::relative(entry.path(), root).generic_string();
        if ((path.ends_with(".cpp") || path.ends_with(".h")) &&
            !path.starts_with("src/trace/") && !path.starts_with("src/published/"))
            paths.push_back(path);
    }
    std::ranges::sort(paths);
    return paths;
}

}  // namespace

std::vector<TraceStatement> TraceStatementsIn(const std::string& path,
                                              const std::string& source) {
    static const std::regex statement(
        R"re(\b(KALTRACE|KALASSERT_TEXT|KALASSERT)\(|\.(badArgument|entry) = (?="))re");
    std::vector<TraceStatement> found;
    for (std::sregex_iterator i(source.begin(), source.end(), statement), end; i != end; ++i) {
        const auto at = static_cast<std::size_t>(i->position());
        const std::string kind = (*i)[1].matched ? (*i)[1] : (*i)[2];
        const auto arguments = ArgumentsAt(source, at + static_cast<std::size_t>(i->length()));
        TraceStatement one{
            path + ":" +
                std::to_string(
                    1 + std::count(source.begin(), source.begin() + i->position(), '\n')),
            "", ""};
        if (kind == "KALTRACE") {
            one.mask = OnOneLine(arguments.at(0));
            one.text = WithoutNewline(TextOf(arguments.at(2)));
        } else if (kind == "KALASSERT_TEXT") {
            one.text = cAssertion + TextOf(arguments.at(2));
        } else if (kind == "KALASSERT") {
            one.text = cAssertion + OnOneLine(arguments.at(1));
        } else if (kind == "badArgument") {
            one.text = "**** Error: " + TextOf(arguments.at(0));
        } else {
            one.text = WithoutNewline(TextOf(arguments.at(0))).substr(sizeof cHead - 1);
        }
        found.push_back(one);
    }
    return found;
}

std::vector<TraceStatement> AllTraceStatements() {
    std::vector<TraceStatement> all;
    for (const std::string& path : TracingSources())
        std::ranges::copy(TraceStatementsIn(path, ReadProjectFile(path)),
                          std::back_inserter(all));
    return all;
}

std::vector<std::string> AllTracedFunctions() {
    // The site's tag is a literal or a constant; a method of the API object has no tag.
    static const std::regex site(
        R"re(\b(?:Site \w+\{\s*(?:"\w+"|\w+),|Method cMethod\{)\s*"([\w:~]+)")re");
    std::set<std::string> functions;
    for (const std::string& path : TracingSources()) {
        const std::string text = ReadProjectFile(path);
        for (std::sregex_iterator i(text.begin(), text.end(), site), end; i != end; ++i)
            functions.insert((*i)[1]);
    }
    return {functions.begin(), functions.end()};
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Finds the trace statements of the library's sources, the function that each stands in, and
// its format.
#include "checks/trace_statements.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>

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
constexpr char cNotInitialized[] = "**** Error: APOERR_NOT_INITIALIZED";

// The sources but those of the trace itself and of the tables.
const std::vector<TraceSource>& TracingSources() {
    static const std::vector<TraceSource> sources = [] {
        const std::filesystem::path root(KORA4_ROOT);
        std::vector<TraceSource> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "src")) {
            const std::string path =
                std::filesystem::relative(entry.path(), root).generic_string();
            if ((path.ends_with(".cpp") || path.ends_with(".h")) &&
                !path.starts_with("src/trace/") && !path.starts_with("src/contract/"))
                found.push_back({path, ReadProjectFile(path)});
        }
        std::ranges::sort(found, {}, &TraceSource::path);
        return found;
    }();
    return sources;
}

// --- whose lines a statement writes
// -----------------------------------------------------------

bool IsNameCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Where a site of that name is defined last before a place, and what it is made of.
struct Definition {
    std::size_t at = 0;
    bool isMethod = false;
    std::vector<std::string> parts;  // "cTag", "\"RegKeyMonitor::Callback\""

    std::string Function() const { return TextOf(parts.at(isMethod ? 0 : 1)); }
    // A method may be silent about a call that it refuses.
    bool SaysNotInitialized() const {
        return !isMethod || parts.size() < 2 ||
               (parts[1].find("tellsNotInitialized = false") == std::string::npos &&
                parts[1].find("InitializationCheck::eNone") == std::string::npos);
    }
};

std::optional<Definition> DefinitionOf(const std::string& text, const std::string& name,
                                       std::size_t before) {
    std::optional<Definition> last;
    for (const std::string type : {"Site ", "Method "}) {
        const std::string beginning = type + name + "{";
        const std::size_t at = text.rfind(beginning, before);
        if (at != std::string::npos && (!last || at > last->at))
            last = {at, type == "Method ", ArgumentsAt(text, at + beginning.size())};
    }
    return last;
}

// A function or macro that takes a site by that name, and which of its parameters that is.
struct Taker {
    std::string name;
    std::size_t parameter = 0;
};

std::optional<Taker> TakerOf(const std::string& text, const std::string& name,
                             std::size_t before) {
    std::size_t at = 0;
    for (const std::string type : {"Site& ", "Method& "}) {
        const std::size_t found = text.rfind(type + name, before);
        if (found != std::string::npos)
            at = std::max(at, found);
    }
    const std::size_t macro = text.rfind("(" + name + ",", before);
    if (macro != std::string::npos && macro > at &&
        text.compare(text.rfind('\n', macro) + 1, 8, "#define ") == 0)
        at = macro;
    Taker taker;
    for (; at > 0 && text[at] != '('; --at)
        if (text[at] == ',')
            ++taker.parameter;
    for (; at > 0 && IsNameCharacter(text[at - 1]); --at)
        taker.name.insert(taker.name.begin(), text[at - 1]);
    if (taker.name.empty())
        return {};
    return taker;
}

// The functions of a site, through all that it is handed to.
class FunctionFinder {
  public:
    FunctionFinder(const std::vector<TraceSource>& sources, bool isRefusal)
        : m_sources(sources), m_isRefusal(isRefusal) {}

    std::set<std::string> Find(const TraceSource& source, const std::string& site,
                               std::size_t at) {
        const std::string name = site.substr(0, site.find('.'));
        if (const auto definition = DefinitionOf(source.text, name, at)) {
            if (m_isRefusal && !definition->SaysNotInitialized())
                return {};
            return {definition->Function()};
        }
        const auto taker = TakerOf(source.text, name, at);
        return taker ? OfCallersOf(*taker) : std::set<std::string>{};
    }

  private:
    std::set<std::string> OfCallersOf(const Taker& taker) {
        std::set<std::string> functions;
        if (!m_seen.insert(taker.name).second)
            return functions;
        const std::string call = taker.name + "(";
        for (const TraceSource& source : m_sources) {
            for (std::size_t at = source.text.find(call); at != std::string::npos;
                 at = source.text.find(call, at + 1)) {
                if (at > 0 && IsNameCharacter(source.text[at - 1]))
                    continue;
                const auto arguments = ArgumentsAt(source.text, at + call.size());
                if (taker.parameter >= arguments.size())
                    continue;
                const std::string site = OnOneLine(arguments[taker.parameter]);
                if (site.find('&') == std::string::npos)  // as in a declaration
                    functions.merge(Find(source, site, at));
            }
        }
        return functions;
    }

    const std::vector<TraceSource>& m_sources;
    const bool m_isRefusal;
    std::set<std::string> m_seen;
};

// The methods that have a rule: the one that it stands in, or those that name its constant.
std::set<std::string> MethodsWithRule(const std::string& text, std::size_t at) {
    const auto method = DefinitionOf(text, "cMethod", at);
    const std::string constant = "MethodRules ";
    const std::size_t rules = text.rfind(constant, at);
    if (rules == std::string::npos || (method && method->at > rules))
        return method ? std::set<std::string>{method->Function()} : std::set<std::string>{};
    const std::size_t begin = rules + constant.size();
    const std::string name = text.substr(begin, text.find(' ', begin) - begin);
    std::set<std::string> methods;
    for (std::size_t end = text.size();;) {
        const auto user = DefinitionOf(text, "cMethod", end);
        if (!user || user->at == 0)
            return methods;
        if (user->parts.size() > 1 && OnOneLine(user->parts[1]) == name)
            methods.insert(user->Function());
        end = user->at - 1;
    }
}

TraceStatement StatementAt(const std::vector<TraceSource>& sources, const TraceSource& source,
                           const std::smatch& match) {
    const std::string kind = match[1].matched ? match[1] : match[2];
    const auto at = static_cast<std::size_t>(match.position());
    const auto arguments =
        ArgumentsAt(source.text, at + static_cast<std::size_t>(match.length()));
    TraceStatement one;
    one.place = source.path + ":" +
                std::to_string(1 + std::count(source.text.begin(),
                                              source.text.begin() + match.position(), '\n'));
    std::string site;
    if (kind == "KALTRACE" || kind == "KALTRACE_AT") {
        const std::size_t text = kind == "KALTRACE" ? 2 : 3;
        one.mask = OnOneLine(arguments.at(0));
        site = OnOneLine(arguments.at(1));
        one.text = WithoutNewline(TextOf(arguments.at(text)));
        one.values = arguments.size() - text - 1;
    } else if (kind == "badArgument") {
        one.mask = "trace::eMessages";
        one.text = "**** Error: " + TextOf(arguments.at(0));
    } else if (kind == "entry") {
        one.mask = "trace::eEntry";
        one.text = WithoutNewline(TextOf(arguments.at(0))).substr(sizeof cHead - 1);
    } else {
        one.mask = "trace::eAssertions";
        site = OnOneLine(arguments.at(0));
        one.text = cAssertion +
                   (kind == "KALASSERT" ? OnOneLine(arguments.at(1)) : TextOf(arguments.at(2)));
    }
    one.functions =
        site.empty()
            ? MethodsWithRule(source.text, at)
            : FunctionFinder(sources, one.text == cNotInitialized).Find(source, site, at);
    return one;
}

}  // namespace

std::vector<TraceStatement> TraceStatementsIn(const std::vector<TraceSource>& sources) {
    static const std::regex statement(
        R"re(\b(KALTRACE|KALTRACE_AT|KALASSERT_TEXT|KALASSERT)\(|\.(badArgument|entry) = (?="))re");
    std::vector<TraceStatement> found;
    for (const TraceSource& source : sources)
        for (std::sregex_iterator i(source.text.begin(), source.text.end(), statement), end;
             i != end; ++i)
            found.push_back(StatementAt(sources, source, *i));
    return found;
}

std::vector<TraceStatement> AllTraceStatements() {
    return TraceStatementsIn(TracingSources());
}

std::vector<std::string> AllTracedFunctions() {
    // The site's tag is a literal or a constant; a method of the API object has no tag.
    static const std::regex site(
        R"re(\b(?:Site \w+\{\s*(?:"\w+"|\w+),|Method cMethod\{)\s*"([\w:~]+)")re");
    std::set<std::string> functions;
    for (const TraceSource& source : TracingSources())
        for (std::sregex_iterator i(source.text.begin(), source.text.end(), site), end;
             i != end; ++i)
            functions.insert((*i)[1]);
    return {functions.begin(), functions.end()};
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Reads interface definitions and headers with regular expressions: enumerators, macros,
// methods.
#include "checks/documents_sources.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "checks/documents_markdown.h"

namespace kora4::test {

namespace {

constexpr char cIdl[] = "idl/veltokora4api.idl";

std::string WithoutComments(const std::string& text) {
    static const std::regex comments(R"(/\*[^*]*\*+([^/*][^*]*\*+)*/|//[^\n]*)");
    return std::regex_replace(text, comments, "");
}

std::string OneLine(const std::string& text) {
    static const std::regex blanks(R"(\s+)");
    return std::regex_replace(text, blanks, " ");
}

std::uint32_t Number(const std::string& text) {
    return static_cast<std::uint32_t>(std::stoul(text, nullptr, 0));
}

// The text between the braces behind `head`.
std::string BodyOf(const std::string& text, const std::string& head) {
    const std::size_t at = text.find(head);
    EXPECT_NE(std::string::npos, at) << head;
    if (at == std::string::npos)
        return {};
    const std::size_t begin = text.find('{', at) + 1;
    return text.substr(begin, text.find('}', begin) - begin);
}

template <typename Visit>
void ForEach(const std::string& text, const std::regex& pattern, Visit&& visit) {
    for (std::sregex_iterator i(text.begin(), text.end(), pattern), end; i != end; ++i)
        visit(*i);
}

}  // namespace

std::vector<NamedNumber> EnumeratorsOf(const std::string& path, const std::string& enumName) {
    static std::map<std::string, std::vector<NamedNumber>> known;
    std::vector<NamedNumber>& found = known[path + " " + enumName];
    if (!found.empty())
        return found;
    const std::string text = WithoutComments(ReadProjectFile(path));
    static const std::regex enumerator(R"((\w+)(\s*=\s*(\w+))?\s*(,|$))");
    std::uint32_t next = 0;
    ForEach(BodyOf(text, "enum " + enumName), enumerator, [&](const std::smatch& match) {
        const std::uint32_t number = match[3].matched ? Number(match[3]) : next;
        found.push_back({match[1], number});
        next = number + 1;
    });
    EXPECT_FALSE(found.empty()) << enumName;
    return found;
}

std::vector<NamedNumber> MacrosOf(const std::string& path, const std::string& prefix) {
    const std::regex macro("#define (" + prefix +
                           R"(\w*) (?:KORA4_RESULT_CODE\()?(0x[0-9A-Fa-f]+|\d+))");
    std::vector<NamedNumber> found;
    ForEach(ReadProjectFile(path), macro, [&](const std::smatch& match) {
        found.push_back({match[1], Number(match[2])});
    });
    EXPECT_FALSE(found.empty()) << prefix;
    return found;
}

std::vector<IdlMethod> MethodsOf(const std::string& interfaceName) {
    const std::string body = BodyOf(WithoutComments(ReadProjectFile(cIdl)),
                                    "interface " + interfaceName + " : IUnknown");
    static const std::regex method(R"(HRESULT\s+(\w+)\(([^)]*)\);)");
    static const std::regex outString("KORA4_OUT_STRING");
    std::vector<IdlMethod> found;
    ForEach(body, method, [&](const std::smatch& match) {
        const std::string parameters = OneLine(match[2]);
        const std::size_t begin = parameters.find('[');
        found.push_back({match[1], begin == std::string::npos
                                       ? std::string()
                                       : std::regex_replace(parameters.substr(begin), outString,
                                                            "LPWSTR")});
    });
    return found;
}

std::map<std::string, std::pair<std::string, std::string>> PatchValueMembers() {
    const std::string body =
        BodyOf(WithoutComments(ReadProjectFile(cIdl)), "typedef union KORA4PatchValueUnion");
    static const std::regex member(R"(case\s+(\w+):\s*(\w+)\s+(\w+);)");
    std::map<std::string, std::pair<std::string, std::string>> found;
    ForEach(body, member, [&](const std::smatch& match) {
        found[match[1]] = {match[2], match[3]};
    });
    return found;
}

std::vector<std::pair<std::string, std::string>> IdlIdentifiers() {
    static const std::regex identifier(
        R"(uuid\(([0-9A-Fa-f-]{36})\)[^\]]*\]\s*(?:interface|coclass|library)\s+(\w+))");
    std::vector<std::pair<std::string, std::string>> found;
    ForEach(WithoutComments(ReadProjectFile(cIdl)), identifier,
            [&](const std::smatch& match) { found.emplace_back(match[2], match[1]); });
    return found;
}

std::string ChecksOf(const std::string& method) {
    static const std::string sources = [] {
        std::string text;
        for (const auto& file : std::filesystem::directory_iterator(KORA4_ROOT "/src/api"))
            if (file.path().extension() == ".cpp")
                text += ReadProjectFile("src/api/" + file.path().filename().string());
        return text;
    }();
    const std::size_t begin = sources.find("STDMETHODIMP CKORA4ASL::" + method + "(");
    EXPECT_NE(std::string::npos, begin) << method;
    if (begin == std::string::npos)
        return "?";
    const std::string own = sources.substr(begin, sources.find("\n}\n", begin) - begin);
    const auto says = [&](const char* words) { return own.find(words) != std::string::npos; };
    const bool argument = !says("cNothingToCheck");
    if (says("InitializationCheck::eNone"))
        return argument ? "argument" : "";
    if (!argument)
        return "initialised";
    // The record's technology is looked at in the body, and so last.
    return says("cCommandRules")            ? "initialised, argument"
           : says("GetASLPatchUnionField(") ? "argument, initialised, technology"
                                            : "argument, initialised";
}

}  // namespace kora4::test

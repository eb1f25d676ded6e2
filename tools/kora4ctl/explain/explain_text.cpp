// SPDX-License-Identifier: MIT
// Recognises a code or a trace line, looks it up in the published tables, and formats what is
// known of it.
#include "kora4ctl/explain/explain_text.h"

#include <kora4/result.hpp>

#include <algorithm>
#include <set>

#include "base/nearest.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/messages/trace_messages.h"
#include "contract/messages/trace_writers.h"
#include "kora4ctl/explain/explain_values.h"
#include "kora4ctl/explain/trace_word.h"

namespace kora4::tools {

namespace {

std::string Sentence(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z')
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text.ends_with('.') ? text : text + ".";
}

constexpr std::string_view cLetters = "abcdefghijklmnopqrstuvwxyz_";
constexpr std::string_view cNameCharacters = "abcdefghijklmnopqrstuvwxyz_0123456789";

// In lower case and in their order: what those characters make up.
std::vector<std::string> WordsOf(std::string_view text, std::string_view characters) {
    const std::string lower = Lower(text);
    std::vector<std::string> words;
    for (std::size_t end = 0, begin = 0;
         (begin = lower.find_first_of(characters, end)) != std::string::npos;) {
        end = std::min(lower.find_first_not_of(characters, begin), lower.size());
        words.push_back(lower.substr(begin, end - begin));
    }
    return words;
}

// --- codes -------------------------------------------------------------------------------

template <typename Visit>
void ForEachResult(Visit visit) {
    std::for_each(std::begin(cApiResults), std::end(cApiResults), visit);
    std::for_each(std::begin(cPlatformResults), std::end(cPlatformResults), visit);
}

std::optional<std::uint32_t> CodeNamed(const std::string& lower) {
    std::optional<std::uint32_t> code;
    ForEachResult([&](const ResultCode& result) {
        if (Lower(result.name) == lower)
            code = result.code;
    });
    return code;
}

bool IsHex(std::string_view text) {
    return text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::optional<std::uint32_t> ParseDecimal(std::string_view text) {
    const auto number = NumberIn(text, 10);
    if (text.starts_with('-'))
        return number;
    const auto hex = text.size() == 8 ? NumberIn(text, 16) : std::nullopt;
    // Digits like 80004005 are more often a code copied without its 0x than a decimal number.
    if (hex && FindResult(*hex) && !(number && FindResult(*number)))
        return hex;
    if (number && *number < 0x10000 && !FindResult(*number))
        return cWin32Results | *number;
    return number;
}

Explanation OfCode(std::string_view input, std::uint32_t code) {
    Explanation explanation;
    explanation.input = input;
    explanation.kind = Explanation::Kind::eResult;
    explanation.code = code;
    if (const ResultCode* const pResult = FindResult(code)) {
        explanation.isKnown = true;
        explanation.name = pResult->name;
        explanation.meaning = Sentence(pResult->meaning);
        explanation.why = pResult->why;
        explanation.next = pResult->next;
        return explanation;
    }
    const std::string words = PlatformWords(code);
    explanation.isKnown = !words.empty();
    explanation.meaning =
        words.empty() ? "Unknown to the library and to the platform." : Sentence(words);
    if (explanation.isKnown)
        explanation.why =
            "This is the platform's description; the library does not return this result.";
    return explanation;
}

// Finds a result inside any other text.
std::optional<std::uint32_t> CodeIn(const std::string& text) {
    const std::string lower = Lower(text);
    for (std::size_t at = lower.find("0x"); at != std::string::npos;
         at = lower.find("0x", at + 1)) {
        const std::string_view digits = std::string_view(lower).substr(at + 2, 8);
        if (digits.size() == 8 && IsHex(digits) && NumberIn(digits, 16) >= 0x80000000u)
            return NumberIn(digits, 16);
    }
    for (const std::string& word : WordsOf(lower, cNameCharacters)) {
        if (const auto code = CodeNamed(word); code && word.find('_') != std::string::npos)
            return code;
    }
    return {};
}

// --- lines -------------------------------------------------------------------------------

std::string WriterOf(const contract::TraceHead& head, const std::string& function) {
    if (const contract::TraceWriter* const pWriter = contract::FindTraceWriter(function))
        return pWriter->meaning;
    const contract::TraceTag* const pTag = contract::FindTraceTag(head.tag);
    return pTag ? pTag->writer : "";
}

void AddValues(Explanation& explanation, const contract::TraceValues& values) {
    for (std::size_t i = 0; i < values.count; ++i) {
        const contract::TraceKind kind = values.kinds[i];
        explanation.values.push_back({contract::cTraceKindNames[static_cast<int>(kind)],
                                      std::string(values.texts[i]),
                                      MeaningOfValue(kind, values.texts[i])});
        if (kind == contract::TraceKind::eResult && !explanation.code)
            explanation.code = NumberIn(Lower(values.texts[i]), 16);
    }
    if (!explanation.code)
        return;
    if (const auto* const pResult = FindResult(*explanation.code)) {
        explanation.name = pResult->name;
        if (explanation.why.empty())
            explanation.why = pResult->why;
        if (explanation.next.empty())
            explanation.next = pResult->next;
    }
}

Explanation OfLine(std::string_view input, const contract::TraceHead& head,
                   const contract::TraceMatch& match) {
    const contract::TraceMessage& row = *match.pMessage;
    Explanation explanation;
    explanation.input = input;
    explanation.isKnown = true;
    explanation.meaning = row.meaning;
    explanation.why = row.why;
    explanation.next = row.next;
    explanation.tag = head.tag;
    explanation.function = head.function;
    if (explanation.function.empty() && row.function && match.equals == 1)
        explanation.function = row.function;
    explanation.writer = WriterOf(head, explanation.function);
    explanation.message = row.text;
    explanation.categories = NamesOfCategories(row.mask);
    AddValues(explanation, match.values);
    return explanation;
}

// --- what comes near ---------------------------------------------------------------------

std::set<std::string> LongWordsOf(std::string_view text) {
    std::set<std::string> words;
    for (const std::string& word : WordsOf(text, cLetters))
        if (word.size() > 2)
            words.insert(word);
    return words;
}

// How much two texts have in common, from 0 to 1.
double Likeness(const std::set<std::string>& a, const std::set<std::string>& b) {
    const auto common = std::count_if(
        a.begin(), a.end(), [&](const std::string& word) { return b.contains(word); });
    return a.empty() || b.empty()
               ? 0
               : 2 * static_cast<double>(common) / static_cast<double>(a.size() + b.size());
}

std::vector<std::string> NearestMessages(std::string_view message) {
    constexpr double cLeast = 0.3;
    constexpr std::size_t cMost = 3;
    const std::set<std::string> words = LongWordsOf(message);
    std::vector<std::pair<double, std::string>> alike;
    for (const contract::TraceMessage& row : msg::cTraceMessages) {
        const double likeness = Likeness(words, LongWordsOf(row.text));
        if (likeness >= cLeast)
            alike.emplace_back(-likeness, contract::detail::Trimmed(row.text));
    }
    std::stable_sort(alike.begin(), alike.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> texts;
    for (const auto& [likeness, text] : alike)
        if (texts.size() < cMost && std::find(texts.begin(), texts.end(), text) == texts.end())
            texts.push_back(text);
    return texts;
}

bool IsName(std::string_view text) {
    return text.find('_') != std::string_view::npos &&
           Lower(text).find_first_not_of(cNameCharacters) == std::string::npos;
}

Explanation OfNothing(std::string_view input, const contract::TraceHead& head) {
    Explanation explanation;
    explanation.input = input;
    explanation.tag = head.tag;
    explanation.function = head.function;
    explanation.writer = WriterOf(head, explanation.function);
    if (IsName(input)) {
        std::vector<std::string> names;
        ForEachResult([&](const ResultCode& result) { names.push_back(result.name); });
        explanation.kind = Explanation::Kind::eResult;
        explanation.meaning = "There is no known result of that name.";
        explanation.nearest = Nearest(input, names);
        return explanation;
    }
    explanation.meaning = "The library does not write such a line.";
    explanation.nearest = NearestMessages(head.function.empty() ? input : head.message);
    return explanation;
}

}  // namespace

std::optional<std::uint32_t> ParseCode(std::string_view text) {
    const std::string lower = Lower(contract::detail::Trimmed(text));
    if (const auto code = CodeNamed(lower))
        return code;
    std::string_view digits = lower;
    while (!digits.empty() && (digits.back() == 'u' || digits.back() == 'l'))
        digits.remove_suffix(1);
    if (digits.starts_with("0x"))
        return NumberIn(digits.substr(2), 16);
    if (digits.ends_with('h'))
        return NumberIn(digits.substr(0, digits.size() - 1), 16);
    if (digits.size() == 8 && IsHex(digits) &&
        digits.find_first_of("abcdef") != std::string_view::npos)
        return NumberIn(digits, 16);
    return ParseDecimal(digits);
}

Explanation Explain(std::string_view text) {
    const std::string_view input = contract::detail::Trimmed(text);
    if (const auto code = ParseCode(input))
        return OfCode(input, *code);
    contract::TraceHead head;
    bool hasHead = contract::ParseTraceHead(input, &head);
    contract::TraceMatch match;
    // Some messages look like a head themselves, but for its first word.
    if (hasHead && !contract::FindTraceTag(head.tag)) {
        match = contract::FindTraceMessage("", input);
        if (match.pMessage) {
            head = {};
            hasHead = false;
        }
    }
    if (!match.pMessage)
        match = contract::FindTraceMessage(head.function, hasHead ? head.message : input);
    // A function of another version may write a message that is known from elsewhere.
    if (!match.pMessage && hasHead)
        match = contract::FindTraceMessage("", head.message);
    if (match.pMessage)
        return OfLine(input, head, match);
    if (const auto code = CodeIn(std::string(input)))
        return OfCode(input, *code);
    return OfNothing(input, head);
}

std::vector<ExplainedPart> Parts(const Explanation& explanation) {
    std::vector<ExplainedPart> parts;
    const auto add = [&](const char* heading, const std::string& text) {
        if (!text.empty())
            parts.push_back({heading, text});
    };
    if (explanation.kind == Explanation::Kind::eResult) {
        if (explanation.code)
            add("result", (explanation.name.empty() ? "" : explanation.name + " ") +
                              Hex(*explanation.code));
    } else {
        add("line", explanation.input);
        const std::string& writer = explanation.writer;
        add("from", explanation.function.empty() ? writer
                    : writer.empty()             ? explanation.function
                                                 : explanation.function + ": " + writer);
    }
    add("meaning", explanation.meaning);
    for (const ExplainedValue& value : explanation.values)
        add(value.kind.c_str(),
            value.text + (value.meaning.empty() ? "" : ", that is " + value.meaning));
    add("why", explanation.why);
    add("what to do", explanation.next);
    add("traced with", Join(explanation.categories, ", "));
    for (const std::string& alike : explanation.nearest)
        add("nearest", alike);
    return parts;
}

Json DocumentOf(const Explanation& explanation) {
    const bool isLine = explanation.kind == Explanation::Kind::eLine;
    Json document = {{"input", explanation.input},
                     {"kind", isLine ? "line" : "result"},
                     {"known", explanation.isKnown},
                     {"code", explanation.code ? Json(Hex(*explanation.code)) : Json(nullptr)},
                     {"name", OrNull(explanation.name)},
                     {"meaning", explanation.meaning},
                     {"why", OrNull(explanation.why)},
                     {"next", OrNull(explanation.next)}};
    if (isLine) {
        document["tag"] = OrNull(explanation.tag);
        document["function"] = OrNull(explanation.function);
        document["writer"] = OrNull(explanation.writer);
        document["message"] = OrNull(explanation.message);
        document["categories"] = explanation.categories;
        document["values"] = Json::array();
        for (const ExplainedValue& value : explanation.values)
            document["values"].push_back({{"kind", value.kind},
                                          {"text", value.text},
                                          {"meaning", OrNull(value.meaning)}});
    }
    if (!explanation.isKnown)
        document["nearest"] = explanation.nearest;
    return document;
}

}  // namespace kora4::tools

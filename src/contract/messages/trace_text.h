// SPDX-License-Identifier: MIT
// The parts of a written trace line: head, message, and the values in the message.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "contract/messages/conversion.h"
#include "contract/messages/log_texts.h"
#include "contract/messages/trace_message.h"

namespace kora4::contract {

// The values of a message, as texts without surrounding blanks.
struct TraceValues {
    std::string_view texts[cMostTraceValues];
    TraceKinds kinds{};
    std::size_t count = 0;
};

// "TAG: 123 Function:message", possibly after text that a debugger wrote in front of it.
struct TraceHead {
    std::string_view tag;
    std::string_view line;
    std::string_view function;
    std::string_view message;
};

namespace detail {

constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
constexpr bool IsNameCharacter(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           c == '~';
}

constexpr std::string_view TrimmedLeft(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    return text;
}
constexpr std::string_view Trimmed(std::string_view text) {
    text = TrimmedLeft(text);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// The number of leading characters for which `is` holds.
template <typename Is>
constexpr std::size_t Run(std::string_view text, Is is) {
    std::size_t length = 0;
    while (length < text.size() && is(text[length]))
        ++length;
    return length;
}

// Whether a text begins with the first word of a name; the blanks after it may differ in a
// copy.
constexpr bool BeginsAs(std::string_view text, std::string_view name) {
    return text.starts_with(name.substr(0, name.find_first_of(" \t")));
}
constexpr bool BeginsAsOneOf(std::string_view text, const auto& names) {
    for (const std::string_view name : names)
        if (BeginsAs(text, name))
            return true;
    return false;
}

// Whether a text can be a value of that kind, where the kind has a recognisable form.
constexpr bool CanBe(TraceKind kind, std::string_view text) {
    switch (kind) {
        case TraceKind::eSwitch:
            return (!text.empty() && IsDigit(text[0])) ||
                   BeginsAsOneOf(text, text::cSwitchWords) ||
                   BeginsAsOneOf(text, text::cEnableWords);
        case TraceKind::eProfileName:
            return std::ranges::any_of(text::cProfileNames, [text](const auto& name) {
                return BeginsAs(text, name.read);
            });
        case TraceKind::eDemoProfileName:
            return BeginsAsOneOf(text, text::cDemoProfileNames);
        case TraceKind::eTechnologyName:
            return BeginsAsOneOf(text, text::cTechnologyNames) ||
                   BeginsAs(text, text::cBadTechnologyName);
        case TraceKind::eValueName:
            return text.starts_with('{');
        default:
            return true;
    }
}

// The number of leading characters that form a number; 0 if there is none.
constexpr std::size_t LengthOfNumber(const Conversion& conversion, std::string_view text) {
    const std::size_t sign = text.starts_with("-") ? 1 : 0;
    switch (conversion.kind) {
        case 'd': {
            const std::size_t digits = Run(text.substr(sign), IsDigit);
            return digits ? digits + sign : 0;
        }
        case 'u':
            return Run(text, IsDigit);
        case 'x':
        case 'X': {
            const std::size_t digits = Run(text, IsHexDigit);
            return digits >= conversion.width && digits <= 8 ? digits : 0;
        }
        case 'p': {
            const std::size_t prefix = text.starts_with("0x") ? 2 : 0;
            const std::size_t digits = Run(text.substr(prefix), IsHexDigit);
            return digits >= 8 && digits <= 16 ? digits + prefix : 0;
        }
        case 'f': {
            // Not-a-numbers and infinities have letters, whatever the run-time.
            const std::size_t length = Run(text.substr(sign), [](char c) {
                return IsDigit(c) || c == '.' || c == '#' || (c >= 'a' && c <= 'z') ||
                       (c >= 'A' && c <= 'Z');
            });
            const std::string_view number = text.substr(sign, length);
            constexpr std::string_view cNoNumbers[] = {"nan", "inf", "NAN", "INF"};
            const bool isNumber =
                !number.empty() && IsDigit(number[0]) && number.find('.') < number.size() - 1;
            return isNumber || BeginsAsOneOf(number, cNoNumbers) ? length + sign : 0;
        }
        default:
            return 0;
    }
}

constexpr bool IsBlankBeforeText(std::string_view pattern) {
    return pattern.starts_with(" %") && ConversionAt(pattern.substr(1)).IsText();
}

constexpr bool Match(std::string_view pattern, std::string_view text, TraceValues* pValues,
                     const TraceKind* pKinds);

// Matches from a conversion on whose value is the first `length` characters of the text.
constexpr bool MatchValue(std::string_view pattern, std::string_view text,
                          const Conversion& conversion, std::size_t length,
                          const TraceValues& before, TraceValues* pValues,
                          const TraceKind* pKinds) {
    if (before.count == cMostTraceValues)
        return false;
    TraceValues values = before;
    const std::string_view value = Trimmed(text.substr(0, length));
    values.texts[values.count] = value;
    values.kinds[values.count] = pKinds[values.count];
    if (!CanBe(values.kinds[values.count], value))
        return false;
    ++values.count;
    if (!Match(pattern.substr(conversion.length), text.substr(length), &values, pKinds))
        return false;
    *pValues = values;
    return true;
}

constexpr bool Match(std::string_view pattern, std::string_view text, TraceValues* pValues,
                     const TraceKind* pKinds) {
    while (!pattern.empty() && pattern.front() != '%') {
        // The blank in front of an empty text at the end went with the line's end.
        if (text.empty() && IsBlankBeforeText(pattern)) {
            pattern.remove_prefix(1);
            break;
        }
        if (text.empty() || text.front() != pattern.front())
            return false;
        pattern.remove_prefix(1);
        text.remove_prefix(1);
    }
    if (pattern.empty())
        return text.empty();
    const Conversion conversion = ConversionAt(pattern);
    const TraceValues before = *pValues;
    if (conversion.IsText()) {
        for (std::size_t length = 0; length <= text.size(); ++length)
            if (MatchValue(pattern, text, conversion, length, before, pValues, pKinds))
                return true;
        return false;
    }
    if (conversion.IsPadded())
        text = TrimmedLeft(text);
    const std::size_t length = LengthOfNumber(conversion, text);
    return length != 0 &&
           MatchValue(pattern, text, conversion, length, before, pValues, pKinds);
}

}  // namespace detail

// The number of literal characters of the row that the message contains; 0 if the message does
// not match the row. Blanks around a message do not count. A message of several lines is also
// matched by each of its lines.
constexpr std::size_t MatchTraceText(const TraceMessage& row, std::string_view message,
                                     TraceValues* pValues) {
    const std::string_view text = detail::Trimmed(message);
    std::string_view pattern = detail::Trimmed(row.text);
    *pValues = {};
    const TraceKind* pKinds = row.kinds.data();
    if (detail::Match(pattern, text, pValues, pKinds))
        return PartsOf(pattern).exact;
    for (bool isLast = pattern.find('\n') == std::string_view::npos; !isLast;) {
        const std::size_t end = pattern.find('\n');
        const std::string_view line = detail::Trimmed(pattern.substr(0, end));
        *pValues = {};
        if (detail::Match(line, text, pValues, pKinds))
            return PartsOf(line).exact;
        isLast = end == std::string_view::npos;
        pKinds += PartsOf(line).conversions;
        pattern.remove_prefix(isLast ? pattern.size() : end + 1);
    }
    return 0;
}

namespace detail {

// The length of the function name that begins a text: "CKORA4ASL::Initialize".
constexpr std::size_t LengthOfFunction(std::string_view text) {
    for (std::size_t length = 0;;) {
        const std::size_t part = Run(text.substr(length), IsNameCharacter);
        if (part == 0)
            return 0;
        length += part;
        if (!text.substr(length).starts_with("::"))
            return length;
        length += 2;
    }
}

// The head whose first colon is at that position.
constexpr bool ParseHeadAt(std::string_view line, std::size_t colon, TraceHead* pHead) {
    std::size_t begin = colon;
    while (begin > 0 && IsNameCharacter(line[begin - 1]))
        --begin;
    pHead->tag = line.substr(begin, colon - begin);
    std::string_view rest = TrimmedLeft(line.substr(colon + 1));
    pHead->line = rest.substr(0, Run(rest, IsDigit));
    rest.remove_prefix(pHead->line.size());
    if (pHead->tag.empty() || pHead->line.empty() || !rest.starts_with(' '))
        return false;
    rest.remove_prefix(1);
    pHead->function = rest.substr(0, LengthOfFunction(rest));
    rest.remove_prefix(pHead->function.size());
    if (pHead->function.empty() || !rest.starts_with(':'))
        return false;
    pHead->message = rest.substr(1);
    return true;
}

}  // namespace detail

// False if there is no head; the whole line may be a message then.
constexpr bool ParseTraceHead(std::string_view line, TraceHead* pHead) {
    for (std::size_t at = line.find(": "); at != std::string_view::npos;
         at = line.find(": ", at + 1))
        if (detail::ParseHeadAt(line, at, pHead))
            return true;
    *pHead = {};
    return false;
}

}  // namespace kora4::contract

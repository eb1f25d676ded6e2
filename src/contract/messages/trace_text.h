// SPDX-License-Identifier: MIT
// Written lines of the trace taken apart: head, message, and the values in a message.
#pragma once

#include <cstddef>
#include <string_view>

#include "contract/messages/conversion.h"
#include "contract/messages/trace_message.h"

namespace kora4::contract {

// What the conversions of a message stood for, as text without surrounding blanks.
struct TraceValues {
    static constexpr std::size_t cMost = 4;
    std::string_view texts[cMost];
    std::string_view kinds[cMost];
    std::size_t count = 0;
};

// "TAG: 123 Function:message", and whatever a debugger wrote in front of it.
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

// As many characters from the front as are of a kind.
template <typename Is>
constexpr std::size_t Run(std::string_view text, Is is) {
    std::size_t length = 0;
    while (length < text.size() && is(text[length]))
        ++length;
    return length;
}

// A list that is separated by commas, without its first parts.
constexpr std::string_view Without(std::string_view list, std::size_t parts) {
    for (; parts > 0; --parts) {
        const std::size_t comma = list.find(',');
        list = comma == std::string_view::npos ? std::string_view{} : list.substr(comma + 1);
    }
    return list;
}

// The part of a list at `index`; empty behind its end.
constexpr std::string_view PartOf(std::string_view list, std::size_t index) {
    list = Without(list, index);
    return list.substr(0, list.find(','));
}

template <std::size_t count>
constexpr bool BeginsWithOneOf(std::string_view text,
                               const std::string_view (&beginnings)[count]) {
    for (const std::string_view beginning : beginnings)
        if (text.starts_with(beginning))
            return true;
    return false;
}

// Whether a text can be a value of that kind, where the kind has a recognisable form.
constexpr bool CanBe(std::string_view kind, std::string_view text) {
    if (kind == "switch") {
        constexpr std::string_view cSwitches[] = {"On", "Off", "Enabled", "Disabled"};
        return IsDigit(text.empty() ? 'x' : text[0]) || BeginsWithOneOf(text, cSwitches);
    }
    if (kind == "profile name") {
        constexpr std::string_view cProfiles[] = {
            "Movie", "Music", "Games", "P1:", "P2:", "P3:", "P4:", "P5:", "P6:"};
        return BeginsWithOneOf(text, cProfiles);
    }
    if (kind == "demo profile name")
        return text.starts_with("Demo ");
    if (kind == "technology name")
        return text.starts_with("e") || text.starts_with("KORA4APITechnology");
    if (kind == "value name")
        return text.starts_with("{");
    return true;
}

// How many characters at the front of the text a number takes; 0 when there is none.
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
            return isNumber || BeginsWithOneOf(number, cNoNumbers) ? length + sign : 0;
        }
        default:
            return 0;
    }
}

constexpr bool Match(std::string_view pattern, std::string_view text, TraceValues* pValues,
                     std::string_view kinds);

// Matches from a conversion on, whose value takes `length` characters of the text.
constexpr bool MatchValue(std::string_view pattern, std::string_view text,
                          const Conversion& conversion, std::size_t length,
                          const TraceValues& before, TraceValues* pValues,
                          std::string_view kinds) {
    if (before.count == TraceValues::cMost)
        return false;
    TraceValues values = before;
    const std::string_view value = Trimmed(text.substr(0, length));
    values.texts[values.count] = value;
    values.kinds[values.count] = PartOf(kinds, values.count);
    if (!CanBe(values.kinds[values.count], value))
        return false;
    ++values.count;
    if (!Match(pattern.substr(conversion.length), text.substr(length), &values, kinds))
        return false;
    *pValues = values;
    return true;
}

constexpr bool Match(std::string_view pattern, std::string_view text, TraceValues* pValues,
                     std::string_view kinds) {
    while (!pattern.empty() && pattern.front() != '%') {
        if (text.empty() || text.front() != pattern.front())
            return false;
        pattern.remove_prefix(1);
        text.remove_prefix(1);
    }
    if (pattern.empty())
        return text.empty();
    const Conversion conversion = ConversionAt(pattern);
    const TraceValues before = *pValues;
    if (conversion.kind == 's' || conversion.kind == 'S') {
        for (std::size_t length = 0; length <= text.size(); ++length)
            if (MatchValue(pattern, text, conversion, length, before, pValues, kinds))
                return true;
        return false;
    }
    if (conversion.IsPadded())
        text = TrimmedLeft(text);
    const std::size_t length = LengthOfNumber(conversion, text);
    return length != 0 && MatchValue(pattern, text, conversion, length, before, pValues, kinds);
}

// How many characters of a pattern stand outside its conversions, and how many those are.
struct PatternParts {
    std::size_t exact = 0;
    std::size_t conversions = 0;
};

constexpr PatternParts PartsOf(std::string_view pattern) {
    PatternParts parts;
    while (!pattern.empty()) {
        const bool isConversion = pattern.front() == '%';
        pattern.remove_prefix(isConversion ? ConversionAt(pattern).length : 1);
        ++(isConversion ? parts.conversions : parts.exact);
    }
    return parts;
}

}  // namespace detail

// How many characters of the row stand in the message word by word; 0 when the message does
// not match the row. Blanks around a message do not count. A message of several lines is also
// matched by each of its lines.
constexpr std::size_t MatchTraceText(const TraceMessage& row, std::string_view message,
                                     TraceValues* pValues) {
    const std::string_view text = detail::Trimmed(message);
    std::string_view pattern = detail::Trimmed(row.text);
    *pValues = {};
    if (detail::Match(pattern, text, pValues, row.values))
        return detail::PartsOf(pattern).exact;
    std::string_view kinds = row.values;
    for (bool isLast = pattern.find('\n') == std::string_view::npos; !isLast;) {
        const std::size_t end = pattern.find('\n');
        const std::string_view line = detail::Trimmed(pattern.substr(0, end));
        *pValues = {};
        if (detail::Match(line, text, pValues, kinds))
            return detail::PartsOf(line).exact;
        isLast = end == std::string_view::npos;
        kinds = detail::Without(kinds, detail::PartsOf(line).conversions);
        pattern.remove_prefix(isLast ? pattern.size() : end + 1);
    }
    return 0;
}

namespace detail {

// How long the name of a function is that begins a text: "CKORA4ASL::Initialize".
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

// The head that has its first colon at that place.
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

// False for what has no head; the whole of it may be a message then.
constexpr bool ParseTraceHead(std::string_view line, TraceHead* pHead) {
    for (std::size_t at = line.find(": "); at != std::string_view::npos;
         at = line.find(": ", at + 1))
        if (detail::ParseHeadAt(line, at, pHead))
            return true;
    *pHead = {};
    return false;
}

}  // namespace kora4::contract

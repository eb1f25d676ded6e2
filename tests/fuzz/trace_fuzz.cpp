// SPDX-License-Identifier: MIT
// Trace lines: head, message and values as `explain` takes a line apart. The oracle tries every
// way in which a message can be made from a row of the catalogue, piece by piece.
#include <algorithm>
#include <optional>

#include "contract/messages/trace_messages.h"
#include "fuzz/frame.h"
#include "kora4ctl/explain/explain_text.h"

namespace kora4::fuzz {

namespace {

using contract::TraceKind;
using contract::TraceMessage;
using Texts = std::vector<std::string>;

constexpr char cBlanks[] = " \t\r\n";

std::string Trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(cBlanks);
    if (begin == std::string::npos)
        return "";
    return text.substr(begin, text.find_last_not_of(cBlanks) + 1 - begin);
}

bool BeginsWithOneOf(const std::string& text, const Texts& words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return text.starts_with(word); });
}

// Words by which the value of a kind begins.
bool CanBe(TraceKind kind, const std::string& text) {
    if (kind == TraceKind::eSwitch)
        return BeginsWithOneOf(text, {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "Off",
                                      "On", "Disabled", "Enabled"});
    if (kind == TraceKind::eProfileName)
        return BeginsWithOneOf(
            text, {"Movie", "Music", "Games", "P1:", "P2:", "P3:", "P4:", "P5:", "P6:"});
    if (kind == TraceKind::eDemoProfileName)
        return BeginsWithOneOf(text, {"Demo"});
    if (kind == TraceKind::eTechnologyName)
        return BeginsWithOneOf(
            text, {"eVolumeLeveler", "eGraphicEQ", "eIntelligentEQ", "eDialogEnhancer",
                   "eVirtualizerHP", "eVirtualizerSpkr", "KORA4APITechnology"});
    return kind != TraceKind::eValueName || text.starts_with("{");
}

// A literal text, or a conversion.
struct Piece {
    std::string literal;
    char conversion = '\0';
    bool isPadded = false;
    std::size_t width = 0;
};

bool IsText(const Piece& piece) {
    return piece.conversion == 's' || piece.conversion == 'S';
}

std::vector<Piece> PiecesOf(const std::string& pattern) {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < pattern.size();) {
        if (pattern[i] != '%') {
            const std::size_t end = std::min(pattern.find('%', i), pattern.size());
            pieces.push_back({pattern.substr(i, end - i)});
            i = end;
            continue;
        }
        Piece piece;
        const bool hasZero = pattern[++i] == '0';
        for (; pattern[i] >= '0' && pattern[i] <= '9'; ++i)
            piece.width = piece.width * 10 + static_cast<std::size_t>(pattern[i] - '0');
        if (pattern[i] == 'l')
            ++i;
        piece.conversion = pattern[i++];
        piece.isPadded = piece.width > 0 && !hasZero;
        pieces.push_back(piece);
    }
    return pieces;
}

std::size_t Run(const std::string& text, std::size_t at, const char* characters) {
    return std::min(text.find_first_not_of(characters, at), text.size()) - at;
}

constexpr char cDigits[] = "0123456789";
constexpr char cHexDigits[] = "0123456789abcdefABCDEF";
constexpr char cLetters[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.#";

// How long the number is that stands there; 0: there is none.
std::size_t NumberAt(const Piece& piece, const std::string& text, std::size_t at) {
    const std::size_t sign = at < text.size() && text[at] == '-' ? 1 : 0;
    if (piece.conversion == 'd' && Run(text, at + sign, cDigits) > 0)
        return sign + Run(text, at + sign, cDigits);
    if (piece.conversion == 'u')
        return Run(text, at, cDigits);
    if (piece.conversion == 'x' || piece.conversion == 'X') {
        const std::size_t digits = Run(text, at, cHexDigits);
        return digits <= 8 && digits >= piece.width ? digits : 0;
    }
    if (piece.conversion == 'p') {
        const std::size_t prefix = text.compare(at, 2, "0x") == 0 ? 2 : 0;
        const std::size_t digits = Run(text, at + prefix, cHexDigits);
        return digits >= 8 && digits <= 16 ? prefix + digits : 0;
    }
    if (piece.conversion == 'f') {
        const std::string number = text.substr(at + sign, Run(text, at + sign, cLetters));
        const std::size_t point = number.find('.');
        const bool isNumber = !number.empty() && number[0] >= '0' && number[0] <= '9' &&
                              point != std::string::npos && point + 1 < number.size();
        if (isNumber || BeginsWithOneOf(number, {"nan", "inf", "NAN", "INF"}))
            return sign + number.size();
    }
    return 0;
}

// Whether the literal text of a piece stands there. At the end of a line the blank between it
// and an empty text may be missing.
bool HasLiteral(const std::vector<Piece>& pieces, std::size_t piece, const std::string& text,
                std::size_t at) {
    const std::string& literal = pieces[piece].literal;
    return text.compare(at, literal.size(), literal) == 0 ||
           (piece + 1 < pieces.size() && IsText(pieces[piece + 1]) &&
            text.substr(at) + " " == literal);
}

// Whether the text may go on so after a value: a look that saves most of the tries.
bool CanGoOn(const std::vector<Piece>& pieces, std::size_t piece, const std::string& text,
             std::size_t at) {
    return piece == pieces.size() ? at == text.size() : HasLiteral(pieces, piece, text, at);
}

// Matches from a piece and a place on; texts take as little as they can.
bool Match(const std::vector<Piece>& pieces, std::size_t piece, const std::string& text,
           std::size_t at, const TraceKind* pKinds, Texts& values) {
    if (piece == pieces.size())
        return at == text.size();
    const Piece& current = pieces[piece];
    if (current.conversion == '\0')
        return HasLiteral(pieces, piece, text, at) &&
               Match(pieces, piece + 1, text,
                     std::min(at + current.literal.size(), text.size()), pKinds, values);
    if (current.isPadded && !IsText(current))
        at += Run(text, at, cBlanks);
    const bool isText = IsText(current);
    const std::size_t number = isText ? 0 : NumberAt(current, text, at);
    if (!isText && number == 0)
        return false;
    for (std::size_t end = at + number; end <= text.size(); ++end) {
        if (isText && !CanGoOn(pieces, piece + 1, text, end))
            continue;
        values.push_back(Trimmed(text.substr(at, end - at)));
        if (CanBe(pKinds[values.size() - 1], values.back()) &&
            Match(pieces, piece + 1, text, end, pKinds, values))
            return true;
        values.pop_back();
        if (!isText)
            return false;
    }
    return false;
}

struct Found {
    std::size_t exact = 0;  // literal characters
    Texts values;
};

// A row of the catalogue cut beforehand: the whole message, then, if it has several, each line.
struct Pattern {
    std::vector<Piece> pieces;
    std::size_t exact = 0;
    const TraceKind* pKinds;
};

struct Row {
    const TraceMessage* pMessage;
    std::vector<Pattern> patterns;
};

Pattern PatternOf(const std::string& text, const TraceKind* pKinds) {
    Pattern pattern{PiecesOf(text), 0, pKinds};
    for (const Piece& piece : pattern.pieces)
        pattern.exact += piece.literal.size();
    return pattern;
}

std::vector<Row> CutRows() {
    std::vector<Row> rows;
    for (const TraceMessage& message : msg::cTraceMessages) {
        std::string text = Trimmed(message.text);
        const TraceKind* pKinds = message.kinds.data();
        Row row{&message, {PatternOf(text, pKinds)}};
        const bool hasLines = text.find('\n') != std::string::npos;
        text += '\n';
        for (std::size_t begin = 0; hasLines && begin < text.size();) {
            const std::size_t end = text.find('\n', begin);
            const std::string line = Trimmed(text.substr(begin, end - begin));
            row.patterns.push_back(PatternOf(line, pKinds));
            pKinds += std::count(line.begin(), line.end(), '%');
            begin = end + 1;
        }
        rows.push_back(row);
    }
    return rows;
}

// A message as a whole, or a line of it.
std::optional<Found> MatchRow(const Row& row, const std::string& text) {
    for (const Pattern& pattern : row.patterns) {
        Found found{pattern.exact, {}};
        if (Match(pattern.pieces, 0, text, 0, pattern.pKinds, found.values))
            return found;
    }
    return {};
}

struct Head {
    std::string tag;
    std::string line;
    std::string function;
    std::string message;
};

constexpr char cNameCharacters[] =
    "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_~";

std::optional<Head> HeadAt(const std::string& line, std::size_t colon) {
    Head head;
    const std::size_t before =
        colon == 0 ? std::string::npos : line.find_last_not_of(cNameCharacters, colon - 1);
    head.tag = line.substr(before + 1, colon - before - 1);
    std::size_t at = colon + 1;
    at += Run(line, at, cBlanks);
    head.line = line.substr(at, Run(line, at, cDigits));
    at += head.line.size();
    if (head.tag.empty() || head.line.empty() || at >= line.size() || line[at] != ' ')
        return {};
    const std::size_t begin = ++at;
    for (;;) {
        const std::size_t part = Run(line, at, cNameCharacters);
        if (part == 0)
            return {};
        at += part;
        if (line.compare(at, 2, "::") != 0)
            break;
        at += 2;
    }
    head.function = line.substr(begin, at - begin);
    if (at >= line.size() || line[at] != ':')
        return {};
    head.message = line.substr(at + 1);
    return head;
}

std::optional<Head> HeadOf(const std::string& line) {
    for (std::size_t colon = 0; colon + 1 < line.size(); ++colon)
        if (line[colon] == ':' && line[colon + 1] == ' ')
            if (auto head = HeadAt(line, colon))
                return head;
    return {};
}

Texts ValuesOf(const contract::TraceValues& values) {
    Texts texts;
    for (std::size_t i = 0; i < values.count; ++i)
        texts.emplace_back(values.texts[i]);
    return texts;
}

void CheckMessage(const std::string& function, const std::string& whole) {
    const std::string text = Trimmed(whole);
    std::size_t best = 0;
    std::size_t equals = 0;
    const TraceMessage* pExpected = nullptr;
    Found expected;
    static const std::vector<Row> rows = CutRows();
    for (const Row& row : rows) {
        const TraceMessage& message = *row.pMessage;
        const bool isOfFunction = message.function != nullptr && function == message.function;
        if (message.function != nullptr && !function.empty() && !isOfFunction)
            continue;
        const auto found = MatchRow(row, text);
        if (!found || found->exact == 0)
            continue;
        const std::size_t score = 2 * found->exact + (isOfFunction ? 1 : 0);
        equals = score > best ? 1 : score == best ? equals + 1 : equals;
        if (score > best) {
            best = score;
            pExpected = row.pMessage;
            expected = *found;
        }
    }
    const std::vector<char> exact(whole.begin(), whole.end());
    const contract::TraceMatch seen =
        contract::FindTraceMessage(function, {exact.data(), exact.size()});
    ExpectSame("message", std::string(pExpected ? pExpected->text : "none"),
               std::string(seen.pMessage ? seen.pMessage->text : "none"));
    ExpectSame("messages that match as well", equals, seen.equals);
    ExpectSame("values", expected.values, ValuesOf(seen.values));
}

}  // namespace

void Check(std::string_view input) {
    const std::string line(input);
    const std::vector<char> exact(input.begin(), input.end());
    const std::optional<Head> head = HeadOf(line);
    contract::TraceHead seen;
    const bool hasHead = contract::ParseTraceHead({exact.data(), exact.size()}, &seen);
    ExpectSame("there is a head", head.has_value(), hasHead);
    if (head)
        ExpectSame("parts of the head",
                   Texts{head->tag, head->line, head->function, head->message},
                   Texts{std::string(seen.tag), std::string(seen.line),
                         std::string(seen.function), std::string(seen.message)});
    CheckMessage("", line);
    if (head)
        CheckMessage(head->function, head->message);
    // What comes near to an unknown line takes a hundred times as long to be found.
    if (line.size() % 32 == 0) {
        const tools::Explanation explanation = tools::Explain({exact.data(), exact.size()});
        ExpectSame("it says something", false, explanation.meaning.empty());
    }
}

}  // namespace kora4::fuzz

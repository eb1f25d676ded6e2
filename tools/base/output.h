// SPDX-License-Identifier: MIT
// Where everything that a tool says goes: results to standard output, messages to standard
// error, both in UTF-8.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::tools {

// Members come out in the order in which they went in.
using Json = nlohmann::ordered_json;

// Null for an empty text, and for what is not there.
inline Json OrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}
template <typename Value>
Json OrNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

// How a piece of text stands out on a terminal.
enum class Style { ePlain, eStrong, eDim, eGood, eWarning, eBad };

// Single-threaded. What a terminal would act on is escaped in everything that is printed, into
// a pipe and as JSON too (shown_text.h); line feeds and tabs stay.
class Output {
  public:
    Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // What the command line chose.
    bool json = false;
    bool quiet = false;

    // A line of the result; the newline is added. Flushed at once, so that a reader at the
    // other end of a pipe sees it.
    void Print(std::string_view line = {});
    // The same without a newline.
    void Write(std::string_view text);
    // A whole document, indented; or one line of a stream of documents.
    void PrintJson(const Json& document);
    void PrintJsonLine(const Json& document);
    // Columns that line up; the last one is not padded. Headings may be empty.
    void Table(const std::vector<std::string>& headings,
               const std::vector<std::vector<std::string>>& rows);

    // An optional message; silent with --quiet.
    void Say(std::string_view message);
    // One that is shown always.
    void Complain(std::string_view message);

    // Standard output: is it a terminal, how wide and high is it now (80 by 24 when not).
    bool IsTerminal() const { return m_isTerminal; }
    unsigned Width() const;
    unsigned Height() const;

    // The text in a style, when standard output is a terminal that takes colours and neither
    // NO_COLOR nor TERM=dumb forbids them; otherwise as it is.
    std::string Paint(Style style, std::string_view text) const;

    // Standard output cannot be written to any more.
    bool IsBroken() const { return m_isBroken; }
    // Broken, but not because the reader went away with what it wanted: the disk is full.
    bool IsIncomplete() const { return m_isIncomplete; }

  private:
    void* m_results;
    void* m_messages;
    bool m_isTerminal;
    bool m_areMessagesOnTerminal;
    bool m_hasColour;
    bool m_isBroken = false;
    bool m_isIncomplete = false;
};

}  // namespace kora4::tools

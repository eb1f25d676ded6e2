// SPDX-License-Identifier: MIT
// The journal of a load, read from a folder in memory: in which state it is, and what it says.
// What is read and written again must be the same journal.
#include "registry/journal.h"

#include "fuzz/frame.h"
#include "fuzz/json_oracle.h"
#include "fuzz/settings_oracle.h"

namespace kora4::tools {

// The folder of the harness holds one file.
std::string g_file;

Standing GuardedFolder::Find(const std::string&, UniqueHandle*) const {
    return Standing::eTrusted;
}

std::string GuardedFolder::Read(const std::string&) const {
    return g_file;
}

void GuardedFolder::Write(const std::string&, std::string_view content) const {
    g_file = content;
}

// Nothing asks it.
const FileSecurity& PlatformFileSecurity() {
    alignas(16) static const char nothing[64] = {};
    return reinterpret_cast<const FileSecurity&>(nothing);
}

}  // namespace kora4::tools

namespace kora4::fuzz {

namespace {

using Kind = Node::Kind;
using State = tools::JournalFile::State;

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX},N"
const std::string& ValueNameOf(const Node& node) {
    const std::string& name = node.Text();
    constexpr std::string_view cForm = "{********-****-****-****-************},";
    Demand(name.size() > cForm.size());
    for (std::size_t i = 0; i < cForm.size(); ++i)
        Demand(cForm[i] == '*' ? std::string_view("0123456789ABCDEF").find(name[i]) <= 15
                               : name[i] == cForm[i]);
    Node number;
    number.kind = Kind::eNumber;
    number.text = name.substr(cForm.size());
    Demand(number.Whole() && (number.text == "0" || number.text[0] != '0'));
    return name;
}

std::uint32_t NumberOf(const Node& node) {
    Demand(node.Whole().has_value());
    return *node.Whole();
}

std::string ValueOf(const Node& node) {
    if (node.Is(Kind::eNull))
        return "absent";
    const std::uint32_t type = NumberOf(node.At("type"));
    if (node.Has("unread")) {
        const std::uint32_t size = NumberOf(node.At("unread"));
        return size != 0 ? ShownUnread(type, size) : ShownStored(type, "");
    }
    const std::string& digits = node.At("data").Text();
    Demand(digits.size() % 2 == 0);
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        Demand(digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos);
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return ShownStored(type, bytes);
}

std::vector<std::string> Read(const Node& document) {
    Demand(document.At("format").IsText("kora4-journal"));
    Demand(NumberOf(document.At("version")) == 1);
    std::vector<std::string> lines;
    for (const Node& entry : document.At("entries").Elements()) {
        const std::uint32_t keys = NumberOf(entry.At("keys"));
        Demand(keys >= 2 && keys <= 4);
        lines.push_back(std::to_string(keys) + " " + ValueNameOf(entry.At("value")) + " " +
                        ValueOf(entry.At("before")) + " -> " + ValueOf(entry.At("after")));
    }
    for (const Node& counter : document.At("counters").Elements())
        lines.push_back("counter " + ValueNameOf(counter));
    return lines;
}

std::string ShownValue(const std::optional<tools::StoredValue>& value) {
    if (!value)
        return "absent";
    if (value->unread)
        return ShownUnread(value->type, value->unread);
    return ShownStored(value->type, std::string(value->bytes.begin(), value->bytes.end()));
}

std::vector<std::string> Lines(const tools::Journal& journal) {
    std::vector<std::string> lines;
    for (const tools::JournalEntry& entry : journal.entries)
        lines.push_back(std::to_string(entry.keySet) + " " + tools::ValueName(entry.key) + " " +
                        ShownValue(entry.before) + " -> " + ShownValue(entry.after));
    for (const PropertyKey& counter : journal.counters)
        lines.push_back("counter " + tools::ValueName(counter));
    return lines;
}

// A text that somebody began to write and did not end.
bool IsCutShort(const std::string& text) {
    const std::string begin = "{\"format\":\"kora4-journal\"";
    const bool isBegun = begin.starts_with(text) || text.starts_with(begin);
    return text.empty() || (isBegun && text.back() != '\n');
}

}  // namespace

void Check(std::string_view input) {
    const std::string text(input);
    State expected = State::eUnreadable;
    std::vector<std::string> lines;
    try {
        if (IsCutShort(text))
            expected = State::eCutShort;
        else
            lines = Read(ReadJson(text)), expected = State::eWhole;
    } catch (const Refused&) {
    }
    tools::g_file = text;
    const tools::JournalFile file("folder\\load.journal");
    tools::Journal journal;
    const State state = file.Read(journal);
    ExpectSame("state", static_cast<int>(expected), static_cast<int>(state));
    if (state != State::eWhole)
        return;
    ExpectSame("entries", lines, Lines(journal));
    file.Write(journal);
    tools::Journal again;
    ExpectSame("state of what is written", static_cast<int>(State::eWhole),
               static_cast<int>(file.Read(again)));
    ExpectSame("what is written and read again", lines, Lines(again));
}

}  // namespace kora4::fuzz

// SPDX-License-Identifier: MIT
// A recursive JSON parser, one function for each rule of the grammar.
#include "fuzz/json_oracle.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace kora4::fuzz {

namespace {

constexpr int cDeepest = 64;
constexpr std::size_t cMostMembers = 1000;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

void PutUtf8(std::string& text, std::uint32_t c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | c >> 6);
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        if (c < 0x10000) {
            text += static_cast<char>(0xE0 | c >> 12);
        } else {
            text += static_cast<char>(0xF0 | c >> 18);
            text += static_cast<char>(0x80 | (c >> 12 & 0x3F));
        }
        text += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Decodes every character and looks whether it was written in its one right form.
bool IsUtf8(const std::string& text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if (i + length > text.size())
            return false;
        std::uint32_t c = length == 1 ? first : first & (0x7Fu >> length);
        for (std::size_t j = 1; j < length; ++j)
            c = c << 6 | (static_cast<unsigned char>(text[i + j]) & 0x3Fu);
        std::string again;
        if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
            return false;
        PutUtf8(again, c);
        if (text.compare(i, length, again) != 0)
            return false;
        i += length;
    }
    return true;
}

class Parser {
  public:
    explicit Parser(std::string_view text) : m_text(text) {}

    Node Whole() {
        if (m_text.starts_with("\xEF\xBB\xBF"))
            m_text.remove_prefix(3);
        Node node = Value(0);
        SkipBlanks();
        Demand(m_text.empty());
        return node;
    }

  private:
    void SkipBlanks() {
        while (!m_text.empty() && (m_text[0] == ' ' || m_text[0] == '\t' || m_text[0] == '\n' ||
                                   m_text[0] == '\r'))
            m_text.remove_prefix(1);
    }

    bool Takes(std::string_view word) {
        if (!m_text.starts_with(word))
            return false;
        m_text.remove_prefix(word.size());
        return true;
    }

    char Next() {
        Demand(!m_text.empty());
        const char c = m_text[0];
        m_text.remove_prefix(1);
        return c;
    }

    Node Value(int depth) {
        Demand(depth <= cDeepest);
        SkipBlanks();
        Node node;
        if (Takes("{")) {
            Object(node, depth + 1);
        } else if (Takes("[")) {
            Array(node, depth + 1);
        } else if (Takes("\"")) {
            node.kind = Node::Kind::eText;
            node.text = Text();
        } else if (Takes("true") || Takes("false")) {
            node.kind = Node::Kind::eSwitch;
            node.isOn = m_text.data()[-2] == 'u';
        } else if (!Takes("null")) {
            Number(node);
        }
        return node;
    }

    void Object(Node& node, int depth) {
        node.kind = Node::Kind::eObject;
        SkipBlanks();
        if (Takes("}"))
            return;
        do {
            SkipBlanks();
            Demand(depth <= cDeepest && Takes("\""));
            const std::string name = Text();
            Demand(!node.Has(name) && node.members.size() < cMostMembers);
            SkipBlanks();
            Demand(Takes(":"));
            node.members.emplace(name, Value(depth));
            SkipBlanks();
        } while (Takes(","));
        Demand(Takes("}"));
    }

    void Array(Node& node, int depth) {
        node.kind = Node::Kind::eArray;
        SkipBlanks();
        if (Takes("]"))
            return;
        do {
            node.elements.push_back(Value(depth));
            SkipBlanks();
        } while (Takes(","));
        Demand(Takes("]"));
    }

    void Digits(std::string& number) {
        Demand(!m_text.empty() && IsDigit(m_text[0]));
        while (!m_text.empty() && IsDigit(m_text[0]))
            number += Next();
    }

    void Number(Node& node) {
        node.kind = Node::Kind::eNumber;
        std::string& number = node.text;
        if (Takes("-"))
            number += '-';
        if (Takes("0"))
            number += '0';
        else
            Digits(number);
        if (Takes(".")) {
            number += '.';
            Digits(number);
        }
        if (Takes("e") || Takes("E")) {
            number += 'e';
            if (Takes("-"))
                number += '-';
            else if (Takes("+"))
                number += '+';
            Digits(number);
        }
        Demand(std::isfinite(std::strtod(number.c_str(), nullptr)));
    }

    std::uint32_t FourDigits() {
        std::uint32_t number = 0;
        for (int i = 0; i < 4; ++i) {
            const char c = Next();
            const std::size_t digit =
                std::string_view("0123456789abcdef")
                    .find(static_cast<char>(c >= 'A' && c <= 'F' ? c + 32 : c));
            Demand(digit != std::string_view::npos);
            number = number * 16 + static_cast<std::uint32_t>(digit);
        }
        return number;
    }

    void Escape(std::string& text) {
        constexpr std::string_view cNames = "\"\\/bfnrt";
        constexpr std::string_view cMeanings = "\"\\/\b\f\n\r\t";
        const char c = Next();
        if (c != 'u') {
            const std::size_t at = cNames.find(c);
            Demand(at != std::string_view::npos);
            text += cMeanings[at];
            return;
        }
        std::uint32_t character = FourDigits();
        Demand(character < 0xDC00 || character > 0xDFFF);
        if (character >= 0xD800 && character <= 0xDBFF) {
            Demand(Takes("\\u"));
            const std::uint32_t low = FourDigits();
            Demand(low >= 0xDC00 && low <= 0xDFFF);
            character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
        }
        PutUtf8(text, character);
    }

    // Behind the opening quotation mark.
    std::string Text() {
        std::string text;
        for (char c = Next(); c != '"'; c = Next()) {
            Demand(static_cast<unsigned char>(c) >= 0x20);
            if (c == '\\')
                Escape(text);
            else
                text += c;
        }
        Demand(IsUtf8(text));
        return text;
    }

    std::string_view m_text;
};

}  // namespace

const Node& Node::At(const std::string& name) const {
    const auto member = members.find(name);
    Demand(member != members.end());
    return member->second;
}

const std::vector<Node>& Node::Elements() const {
    Demand(kind == Kind::eArray);
    return elements;
}

const std::string& Node::Text() const {
    Demand(kind == Kind::eText);
    return text;
}

double Node::Number() const {
    Demand(kind == Kind::eNumber);
    return std::strtod(text.c_str(), nullptr);
}

std::optional<std::uint64_t> Node::LongWhole() const {
    if (kind != Kind::eNumber || text.find_first_not_of("0123456789") != std::string::npos)
        return {};
    if (text.size() > 20 || (text.size() == 20 && text > "18446744073709551615"))
        return {};
    return std::strtoull(text.c_str(), nullptr, 10);
}

std::optional<std::uint32_t> Node::Whole() const {
    const auto number = LongWhole();
    if (!number || *number > 0xFFFFFFFF)
        return {};
    return static_cast<std::uint32_t>(*number);
}

void Node::CheckMembers(const std::vector<std::string>& needed,
                        const std::vector<std::string>& optional) const {
    Demand(kind == Kind::eObject);
    for (const std::string& name : needed)
        Demand(Has(name));
    const auto isOf = [](const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    for (const auto& [name, member] : members)
        Demand(isOf(needed, name) || isOf(optional, name));
}

Node ReadJson(std::string_view text) {
    return Parser(text).Whole();
}

std::size_t Utf16Length(const std::string& text) {
    std::size_t length = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        length += byte >= 0xF0 ? 2u : byte < 0x80 || byte >= 0xC0 ? 1u : 0u;
    }
    return length;
}

}  // namespace kora4::fuzz

// SPDX-License-Identifier: MIT
// JSON as the tools take it, read by a small parser of its own: the standard to the letter,
// valid UTF-8, no name twice in an object, and no deeper or larger than the tools allow.
#ifndef KORA4_TESTS_FUZZ_JSON_ORACLE_H
#define KORA4_TESTS_FUZZ_JSON_ORACLE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::fuzz {

// Thrown by oracles for an input that is refused.
struct Refused {};

inline void Demand(bool isRight) {
    if (!isRight)
        throw Refused();
}

struct Node {
    enum class Kind { eNull, eSwitch, eNumber, eText, eArray, eObject };

    Kind kind = Kind::eNull;
    bool isOn = false;
    std::string text;  // the text, or the number as it is written
    std::vector<Node> elements;
    std::map<std::string, Node> members;

    bool Is(Kind wanted) const { return kind == wanted; }
    bool IsText(std::string_view wanted) const { return kind == Kind::eText && text == wanted; }
    bool Has(const std::string& name) const { return members.count(name) != 0; }

    // Refused unless it is that.
    const Node& At(const std::string& name) const;
    const std::vector<Node>& Elements() const;
    const std::string& Text() const;
    double Number() const;

    // A number without sign, point and exponent; none if it is not, or has more than 32 bits.
    std::optional<std::uint32_t> Whole() const;
    std::optional<std::uint64_t> LongWhole() const;

    // Refused unless it is an object with all of the needed members, and no others than these
    // and the optional ones.
    void CheckMembers(const std::vector<std::string>& needed,
                      const std::vector<std::string>& optional = {}) const;
};

// Throws Refused.
Node ReadJson(std::string_view text);

// The number of UTF-16 units of a valid UTF-8 text.
std::size_t Utf16Length(const std::string& text);

}  // namespace kora4::fuzz

#endif  // KORA4_TESTS_FUZZ_JSON_ORACLE_H

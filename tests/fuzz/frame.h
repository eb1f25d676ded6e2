// SPDX-License-Identifier: MIT
// The frame of the fuzz harnesses. Each one feeds an input to a decoder of the library or the
// tools and to an oracle: a slow decoder that was written from the documents alone, calls
// nothing of the real one, and must come to the same result.
#ifndef KORA4_TESTS_FUZZ_FRAME_H
#define KORA4_TESTS_FUZZ_FRAME_H

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kora4::fuzz {

// What a harness defines. It returns when decoder and oracle agree.
void Check(std::string_view input);

// Ends the process, which the fuzzer reports as a finding.
[[noreturn]] void Differ(const char* what, const std::string& expected,
                         const std::string& seen);

// How a finding shows a value.
std::string Shown(const std::string& text);
std::string Shown(std::u16string_view text);
std::string Shown(double number);

template <typename T>
std::string Shown(const T& value) requires std::is_integral_v<T> {
    return std::to_string(value);
}

template <typename T>
std::string Shown(const std::vector<T>& values) {
    std::string text = std::to_string(values.size()) + " elements:";
    for (const auto& value : values)
        text += "\n    " + Shown(value);
    return text;
}

template <typename T>
void ExpectSame(const char* what, const T& expected, const T& seen) {
    if (!(expected == seen))
        Differ(what, Shown(expected), Shown(seen));
}

// The same for floats, bit for bit.
void ExpectSameFloat(const char* what, float expected, float seen);

// The input as UTF-16: bytes below 0x80 stand for themselves, others begin a pair that is one
// character, so that texts in a corpus can be read. Without characters of the value 0.
std::u16string Utf16Of(std::string_view input);

// A zero-terminated copy in a block of its own size, so that reading behind it is found.
std::vector<char16_t> Exactly(std::u16string_view text);

}  // namespace kora4::fuzz

#endif  // KORA4_TESTS_FUZZ_FRAME_H

// SPDX-License-Identifier: MIT
// The entry point that the fuzzer calls, and how a finding is told.
#include "fuzz/frame.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace kora4::fuzz {

void Differ(const char* what, const std::string& expected, const std::string& seen) {
    std::fprintf(stderr, "FINDING: %s\n  expected: %s\n  seen:     %s\n", what,
                 expected.c_str(), seen.c_str());
    std::abort();
}

std::string Shown(const std::string& text) {
    std::string shown = "'";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        char hex[8];
        std::snprintf(hex, sizeof hex, byte >= 0x20 && byte < 0x7F ? "%c" : "\\x%02x", byte);
        shown += hex;
    }
    return shown + "'";
}

std::string Shown(std::u16string_view text) {
    std::string shown = "'";
    for (const char16_t c : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, c >= 0x20 && c < 0x7F ? "%c" : "\\u%04x",
                      static_cast<unsigned>(c));
        shown += hex;
    }
    return shown + "'";
}

std::string Shown(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", number);
    return text;
}

void ExpectSameFloat(const char* what, float expected, float seen) {
    if (std::bit_cast<std::uint32_t>(expected) != std::bit_cast<std::uint32_t>(seen))
        Differ(what, Shown(double{expected}), Shown(double{seen}));
}

std::u16string Utf16Of(std::string_view input) {
    std::u16string text;
    for (std::size_t i = 0; i < input.size(); ++i) {
        unsigned c = static_cast<unsigned char>(input[i]);
        if (c >= 0x80 && i + 1 < input.size())
            c = (c & 0x7F) << 8 | static_cast<unsigned char>(input[++i]);
        if (c != 0)
            text += static_cast<char16_t>(c);
    }
    return text;
}

std::vector<char16_t> Exactly(std::u16string_view text) {
    std::vector<char16_t> copy;
    copy.reserve(text.size() + 1);
    copy.assign(text.begin(), text.end());
    copy.push_back(u'\0');
    return copy;
}

}  // namespace kora4::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" const char* __asan_default_options();

// The readers refuse by exceptions. With copies of all stack frames each of them costs as much
// as hundreds of inputs.
const char* __asan_default_options() {
    return "detect_stack_use_after_return=0:malloc_context_size=4";
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kora4::fuzz::Check({reinterpret_cast<const char*>(data), size});
    return 0;
}

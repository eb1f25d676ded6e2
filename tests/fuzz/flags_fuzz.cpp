// SPDX-License-Identifier: MIT
// Flag arrays: the text is decoded, and the same bytes are encoded as flags.
#include <algorithm>

#include "contract/codec/array_text.h"
#include "fuzz/array_oracle.h"
#include "fuzz/frame.h"

namespace kora4::fuzz {

namespace {

void CheckDecoder(std::string_view input) {
    const std::vector<char16_t> text = Exactly(Utf16Of(input));
    const auto expected = FlagArrayOf({text.data(), text.size() - 1});
    std::vector<std::uint32_t> flags(codec::cArrayCapacity, 4711);
    std::uint32_t count = 4711;
    const HRESULT hr = codec::DecodeFlagArray(text.data(), &count, flags.data());
    ExpectSame("result of decoding", expected ? result::cOk : result::cFail, hr);
    std::vector<std::uint32_t> wanted = expected.value_or(std::vector<std::uint32_t>());
    ExpectSame("count", wanted.size(), std::size_t{count});
    wanted.resize(codec::cArrayCapacity);
    ExpectSame("flags", wanted, flags);
}

void CheckEncoder(std::string_view input) {
    std::vector<std::uint32_t> flags;
    for (const char c : input.substr(0, 600))
        flags.push_back(static_cast<unsigned char>(c) % 3u * 0x40000000u);
    const auto expected = TextOfFlags(flags);
    char16_t text[codec::cArrayTextChars];
    const HRESULT hr =
        codec::EncodeFlagArray(static_cast<std::uint32_t>(flags.size()), flags.data(), text);
    ExpectSame("result of encoding", expected ? result::cOk : result::cOutOfMemory, hr);
    ExpectSame("encoded text", expected.value_or(u""), std::u16string(text));
}

}  // namespace

void Check(std::string_view input) {
    CheckDecoder(input);
    CheckEncoder(input);
}

}  // namespace kora4::fuzz

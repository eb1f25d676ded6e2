// SPDX-License-Identifier: MIT
// Numeric arrays: the text is decoded, and the same bytes are encoded as elements.
#include <algorithm>
#include <cstring>

#include "contract/codec/array_text.h"
#include "fuzz/array_oracle.h"
#include "fuzz/frame.h"

namespace kora4::fuzz {

namespace {

constexpr float cUntouched = -12345;

void CheckDecoder(std::string_view input) {
    const std::vector<char16_t> text = Exactly(Utf16Of(input));
    const auto expected = NumericArrayOf({text.data(), text.size() - 1});
    std::vector<float> elements(codec::cArrayCapacity, cUntouched);
    std::uint32_t count = 4711;
    const HRESULT hr = codec::DecodeNumericArray(text.data(), &count, elements.data());
    ExpectSame("result of decoding", expected ? result::cOk : result::cFail, hr);
    const std::vector<float> wanted = expected.value_or(std::vector<float>());
    ExpectSame("count", wanted.size(), std::size_t{count});
    for (std::size_t i = 0; i < elements.size(); ++i)
        ExpectSameFloat("element", i < wanted.size() ? wanted[i] : 0.0f, elements[i]);
}

void CheckEncoder(std::string_view input) {
    if (input.size() < 2)
        return;
    std::uint16_t scale;
    std::memcpy(&scale, input.data(), sizeof scale);
    input.remove_prefix(sizeof scale);
    std::vector<float> elements(std::min<std::size_t>(input.size() / sizeof(float), 220));
    if (!elements.empty())
        std::memcpy(elements.data(), input.data(), elements.size() * sizeof(float));
    const auto expected = TextOfArray(scale, elements);
    char16_t text[codec::cArrayTextChars];
    const HRESULT hr = codec::EncodeNumericArray(
        scale, static_cast<std::uint32_t>(elements.size()), elements.data(), text);
    const HRESULT refusal =
        scale == 0 || scale >= 32768 ? result::cInvalidArg : result::cOutOfMemory;
    ExpectSame("result of encoding", expected ? result::cOk : refusal, hr);
    ExpectSame("encoded text", expected.value_or(u""), std::u16string(text));
}

}  // namespace

void Check(std::string_view input) {
    CheckDecoder(input);
    CheckEncoder(input);
}

}  // namespace kora4::fuzz

// SPDX-License-Identifier: MIT
// Between stored bytes and typed values, as the library reads and writes them.
#include "settings/content.h"

#include <cmath>
#include <limits>

#include "base/failure.h"
#include "base/text.h"
#include "contract/field_def.h"
#include "contract/patch_records.h"
#include "settings/texts.h"

namespace kora4::tools {
namespace {

template <typename Content>
std::optional<Value> Widened(const std::optional<Content>& content) {
    if (!content)
        return {};
    return Value(*content);
}

std::optional<Value> DecodeText(Kind kind, const std::u16string& text) {
    switch (kind) {
        case Kind::eFloat:
            return Widened(ParseFloatText(text));
        case Kind::eNumericArray:
            return Widened(ParseNumericArray(text));
        case Kind::eFlagArray:
            return Widened(ParseFlagArray(text));
        default:
            return Value(ToUtf8(text));
    }
}

StoredValue EncodeNumber(Kind kind, const Value& content) {
    if (const bool* const on = std::get_if<bool>(&content); on && kind == Kind::eSwitch)
        return StoredValue::FromDword(*on ? 1 : 0);
    const std::uint32_t number = std::get<std::uint32_t>(content);
    if (kind == Kind::eCurveIndex && number >= eNumberIEQPatches)
        throw BadInput("Invalid curve " + std::to_string(number) +
                       ": curves are numbered 0 to " + std::to_string(eNumberIEQPatches - 1) +
                       ".");
    return StoredValue::FromDword(number);
}

StoredValue EncodeText(const std::string& content) {
    const std::u16string text = ToUtf16(content);
    if (text.find(u'\0') != std::u16string::npos)
        throw BadInput("A text cannot contain null characters.");
    if (text.size() > cMaxTextChars)
        throw BadInput("The text has " + std::to_string(text.size()) + " characters; at most " +
                       std::to_string(cMaxTextChars) + " can be read back.");
    return StoredValue::FromText(text);
}

StoredValue EncodeFloat(float content) {
    const std::u16string text = FormatFloatText(content);
    if (!ParseFloatText(text))
        throw BadInput("Only finite numbers can be stored.");
    return StoredValue::FromText(text);
}

void CheckCount(std::size_t count) {
    if (count > cMaxArrayElements)
        throw BadInput("The array has " + std::to_string(count) + " elements; at most " +
                       std::to_string(cMaxArrayElements) + " can be read back.");
}

// An element has 16 bits; one that does not fit would read back as another number.
void CheckElements(const std::vector<float>& elements, std::uint32_t scale) {
    const double lowest = std::numeric_limits<std::int16_t>::min();
    const double highest = std::numeric_limits<std::int16_t>::max();
    for (const float element : elements) {
        const double stored = std::trunc(static_cast<double>(element) * scale);
        if (stored >= lowest && stored <= highest)
            continue;
        throw BadInput(Decimal(element) + " cannot be stored in an array: out of range, " +
                       Decimal(static_cast<float>(lowest / scale)) + " to " +
                       Decimal(static_cast<float>(highest / scale)) + ".");
    }
}

}  // namespace

std::optional<Value> Decode(const SchemaValue& value, const StoredValue& stored) {
    switch (value.kind) {
        case Kind::eSwitch:
        case Kind::eNumber:
        case Kind::eCurveIndex: {
            const std::optional<std::uint32_t> number = stored.AsDword();
            if (!number || (value.kind == Kind::eCurveIndex && *number >= eNumberIEQPatches))
                return {};
            return value.kind == Kind::eSwitch ? Value(*number != 0) : Value(*number);
        }
        case Kind::eBlob:
            return Widened(stored.AsBlob());
        default: {
            const std::optional<std::u16string> text = stored.AsText();
            return text ? DecodeText(value.kind, *text) : std::nullopt;
        }
    }
}

std::optional<Value> BuiltIn(const SchemaValue& value) {
    const std::optional<StoredValue> builtIn = value.Default();
    return builtIn ? Decode(value, *builtIn) : std::nullopt;
}

std::optional<Value> Effective(const SchemaValue& value, StoreAccess& store) {
    if (const std::optional<StoredValue> stored = store.Read(value.keySet, value.key))
        if (std::optional<Value> content = Decode(value, *stored))
            return content;
    return BuiltIn(value);
}

StoredValue Encode(const SchemaValue& value, const Value& content) {
    switch (value.kind) {
        case Kind::eText:
            return EncodeText(std::get<std::string>(content));
        case Kind::eBlob:
            return StoredValue::FromBlob(std::get<Bytes>(content));
        case Kind::eFloat:
            return EncodeFloat(std::get<float>(content));
        case Kind::eNumericArray: {
            const auto& elements = std::get<std::vector<float>>(content);
            CheckCount(elements.size());
            CheckElements(elements, value.field->scale);
            return StoredValue::FromText(*FormatNumericArray(value.field->scale, elements));
        }
        case Kind::eFlagArray: {
            const auto& flags = std::get<std::vector<bool>>(content);
            CheckCount(flags.size());
            return StoredValue::FromText(*FormatFlagArray(flags));
        }
        default:
            return EncodeNumber(value.kind, content);
    }
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// Both directions of one value: from the store to JSON, and from JSON, checked, to the store.
#include "settings/document_values.h"

#include <cmath>
#include <limits>

#include "settings/content.h"
#include "settings/setting_values.h"

namespace kora4::tools {
namespace {

constexpr std::size_t cMaxDataBytes = 1024 * 1024;

std::string Shown(const Json& json) {
    std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    constexpr std::size_t cLongest = 60;
    return text.size() > cLongest ? "this value" : text;
}

Failure BadForm(const Setting& setting, const CheckedJson& json) {
    return json.Bad(Shown(json.Raw()) + " is not a value for it.",
                    "Allowed: " + setting.Allowed() + ".");
}

bool IsWhole(const Json& json) {
    constexpr auto cLargest = std::numeric_limits<std::uint32_t>::max();
    return json.is_number_unsigned() && json.get<std::uint64_t>() <= cLargest;
}

float ReadFloat(const Setting& setting, const CheckedJson& json) {
    if (!json.Raw().is_number())
        throw BadForm(setting, json);
    const auto number = static_cast<float>(json.Raw().get<double>());
    // Half a step beyond the largest float rounds down to it.
    if (!std::isfinite(number))
        throw json.Bad(Shown(json.Raw()) + " is too large.");
    return number;
}

Value ReadArray(const Setting& setting, const CheckedJson& json) {
    if (!json.Raw().is_array())
        throw BadForm(setting, json);
    std::vector<float> numbers;
    std::vector<bool> flags;
    for (const CheckedJson& element : json.Elements(0, json.Raw().size())) {
        if (setting.kind == Kind::eNumericArray)
            numbers.push_back(ReadFloat(setting, element));
        else if (element.Raw().is_boolean())
            flags.push_back(element.Switch());
        else
            throw BadForm(setting, element);
    }
    return setting.kind == Kind::eNumericArray ? Value(numbers) : Value(flags);
}

Value ReadContent(const Setting& setting, const CheckedJson& json) {
    const Json& raw = json.Raw();
    const bool isNumber = setting.kind == Kind::eNumber || setting.kind == Kind::eCurveIndex;
    if (setting.kind == Kind::eFloat)
        return ReadFloat(setting, json);
    if (setting.IsArray())
        return ReadArray(setting, json);
    if (setting.IsSwitch() && raw.is_boolean())
        return json.Switch();
    if ((setting.IsSwitch() || isNumber) && IsWhole(raw))
        return raw.get<std::uint32_t>();
    if (isNumber && raw.is_string())
        for (const ValueWord& word : setting.words)
            if (raw == word.word)
                return word.number;
    if (setting.IsSwitch() || isNumber || !raw.is_string())
        throw BadForm(setting, json);
    return json.Text();
}

// Encode knows the reason and not the place.
StoredValue Encoded(const SchemaValue& value, const Value& content, const CheckedJson& json) {
    try {
        return Encode(value, content);
    } catch (const Failure& failure) {
        throw json.Bad(failure.what(), failure.Next());
    }
}

// {"text": ...} or {"type": ..., "data": ...}: what is stored, to the byte.
StoredValue ReadRaw(const CheckedJson& json) {
    if (json.Raw().size() == 1 && json.Has("text")) {
        SchemaValue text;
        text.kind = Kind::eText;
        return Encoded(text, json["text"].Text(), json);
    }
    if (json.Raw().size() != 2 || !json.Has("type") || !json.Has("data"))
        throw json.Bad("an object here has either 'text', or 'type' and 'data'.");
    const Json& type = json["type"].Raw();
    if (!IsWhole(type))
        throw json.Bad("'type' must be the number of a registry type.");
    const std::optional<Bytes> bytes = FromHex(json["data"].Text());
    if (!bytes)
        throw json.Bad("'data' must be an even number of hexadecimal digits.");
    if (bytes->size() > cMaxDataBytes)
        throw json.Bad("'data' is too large for a value of the registry.");
    return {type.get<std::uint32_t>(), *bytes};
}

// Does writing the JSON value back give exactly what is stored?
bool IsExact(const Setting& setting, const SchemaValue& value, const Json& json,
             const StoredValue& stored) {
    try {
        return StoredFromJson(setting, value, CheckedJson(json)) == stored;
    } catch (const Failure&) {
        return false;
    }
}

}  // namespace

Json StoredToJson(const Setting& setting, const SchemaValue& value, const StoredValue& stored) {
    // Bytes have no form but their own.
    const std::optional<Value> content =
        value.kind == Kind::eBlob ? std::nullopt : Decode(value, stored);
    if (content) {
        Json json = ToJson(setting, *content);
        if (IsExact(setting, value, json, stored))
            return json;
        if (value.kind == Kind::eSwitch)
            return *stored.AsDword();
    }
    if (const std::optional<std::u16string> text = stored.AsText()) {
        Json json = {{"text", ToUtf8(*text)}};
        if (IsExact(setting, value, json, stored))
            return json;
    }
    return {{"type", stored.type}, {"data", ToHex(stored.bytes)}};
}

StoredValue StoredFromJson(const Setting& setting, const SchemaValue& value,
                           const CheckedJson& json) {
    return json.Raw().is_object() ? ReadRaw(json)
                                  : Encoded(value, ReadContent(setting, json), json);
}

}  // namespace kora4::tools

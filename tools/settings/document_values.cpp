// SPDX-License-Identifier: MIT
// One value of the settings document.
#include <cmath>
#include <limits>

#include "base/failure.h"
#include "settings/document.h"

namespace kora4::tools {
namespace {

constexpr std::size_t cMaxDataBytes = 1024 * 1024;

[[noreturn]] void Refuse(const std::string& place, const std::string& reason,
                         const std::string& next = {}) {
    throw Failure(ExitCode::eBadInput, place + ": " + reason + ".", next);
}

std::string Shown(const Json& json) {
    std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    constexpr std::size_t cLongest = 60;
    return text.size() > cLongest ? "this value" : text;
}

[[noreturn]] void RefuseForm(const Setting& setting, const std::string& place,
                             const Json& json) {
    Refuse(place, Shown(json) + " is no value for it", "Allowed: " + setting.Allowed() + ".");
}

std::uint32_t ReadWhole(const Setting& setting, const std::string& place, const Json& json) {
    constexpr auto cLargest = std::numeric_limits<std::uint32_t>::max();
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > cLargest)
        RefuseForm(setting, place, json);
    return json.get<std::uint32_t>();
}

float ReadFloat(const Setting& setting, const std::string& place, const Json& json) {
    if (!json.is_number())
        RefuseForm(setting, place, json);
    const auto number = json.get<double>();
    // Half a step beyond the largest float rounds down to it.
    if (!std::isfinite(static_cast<float>(number)))
        Refuse(place, Shown(json) + " is too large");
    return static_cast<float>(number);
}

std::uint32_t ReadWord(const Setting& setting, const std::string& place, const Json& json) {
    const auto text = json.get<std::string>();
    for (const ValueWord& word : setting.words)
        if (word.word == text)
            return word.number;
    RefuseForm(setting, place, json);
}

Value ReadArray(const Setting& setting, const std::string& place, const Json& json) {
    if (!json.is_array())
        RefuseForm(setting, place, json);
    std::vector<float> numbers;
    std::vector<bool> flags;
    for (const Json& element : json) {
        const std::string at =
            place + "[" + std::to_string(numbers.size() + flags.size()) + "]";
        if (setting.kind == Kind::eNumericArray)
            numbers.push_back(ReadFloat(setting, at, element));
        else if (element.is_boolean())
            flags.push_back(element.get<bool>());
        else
            RefuseForm(setting, at, element);
    }
    return setting.kind == Kind::eNumericArray ? Value(numbers) : Value(flags);
}

Value ReadContent(const Setting& setting, const std::string& place, const Json& json) {
    switch (setting.kind) {
        case Kind::eSwitch:
            return json.is_boolean() ? Value(json.get<bool>())
                                     : Value(ReadWhole(setting, place, json));
        case Kind::eNumber:
        case Kind::eCurveIndex:
            return json.is_string() ? ReadWord(setting, place, json)
                                    : ReadWhole(setting, place, json);
        case Kind::eFloat:
            return ReadFloat(setting, place, json);
        case Kind::eNumericArray:
        case Kind::eFlagArray:
            return ReadArray(setting, place, json);
        default:
            break;
    }
    if (!json.is_string())
        RefuseForm(setting, place, json);
    return json.get<std::string>();
}

StoredValue ReadText(const std::string& place, const Json& json) {
    if (!json.is_string())
        Refuse(place, "'text' must be a text");
    SchemaValue text;
    text.kind = Kind::eText;
    return Encode(text, json.get<std::string>());
}

// {"text": ...} or {"type": ..., "data": ...}: what is stored, to the byte.
StoredValue ReadRaw(const std::string& place, const Json& json) {
    if (json.size() == 1 && json.contains("text"))
        return ReadText(place, json.at("text"));
    if (json.size() != 2 || !json.contains("type") || !json.contains("data"))
        Refuse(place, "an object here has either 'text', or 'type' and 'data'");
    const Json& type = json.at("type");
    if (!type.is_number_unsigned() ||
        type.get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max())
        Refuse(place, "'type' must be the number of a registry type");
    const Json& data = json.at("data");
    const std::optional<Bytes> bytes =
        data.is_string() ? FromHex(data.get<std::string>()) : std::nullopt;
    if (!bytes)
        Refuse(place, "'data' must be an even number of hexadecimal digits");
    if (bytes->size() > cMaxDataBytes)
        Refuse(place, "'data' is too large for a value of the registry");
    return {type.get<std::uint32_t>(), *bytes};
}

// Does writing the JSON value back give exactly what is stored?
bool IsExact(const Setting& setting, const SchemaValue& value, const Json& json,
             const StoredValue& stored) {
    try {
        return StoredFromJson(setting, value, json, {}) == stored;
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

StoredValue StoredFromJson(const Setting& setting, const SchemaValue& value, const Json& json,
                           const std::string& place) {
    try {
        return json.is_object() ? ReadRaw(place, json)
                                : Encode(value, ReadContent(setting, place, json));
    } catch (const Failure& failure) {
        // Encode knows the reason and not the place.
        const std::string reason = failure.what();
        if (reason.starts_with(place + ":") || reason.starts_with(place + "["))
            throw;
        throw Failure(failure.Code(), place + ": " + reason, failure.Next());
    }
}

}  // namespace kora4::tools

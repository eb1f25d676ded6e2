// SPDX-License-Identifier: MIT
// The parsing and the printing of values by their kinds, and the ranges that they must keep to.
#include "settings/setting_values.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/failure.h"
#include "base/shown_text.h"
#include "base/text.h"
#include "contract/patch_records.h"

namespace kora4::tools {
namespace {

constexpr double cLargestNumber = std::numeric_limits<std::uint32_t>::max();

std::string NumberText(double number) {
    return Decimal(static_cast<float>(number));
}

[[noreturn]] void Refuse(const Setting& setting, std::string_view text,
                         const std::string& reason = {}) {
    throw BadInput("Invalid value '" + std::string(text) + "' for '" + setting.name +
                   "': " + (reason.empty() ? "" : reason + "; ") + "expected " +
                   setting.Allowed() + ".");
}

[[noreturn]] void RefuseAsOutOfRange(const Setting& setting, std::string_view text) {
    throw BadInput("Invalid value '" + std::string(text) + "' for '" + setting.name +
                   "': out of range, " + setting.Allowed() + ".");
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

// A decimal number that takes all of the text, or a hexadecimal one where `isWhole`.
std::optional<double> NumberIn(std::string_view text, bool isWhole) {
    if (isWhole && (text.starts_with("0x") || text.starts_with("0X")))
        return ReadNumber<std::uint32_t>(text.substr(2), 16);
    const std::optional<double> number = ReadNumber<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

bool IsWhole(Kind kind) {
    return kind == Kind::eNumber || kind == Kind::eCurveIndex;
}

// text: as it was typed, for the complaint.
Value FromNumber(const Setting& setting, double number, std::string_view text) {
    if (!IsWhole(setting.kind)) {
        if (std::fabs(number) > std::numeric_limits<float>::max())
            Refuse(setting, text, "too large");
        return static_cast<float>(number);
    }
    if (number != std::floor(number))
        Refuse(setting, text, "not a whole number");
    if (number < 0 || number > cLargestNumber)
        RefuseAsOutOfRange(setting, text);
    return static_cast<std::uint32_t>(number);
}

// The number in a value that holds one.
std::optional<double> NumberOf(const Value& value) {
    if (const auto* const number = std::get_if<std::uint32_t>(&value))
        return *number;
    if (const auto* const number = std::get_if<float>(&value))
        return *number;
    return {};
}

// "+1", "-10%", from the present value and no further than the ends of the range.
Value ParseRelative(const Setting& setting, std::string_view text,
                    const std::optional<Value>& current) {
    const bool isMinus = text.front() == '-';
    std::string_view amount = Trimmed(text.substr(1));
    const bool isPercent = amount.ends_with('%');
    if (isPercent)
        amount = Trimmed(amount.substr(0, amount.size() - 1));
    std::optional<double> step = NumberIn(amount, IsWhole(setting.kind));
    if (!step || *step < 0)
        Refuse(setting, text);
    if (isPercent && !setting.highest)
        Refuse(setting, text, "percentages need a range");
    if (isPercent)
        *step *= (*setting.highest - *setting.lowest) / 100;
    if (isPercent && IsWhole(setting.kind) && *step > 0)
        *step = std::max(1.0, std::round(*step));
    const std::optional<double> start = current ? NumberOf(*current) : std::nullopt;
    if (!start)
        Refuse(setting, text, "no current value to start from");
    const double wanted = *start + (isMinus ? -*step : *step);
    return FromNumber(setting,
                      std::clamp(wanted, setting.lowest.value_or(0),
                                 setting.highest.value_or(cLargestNumber)),
                      text);
}

// "50%": of the way from the lowest to the highest value.
Value ParseShare(const Setting& setting, std::string_view text) {
    const std::optional<double> share =
        NumberIn(Trimmed(text.substr(0, text.size() - 1)), false);
    if (!share)
        Refuse(setting, text);
    if (!setting.highest || !setting.words.empty())
        Refuse(setting, text, "a percentage is of the range, and it has none");
    if (*share < 0 || *share > 100)
        Refuse(setting, text, "percentages range from 0 to 100");
    const double value = *setting.lowest + (*setting.highest - *setting.lowest) * *share / 100;
    return FromNumber(setting, IsWhole(setting.kind) ? std::round(value) : value, text);
}

bool ParseSwitch(const Setting& setting, std::string_view text,
                 const std::optional<Value>& current = {}) {
    const std::string word = Lower(text);
    if (word == "toggle" && current)
        return !std::get<bool>(*current);
    for (const char* const on : {"on", "true", "yes", "1"})
        if (word == on)
            return true;
    for (const char* const off : {"off", "false", "no", "0"})
        if (word == off)
            return false;
    Refuse(setting, text);
}

std::vector<std::string_view> Elements(std::string_view text) {
    std::vector<std::string_view> elements;
    while (!(text = Trimmed(text)).empty()) {
        const std::size_t end = std::min(text.find_first_of(", \t"), text.size());
        elements.push_back(text.substr(0, end));
        text = Trimmed(text.substr(end));
        if (text.starts_with(','))
            text.remove_prefix(1);
    }
    return elements;
}

Value ParseArray(const Setting& setting, std::string_view text) {
    std::vector<bool> flags;
    std::vector<float> numbers;
    for (const std::string_view element : Elements(text)) {
        if (setting.kind == Kind::eFlagArray) {
            flags.push_back(ParseSwitch(setting, element));
            continue;
        }
        const std::optional<double> number = NumberIn(element, false);
        if (!number)
            Refuse(setting, text, "'" + std::string(element) + "' is not a number");
        numbers.push_back(static_cast<float>(*number));
    }
    return setting.kind == Kind::eFlagArray ? Value(flags) : Value(numbers);
}

Value ParseNumber(const Setting& setting, const std::string_view typed,
                  const std::optional<Value>& current) {
    std::string_view text = typed;
    for (const ValueWord& word : setting.words)
        if (Lower(text) == word.word)
            return word.number;
    if (!setting.unit.empty() && Lower(text).ends_with(Lower(setting.unit)))
        text = Trimmed(text.substr(0, text.size() - setting.unit.size()));
    const bool isSigned = text.starts_with('+') || text.starts_with('-');
    if (isSigned && setting.TakesRelative())
        return ParseRelative(setting, text, current);
    if (text.ends_with('%'))
        return ParseShare(setting, text);
    if (isSigned && setting.role == Role::eActiveProfile)
        Refuse(setting, typed, "there are no steps between profiles");
    // "=-5" is the number itself, where "-5" alone is a step.
    if (text.starts_with('+') || text.starts_with('='))
        text = Trimmed(text.substr(1));
    const std::optional<double> number = NumberIn(text, IsWhole(setting.kind));
    if (!number)
        Refuse(setting, typed);
    return FromNumber(setting, *number, typed);
}

// Says what lies outside the limits; empty when everything is inside.
std::string OutOfRange(const Setting& setting, const Value& value) {
    const auto isOut = [&setting](double number) {
        // As the library compares: with the limits as floats.
        return (setting.lowest && number < *setting.lowest) ||
               (setting.highest && number > *setting.highest);
    };
    if (const std::optional<double> number = NumberOf(value))
        return isOut(*number) ? NumberText(*number) : "";
    if (const auto* const elements = std::get_if<std::vector<float>>(&value))
        for (const float element : *elements)
            if (isOut(element))
                return NumberText(element);
    return {};
}

// typed: for the complaint, which names the element of an array.
void CheckRange(const Setting& setting, const Value& value, std::string_view typed) {
    const std::string number = OutOfRange(setting, value);
    if (!number.empty())
        RefuseAsOutOfRange(setting, setting.IsArray() ? number : Trimmed(typed));
}

const ValueWord* WordFor(const Setting& setting, std::uint32_t number) {
    for (const ValueWord& word : setting.words)
        if (word.number == number)
            return &word;
    return nullptr;
}

struct JsonMaker {
    const Setting& setting;

    Json operator()(bool isOn) const { return isOn; }
    Json operator()(std::uint32_t number) const {
        const ValueWord* const word = WordFor(setting, number);
        return word ? Json(word->word) : Json(number);
    }
    // By way of the shortest text: a float as such would print digits that nobody typed.
    Json operator()(float number) const { return std::stod(Decimal(number)); }
    Json operator()(const std::string& text) const { return text; }
    Json operator()(const Bytes& bytes) const { return ToHex(bytes); }
    template <typename Element>
    Json operator()(const std::vector<Element>& elements) const {
        Json array = Json::array();
        for (const Element element : elements)
            array.push_back((*this)(element));
        return array;
    }
};

// The JSON form for people.
std::string TextOf(const Setting& setting, const Json& json) {
    if (json.is_array()) {
        std::vector<std::string> texts;
        for (const Json& element : json)
            texts.push_back(TextOf(setting, element));
        return Join(texts, " ");
    }
    if (json.is_boolean())
        return json.get<bool>() ? "on" : "off";
    if (json.is_string())
        return ShownText(json.get<std::string>());
    if (!json.is_number_unsigned())
        return Decimal(json.get<float>());
    const bool isMask = setting.role == Role::eEngineMask || setting.role == Role::eTraceWord;
    return isMask ? Hex(json.get<std::uint32_t>()) : json.dump();
}

}  // namespace

std::string Setting::Allowed() const {
    const std::string most = "up to " + std::to_string(cMaxArrayElements);
    const std::string range = highest ? Range(*lowest, *highest) : std::string();
    switch (kind) {
        case Kind::eSwitch:
            return "on or off";
        case Kind::eText:
            return "a text";
        case Kind::eBlob:
            return "bytes";
        case Kind::eFlagArray:
            return most + " values, each on or off";
        case Kind::eNumericArray:
            return most + " numbers" + (range.empty() ? "" : " from " + range) +
                   (unit.empty() ? "" : " " + unit);
        default:
            break;
    }
    if (!words.empty())
        return Join(CompletionWords(*this), ", ") + ", or " + range;
    if (!range.empty())
        return range + (unit.empty() ? "" : " " + unit);
    return (IsWhole(kind) ? "a whole number from " + Range(0, cLargestNumber)
                          : std::string("any number")) +
           (unit.empty() ? std::string() : ", " + unit);
}

Value ParseValue(const Setting& setting, std::string_view text,
                 const std::optional<Value>& current, Limits limits) {
    Value value;
    if (setting.kind == Kind::eText) {
        value = std::string(text);
    } else if (setting.kind == Kind::eBlob) {
        std::optional<Bytes> bytes = FromHex(text);
        if (!bytes)
            Refuse(setting, text);
        value = std::move(*bytes);
    } else if (setting.IsSwitch()) {
        value = ParseSwitch(setting, Trimmed(text), current);
    } else if (setting.IsArray()) {
        value = ParseArray(setting, text);
    } else {
        value = ParseNumber(setting, Trimmed(text), current);
    }
    if (limits == Limits::eApi)
        CheckRange(setting, value, text);
    return value;
}

bool IsInRange(const Setting& setting, const Value& value) {
    return OutOfRange(setting, value).empty();
}

std::string FormatValue(const Setting& setting, const Value& value, bool withUnit) {
    const Json json = ToJson(setting, value);
    const bool isCounted = withUnit && !setting.unit.empty() && !json.is_string();
    return TextOf(setting, json) + (isCounted ? " " + setting.unit : "");
}

Json ToJson(const Setting& setting, const Value& value) {
    return std::visit(JsonMaker{setting}, value);
}

}  // namespace kora4::tools

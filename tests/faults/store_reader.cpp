// SPDX-License-Identifier: MIT
// Raw access to the keys, and decoders, defaults and rules written from the published format
// alone.
#include "faults/store_reader.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

namespace kora4::test {
namespace {

constexpr char cStdFreq[] = "1,a,20,40,7d,fa,1f4,3e8,7d0,fa0,1f40,3e80";
constexpr char cStdGain[] = "100,a,0,0,0,0,0,0,0,0,0,0";
constexpr char cDynFreq[] =
    "1,14,41,88,df,14c,1d3,27a,349,44a,588,714,8fe,b5d,e4f,11f6,167c,1c1a,2310,2bb2,3667,43ae";

constexpr bool IsWhite(wchar_t c) {
    return c == L' ' || (c >= 9 && c <= 13);
}

int DigitOf(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    return c >= L'A' && c <= L'F' ? c - L'A' + 10 : -1;
}

// Hands out the numbers of an array's text one by one.
class Tokens {
  public:
    explicit Tokens(std::wstring_view text) : m_rest(text) {}

    std::optional<std::uint32_t> Next() {
        SkipWhite();
        std::size_t length = 0;
        while (length < m_rest.size() && !IsWhite(m_rest[length]) && m_rest[length] != L',')
            ++length;
        std::wstring_view token = m_rest.substr(0, length);
        if (length == 0 || length >= 255)
            return std::nullopt;
        if (token.starts_with(L"0x") || token.starts_with(L"0X"))
            token.remove_prefix(2);
        std::uint64_t value = 0;
        if (token.empty())
            return std::nullopt;
        for (const wchar_t c : token) {
            const int digit = DigitOf(c);
            if (digit < 0)
                return std::nullopt;
            value = value * 16 + static_cast<std::uint64_t>(digit);
            if (value > 0xFFFFFFFF)
                return std::nullopt;
        }
        m_rest.remove_prefix(length);
        SkipWhite();
        if (m_rest.starts_with(L','))
            m_rest.remove_prefix(1);
        return static_cast<std::uint32_t>(value);
    }

    bool AtEnd() {
        SkipWhite();
        return m_rest.empty();
    }

  private:
    void SkipWhite() {
        while (!m_rest.empty() && IsWhite(m_rest.front()))
            m_rest.remove_prefix(1);
    }

    std::wstring_view m_rest;
};

std::wstring Widen(const char* text) {
    return std::wstring(text, text + std::strlen(text));
}

// The element in the 16 bits that are stored.
float ThroughSixteenBits(float element, std::uint32_t scale) {
    const double product = static_cast<double>(element) * scale;
    if (!(std::fabs(product) < 9223372036854775808.0))
        return 0;
    const auto bits = static_cast<std::uint16_t>(static_cast<std::int64_t>(product));
    const int number = bits < 0x8000 ? bits : bits - 0x10000;
    return static_cast<float>(static_cast<double>(number) / scale);
}

}  // namespace

StoreKeys::StoreKeys() {
    const wchar_t* const names[] = {cStatic, cDynamic, cApp};
    for (std::size_t i = 0; i < m_keys.size(); ++i) {
        const std::wstring path = std::wstring(L"SOFTWARE\\Velto\\KORA4\\") + names[i];
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WRITE,
                          m_keys[i].Put()) != ERROR_SUCCESS)
            std::abort();
    }
}

void StoreKeys::Write(Key key, const std::wstring& name, DWORD type,
                      const std::vector<std::uint8_t>& data) {
    constexpr std::size_t cMargin = 8;
    std::vector<std::uint8_t> padded(data.size() + 2 * cMargin, 0x41);
    std::copy(data.begin(), data.end(), padded.begin() + cMargin);
    if (RegSetValueExW(m_keys[key].Get(), name.c_str(), 0, type, padded.data() + cMargin,
                       static_cast<DWORD>(data.size())) != ERROR_SUCCESS)
        std::abort();
}

void StoreKeys::WriteNumber(Key key, const std::wstring& name, std::uint32_t number) {
    std::vector<std::uint8_t> data(sizeof number);
    std::memcpy(data.data(), &number, sizeof number);
    Write(key, name, REG_DWORD, data);
}

void StoreKeys::Delete(Key key, const std::wstring& name) {
    RegDeleteValueW(m_keys[key].Get(), name.c_str());
}

std::optional<StoredValue> StoreKeys::Read(Key key, const std::wstring& name) const {
    StoredValue value;
    value.data.resize(256);
    for (;;) {
        auto size = static_cast<DWORD>(value.data.size());
        const LSTATUS status = RegQueryValueExW(m_keys[key].Get(), name.c_str(), nullptr,
                                                &value.type, value.data.data(), &size);
        if (status == ERROR_FILE_NOT_FOUND)
            return std::nullopt;
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
            std::abort();
        value.data.resize(size);
        if (status == ERROR_SUCCESS)
            return value;
    }
}

std::map<std::wstring, StoredValue> StoreKeys::Everything() const {
    std::map<std::wstring, StoredValue> values;
    std::vector<std::uint8_t> data(0x20000);
    for (std::size_t i = 0; i < m_keys.size(); ++i) {
        for (DWORD index = 0;; ++index) {
            wchar_t name[256];
            auto length = static_cast<DWORD>(std::size(name));
            auto size = static_cast<DWORD>(data.size());
            DWORD type = REG_NONE;
            const LSTATUS status = RegEnumValueW(m_keys[i].Get(), index, name, &length, nullptr,
                                                 &type, data.data(), &size);
            if (status == ERROR_NO_MORE_ITEMS)
                break;
            if (status != ERROR_SUCCESS)
                std::abort();
            values[std::to_wstring(i) + name] = {
                type, {data.begin(), data.begin() + static_cast<std::ptrdiff_t>(size)}};
        }
    }
    return values;
}

const std::vector<Technology>& Technologies() {
    using enum FieldKind;
    static const std::vector<Technology> technologies = {
        {RawTechnology::eVolume,
         {1, 1, 1},
         {{3, eNumber, {cMovieVolume, 0, 0}},
          {4, eFlag, {1, 1, 1}},
          {5, eFlag, {0, 0, 0}},
          {6, eFloat, {-20, -20, -20}},
          {7, eFloat, {-20, -20, -20}},
          {8, eFloat, {0, 0, 0}}}},
        {RawTechnology::eEnhancement,
         {1, 0, 0},
         {{3, eFloat, {0.33, 0.33, 0.33}}, {4, eFloat, {0, 0, 0}}}},
        {RawTechnology::eDynamicEQ,
         {0, 1, 0},
         {{3, eFloat, {0.6, 0.6, 0.6}}, {4, eArray, {}, cDynFreq, 1}, {5, eCurve, {0, 1, 0}}}},
        {RawTechnology::eStandardEQ,
         {1, 1, 1},
         {{3, eArray, {}, cStdFreq, 1}, {4, eArray, {}, cStdGain, 256}}},
        {RawTechnology::eHeadphone,
         {1, 1, 1},
         {{3, eFloat, {6, 3, 0}}, {4, eFloat, {0, 0, 0}}}},
        {RawTechnology::eVirtualSurround,
         {1, 0, 1},
         {{3, eFloat, {10, 10, 10}}, {4, eFloat, {6, 0, 0}}}},
        {RawTechnology::eNGSurround, {1, 1, 1}, {}},
    };
    return technologies;
}

const Technology& TechnologyOf(RawTechnology offset) {
    for (const Technology& technology : Technologies()) {
        if (technology.offset == offset)
            return technology;
    }
    std::abort();
}

std::optional<float> DecodeFloat(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t c : text) {
        if (c == 0 || c > 0x7E)
            break;
        narrow += static_cast<char>(c);
    }
    const char* p = narrow.c_str();
    while (IsWhite(static_cast<wchar_t>(*p)))
        ++p;
    const char* const pNumber = p;
    if (*p == '+' || *p == '-')
        ++p;
    const bool hexadecimal = p[0] == '0' && (p[1] == 'x' || p[1] == 'X');
    if (hexadecimal || !((*p >= '0' && *p <= '9') || *p == '.'))
        return std::nullopt;
    char* pEnd = nullptr;
    const float value = std::strtof(pNumber, &pEnd);
    if (pEnd == pNumber || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<FieldValue> DecodeArray(const std::wstring& text) {
    Tokens tokens(text);
    const auto scale = tokens.Next();
    const auto count = scale ? tokens.Next() : std::nullopt;
    if (!count || *scale == 0 || *count > cMostElements)
        return std::nullopt;
    FieldValue value;
    value.count = *count;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto number = tokens.Next();
        if (!number || *number > 0xFFFF)
            return std::nullopt;
        const int element =
            *number < 0x8000 ? static_cast<int>(*number) : static_cast<int>(*number) - 0x10000;
        value.elements[i] = static_cast<float>(static_cast<double>(element) / *scale);
    }
    if (!tokens.AtEnd())
        return std::nullopt;
    return value;
}

FieldValue AfterWriting(const Field& field, const FieldValue& value) {
    FieldValue read = value;
    if (field.kind == FieldKind::eFloat) {
        char text[64];
        std::snprintf(text, sizeof text, "%f", static_cast<double>(value.real));
        read.real = std::strtof(text, nullptr);
    } else if (field.kind == FieldKind::eArray) {
        read.elements = {};
        for (std::uint32_t i = 0; i < value.count; ++i)
            read.elements[i] = ThroughSixteenBits(value.elements[i], field.scale);
    }
    return read;
}

FieldValue DefaultOf(const Field& field, std::uint32_t profile) {
    const std::uint32_t base = IsDemo(profile) ? profile - cDemoMovie : profile;
    const std::uint32_t row = base < 3 ? base : 0;
    if (field.kind == FieldKind::eArray)
        return *DecodeArray(Widen(field.text));
    FieldValue value;
    if (field.kind == FieldKind::eFloat)
        value.real = static_cast<float>(field.rows[row]);
    else
        value.number = static_cast<std::uint32_t>(field.rows[row]);
    return value;
}

std::uint32_t NameNumber(std::uint32_t profile) {
    return profile < 0x80000000 ? profile & 0xFF : 0;
}

std::optional<std::uint32_t> StoreReader::Number(StoreKeys::Key key,
                                                 const std::wstring& name) const {
    const auto value = m_keys.Read(key, name);
    if (!value || value->type != REG_DWORD || value->data.size() != 4)
        return std::nullopt;
    std::uint32_t number = 0;
    std::memcpy(&number, value->data.data(), sizeof number);
    return number;
}

StoredText StoreReader::Text(StoreKeys::Key key, const std::wstring& name) const {
    const auto value = m_keys.Read(key, name);
    if (!value)
        return {};
    if (value->type != REG_SZ || value->data.size() > cLongestText)
        return {TextState::eUnreadable, L""};
    std::wstring text(value->data.size() / 2, L'\0');
    if (!text.empty())
        std::memcpy(text.data(), value->data.data(), text.size() * 2);
    return {TextState::eReadable, text.substr(0, text.find(L'\0'))};
}

std::uint32_t StoreReader::Profile() const {
    return NumberOr(StoreKeys::eDynamic, SettingName(cProfilePid), 0);
}

bool StoreReader::Enable() const {
    return NumberOr(StoreKeys::eDynamic, SettingName(cEnablePid), 1) != 0;
}

std::uint32_t StoreReader::TableCounter() const {
    return NumberOr(StoreKeys::eDynamic, SettingName(cTablePid), 0);
}

bool StoreReader::Flag(const Technology& technology, std::uint32_t profile) const {
    const std::uint32_t base = IsDemo(profile) ? profile - cDemoMovie : profile;
    const std::uint32_t fallback = base < 3 ? technology.flagRows[base] : 1;
    return NumberOr(StoreKeys::eDynamic, PatchName(technology.offset, NameNumber(profile), 0),
                    fallback) != 0;
}

FieldValue StoreReader::Value(const Technology& technology, const Field& field,
                              std::uint32_t profile) const {
    const std::wstring name = PatchName(technology.offset, NameNumber(profile), field.pid);
    FieldValue value = DefaultOf(field, profile);
    if (field.kind == FieldKind::eFloat || field.kind == FieldKind::eArray) {
        const StoredText text = Text(StoreKeys::eStatic, name);
        if (text.state != TextState::eReadable)
            return value;
        if (field.kind == FieldKind::eArray)
            return DecodeArray(text.text).value_or(value);
        value.real = DecodeFloat(text.text).value_or(value.real);
        return value;
    }
    const auto number = Number(StoreKeys::eStatic, name);
    if (!number || (field.kind == FieldKind::eCurve && *number > 5))
        return value;
    value.number = field.kind == FieldKind::eFlag ? *number != 0 : *number;
    return value;
}

FieldValue StoreReader::Shown(const Technology& technology, const Field& field,
                              std::uint32_t profile) const {
    return IsDemo(profile) ? DefaultOf(field, profile) : Value(technology, field, profile);
}

}  // namespace kora4::test

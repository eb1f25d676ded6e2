// SPDX-License-Identifier: MIT
// The list of all values of the store, and the ways to damage each by its kind.
#include "faults/damage.h"

#include <bit>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace kora4::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(const std::wstring& text, bool terminated) {
    Bytes bytes((text.size() + (terminated ? 1 : 0)) * sizeof(wchar_t));
    if (!bytes.empty())
        std::memcpy(bytes.data(), text.c_str(), bytes.size());
    return bytes;
}

Bytes BytesOf(std::uint32_t number) {
    Bytes bytes(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

ValueKind KindOf(FieldKind kind) {
    switch (kind) {
        case FieldKind::eFloat:
            return ValueKind::eFloat;
        case FieldKind::eArray:
            return ValueKind::eArray;
        case FieldKind::eFlag:
            return ValueKind::eFlag;
        default:
            return ValueKind::eNumber;
    }
}

void AddGlobals(std::vector<SchemaValue>& values) {
    using enum ValueKind;
    const struct {
        std::uint32_t offset;
        std::vector<ValueKind> fields;  // property ids from 3 on
    } technologies[] = {
        {0, {eNumber, eArray, eArray, eArray, eArray, eArray, eArray, eArray, eArray, eArray}},
        {1, {eFloat, eFloat, eArray, eArray, eArray, eFlagArray}},
        {2, {eFloat}},
    };
    for (const auto& technology : technologies) {
        values.push_back({StoreKeys::eDynamic, GlobalPatchName(technology.offset, 0), eFlag});
        values.push_back({StoreKeys::eDynamic, GlobalTriggerName(technology.offset), eNumber});
        for (std::uint32_t i = 0; i < technology.fields.size(); ++i)
            values.push_back({StoreKeys::eStatic, GlobalPatchName(technology.offset, 3 + i),
                              technology.fields[i]});
    }
}

void Append(std::vector<SchemaValue>& values, const std::vector<SchemaValue>& more) {
    values.insert(values.end(), more.begin(), more.end());
}

}  // namespace

std::vector<SchemaValue> SchemaOfProfile(std::uint32_t profile) {
    std::vector<SchemaValue> values;
    for (const Technology& technology : Technologies()) {
        values.push_back(
            {StoreKeys::eDynamic, PatchName(technology.offset, profile, 0), ValueKind::eFlag});
        for (const Field& field : technology.fields)
            values.push_back({StoreKeys::eStatic,
                              PatchName(technology.offset, profile, field.pid),
                              KindOf(field.kind)});
    }
    return values;
}

std::vector<SchemaValue> CommonSchema() {
    using enum ValueKind;
    std::vector<SchemaValue> values = {
        {StoreKeys::eDynamic, SettingName(cEnablePid), eFlag},
        {StoreKeys::eDynamic, SettingName(cProfilePid), eProfile},
        {StoreKeys::eDynamic, SettingName(cTablePid), eNumber},
        {StoreKeys::eDynamic, SettingName(6), eFlag},
        {StoreKeys::eStatic, SettingName(cPeriodPid), eNumber},
        {StoreKeys::eStatic, SettingName(cBlobPid), eBlob},
        {StoreKeys::eStatic, SettingName(7), eFlag},
        {StoreKeys::eStatic, SettingName(8), eProfile},
        {StoreKeys::eStatic, MasterEnablesName(), eNumber},
    };
    for (std::uint32_t pid = 50; pid < 60; ++pid)
        values.push_back({StoreKeys::eStatic, SettingName(pid), eNumber});
    for (std::uint32_t pid = 61; pid < 64; ++pid)
        values.push_back({StoreKeys::eApp, SettingName(pid), eText});
    for (std::uint32_t profile = cFirstCustom; profile < cProfileBound; ++profile)
        values.push_back({StoreKeys::eStatic, ProfileNameName(profile), eText});
    for (const Technology& technology : Technologies())
        values.push_back({StoreKeys::eDynamic, TriggerName(technology.offset), eNumber});
    return values;
}

std::vector<SchemaValue> WholeSchema() {
    std::vector<SchemaValue> values = CommonSchema();
    AddGlobals(values);
    for (std::uint32_t profile = 0; profile < cProfileBound; ++profile)
        Append(values, SchemaOfProfile(profile));
    for (std::uint32_t profile = cDemoMovie; profile <= cDemoGames; ++profile)
        Append(values, SchemaOfProfile(profile));
    return values;
}

std::uint32_t Damage::SomeNumber() {
    constexpr std::uint32_t cEdges[] = {
        0,  1,   2,   5,          6,          10,         11,         40,
        41, 255, 256, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF, 0x00010001};
    return OneIn(4) ? Number() : cEdges[Pick(std::size(cEdges))];
}

float Damage::SomeFloat() {
    constexpr float cEdges[] = {0.0f,   -0.0f,      1.0f, 6.0f, 12.0f,
                                -12.0f, 1.0000001f, 0.5f, -1.0f};
    switch (Pick(4)) {
        case 0:
            return std::bit_cast<float>(Number());
        case 1:
            return cEdges[Pick(std::size(cEdges))];
        default:
            return static_cast<float>(Pick(40000)) / 1000.0f - 20.0f;
    }
}

std::wstring Damage::SomeText(std::size_t longest) {
    // They turn the text behind them round.
    constexpr wchar_t cDirections[] = {0x061C, 0x200F, 0x2028, 0x202E, 0x2066};
    std::wstring text(Pick(static_cast<std::uint32_t>(longest) + 1), L' ');
    for (wchar_t& c : text)
        c = OneIn(32) ? cDirections[Pick(std::size(cDirections))]
                      : static_cast<wchar_t>(OneIn(8) ? 1 + Pick(0xFFFF) : 0x20 + Pick(0x5F));
    return text;
}

DWORD Damage::OtherType() {
    constexpr DWORD cTypes[] = {REG_NONE,     REG_SZ,    REG_EXPAND_SZ,
                                REG_BINARY,   REG_DWORD, REG_DWORD_BIG_ENDIAN,
                                REG_MULTI_SZ, REG_QWORD, 77};
    return cTypes[Pick(std::size(cTypes))];
}

std::size_t Damage::NextLength() {
    constexpr std::uint32_t cLengths = 65537;  // a prime: every step goes through all
    constexpr std::uint32_t cStep = 40503;
    m_length = (m_length + cStep) % cLengths;
    return m_length;
}

Bytes Damage::RandomBytes(std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(OneIn(4) ? 0 : Number());
    return bytes;
}

std::wstring Damage::FloatText() {
    constexpr const wchar_t* cTexts[] = {
        L"abc",  L"nan",       L"inf",    L"-inf", L"0x1p3", L".",     L"-",     L"1e",
        L"1e99", L"-1e-60",    L"  2.5x", L"\t-7", L"1,5",   L"3.e1",  L".25e+", L"+4",
        L"",     L"1e9999999", L"0x",     L"--1",  L"1e+38", L"4e+38", L"5e-46", L"\x0660"};
    if (OneIn(2))
        return cTexts[Pick(std::size(cTexts))];
    char text[64];
    std::snprintf(text, sizeof text, OneIn(2) ? "%f" : "%g", static_cast<double>(SomeFloat()));
    return std::wstring(text, text + std::strlen(text));
}

// The count tells the truth in about half of the texts.
std::wstring Damage::ArrayText(bool flags) {
    constexpr const wchar_t* cSeparators[] = {L",", L", ", L" ", L"\t", L" ,\n"};
    const wchar_t* const separator = cSeparators[OneIn(3) ? Pick(std::size(cSeparators)) : 0];
    const std::uint32_t count = Pick(43);
    std::uint32_t stated = count;
    if (OneIn(3))
        stated = OneIn(2) ? SomeNumber() : count + Pick(3) - 1;
    wchar_t token[300];
    std::wstring text;
    if (!flags) {
        constexpr std::uint32_t cScales[] = {1, 256, 3, 0, 0x7FFF, 0x8000, 0xFFFFFFFF};
        std::swprintf(token, std::size(token), L"%04x", cScales[Pick(std::size(cScales))]);
        text += std::wstring(token) + separator;
    }
    std::swprintf(token, std::size(token), L"%04X", stated);
    text += token;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t element = OneIn(200) ? 0x10000 : Number() & 0xFFFF;
        constexpr const wchar_t* cFormats[] = {L"%04x", L"%04x", L"%04X", L"0x%x", L"%x"};
        std::swprintf(token, std::size(token), cFormats[Pick(std::size(cFormats))], element);
        text += separator + std::wstring(token);
    }
    constexpr const wchar_t* cTails[] = {L",", L" ", L",,", L"x", L",0", L"\xFF11", L" ,"};
    if (OneIn(4))
        text += cTails[Pick(std::size(cTails))];
    if (OneIn(12))
        text = L"," + text;
    if (OneIn(30))
        text = std::wstring(Pick(2) + 254 - 4, L'0') + text;
    return text;
}

// Records that are as long as they say, until something lies.
Bytes Damage::Blob() {
    Bytes blob(8);
    const std::uint32_t records = Pick(4);
    for (std::uint32_t i = 0; i < records; ++i) {
        const std::uint32_t bands = Pick(25);
        Bytes record(24 + 8 * bands);
        const std::uint32_t stated = OneIn(8) ? SomeNumber() : bands;
        std::memcpy(record.data() + 16, &stated, sizeof stated);
        for (std::size_t at = 24; at < record.size(); at += sizeof(float)) {
            const float level = OneIn(20) ? SomeFloat() : -static_cast<float>(Pick(1600)) / 10;
            std::memcpy(record.data() + at, &level, sizeof level);
        }
        blob.insert(blob.end(), record.begin(), record.end());
    }
    const std::uint32_t stated = OneIn(3) ? SomeNumber() : records;
    std::memcpy(blob.data() + 4, &stated, sizeof stated);
    if (OneIn(4))
        blob.resize(Pick(static_cast<std::uint32_t>(blob.size()) + 1));
    else if (OneIn(4))
        blob.resize(blob.size() + Pick(40));
    return blob;
}

Bytes Damage::RightBytes(ValueKind kind, DWORD* pType) {
    constexpr std::uint32_t cProfiles[] = {0, 1, 2, 3,          4,          5,
                                           6, 7, 8, cDemoMovie, cDemoMusic, cDemoGames};
    *pType = REG_SZ;
    switch (kind) {
        case ValueKind::eNumber:
            *pType = REG_DWORD;
            return BytesOf(SomeNumber());
        case ValueKind::eFlag:
            *pType = REG_DWORD;
            return BytesOf(OneIn(4) ? SomeNumber() : Pick(2));
        case ValueKind::eProfile:
            *pType = REG_DWORD;
            return BytesOf(OneIn(8) ? SomeNumber() : cProfiles[Pick(std::size(cProfiles))]);
        case ValueKind::eFloat:
            return BytesOf(FloatText(), true);
        case ValueKind::eArray:
        case ValueKind::eFlagArray:
            return BytesOf(ArrayText(kind == ValueKind::eFlagArray), true);
        case ValueKind::eText:
            return BytesOf(SomeText(OneIn(8) ? cLongestText / 2 - 1 : 40), true);
        case ValueKind::eBlob:
            break;
    }
    *pType = REG_BINARY;
    return Blob();
}

void Damage::Apply(StoreKeys& keys, const SchemaValue& value) {
    constexpr std::size_t cSizes[] = {0, 1, 3, 5, 8};
    DWORD type = REG_NONE;
    Bytes data = RightBytes(value.kind, &type);
    switch (Pick(14)) {
        case 0:
            keys.Delete(value.key, value.name);
            return;
        case 1:
            type = OtherType();
            break;
        case 2:
            data = RandomBytes(cSizes[Pick(std::size(cSizes))]);
            break;
        case 3:  // no terminator, and possibly half a character
            data = BytesOf(SomeText(40), false);
            if (OneIn(2))
                data.push_back(static_cast<std::uint8_t>(Number()));
            break;
        case 4:
            if (data.size() > 2)
                data.resize(data.size() - 1 - Pick(2));
            break;
        case 5:  // just fits, or just does not
            data = BytesOf(SomeText(0) + std::wstring(cLongestText / 2 + 1, L'7'), true);
            data.resize(cLongestText - 2 + Pick(6));
            break;
        case 6:
            type = OtherType();
            data = RandomBytes(Pick(64));
            break;
        case 7:  // of the right type or another
            if (OneIn(2))
                type = OtherType();
            data = RandomBytes(NextLength());
            break;
        case 8:  // a beginning that is right
            data.resize(NextLength(), 0x30);
            break;
        default:
            break;
    }
    keys.Write(value.key, value.name, type, data);
}

}  // namespace kora4::test

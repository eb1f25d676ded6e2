// SPDX-License-Identifier: MIT
// The ways to spoil a stored value: wrong type, malformed text, too long, no such profile; and
// the way back.
#include "kora4sim/engine/wrong_values.h"

#include "contract/profiles.h"

namespace kora4::tools::sim {

namespace {

constexpr char cType[] = "type";
constexpr char cMalformed[] = "malformed";
constexpr char cOversized[] = "oversized";
constexpr char cUnterminated[] = "unterminated";
constexpr char cMixed[] = "mixed";

constexpr char cProfileNumber[] = "number";
constexpr char cProfileType[] = "type";
constexpr char cProfileShort[] = "short";
constexpr char cProfileName[] = "name";

constexpr std::uint32_t cNoSuchProfile = 99;

bool IsText(const SchemaValue& field) {
    return TypeOf(field.kind) == cTextType;
}

StoredValue OfAnotherType(const SchemaValue& field) {
    return IsText(field) ? StoredValue::FromDword(7) : StoredValue::FromText(u"7");
}

StoredValue Malformed(const SchemaValue& field) {
    if (IsText(field))
        return StoredValue::FromText(u"neither a number nor an array");
    StoredValue value = StoredValue::FromDword(7);
    value.bytes.resize(2);
    return value;
}

// A text of one character more than a reader takes, with the right one at its beginning.
StoredValue Oversized(const SchemaValue& field, const StoredValue& right) {
    StoredValue value = right;
    value.bytes.resize(IsText(field) ? value.bytes.size() - sizeof(char16_t) : 8);
    while (IsText(field) && value.bytes.size() < cMaxTextBytes) {
        value.bytes.push_back(' ');
        value.bytes.push_back(0);
    }
    if (IsText(field))
        value.bytes.insert(value.bytes.end(), sizeof(char16_t), 0);
    return value;
}

}  // namespace

std::vector<FaultArgument> WrongFieldKinds() {
    return {
        {cType, "numbers as texts and texts as numbers; the defaults are read"},
        {cMalformed, "numbers of 2 bytes, texts that are not numbers; the defaults are read"},
        {cOversized, "numbers of 8 bytes, texts above " + std::to_string(cMaxTextBytes) +
                         " bytes; the defaults are read"},
        {cUnterminated, "texts without their terminator, which read as before; no numbers"},
        {cMixed, "one of type, malformed and oversized for each field; the default"},
    };
}

std::vector<FaultArgument> WrongProfileKinds() {
    return {
        {cProfileNumber, "the active profile is 99, which is reported unchanged; the default"},
        {cProfileType, "the active profile is a text, which reads as movie"},
        {cProfileShort, "the active profile has 2 bytes, which read as movie"},
        {cProfileName, "the name of p1 is a number, which cannot be read"},
    };
}

std::optional<StoredValue> WrongField(const SchemaValue& field, std::string_view kind,
                                      const StoredValue& right, Noise noise) {
    if (kind.empty() || kind == cMixed) {
        constexpr const char* cKinds[] = {cType, cMalformed, cOversized};
        kind = cKinds[noise.Word(field.key.fmtid.data1, field.key.pid) % 3];
    }
    if (kind == cType)
        return OfAnotherType(field);
    if (kind == cMalformed)
        return Malformed(field);
    if (kind == cOversized)
        return Oversized(field, right);
    if (!IsText(field))
        return std::nullopt;
    StoredValue value = right;
    value.bytes.resize(value.bytes.size() - sizeof(char16_t));
    return value;
}

WrongProfileValue WrongProfile(std::string_view kind) {
    if (kind == cProfileName)
        return {NameValue(cFirstCustomProfile), StoredValue::FromDword(7)};
    WrongProfileValue wrong{SettingValue(pkey::cActivePresetPid),
                            StoredValue::FromDword(cNoSuchProfile)};
    if (kind == cProfileType)
        wrong.wrong = StoredValue::FromText(u"music");
    else if (kind == cProfileShort)
        wrong.wrong.bytes.resize(2);
    return wrong;
}

void SpoiltValues::Announce(const std::vector<SchemaValue>& values) {
    std::vector<PropertyKey> counters;
    for (const SchemaValue& value : values)
        AddAnnouncement(counters, value);
    for (const PropertyKey& counter : counters)
        m_store.Bump(counter);
}

void SpoiltValues::Spoil(const std::vector<Wrong>& values) {
    std::vector<SchemaValue> spoilt;
    for (const Wrong& wrong : values) {
        const auto& [value, stored] = wrong;
        m_spoilt.push_back({wrong, m_store.Read(value.keySet, value.key)});
        m_store.Write(value.keySet, value.key, stored);
        spoilt.push_back(value);
    }
    Announce(spoilt);
}

// What somebody has written in the meantime stays. The last spoilt comes back first, so that
// a value that was spoilt twice is what it was at the beginning.
std::size_t SpoiltValues::Restore() {
    std::vector<SchemaValue> restored;
    for (auto spoilt = m_spoilt.rbegin(); spoilt != m_spoilt.rend(); ++spoilt) {
        const auto& [value, stored] = spoilt->wrong;
        if (m_store.Read(value.keySet, value.key) != stored)
            continue;
        m_store.Put(value.keySet, value.key, spoilt->before);
        restored.push_back(value);
    }
    m_spoilt.clear();
    Announce(restored);
    return restored.size();
}

}  // namespace kora4::tools::sim

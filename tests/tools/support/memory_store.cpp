// SPDX-License-Identifier: MIT
// Counts writes and fails at the chosen one; fills stores with right and wrong values at
// random.
#include "tools/support/memory_store.h"

#include "base/failure.h"
#include "contract/profiles.h"
#include "settings/content.h"

namespace kora4::tools {

std::optional<StoredValue> MemoryStore::Read(KORA4KeySet keySet, const PropertyKey& key) {
    const auto found = values.find({keySet, ValueName(key)});
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

void MemoryStore::Count(const PropertyKey& key) {
    if (writesToDeath == 0)
        throw Died{};
    if (writesToDeath > 0)
        --writesToDeath;
    if (writesToFailure == 0) {
        if (!staysBroken)
            writesToFailure = cNever;
        throw Failure(ExitCode::eFailed, "Writing " + ValueName(key) + " failed.");
    }
    if (writesToFailure > 0)
        --writesToFailure;
    ++writes;
    written.push_back(ValueName(key));
}

void MemoryStore::Write(KORA4KeySet keySet, const PropertyKey& key, const StoredValue& value) {
    Count(key);
    values[{keySet, ValueName(key)}] = value;
}

void MemoryStore::Delete(KORA4KeySet keySet, const PropertyKey& key) {
    Count(key);
    values.erase({keySet, ValueName(key)});
}

std::vector<std::string> MemoryStore::ValueNames(KORA4KeySet keySet) {
    std::vector<std::string> names;
    for (const auto& [place, value] : values)
        if (place.first == keySet)
            names.push_back(place.second);
    return names;
}

std::u16string RandomStore::Text(std::size_t longest) {
    constexpr char16_t cLetters[] = u"abc XYZ 019 \"\\/{}[],:\t\n\u00e4\u4e2d";
    std::u16string text;
    for (std::uint32_t i = Pick(static_cast<std::uint32_t>(longest) + 1); i > 0; --i)
        text += cLetters[Pick(static_cast<std::uint32_t>(std::size(cLetters)) - 1)];
    // A pair of surrogates is one character.
    if (Pick(4) == 0)
        text += u"\U0001F3B5";
    return text;
}

StoredValue RandomStore::Garbage() {
    constexpr std::uint32_t cTypes[] = {0, 1, 1, 1, 2, 3, 4, 4, 5, 7, 11, 77};
    constexpr std::size_t cSizes[] = {0, 1, 2, 3, 4, 5, 8, 31, 64, 4095, 4096, 4098};
    StoredValue value;
    value.type = cTypes[Pick(std::size(cTypes))];
    if (Pick(3) == 0) {
        value = StoredValue::FromText(Text(60));
        if (Pick(2) == 0)
            value.bytes.resize(value.bytes.size() - 1 - Pick(2));
        return value;
    }
    value.bytes.resize(cSizes[Pick(std::size(cSizes))]);
    for (std::uint8_t& byte : value.bytes)
        byte = static_cast<std::uint8_t>(Pick(4) == 0 ? 0 : m_random());
    return value;
}

float RandomStore::Float(const Setting* setting) {
    const double lowest = setting ? setting->lowest.value_or(-30) : -30;
    const double highest = setting ? setting->highest.value_or(30) : 30;
    return static_cast<float>(lowest + (highest - lowest) * Pick(100001) / 100000);
}

std::uint32_t RandomStore::Number(const SchemaValue& value, const Setting* setting,
                                  bool beyond) {
    if (value.role == Role::eSavedDemoState)
        return Pick(cSelectableProfileBound);
    if (value.role == Role::eActiveProfile && !beyond)
        return Pick(cDefaultedProfileBound);
    if (value.role == Role::eEngineMask)
        return Pick(0x400);
    if (value.kind == Kind::eCurveIndex)
        return Pick(6);
    if (setting && setting->highest && !beyond)
        return Pick(static_cast<std::uint32_t>(*setting->highest) + 1);
    return Pick(2) == 0 ? Pick(100) : static_cast<std::uint32_t>(m_random());
}

StoredValue RandomStore::Right(const SchemaValue& value, bool beyond) {
    const Setting* const setting = SettingOf(value);
    switch (value.kind) {
        case Kind::eSwitch:
            return Encode(value, Pick(2) == 0);
        case Kind::eText:
            return Encode(value, ToUtf8(Text(40)));
        case Kind::eBlob:
            return StoredValue::FromBlob(Bytes(8));
        case Kind::eFloat:
            return Encode(value, Float(beyond ? nullptr : setting));
        case Kind::eFlagArray:
            return Encode(value, std::vector<bool>(Pick(41), Pick(2) == 0));
        case Kind::eNumericArray: {
            // Of the graphic equalizer as many as there are when one of its arrays is absent.
            const bool isGraphic = setting && setting->methods != ApiMethods::eNone;
            std::vector<float> elements(isGraphic && !beyond ? 10 : Pick(41));
            for (float& element : elements)
                element = Float(beyond ? nullptr : setting);
            for (std::size_t i = 0;
                 setting && setting->unit == "Hz" && !beyond && i < elements.size(); ++i)
                elements[i] = static_cast<float>(1 + i * 700 + Pick(700));
            return Encode(value, elements);
        }
        default:
            return Encode(value, Number(value, setting, beyond));
    }
}

MemoryStore::Values RandomStore::Values(std::uint32_t garbage) {
    MemoryStore::Values values;
    const std::uint32_t absent = 1 + Pick(4);
    for (const SchemaValue& value : Schema()) {
        if (Pick(absent + 1) != 0)
            continue;
        const bool isGarbage = garbage != 0 && Pick(garbage) == 0;
        values[{value.keySet, value.Name()}] =
            isGarbage ? Garbage() : Right(value, garbage != 0 && Pick(2) == 0);
    }
    return values;
}

namespace {

bool IsCovered(const std::pair<KORA4KeySet, std::string>& place, Scope scope) {
    const SchemaValue* const value = FindInSchema(place.first, *ParseValueName(place.second));
    switch (value->role) {
        case Role::eTrigger:
        case Role::eTableCounter:
        case Role::eSavedDemoState:
        case Role::eVisualization:
            return false;
        case Role::eSwitch:
        case Role::eField:
        case Role::eName:
            return scope == Scope::eAll || (value->profile && *value->profile < 9);
        case Role::eActiveProfile:
            return true;
        case Role::eSetting:
            return scope == Scope::eAll || value->key.pid == pkey::cMasterEnablePid ||
                   value->key.pid == pkey::cSamplingPeriodPid;
        default:
            return scope == Scope::eAll;
    }
}

MemoryStore::Values Filtered(const MemoryStore::Values& values, Scope scope, bool covered) {
    MemoryStore::Values filtered;
    for (const auto& [place, value] : values)
        if (IsCovered(place, scope) == covered)
            filtered[place] = value;
    return filtered;
}

}  // namespace

void Put(MemoryStore& store, const Plan& plan) {
    for (const PlannedValue& planned : plan.values) {
        if (planned.wanted)
            store.Write(planned.value.keySet, planned.value.key, *planned.wanted);
        else
            store.Delete(planned.value.keySet, planned.value.key);
    }
}

MemoryStore::Values WithoutAppKeys(MemoryStore::Values values) {
    std::erase_if(values, [](const auto& one) { return one.first.first == eKeySetApp; });
    return values;
}

MemoryStore::Values Covered(const MemoryStore::Values& values, Scope scope) {
    return Filtered(values, scope, true);
}

MemoryStore::Values NotCovered(const MemoryStore::Values& values, Scope scope) {
    return Filtered(values, scope, false);
}

}  // namespace kora4::tools

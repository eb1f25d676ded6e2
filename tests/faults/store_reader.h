// SPDX-License-Identifier: MIT
// A second reading of the settings store, written from its published format and sharing no
// code with the library: what a healthy reader makes of any value, defaults included.
#ifndef KORA4_TESTS_FAULTS_STORE_READER_H
#define KORA4_TESTS_FAULTS_STORE_READER_H

#include <windows.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "support/raw_store.h"

namespace kora4::test {

// A value as the registry holds it.
struct StoredValue {
    DWORD type = REG_NONE;
    std::vector<std::uint8_t> data;

    friend bool operator==(const StoredValue&, const StoredValue&) = default;
};

// The three keys, held open; a value of any type and size goes in and comes out.
class StoreKeys {
  public:
    enum Key { eStatic, eDynamic, eApp };

    StoreKeys();

    // `data` is written with bytes other than 0 around it, so that the platform finds no
    // terminator by accident behind a text that lacks one.
    void Write(Key key, const std::wstring& name, DWORD type,
               const std::vector<std::uint8_t>& data);
    void WriteNumber(Key key, const std::wstring& name, std::uint32_t number);
    void Delete(Key key, const std::wstring& name);
    std::optional<StoredValue> Read(Key key, const std::wstring& name) const;
    // Every value of the three keys, each name behind its key's number.
    std::map<std::wstring, StoredValue> Everything() const;

  private:
    std::array<UniqueRegKey, 3> m_keys;
};

enum class FieldKind { eNumber, eFlag, eFloat, eArray, eCurve };

// A field of a technology. `rows` are the defaults of Movie, Music and Games.
struct Field {
    std::uint32_t pid;
    FieldKind kind;
    double rows[3];
    const char* text = nullptr;  // the default of an array
    std::uint32_t scale = 0;     // arrays only: of the written text
};

// A technology with its fields. `flagRows` are the switches of Movie, Music and Games.
struct Technology {
    RawTechnology offset;
    std::uint32_t flagRows[3];
    std::vector<Field> fields;
};

// In the order in which the library walks them.
const std::vector<Technology>& Technologies();
const Technology& TechnologyOf(RawTechnology offset);

// What a field holds; of an array the first `count` elements, the others are 0.
struct FieldValue {
    std::uint32_t number = 0;
    float real = 0;
    std::uint32_t count = 0;
    std::array<float, cMostElements> elements{};

    friend bool operator==(const FieldValue&, const FieldValue&) = default;
};

enum class TextState { eAbsent, eUnreadable, eReadable };

// A text as a reader finds it.
struct StoredText {
    TextState state = TextState::eAbsent;
    std::wstring text;
};

// Text as stored numbers; none when it is malformed.
std::optional<float> DecodeFloat(const std::wstring& text);
std::optional<FieldValue> DecodeArray(const std::wstring& text);

// What reading gives after `value` was written: the encodings lose what does not fit.
FieldValue AfterWriting(const Field& field, const FieldValue& value);

// Says what each setting is, whatever the store holds.
class StoreReader {
  public:
    explicit StoreReader(const StoreKeys& keys) : m_keys(keys) {}

    std::optional<std::uint32_t> Number(StoreKeys::Key key, const std::wstring& name) const;
    std::uint32_t NumberOr(StoreKeys::Key key, const std::wstring& name,
                           std::uint32_t fallback) const {
        return Number(key, name).value_or(fallback);
    }
    StoredText Text(StoreKeys::Key key, const std::wstring& name) const;

    std::uint32_t Profile() const;
    bool Enable() const;
    std::uint32_t TableCounter() const;
    bool Flag(const Technology& technology, std::uint32_t profile) const;
    FieldValue Value(const Technology& technology, const Field& field,
                     std::uint32_t profile) const;
    // What the library shows of it while `profile` is active.
    FieldValue Shown(const Technology& technology, const Field& field,
                     std::uint32_t profile) const;

  private:
    const StoreKeys& m_keys;
};

FieldValue DefaultOf(const Field& field, std::uint32_t profile);
// The number that stands in a profile's value names.
std::uint32_t NameNumber(std::uint32_t profile);

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_STORE_READER_H

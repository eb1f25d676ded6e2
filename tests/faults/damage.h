// SPDX-License-Identifier: MIT
// Any value of the store, damaged in any way: absent, of another type, of any length up to
// 65,536 bytes, without a terminator, empty, garbage, lying about its own size - or right.
#ifndef KORA4_TESTS_FAULTS_DAMAGE_H
#define KORA4_TESTS_FAULTS_DAMAGE_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "faults/store_reader.h"

namespace kora4::test {

enum class ValueKind { eNumber, eFlag, eProfile, eFloat, eArray, eFlagArray, eText, eBlob };

// A value that the store may hold, and what kind it should be.
struct SchemaValue {
    StoreKeys::Key key;
    std::wstring name;
    ValueKind kind;
};

// Every value that the library reads, but for the trace word.
std::vector<SchemaValue> WholeSchema();
// Those that decide about a profile's settings.
std::vector<SchemaValue> SchemaOfProfile(std::uint32_t profile);
// The settings that do not belong to a profile, the names and the blob.
std::vector<SchemaValue> CommonSchema();

// Draws values for the store, most of them bad in one way or another.
class Damage {
  public:
    explicit Damage(std::uint32_t seed) : m_random(seed) {}

    // 0 to bound - 1.
    std::uint32_t Pick(std::uint32_t bound) {
        return static_cast<std::uint32_t>(m_random() % bound);
    }
    bool OneIn(std::uint32_t n) { return Pick(n) == 0; }
    std::uint32_t Number() { return static_cast<std::uint32_t>(m_random()); }
    std::uint32_t SomeNumber();
    float SomeFloat();
    std::wstring SomeText(std::size_t longest);

    void Apply(StoreKeys& keys, const SchemaValue& value);

  private:
    using Bytes = std::vector<std::uint8_t>;

    DWORD OtherType();
    Bytes RandomBytes(std::size_t size);
    Bytes RightBytes(ValueKind kind, DWORD* pType);
    std::wstring FloatText();
    std::wstring ArrayText(bool flags);
    Bytes Blob();

    // Each from 0 to 65,536, once before any comes again.
    std::size_t NextLength();

    std::mt19937 m_random;
    std::uint32_t m_length = 0;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_DAMAGE_H

// SPDX-License-Identifier: MIT
// Spoilt settings, as the library reads them.
#include "kora4sim/engine/wrong_values.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "contract/profiles.h"
#include "contract/technologies.h"
#include "settings/content.h"

namespace kora4::tools::sim {
namespace {

std::vector<SchemaValue> Fields() {
    std::vector<SchemaValue> fields;
    for (const SchemaValue& value : Schema()) {
        if (value.role == Role::eField && value.profile == cMusicProfile)
            fields.push_back(value);
    }
    EXPECT_LE(17u, fields.size());
    return fields;
}

bool IsText(const SchemaValue& field) {
    return field.kind == Kind::eFloat || field.kind == Kind::eNumericArray;
}

TEST(WrongField, CannotBeReadWhenItIsOfAnotherTypeMalformedOrTooLong) {
    for (const char* kind : {"type", "malformed", "oversized", "mixed", ""}) {
        for (const SchemaValue& field : Fields()) {
            const auto wrong = WrongField(field, kind, *field.Default(), Noise(1));
            ASSERT_TRUE(wrong) << kind;
            EXPECT_FALSE(Decode(field, *wrong)) << kind << " " << field.Name();
        }
    }
}

TEST(WrongField, WithoutTerminatorReadsAsBefore) {
    for (const SchemaValue& field : Fields()) {
        const StoredValue right = *field.Default();
        const auto wrong = WrongField(field, "unterminated", right, Noise(1));
        ASSERT_EQ(IsText(field), wrong.has_value()) << field.Name();
        if (!wrong)
            continue;
        EXPECT_EQ(right.bytes.size() - 2, wrong->bytes.size());
        EXPECT_EQ(Decode(field, right), Decode(field, *wrong)) << field.Name();
    }
}

TEST(WrongField, MixedTakesEachWayAndRepeatsWithTheSeed) {
    std::set<std::string> ways;
    for (const SchemaValue& field : Fields()) {
        const StoredValue right = *field.Default();
        const auto mixed = WrongField(field, "mixed", right, Noise(1));
        EXPECT_EQ(mixed, WrongField(field, "mixed", right, Noise(1)));
        for (const char* kind : {"type", "malformed", "oversized"}) {
            if (mixed == WrongField(field, kind, right, Noise(1)))
                ways.insert(kind);
        }
    }
    EXPECT_EQ((std::set<std::string>{"type", "malformed", "oversized"}), ways);
}

TEST(WrongField, TooLongTextIsJustTooLong) {
    for (const SchemaValue& field : Fields()) {
        const auto wrong = WrongField(field, "oversized", *field.Default(), Noise(1));
        ASSERT_TRUE(wrong);
        EXPECT_EQ(IsText(field) ? cMaxTextBytes + 2 : 8, wrong->bytes.size());
    }
}

TEST(WrongProfile, SpoilsTheActiveProfile) {
    for (const char* kind : {"number", "type", "short", ""}) {
        const WrongProfileValue wrong = WrongProfile(kind);
        EXPECT_EQ(Role::eActiveProfile, wrong.value.role) << kind;
        EXPECT_EQ(eKeySetDynamic, wrong.value.keySet) << kind;
    }
    EXPECT_EQ(99u, WrongProfile("number").wrong.AsDword());
    EXPECT_EQ(99u, WrongProfile("").wrong.AsDword());
    EXPECT_FALSE(WrongProfile("type").wrong.AsDword());
    EXPECT_FALSE(WrongProfile("short").wrong.AsDword());
}

TEST(WrongProfile, SpoilsAName) {
    const WrongProfileValue wrong = WrongProfile("name");
    EXPECT_EQ(Role::eName, wrong.value.role);
    EXPECT_EQ(cFirstCustomProfile, wrong.value.profile);
    EXPECT_FALSE(wrong.wrong.AsText());
    EXPECT_TRUE(wrong.value.Announcement());
}

}  // namespace
}  // namespace kora4::tools::sim

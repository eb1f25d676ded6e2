// SPDX-License-Identifier: MIT
// Changes between two settings documents, found and applied.
#include "kora4ctl/recording/recording.h"

#include <gtest/gtest.h>

namespace kora4::tools {
namespace {

Json Document(const char* text) {
    return Json::parse(text);
}

TEST(Recording, ChangesLeadFromOneDocumentToTheOther) {
    const Json documents[] = {
        Document(R"({"general": {}, "profiles": {}})"),
        Document(R"({"general": {"enable": true}, "profiles": {"p1": {"name": "A"}}})"),
        Document(R"({"general": {"enable": false, "profile": "p1"},
                     "profiles": {"p1": {"name": "B"}, "music": {"volume-leveler": 7}}})"),
        Document(R"({"general": {"profile": "music"},
                     "profiles": {"music": {"volume-leveler": 7, "volume-leveler.on": true}}})"),
    };
    for (const Json& from : documents) {
        for (const Json& to : documents) {
            const Json changed = WithChanges(from, ChangesBetween(from, to));
            EXPECT_TRUE(ChangesBetween(changed, to).empty()) << from << "\n" << to;
            EXPECT_TRUE(ChangesBetween(to, changed).empty()) << from << "\n" << to;
        }
        EXPECT_EQ(Json::array(), ChangesBetween(from, from));
    }
}

TEST(Recording, ChangesNameTheirPlace) {
    const Json changes = ChangesBetween(
        Document(R"({"general": {"enable": true}, "profiles": {"p1": {"name": "A"}},
                     "global": {"peak-limiter.on": true}})"),
        Document(R"({"general": {"enable": false}, "profiles": {"p1": {}},
                     "global": {"peak-limiter.on": false}})"));
    EXPECT_EQ(Document(R"([{"name": "enable", "value": false},
                           {"section": "global", "name": "peak-limiter.on", "value": false},
                           {"profile": "p1", "name": "name", "value": null}])"),
              changes);
}

}  // namespace
}  // namespace kora4::tools

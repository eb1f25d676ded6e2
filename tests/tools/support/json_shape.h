// SPDX-License-Identifier: MIT
// Whether a JSON document looks as a page of the documents says.
#ifndef KORA4_TESTS_TOOLS_SUPPORT_JSON_SHAPE_H
#define KORA4_TESTS_TOOLS_SUPPORT_JSON_SHAPE_H

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace kora4::test {

using Json = nlohmann::ordered_json;

// The text as a document; null, and a failure of the test, when it is none.
Json ParsedJson(std::string_view text);

// A shape is a document with words in place of values:
//   "string" "number" "integer" "boolean" "null" "any"    of that type
//   "string|null"                                         of one of these types
//   "=text"                                               that very string
//   ["number"]                                            an array of any length of these
//   ["number", "string"]                                  exactly these elements
//   {"name": shape, "name?": shape, "*": shape}           an object: a member that must be
//                                                         there, one that may be, all others
// Members that the shape does not have must not be there. The message of a false result
// says where the first difference is.
testing::AssertionResult HasShape(const Json& document, std::string_view shape);

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_SUPPORT_JSON_SHAPE_H

// SPDX-License-Identifier: MIT
// Compares a document with a shape, member by member, and names the first difference.
#include "tools/support/json_shape.h"

#include <algorithm>

namespace kora4::test {
namespace {

bool IsOf(const Json& value, std::string_view type) {
    if (type == "any")
        return true;
    if (type == "integer")
        return value.is_number_integer();
    if (type.starts_with('='))
        return value.is_string() && value.get_ref<const std::string&>() == type.substr(1);
    return value.type_name() == type;
}

bool IsOfOne(const Json& value, std::string_view types) {
    if (types.starts_with('='))
        return IsOf(value, types);
    for (std::size_t begin = 0; begin <= types.size();) {
        const std::size_t end = std::min(types.find('|', begin), types.size());
        if (IsOf(value, types.substr(begin, end - begin)))
            return true;
        begin = end + 1;
    }
    return false;
}

// Empty: no difference.
std::string Difference(const Json& value, const Json& shape, const std::string& where);

std::string ElementDifference(const Json& array, const Json& shape, const std::string& where) {
    if (!array.is_array())
        return where + " is no array but " + array.dump();
    if (shape.size() != 1 && shape.size() != array.size())
        return where + " has " + std::to_string(array.size()) + " elements, not " +
               std::to_string(shape.size());
    for (std::size_t i = 0; i < array.size(); ++i) {
        const Json& element = shape[shape.size() == 1 ? 0 : i];
        const std::string difference =
            Difference(array[i], element, where + "[" + std::to_string(i) + "]");
        if (!difference.empty())
            return difference;
    }
    return {};
}

// The shape of a member, and null when there must be none.
const Json* MemberShape(const Json& shape, const std::string& name) {
    for (const std::string& key : {name, name + "?", std::string("*")}) {
        const auto found = shape.find(key);
        if (found != shape.end())
            return &*found;
    }
    return nullptr;
}

std::string MemberDifference(const Json& object, const Json& shape, const std::string& where) {
    if (!object.is_object())
        return where + " is no object but " + object.dump();
    for (const auto& [name, member] : shape.items()) {
        if (!name.ends_with('?') && name != "*" && !object.contains(name))
            return where + " has no member '" + name + "'";
    }
    for (const auto& [name, member] : object.items()) {
        const Json* const wanted = MemberShape(shape, name);
        if (wanted == nullptr)
            return where + " has a member '" + name + "'";
        const std::string difference = Difference(member, *wanted, where + "." + name);
        if (!difference.empty())
            return difference;
    }
    return {};
}

std::string Difference(const Json& value, const Json& shape, const std::string& where) {
    if (shape.is_object())
        return MemberDifference(value, shape, where);
    if (shape.is_array())
        return ElementDifference(value, shape, where);
    const std::string types = shape.get<std::string>();
    return IsOfOne(value, types) ? "" : where + " is not " + types + " but " + value.dump();
}

}  // namespace

Json ParsedJson(std::string_view text) {
    Json document = Json::parse(text, nullptr, false);
    if (!document.is_discarded())
        return document;
    ADD_FAILURE() << "this is no JSON:\n" << text;
    return nullptr;
}

testing::AssertionResult HasShape(const Json& document, std::string_view shape) {
    const std::string difference = Difference(document, ParsedJson(shape), "the document");
    return difference.empty() ? testing::AssertionSuccess()
                              : testing::AssertionFailure() << difference;
}

}  // namespace kora4::test

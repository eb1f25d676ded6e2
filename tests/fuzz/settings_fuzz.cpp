// SPDX-License-Identifier: MIT
// Settings documents: what `load` would store is compared value by value; and what is stored
// comes back when it is written down as a document and read again.
#include "settings/document.h"

#include "fuzz/frame.h"
#include "fuzz/settings_oracle.h"

namespace kora4::fuzz {

namespace {

std::string ShownValue(const tools::StoredValue& value) {
    if (value.unread)
        return ShownUnread(value.type, value.unread);
    return ShownStored(value.type, std::string(value.bytes.begin(), value.bytes.end()));
}

// The values of a plan, and a document made of them.
std::map<std::string, std::string> ValuesOf(const tools::Plan& plan) {
    std::map<std::string, std::string> values;
    for (const tools::PlannedValue& planned : plan.values) {
        const std::string place = tools::PlaceOf(planned.value);
        values[place] = ShownValue(*planned.wanted);
        const tools::Setting* const setting = tools::SettingOf(planned.value);
        const tools::Json json = tools::StoredToJson(*setting, *planned.wanted);
        if (!planned.wanted->unread)
            ExpectSame("value written down and read again", values[place],
                       ShownValue(tools::StoredFromJson(*setting, tools::CheckedJson(json))));
    }
    return values;
}

std::vector<std::string> Lines(const std::map<std::string, std::string>& values) {
    std::vector<std::string> lines;
    for (const auto& [place, value] : values)
        lines.push_back(place + " = " + value);
    return lines;
}

}  // namespace

void Check(std::string_view input) {
    std::optional<SettingsOracle> expected;
    try {
        expected = ReadSettings(ReadJson(input));
    } catch (const Refused&) {
    }
    const std::vector<char> exact(input.begin(), input.end());
    std::optional<tools::Plan> plan;
    std::string problem;
    try {
        plan = tools::ReadDocument({exact.data(), exact.size()}, tools::Completeness::eMerge);
    } catch (const tools::Failure& failure) {
        problem = failure.what();
        ExpectSame("exit code", static_cast<int>(tools::ExitCode::eBadInput),
                   static_cast<int>(failure.Code()));
    }
    if (expected.has_value() != plan.has_value())
        Differ("the document is accepted", expected ? "yes" : "no",
               plan ? "yes" : "no: " + problem);
    if (!plan)
        return;
    ExpectSame("scope is all", expected->isAll, plan->scope == tools::Scope::eAll);
    ExpectSame("values", Lines(expected->values), Lines(ValuesOf(*plan)));
}

}  // namespace kora4::fuzz

// SPDX-License-Identifier: MIT
// The differences between two settings documents, and the reader that checks a recording line
// by line.
#include "kora4ctl/recording/recording.h"

#include <algorithm>
#include <set>

#include "base/failure.h"
#include "base/strict_json.h"
#include "contract/patch_records.h"
#include "settings/document.h"
#include "settings/names.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

// The sections of a settings document, as the places of changes in them and in the document.
struct Section {
    Json change;  // {"profile": ...}, {"section": ...}, or nothing for the general settings
    Json::json_pointer place;
};

const std::vector<Section>& Sections() {
    static const std::vector<Section> all = [] {
        std::vector<Section> sections = {
            {Json::object(), Json::json_pointer("/general")},
            {{{"section", "global"}}, Json::json_pointer("/global")}};
        for (const std::string& profile : ProfileNames())
            sections.push_back(
                {{{"profile", profile}}, Json::json_pointer("/profiles") / profile});
        return sections;
    }();
    return all;
}

Json MembersOf(const Json& document, const Section& section) {
    return document.value(section.place, Json::object());
}

// ---- Reading ----------------------------------------------------------------------------

void Demand(bool isRight, const std::string& what) {
    if (!isRight)
        throw BadInput(what);
}

void CheckMembers(const Json& object, const std::set<std::string>& allowed,
                  const std::set<std::string>& needed, const std::string& what) {
    Demand(object.is_object(), what + ": expected an object.");
    for (const auto& [name, value] : object.items())
        Demand(allowed.contains(name), what + ": unknown member '" + name + "'.");
    for (const std::string& name : needed)
        Demand(object.contains(name), what + ": member '" + name + "' is missing.");
}

// A document has more members than sections, and a change belongs into one of these.
void CheckPlace(const Json& change) {
    const bool hasSection = change.contains("section");
    const bool hasProfile = change.contains("profile");
    Demand(!hasSection || !hasProfile, "a change: 'profile' and 'section' cannot be combined.");
    Demand(!hasSection || change["section"] == "general" || change["section"] == "global",
           "a change: 'section' must be 'general' or 'global'.");
    Demand(!hasProfile || FindProfile(change["profile"].get<std::string>()).has_value(),
           "a change: unknown 'profile'.");
}

void CheckChanges(const Json& changes) {
    Demand(changes.is_array(), "'changes': expected an array.");
    for (const Json& change : changes) {
        CheckMembers(change, {"profile", "section", "name", "value"}, {"name", "value"},
                     "a change");
        for (const char* name : {"profile", "section", "name"})
            Demand(!change.contains(name) || change[name].is_string(),
                   std::string("a change: '") + name + "' must be a text.");
        CheckPlace(change);
    }
}

bool IsSwitchName(const std::string& name) {
    const Setting* const setting = FindSetting(name);
    return setting != nullptr && setting->IsSwitch() && setting->perProfile;
}

// Null: the value told was not a number.
bool IsPatchValue(const std::string& name, const Json& value) {
    const Setting* const setting = FindSetting(name);
    if (setting == nullptr || setting->methods != ApiMethods::ePatchValue)
        return false;
    if (value.is_string())
        return std::any_of(setting->words.begin(), setting->words.end(),
                           [&word = value.get_ref<const std::string&>()](
                               const ValueWord& known) { return known.word == word; });
    return value.is_null() || value.is_number_unsigned() ||
           (setting->kind == Kind::eFloat && value.is_number());
}

bool IsProfileValue(const Json& value) {
    return value.is_number_unsigned() ||
           (value.is_string() && FindProfile(value.get<std::string>()).has_value());
}

bool IsNumbers(const Json& value) {
    return value.is_array() && std::all_of(value.begin(), value.end(),
                                           [](const Json& one) { return one.is_number(); });
}

bool IsEq(const Json& value) {
    return value.is_object() && value.size() == 2 && value.contains("frequencies") &&
           value.contains("gains") && IsNumbers(value["frequencies"]) &&
           IsNumbers(value["gains"]) && value["frequencies"].size() == value["gains"].size() &&
           value["gains"].size() <= cMaxArrayElements;
}

bool IsTable(const Json& value) {
    if (!value.is_object())
        return false;
    return std::all_of(value.items().begin(), value.items().end(), [](const auto& member) {
        return FindProfile(member.key()).has_value() &&
               (member.value().is_null() || member.value().is_string());
    });
}

bool IsRightValue(const std::string& event, const std::string& name, const Json& value) {
    if (event == "enable")
        return name == "enable" && value.is_boolean();
    if (event == "profile")
        return name == "profile" && IsProfileValue(value);
    if (event == "switch")
        return IsSwitchName(name) && value.is_boolean();
    if (event == "value")
        return IsPatchValue(name, value);
    if (event == "graphic-eq")
        return name == event && IsEq(value);
    return name == "custom-profiles" && (value.is_null() || IsTable(value));
}

void CheckEvent(const Json& line, const std::string& event) {
    static const std::set<std::string> cEvents = {"enable", "profile",    "switch",
                                                  "value",  "graphic-eq", "table"};
    Demand(cEvents.contains(event), "unknown event '" + event + "'.");
    CheckMembers(line, {"offset", "event", "name", "value", "changes"},
                 {"offset", "event", "name", "value"}, "the line");
    Demand(line["name"].is_string() &&
               IsRightValue(event, line["name"].get<std::string>(), line["value"]),
           "invalid name or value for the event '" + event + "'.");
}

// Reads a recording line by line.
class Reader {
  public:
    void Take(const Json& line) {
        Demand(line.is_object() && line.contains("event") && line["event"].is_string(),
               "expected an object with an 'event'.");
        Demand(!m_isOver, "unexpected line after the end.");
        const std::string event = line["event"].get<std::string>();
        if (!m_isBegun)
            TakeStart(line, event);
        else if (event == "end")
            TakeEnd(line);
        else
            TakeEvent(line, event);
    }

    Recording Result() {
        Demand(m_isBegun, "The recording is empty.");
        Demand(m_isOver, "The recording is incomplete: its end is missing.");
        return std::move(m_recording);
    }

  private:
    void TakeStart(const Json& line, const std::string& event) {
        Demand(event == "start" && line.value("format", Json()) == cRecordingFormat,
               "not a recording of 'kora4ctl record'.");
        Demand(line.value("version", Json()) == cRecordingVersion,
               "unsupported version; expected " + std::to_string(cRecordingVersion) + ".");
        CheckMembers(line, {"event", "format", "version", "time", "settings"}, {"settings"},
                     "the line");
        m_recording.start = m_state = CheckedSettings(line["settings"]);
        m_isBegun = true;
    }

    void TakeEnd(const Json& line) {
        CheckMembers(line, {"event", "offset", "settings"}, {"offset", "settings"}, "the line");
        TakeOffset(line);
        Demand(m_isGroupOver, "the previous line has no 'changes'.");
        m_recording.end = CheckedSettings(line["settings"]);
        m_isOver = true;
    }

    void TakeEvent(const Json& line, const std::string& event) {
        if (m_isGroupOver)
            m_recording.groups.emplace_back();
        RecordedGroup& group = m_recording.groups.back();
        if (event == "changes") {
            CheckMembers(line, {"event", "offset", "changes"}, {"offset", "changes"},
                         "the line");
        } else {
            CheckEvent(line, event);
            group.events.push_back(line);
        }
        group.offset = TakeOffset(line);
        m_isGroupOver = line.contains("changes");
        if (m_isGroupOver)
            TakeChanges(line["changes"], group);
    }

    void TakeChanges(const Json& changes, RecordedGroup& group) {
        CheckChanges(changes);
        group.changes = changes;
        m_state = WithChanges(std::move(m_state), changes);
        CheckDocument(m_state);
    }

    std::uint64_t TakeOffset(const Json& line) {
        Demand(line["offset"].is_number_unsigned(),
               "'offset': expected a number of milliseconds.");
        const auto offset = line["offset"].get<std::uint64_t>();
        Demand(offset >= m_offset, "'offset' is less than that of the previous line.");
        return m_offset = offset;
    }

    static const Json& CheckedSettings(const Json& settings) {
        Demand(CheckDocument(settings).scope == Scope::eUser,
               "a recording has the settings of the scope 'user'.");
        return settings;
    }

    Recording m_recording;
    Json m_state;
    std::uint64_t m_offset = 0;
    bool m_isBegun = false;
    bool m_isOver = false;
    bool m_isGroupOver = true;
};

}  // namespace

std::size_t Recording::Events() const {
    std::size_t count = 0;
    for (const RecordedGroup& group : groups)
        count += group.events.size();
    return count;
}

Json ChangesBetween(const Json& before, const Json& now) {
    Json changes = Json::array();
    for (const Section& section : Sections()) {
        const Json old = MembersOf(before, section);
        const Json members = MembersOf(now, section);
        const auto add = [&](const std::string& name, const Json& value) {
            changes.push_back(section.change);
            changes.back().update({{"name", name}, {"value", value}});
        };
        for (const auto& [name, value] : members.items())
            if (!old.contains(name) || old[name] != value)
                add(name, value);
        for (const auto& [name, value] : old.items())
            if (!members.contains(name))
                add(name, nullptr);
    }
    return changes;
}

Json WithChanges(Json document, const Json& changes) {
    for (const Json& change : changes) {
        const auto place =
            change.contains("profile")
                ? Json::json_pointer("/profiles") / change["profile"].get<std::string>()
                : Json::json_pointer() / change.value("section", "general");
        Json& members = document[place];
        const std::string name = change["name"];
        if (members.is_null())
            members = Json::object();
        if (change["value"].is_null())
            members.erase(name);
        else
            members[name] = change["value"];
    }
    return document;
}

Json MemberOf(const Json& document, const std::string& section, const std::string& name) {
    return document.value(Json::json_pointer("/" + section) / name, Json());
}

Recording ReadRecording(std::string_view text, const std::function<void()>& poll) {
    Reader reader;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ++number;
        if (line.find_first_not_of(" \t\r") == std::string_view::npos)
            continue;
        try {
            if (poll)
                poll();
            reader.Take(ParseStrictJson(line, poll));
        } catch (const Failure& failure) {
            throw Failure(failure.Code(),
                          "Line " + std::to_string(number) + ": " + failure.what(),
                          failure.Next());
        } catch (const Json::exception& error) {
            // Whatever the checks above let through is still a fault of the file.
            throw BadInput("Line " + std::to_string(number) + ": " + ProblemOf(error) + ".");
        }
    }
    return reader.Result();
}

}  // namespace kora4::tools

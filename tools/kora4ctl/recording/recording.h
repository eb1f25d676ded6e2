// SPDX-License-Identifier: MIT
// A recording: how settings changed over some time, as lines of JSON.
//
//   {"event": "start", "format": "kora4-recording", "version": 1, "time": "...",
//    "settings": {...}}                                   a settings document, scope user
//   {"event": "profile", "name": "profile", "value": "music", "offset": 1250,
//    "changes": [{"profile": "music", "name": "volume-leveler", "value": 7}]}
//   {"event": "end", "offset": 9000, "settings": {...}}
//
// A line between the first and the last is one notification, or the event "changes" with
// changes alone; offsets are milliseconds. Notifications that came together are a group, and
// the last line of a group has "changes": what became different in the settings document
// since the group before, told or not. The value null means that nothing is stored.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/output.h"

namespace kora4::tools {

inline constexpr char cRecordingFormat[] = "kora4-recording";
inline constexpr int cRecordingVersion = 1;

// Notifications that came together.
struct RecordedGroup {
    std::uint64_t offset = 0;
    std::vector<Json> events;
    Json changes = Json::array();
};

// A whole recording.
struct Recording {
    Json start;  // settings documents
    std::vector<RecordedGroup> groups;
    Json end;

    // The number of recorded lines between the first and the last.
    std::size_t Events() const;
};

// What is different in `now`, as the list that "changes" is.
Json ChangesBetween(const Json& before, const Json& now);
// The document with those changes.
Json WithChanges(Json document, const Json& changes);

// A member of a section of a document; null when it is not there.
Json MemberOf(const Json& document, const std::string& section, const std::string& name);

// Reads and checks a whole recording: each line, and that the settings are a valid document
// at each moment. Failure with eBadInput names the line. `poll` is that of ParseStrictJson.
Recording ReadRecording(std::string_view text, const std::function<void()>& poll = {});

}  // namespace kora4::tools

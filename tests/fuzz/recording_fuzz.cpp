// SPDX-License-Identifier: MIT
// Recordings, checked line by line; the settings of each moment go through the oracle of
// settings documents.
#include "kora4ctl/recording/recording.h"

#include <algorithm>

#include "base/failure.h"
#include "fuzz/frame.h"
#include "fuzz/settings_oracle.h"

namespace kora4::fuzz {

namespace {

using Kind = Node::Kind;

std::string Lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + 32);
    return text;
}

bool IsNumberOf(const std::string& text, unsigned long number) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    const std::size_t zeros = std::min(text.find_first_not_of('0'), text.size() - 1);
    return text.substr(zeros) == std::to_string(number);
}

// A profile by its word in any case or by its number.
bool IsProfile(const std::string& text) {
    constexpr const char* cWords[] = {"movie", "music",      "games",      "p1",
                                      "p2",    "p3",         "p4",         "p5",
                                      "p6",    "demo-movie", "demo-music", "demo-games"};
    constexpr unsigned long cNumbers[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 240, 241, 242};
    for (std::size_t i = 0; i < std::size(cWords); ++i)
        if (Lower(text) == cWords[i] || IsNumberOf(text, cNumbers[i]))
            return true;
    return false;
}

// The name of a setting without aliases and upper case.
std::string SettingOf(const std::string& given) {
    constexpr const char* cAliases[][2] = {{"volume", "volume-leveler"},
                                           {"leveler", "volume-leveler"},
                                           {"dialog", "dialog-enhancer"},
                                           {"dialogue-enhancer", "dialog-enhancer"},
                                           {"geq", "graphic-eq"},
                                           {"equalizer", "graphic-eq"},
                                           {"ieq", "intelligent-eq"},
                                           {"headphone", "headphone-virtualizer"},
                                           {"headphones", "headphone-virtualizer"},
                                           {"speaker", "speaker-virtualizer"},
                                           {"speakers", "speaker-virtualizer"},
                                           {"surround", "speaker-virtualizer"}};
    constexpr const char* cByNumber[] = {"volume-leveler",        "graphic-eq",
                                         "intelligent-eq",        "dialog-enhancer",
                                         "headphone-virtualizer", "speaker-virtualizer"};
    std::string name = Lower(given);
    if (name.ends_with(".switch"))
        name.replace(name.size() - 7, 7, ".on");
    const std::size_t dot = std::min(name.find('.'), name.size());
    std::string head = name.substr(0, dot);
    for (const auto& [alias, setting] : cAliases)
        if (head == alias)
            head = setting;
    for (std::size_t i = 0; i < std::size(cByNumber); ++i)
        if (IsNumberOf(head, i))
            head = cByNumber[i];
    return head + name.substr(dot);
}

bool IsNumbers(const Node& node) {
    return node.Is(Kind::eArray) &&
           std::all_of(node.elements.begin(), node.elements.end(),
                       [](const Node& one) { return one.Is(Kind::eNumber); });
}

bool IsPatchValue(const std::string& name, const Node& value) {
    if (name != "volume-leveler" && name != "intelligent-eq" && name != "dialog-enhancer" &&
        name != "headphone-virtualizer" && name != "speaker-virtualizer")
        return false;
    if (value.Is(Kind::eText)) {
        const auto& word = value.text;
        return name == "intelligent-eq" &&
               (word == "balanced" || word == "open" || word == "focused" || word == "bright" ||
                word == "rich" || word == "warm");
    }
    const bool isFloat = name != "volume-leveler" && name != "intelligent-eq";
    return value.Is(Kind::eNull) || value.LongWhole() || (isFloat && value.Is(Kind::eNumber));
}

void CheckEvent(const Node& line, const std::string& event) {
    line.CheckMembers({"offset", "event", "name", "value"}, {"changes"});
    const std::string name = line.At("name").Text();
    const Node& value = line.At("value");
    if (event == "enable") {
        Demand(name == "enable" && value.Is(Kind::eSwitch));
    } else if (event == "profile") {
        Demand(name == "profile");
        Demand(value.LongWhole() || (value.Is(Kind::eText) && IsProfile(value.text)));
    } else if (event == "switch") {
        const std::string setting = SettingOf(name);
        const bool isField =
            setting == "volume-leveler.field-4" || setting == "volume-leveler.field-5";
        const std::string head = setting.substr(0, setting.find('.'));
        const bool isSwitch =
            setting == head + ".on" && head != "peak-limiter" && head != "audio-regulator" &&
            head != "audio-optimizer" &&
            (IsPatchValue(head, Node()) || head == "graphic-eq" || head == "next-gen-surround");
        Demand((isField || isSwitch) && value.Is(Kind::eSwitch));
    } else if (event == "value") {
        Demand(IsPatchValue(SettingOf(name), value));
    } else if (event == "graphic-eq") {
        Demand(name == event);
        value.CheckMembers({"frequencies", "gains"});
        const Node& gains = value.At("gains");
        Demand(IsNumbers(value.At("frequencies")) && IsNumbers(gains));
        Demand(gains.elements.size() == value.At("frequencies").elements.size() &&
               gains.elements.size() <= 40);
    } else {
        Demand(event == "table" && name == "custom-profiles");
        Demand(value.Is(Kind::eNull) || value.Is(Kind::eObject));
        for (const auto& [profile, text] : value.members)
            Demand(IsProfile(profile) && (text.Is(Kind::eNull) || text.Is(Kind::eText)));
    }
}

Node EmptyObject() {
    Node node;
    node.kind = Kind::eObject;
    return node;
}

void Apply(const Node& change, Node& state) {
    change.CheckMembers({"name", "value"}, {"profile", "section"});
    for (const char* name : {"name", "profile", "section"})
        if (change.Has(name))
            change.At(name).Text();
    Demand(!change.Has("profile") || !change.Has("section"));
    Node* pMembers = nullptr;
    if (change.Has("profile")) {
        // A word in capitals, or a number, is no member of a document.
        Demand(IsUsersProfile(change.At("profile").text));
        Node& profiles = state.members.emplace("profiles", EmptyObject()).first->second;
        pMembers =
            &profiles.members.emplace(change.At("profile").text, EmptyObject()).first->second;
    } else {
        const std::string section =
            change.Has("section") ? change.At("section").text : "general";
        Demand(section == "general" || section == "global");
        pMembers = &state.members.emplace(section, EmptyObject()).first->second;
    }
    const std::string& name = change.At("name").text;
    pMembers->members.erase(name);
    if (!change.At("value").Is(Kind::eNull))
        pMembers->members.emplace(name, change.At("value"));
}

void CheckUsersSettings(const Node& document) {
    Demand(!ReadSettings(document).isAll);
}

struct Group {
    std::uint64_t offset = 0;
    std::size_t events = 0;
    std::size_t changes = 0;
};

class Oracle {
  public:
    void Take(const Node& line) {
        Demand(line.Is(Kind::eObject) && !m_isOver);
        const std::string event = line.At("event").Text();
        if (!m_isBegun)
            Begin(line, event);
        else if (event == "end")
            End(line);
        else
            Event(line, event);
    }

    std::vector<Group> Groups() const {
        Demand(m_isOver);
        return m_groups;
    }

  private:
    void Begin(const Node& line, const std::string& event) {
        line.CheckMembers({"event", "format", "version", "settings"}, {"time"});
        Demand(event == "start" && line.At("format").IsText("kora4-recording") &&
               line.At("version").Number() == 1);
        m_state = line.At("settings");
        CheckUsersSettings(m_state);
        m_isBegun = true;
    }

    void End(const Node& line) {
        line.CheckMembers({"event", "offset", "settings"});
        Offset(line);
        Demand(m_isGroupOver);
        CheckUsersSettings(line.At("settings"));
        m_isOver = true;
    }

    void Event(const Node& line, const std::string& event) {
        if (m_isGroupOver)
            m_groups.emplace_back();
        if (event == "changes") {
            line.CheckMembers({"event", "offset", "changes"});
        } else {
            CheckEvent(line, event);
            ++m_groups.back().events;
        }
        m_groups.back().offset = Offset(line);
        m_isGroupOver = line.Has("changes");
        if (!m_isGroupOver)
            return;
        for (const Node& change : line.At("changes").Elements()) {
            Apply(change, m_state);
            ++m_groups.back().changes;
        }
        ReadSettings(m_state);
    }

    std::uint64_t Offset(const Node& line) {
        const auto offset = line.At("offset").LongWhole();
        Demand(offset && *offset >= m_offset);
        return m_offset = *offset;
    }

    std::vector<Group> m_groups;
    Node m_state;
    std::uint64_t m_offset = 0;
    bool m_isBegun = false;
    bool m_isOver = false;
    bool m_isGroupOver = true;
};

std::vector<Group> Read(std::string text) {
    Oracle oracle;
    text += '\n';
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        if (line.find_first_not_of(" \t\r") != std::string::npos)
            oracle.Take(ReadJson(line));
    }
    return oracle.Groups();
}

}  // namespace

void Check(std::string_view input) {
    std::optional<std::vector<Group>> expected;
    try {
        expected = Read(std::string(input));
    } catch (const Refused&) {
    }
    const std::vector<char> exact(input.begin(), input.end());
    std::optional<tools::Recording> seen;
    std::string problem;
    try {
        seen = tools::ReadRecording({exact.data(), exact.size()});
    } catch (const tools::Failure& failure) {
        problem = failure.what();
        ExpectSame("exit code", static_cast<int>(tools::ExitCode::eBadInput),
                   static_cast<int>(failure.Code()));
    }
    if (expected.has_value() != seen.has_value())
        Differ("the recording is accepted", expected ? "yes" : "no",
               seen ? "yes" : "no: " + problem);
    if (!seen)
        return;
    ExpectSame("groups", expected->size(), seen->groups.size());
    for (std::size_t i = 0; i < expected->size(); ++i) {
        ExpectSame("offset", (*expected)[i].offset, seen->groups[i].offset);
        ExpectSame("events", (*expected)[i].events, seen->groups[i].events.size());
        ExpectSame("changes", (*expected)[i].changes, seen->groups[i].changes.size());
    }
}

}  // namespace kora4::fuzz

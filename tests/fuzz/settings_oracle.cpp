// SPDX-License-Identifier: MIT
// The settings with their kinds, and the form that each kind has in a document.
#include "fuzz/settings_oracle.h"

#include <cmath>
#include <cstdio>

#include "fuzz/array_oracle.h"

namespace kora4::fuzz {

namespace {

constexpr unsigned cTextType = 1;
constexpr unsigned cNumberType = 4;
constexpr std::size_t cMostCharacters = 2047;
constexpr std::size_t cMostElements = 40;

// Kinds: b switch, u number, p profile, c curve, f float, t text, B flags, 1 and 256 arrays of
// that scale.
struct Row {
    const char* name;
    const char* kind;
};

constexpr Row cUsers[] = {{"profile", "p"}, {"enable", "b"}, {"sampling-period", "u"}};
constexpr Row cMachine[] = {{"dynamic-switch", "b"},
                            {"refresh-1", "b"},
                            {"refresh-1-demo", "b"},
                            {"refresh-2", "b"},
                            {"refresh-2-demo", "b"},
                            {"switch-54", "b"},
                            {"switch-55", "b"},
                            {"switch-56", "b"},
                            {"number-57", "u"},
                            {"number-58", "u"},
                            {"switch-59", "b"},
                            {"profile-editor-command", "t"},
                            {"profile-selector-command", "t"},
                            {"demo-app-command", "t"},
                            {"trace-flags", "u"},
                            {"engine-mask", "u"}};
constexpr Row cOfProfiles[] = {
    {"volume-leveler.on", "b"},           {"volume-leveler", "u"},
    {"volume-leveler.field-4", "b"},      {"volume-leveler.field-5", "b"},
    {"volume-leveler.field-6", "f"},      {"volume-leveler.field-7", "f"},
    {"volume-leveler.field-8", "f"},      {"graphic-eq.on", "b"},
    {"graphic-eq.frequencies", "1"},      {"graphic-eq.gains", "256"},
    {"intelligent-eq.on", "b"},           {"intelligent-eq", "c"},
    {"intelligent-eq.level", "f"},        {"intelligent-eq.frequencies", "1"},
    {"dialog-enhancer.on", "b"},          {"dialog-enhancer", "f"},
    {"dialog-enhancer.field-4", "f"},     {"headphone-virtualizer.on", "b"},
    {"headphone-virtualizer", "f"},       {"headphone-virtualizer.field-4", "f"},
    {"speaker-virtualizer.on", "b"},      {"speaker-virtualizer", "f"},
    {"speaker-virtualizer.field-4", "f"}, {"next-gen-surround.on", "b"}};
constexpr Row cGlobal[] = {{"peak-limiter.on", "b"},
                           {"peak-limiter.field-3", "f"},
                           {"audio-regulator.on", "b"},
                           {"audio-regulator.field-3", "f"},
                           {"audio-regulator.field-4", "f"},
                           {"audio-regulator.frequencies", "1"},
                           {"audio-regulator.thresholds-1", "256"},
                           {"audio-regulator.thresholds-2", "256"},
                           {"audio-regulator.isolated", "B"},
                           {"audio-optimizer.on", "b"},
                           {"audio-optimizer.field-3", "u"},
                           {"audio-optimizer.frequencies", "1"},
                           {"audio-optimizer.gains-1", "256"},
                           {"audio-optimizer.gains-2", "256"},
                           {"audio-optimizer.gains-3", "256"},
                           {"audio-optimizer.gains-4", "256"},
                           {"audio-optimizer.gains-5", "256"},
                           {"audio-optimizer.gains-6", "256"},
                           {"audio-optimizer.gains-7", "256"},
                           {"audio-optimizer.gains-8", "256"}};

constexpr struct {
    const char* word;
    std::uint32_t number;
} cProfiles[] = {{"movie", 0}, {"music", 1},        {"games", 2},        {"p1", 3},
                 {"p2", 4},    {"p3", 5},           {"p4", 6},           {"p5", 7},
                 {"p6", 8},    {"demo-movie", 240}, {"demo-music", 241}, {"demo-games", 242}};
constexpr const char* cCurves[] = {"balanced", "open", "focused", "bright", "rich", "warm"};

std::string NumberBytes(std::uint32_t number) {
    std::string bytes;
    for (int i = 0; i < 4; ++i, number /= 256)
        bytes += static_cast<char>(number % 256);
    return bytes;
}

std::string TextBytes(std::u16string_view text) {
    std::string bytes;
    for (const char16_t c : text) {
        bytes += static_cast<char>(c % 256);
        bytes += static_cast<char>(c / 256);
    }
    return bytes + std::string(2, '\0');
}

std::string StoredText(const std::string& text) {
    Demand(text.find('\0') == std::string::npos && Utf16Length(text) <= cMostCharacters);
    std::u16string wide;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i++]);
        std::uint32_t c = first;
        for (int more = first >= 0xF0   ? 3
                        : first >= 0xE0 ? 2
                        : first >= 0xC0 ? 1
                                        : 0;
             more > 0; --more)
            c = c * 64 + static_cast<unsigned char>(text[i++]) % 64u;
        // The bits of the first byte that tell the length.
        c -= first >= 0xF0   ? 0xF0u << 18
             : first >= 0xE0 ? 0xE0u << 12
             : first >= 0xC0 ? 0xC0u << 6
                             : 0;
        if (c >= 0x10000)
            wide += static_cast<char16_t>(0xD7C0 + c / 0x400);
        wide += static_cast<char16_t>(c >= 0x10000 ? 0xDC00 + c % 0x400 : c);
    }
    return ShownStored(cTextType, TextBytes(wide));
}

float FloatOf(const Node& node) {
    const double number = node.Number();
    // What is nearer to the largest float than to the next one that there would be.
    Demand(std::abs(number) < 0x1.ffffffp127);
    return static_cast<float>(number);
}

std::string StoredArray(const Node& node, unsigned scale) {
    std::vector<float> elements;
    for (const Node& element : node.Elements()) {
        elements.push_back(FloatOf(element));
        const double stored = std::trunc(static_cast<double>(elements.back()) * scale);
        Demand(stored >= -32768 && stored <= 32767);
    }
    Demand(elements.size() <= cMostElements);
    return ShownStored(cTextType, TextBytes(*TextOfArray(scale, elements)));
}

std::string StoredFlags(const Node& node) {
    std::vector<std::uint32_t> flags;
    for (const Node& element : node.Elements()) {
        Demand(element.Is(Node::Kind::eSwitch));
        flags.push_back(element.isOn ? 1 : 0);
    }
    Demand(flags.size() <= cMostElements);
    return ShownStored(cTextType, TextBytes(*TextOfFlags(flags)));
}

std::string StoredNumber(const Node& node, char kind) {
    std::optional<std::uint32_t> number = node.Whole();
    if (node.Is(Node::Kind::eSwitch) && kind == 'b')
        number = node.isOn ? 1 : 0;
    for (std::uint32_t i = 0; node.Is(Node::Kind::eText) && kind == 'c' && i < 6; ++i)
        if (node.text == cCurves[i])
            number = i;
    for (const auto& profile : cProfiles)
        if (kind == 'p' && node.IsText(profile.word))
            number = profile.number;
    Demand(number && (kind != 'c' || *number < 6));
    return ShownStored(cNumberType, NumberBytes(*number));
}

// {"text": ...}, {"type": ..., "data": ...}, {"type": ..., "unread": ...}
std::string StoredRaw(const Node& node) {
    if (node.Has("text")) {
        node.CheckMembers({"text"});
        return StoredText(node.At("text").Text());
    }
    const std::optional<std::uint32_t> type = node.At("type").Whole();
    Demand(type.has_value());
    if (node.Has("unread")) {
        node.CheckMembers({"type", "unread"});
        const std::optional<std::uint32_t> size = node.At("unread").Whole();
        Demand(size && *size != 0);
        return ShownUnread(*type, *size);
    }
    node.CheckMembers({"type", "data"});
    const std::string& digits = node.At("data").Text();
    Demand(digits.size() % 2 == 0);
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const std::string pair = digits.substr(i, 2);
        Demand(pair.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos);
        bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    }
    return ShownStored(*type, bytes);
}

std::string Stored(const Node& node, const std::string& kind) {
    if (node.Is(Node::Kind::eObject))
        return StoredRaw(node);
    if (kind == "f") {
        char text[64];
        std::snprintf(text, sizeof text, "%f", static_cast<double>(FloatOf(node)));
        return StoredText(text);
    }
    if (kind == "t")
        return StoredText(node.Text());
    if (kind == "B")
        return StoredFlags(node);
    if (kind == "1" || kind == "256")
        return StoredArray(node, kind == "1" ? 1 : 256);
    return StoredNumber(node, kind[0]);
}

template <std::size_t count>
bool FindIn(const Row (&rows)[count], const std::string& name, std::string& kind) {
    for (const Row& row : rows)
        if (name == row.name) {
            kind = row.kind;
            return true;
        }
    return false;
}

// Every member of a section; `find` knows its kind.
template <typename Find>
void ReadSection(const Node& section, const std::string& place, SettingsOracle& settings,
                 Find find) {
    Demand(section.Is(Node::Kind::eObject));
    for (const auto& [name, value] : section.members) {
        std::string kind;
        Demand(find(name, kind));
        settings.values[place + name] = Stored(value, kind);
    }
}

void ReadProfiles(const Node& profiles, SettingsOracle& settings) {
    Demand(profiles.Is(Node::Kind::eObject));
    for (const auto& [profile, section] : profiles.members) {
        const bool isDemo = profile.starts_with("demo-");
        const bool isCustom = profile[0] == 'p';
        bool isKnown = false;
        for (const auto& known : cProfiles)
            isKnown = isKnown || profile == known.word;
        Demand(isKnown && (settings.isAll || !isDemo));
        ReadSection(section, profile + ": ", settings,
                    [isCustom](const std::string& name, std::string& kind) {
                        kind = "t";
                        return (isCustom && name == "name") || FindIn(cOfProfiles, name, kind);
                    });
    }
}

}  // namespace

std::string ShownStored(unsigned type, const std::string& bytes) {
    std::string shown = std::to_string(type) + " ";
    for (const char c : bytes) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%02x", static_cast<unsigned char>(c));
        shown += hex;
    }
    return shown;
}

std::string ShownUnread(unsigned type, unsigned size) {
    return std::to_string(type) + " unread " + std::to_string(size);
}

bool IsUsersProfile(const std::string& word) {
    for (const auto& profile : cProfiles)
        if (word == profile.word)
            return profile.number <= 8;
    return false;
}

SettingsOracle ReadSettings(const Node& document) {
    document.CheckMembers({"format", "version", "scope"}, {"general", "profiles", "global"});
    Demand(document.At("format").IsText("kora4-settings"));
    Demand(document.At("version").LongWhole() == 1u);
    SettingsOracle settings;
    settings.isAll = document.At("scope").IsText("all");
    Demand(settings.isAll || document.At("scope").IsText("user"));
    const bool isAll = settings.isAll;
    if (document.Has("general"))
        ReadSection(document.At("general"), "", settings,
                    [isAll](const std::string& name, std::string& kind) {
                        return FindIn(cUsers, name, kind) ||
                               (isAll && FindIn(cMachine, name, kind));
                    });
    if (document.Has("profiles"))
        ReadProfiles(document.At("profiles"), settings);
    if (document.Has("global"))
        ReadSection(document.At("global"), "", settings,
                    [isAll](const std::string& name, std::string& kind) {
                        return isAll && FindIn(cGlobal, name, kind);
                    });
    return settings;
}

}  // namespace kora4::fuzz

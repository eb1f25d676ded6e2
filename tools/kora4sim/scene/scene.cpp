// SPDX-License-Identifier: MIT
// Reads scene files, member by member, and finds them beside the program or by path.
#include "kora4sim/scene/scene.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "kora4sim/scene/checked_json.h"
#include "process/files.h"
#include "registry/stored_value.h"

namespace kora4::tools::sim {

namespace {

constexpr char cEnding[] = ".json";
constexpr std::size_t cMostPoints = 128;
constexpr std::size_t cMostFaults = 1000;
constexpr double cLoudest = 0;  // dB

struct SpectrumWord {
    const char* word;
    SpectrumKind kind;
};
constexpr SpectrumWord cSpectra[] = {
    {"music", SpectrumKind::eMusic},
    {"speech", SpectrumKind::eSpeech},
    {"sweep", SpectrumKind::eSweep},
    {"silence", SpectrumKind::eSilence},
};

std::uint32_t ReadMask(const CheckedJson& json) {
    constexpr char cWanted[] =
        "this must be a text like \"0x03FF\" or a whole number below 4294967296.";
    if (json.Raw().is_number_unsigned()) {
        const auto number = json.Raw().get<std::uint64_t>();
        if (number > 0xFFFFFFFF)
            throw json.Bad(cWanted);
        return static_cast<std::uint32_t>(number);
    }
    const std::string text = json.Raw().is_string() ? Lower(json.Text()) : std::string();
    std::uint32_t mask = 0;
    const char* end = text.data() + text.size();
    if (!text.starts_with("0x"))
        throw json.Bad(cWanted);
    const auto [last, error] = std::from_chars(text.data() + 2, end, mask, 16);
    if (error != std::errc() || last != end)
        throw json.Bad(cWanted);
    return mask;
}

std::optional<std::string> ReadCommand(const CheckedJson& commands, const char* name) {
    if (!commands.Has(name))
        return std::nullopt;
    const CheckedJson json = commands[name];
    const std::string text = json.Text();
    if (StoredValue::FromText(ToUtf16(text)).bytes.size() > cMaxTextBytes ||
        text.find('\0') != std::string::npos)
        throw json.Bad("a command line has at most 2047 characters, and none is zero.");
    return text;
}

Commands ReadCommands(const CheckedJson& json) {
    json.CheckMembers({}, {"profile-editor", "profile-selector", "demo-app"});
    return {ReadCommand(json, "profile-editor"), ReadCommand(json, "profile-selector"),
            ReadCommand(json, "demo-app")};
}

std::vector<RecordShape> ReadRecords(const CheckedJson& json) {
    std::vector<RecordShape> records;
    for (const CheckedJson& element : json.Elements(0, cMostRecords)) {
        element.CheckMembers({"bands"}, {"offset"});
        RecordShape shape;
        shape.bands = element["bands"].Count(0, cMostBands);
        if (element.Has("offset"))
            shape.offset = element["offset"].Number(-100, 20);
        records.push_back(shape);
    }
    return records;
}

void ReadNumber(const CheckedJson& json, const char* name, double least, double most,
                double& number) {
    if (json.Has(name))
        number = json[name].Number(least, most);
}

Spectrum ReadSpectrum(const CheckedJson& json) {
    if (!json.Raw().is_object() || !json.Has("kind"))
        json.CheckMembers({"kind"});
    std::vector<std::string> words;
    for (const SpectrumWord& known : cSpectra)
        words.push_back(known.word);
    const std::string word = json["kind"].Word(words);
    Spectrum spectrum;
    for (const SpectrumWord& known : cSpectra) {
        if (word == known.word)
            spectrum.kind = known.kind;
    }
    switch (spectrum.kind) {
        case SpectrumKind::eSilence:
            json.CheckMembers({"kind"});
            return spectrum;
        case SpectrumKind::eSweep:
            json.CheckMembers({"kind"}, {"seconds", "peak", "floor", "width"});
            ReadNumber(json, "seconds", 0.1, 3600, spectrum.seconds);
            ReadNumber(json, "peak", cLowestLevel, cLoudest, spectrum.peak);
            ReadNumber(json, "floor", cLowestLevel, cLoudest, spectrum.floor);
            ReadNumber(json, "width", 0.01, 1, spectrum.width);
            return spectrum;
        case SpectrumKind::eMusic:
            json.CheckMembers({"kind", "levels"}, {"swing", "rate", "noise"});
            break;
        case SpectrumKind::eSpeech:
            json.CheckMembers({"kind", "levels"}, {"swing", "rate", "noise", "pauses"});
            ReadNumber(json, "pauses", 0, 1, spectrum.pauses);
            break;
    }
    for (const CheckedJson& level : json["levels"].Elements(1, cMostPoints))
        spectrum.levels.push_back(level.Number(cLowestLevel, cLoudest));
    ReadNumber(json, "swing", 0, 60, spectrum.swing);
    ReadNumber(json, "rate", 0.01, 50, spectrum.rate);
    ReadNumber(json, "noise", 0, 60, spectrum.noise);
    return spectrum;
}

std::string ReadArgument(const CheckedJson& json) {
    if (json.Raw().is_number())
        return json.Raw().dump();
    return json.Text();
}

std::vector<Fault> ReadTimeline(const CheckedJson& json) {
    std::vector<Fault> timeline;
    for (const CheckedJson& element : json.Elements(0, cMostFaults)) {
        element.CheckMembers({"at", "fault"}, {"argument"});
        const double at = element["at"].Number(0, cLongestRun);
        const std::string argument =
            element.Has("argument") ? ReadArgument(element["argument"]) : std::string();
        try {
            timeline.push_back(
                MakeFault(element["fault"].Text(), argument, at, FaultCause::eTimeline));
        } catch (const Failure& failure) {
            throw element.Bad(failure.what());
        }
    }
    std::stable_sort(timeline.begin(), timeline.end(), [](const Fault& a, const Fault& b) {
        return a.atMilliseconds < b.atMilliseconds;
    });
    return timeline;
}

void CheckHead(const CheckedJson& json) {
    if (!json.Raw().is_object() || !json.Has("format"))
        throw json.Bad("this is no scene: it needs \"format\": \"" + std::string(cSceneFormat) +
                       "\".");
    if (json["format"].Text() != cSceneFormat)
        throw json["format"].Bad("this is no scene: '" + std::string(cSceneFormat) +
                                 "' is expected.");
    if (!json.Has("version"))
        json.CheckMembers({"format", "version"});
    const unsigned version = json["version"].Count(0, 1000000);
    if (version != cSceneVersion)
        throw json["version"].Bad("version " + std::to_string(version) +
                                  " of scenes is not known; this program reads version " +
                                  std::to_string(cSceneVersion) + ".");
}

std::filesystem::path PathOf(std::string_view text) {
    return std::filesystem::path(Widen(text));
}

bool IsPath(std::string_view text) {
    return text.find_first_of("/\\:") != std::string_view::npos ||
           Lower(text).ends_with(cEnding);
}

std::string Joined(const std::string& folder, const std::string& file) {
    return Narrow((PathOf(folder) / PathOf(file)).wstring());
}

std::wstring ProgramPath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace

Scene ReadScene(std::string_view text, const std::string& file) {
    const Json document = ParseJson(text, file);
    const CheckedJson json(document, file);
    CheckHead(json);
    json.CheckMembers({"format", "version", "engine", "records", "spectrum"},
                      {"description", "follow-settings", "timeline"});
    Scene scene;
    scene.name = Narrow(PathOf(file).stem().wstring());
    if (json.Has("description"))
        scene.description = json["description"].Text();
    json["engine"].CheckMembers({"mask"}, {"commands"});
    scene.mask = ReadMask(json["engine"]["mask"]);
    if (json["engine"].Has("commands"))
        scene.commands = ReadCommands(json["engine"]["commands"]);
    scene.records = ReadRecords(json["records"]);
    scene.spectrum = ReadSpectrum(json["spectrum"]);
    if (json.Has("follow-settings"))
        scene.followsSettings = json["follow-settings"].Switch();
    if (json.Has("timeline"))
        scene.timeline = ReadTimeline(json["timeline"]);
    return scene;
}

SceneFolder::SceneFolder()
    : m_path(
          Narrow((std::filesystem::path(ProgramPath()).parent_path() / L"scenes").wstring())) {}

std::vector<std::string> SceneFolder::Names() const {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(PathOf(m_path), error)) {
        if (Lower(Narrow(entry.path().extension().wstring())) == cEnding)
            names.push_back(Narrow(entry.path().stem().wstring()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

Scene SceneFolder::Load(std::string_view nameOrPath) const {
    const std::string given(nameOrPath);
    if (IsPath(nameOrPath))
        return ReadScene(ReadWholeFile(given), given);
    const std::vector<std::string> names = Names();
    if (names.empty())
        throw Failure(
            ExitCode::eBadInput, "There are no scenes in '" + m_path + "'.",
            "The scenes belong beside the program; a file of your own can be named by "
            "its path.");
    const auto found = std::find(names.begin(), names.end(), Lower(given));
    if (found == names.end())
        throw Failure(ExitCode::eBadInput,
                      "There is no scene '" + given + "'. " + Suggestion(given, names),
                      "All scenes: kora4sim --list");
    const std::string file = *found + cEnding;
    return ReadScene(ReadWholeFile(Joined(m_path, file)), file);
}

}  // namespace kora4::tools::sim

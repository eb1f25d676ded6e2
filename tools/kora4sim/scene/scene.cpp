// SPDX-License-Identifier: MIT
// Reads scene files, member by member, and finds them beside the program or by path.
#include "kora4sim/scene/scene.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "base/checked_json.h"
#include "base/failure.h"
#include "base/nearest.h"
#include "base/strict_json.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "process/files.h"
#include "registry/stored_value.h"

namespace kora4::tools::sim {

namespace {

constexpr char cEnding[] = ".json";
constexpr std::size_t cMostPoints = 128;
constexpr std::size_t cMostFaults = 1000;
constexpr double cLoudest = 0;  // dB

// A kind of spectrum: has it a level for each place, and which of the numbers.
struct SpectrumDef {
    const char* word;
    SpectrumKind kind;
    bool hasLevels;
    std::vector<std::string> numbers;
};

const std::vector<SpectrumDef>& Spectra() {
    static const std::vector<SpectrumDef> spectra = {
        {"music", SpectrumKind::eMusic, true, {"swing", "rate", "noise"}},
        {"speech", SpectrumKind::eSpeech, true, {"swing", "rate", "noise", "pauses"}},
        {"sweep", SpectrumKind::eSweep, false, {"seconds", "peak", "floor", "width"}},
        {"silence", SpectrumKind::eSilence, false, {}},
    };
    return spectra;
}

struct SpectrumNumber {
    const char* name;
    double least;
    double most;
    double Spectrum::*number;
};
constexpr SpectrumNumber cSpectrumNumbers[] = {
    {"swing", 0, 60, &Spectrum::swing},
    {"rate", 0.01, 50, &Spectrum::rate},
    {"noise", 0, 60, &Spectrum::noise},
    {"pauses", 0, 1, &Spectrum::pauses},
    {"seconds", 0.1, 3600, &Spectrum::seconds},
    {"peak", cLowestLevel, cLoudest, &Spectrum::peak},
    {"floor", cLowestLevel, cLoudest, &Spectrum::floor},
    {"width", 0.01, 1, &Spectrum::width},
};

std::uint32_t ReadMask(const CheckedJson& json) {
    constexpr std::uint64_t cLargest = std::numeric_limits<std::uint32_t>::max();
    const Json& raw = json.Raw();
    std::optional<std::uint32_t> mask;
    if (raw.is_number_unsigned() && raw.get<std::uint64_t>() <= cLargest)
        mask = raw.get<std::uint32_t>();
    else if (const std::string text = raw.is_string() ? Lower(json.Text()) : std::string();
             text.starts_with("0x"))
        mask = ReadNumber<std::uint32_t>(std::string_view(text).substr(2), 16);
    if (mask)
        return *mask;
    throw json.Bad("expected a text like '" + Hex(cEngineTechnologies, 4) +
                   "' or a whole number from 0 to " + std::to_string(cLargest) + ".");
}

Commands ReadCommands(const CheckedJson& json) {
    std::vector<std::string> names;
    for (const CommandDef& known : cCommands)
        names.push_back(known.name);
    json.CheckMembers({}, names);
    Commands commands;
    for (const std::string& name : names) {
        if (!json.Has(name))
            continue;
        const std::string text = commands[name] = json[name].Text();
        if (ToUtf16(text).size() > cMaxTextChars || text.find('\0') != std::string::npos)
            throw json[name].Bad("a command line has at most " + std::to_string(cMaxTextChars) +
                                 " characters, without null characters.");
    }
    return commands;
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

Spectrum ReadSpectrum(const CheckedJson& json) {
    if (!json.Raw().is_object() || !json.Has("kind"))
        json.CheckMembers({"kind"});
    std::vector<std::string> words;
    for (const SpectrumDef& known : Spectra())
        words.push_back(known.word);
    const std::string word = json["kind"].Word(words);
    const SpectrumDef& def =
        *std::find_if(Spectra().begin(), Spectra().end(),
                      [&](const SpectrumDef& d) { return word == d.word; });
    std::vector<std::string> needed = {"kind"};
    if (def.hasLevels)
        needed.push_back("levels");
    json.CheckMembers(needed, def.numbers);
    Spectrum spectrum;
    spectrum.kind = def.kind;
    for (const SpectrumNumber& known : cSpectrumNumbers)
        if (json.Has(known.name))
            spectrum.*known.number = json[known.name].Number(known.least, known.most);
    if (def.hasLevels)
        for (const CheckedJson& level : json["levels"].Elements(1, cMostPoints))
            spectrum.levels.push_back(level.Number(cLowestLevel, cLoudest));
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
        throw json.Bad("not a scene: expected an object with the 'format' '" +
                       std::string(cSceneFormat) + "'.");
    if (json["format"].Text() != cSceneFormat)
        throw json["format"].Bad("not a scene: expected '" + std::string(cSceneFormat) + "'.");
    if (!json.Has("version"))
        json.CheckMembers({"format", "version"});
    const unsigned version = json["version"].Count(0, 1000000);
    if (version != cSceneVersion)
        throw json["version"].Bad("version " + std::to_string(version) +
                                  " of scenes is not supported; this program reads version " +
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
    Json document;
    try {
        document = ParseStrictJson(text);
    } catch (const Failure& failure) {
        throw Failure(failure.Code(), file + ": " + failure.what());
    }
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
    if (given == "-" || IsPath(nameOrPath))
        return ReadScene(ReadWholeFile(given), NameOfInput(given));
    const std::vector<std::string> names = Names();
    if (names.empty())
        throw Failure(
            ExitCode::eBadInput, "There are no scenes in '" + m_path + "'.",
            "The folder belongs beside the program; name a scene of your own by its path.");
    const auto found = std::find(names.begin(), names.end(), Lower(given));
    if (found == names.end())
        throw Failure(ExitCode::eBadInput,
                      "Unknown scene '" + given + "'. " + Suggestion(given, names),
                      "All scenes: kora4sim --list");
    const std::string file = *found + cEnding;
    return ReadScene(ReadWholeFile(Joined(m_path, file)), file);
}

}  // namespace kora4::tools::sim

// SPDX-License-Identifier: MIT
// kora4ctl status: everything at a glance.
#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/profiles.h"
#include "contract/version.h"
#include "kora4ctl/access/profile_names.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/equalizer/bands_picture.h"
#include "kora4ctl/equalizer/equalizer_access.h"
#include "kora4ctl/registration/registration.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "settings/lint.h"

namespace kora4::tools {

namespace {

struct TechnologyState {
    const TechnologyWord* technology = nullptr;
    bool isOn = false;
    std::optional<Reading> value;  // the graphic equalizer has bands instead
};

struct State {
    std::uint32_t profile = 0;
    bool isEnabled = false;
    std::vector<TechnologyState> technologies;
    Bands bands;
    // None: a stored name is unreadable, and so is the table.
    std::optional<ProfileTable> names;
    std::uint32_t engineMask = 0;
    std::uint32_t samplingPeriod = 0;  // ms
    HRESULT levels = S_FALSE;
    std::string version;
    Registration registration;
    std::size_t unreadable = 0;  // stored values, of all profiles
    bool wasInterrupted = false;
};

template <typename Content>
Content ValueOf(SettingAccess& access, const char* name) {
    const Reading reading = access.Read(SettingNamed(name), {}, Detail::eValue);
    return std::get<Content>(reading.value.value());
}

std::optional<ProfileTable> NamesIfReadable(const Api& api) {
    try {
        return ReadProfileNames(api);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

State ReadState(SettingAccess& access) {
    State state;
    state.profile = access.ActiveProfile();
    state.isEnabled = ValueOf<bool>(access, "enable");
    for (const TechnologyWord& technology : AllTechnologies()) {
        if (!technology.apiNumber)
            continue;
        const std::string word = technology.word;
        TechnologyState one{&technology, ValueOf<bool>(access, (word + ".on").c_str()), {}};
        if (SettingNamed(word).isStored)
            one.value = access.Read(SettingNamed(word), {}, Detail::eValue);
        state.technologies.push_back(one);
    }
    state.bands = ReadEqualizer(access, {}).bands;
    state.names = NamesIfReadable(access.Api());
    state.engineMask = ValueOf<std::uint32_t>(access, "engine-mask");
    state.samplingPeriod = ValueOf<std::uint32_t>(access, "sampling-period");
    state.levels = access.Api().GetVisualizationData().Code();
    state.version = ValueOf<std::string>(access, "version");
    state.registration = ReadRegistration();
    const HeldStore store = access.Store(OpenMode::eRead);
    state.unreadable = static_cast<std::size_t>(
        std::ranges::count(Lint(*store), Severity::eError, &Finding::severity));
    state.wasInterrupted = access.WasInterrupted();
    return state;
}

// ---- JSON -------------------------------------------------------------------------------

const char* LevelsWord(HRESULT levels) {
    return levels == S_OK ? "published" : levels == S_FALSE ? "none" : "unreadable";
}

bool AreInRange(const Bands& bands) {
    return std::ranges::all_of(bands, IsAllowedGain, &Band::gain);
}

Json TechnologyDocument(const State& state, const TechnologyState& one) {
    Json json;
    json["technology"] = one.technology->word;
    json["on"] = one.isOn;
    json["effective"] = one.isOn && state.isEnabled;
    if (one.value) {
        const Json value = one.value->Document();
        json["value"] = value["value"];
        json["unit"] = value["unit"];
        json["inRange"] = value["inRange"];
        return json;
    }
    json["value"] = Json::array();
    for (const Band& band : state.bands)
        json["value"].push_back({{"frequency", band.frequency}, {"gain", band.gain}});
    json["unit"] = "dB";
    json["inRange"] = AreInRange(state.bands);
    return json;
}

Json CustomProfiles(const State& state) {
    if (!state.names)
        return Json();
    Json profiles = Json::array();
    for (std::uint32_t i = 0; i < state.names->size(); ++i) {
        if ((*state.names)[i])
            profiles.push_back({{"profile", ProfileName(i)}, {"name", *(*state.names)[i]}});
    }
    return profiles;
}

Json DocumentOf(const State& state) {
    Json technologies = Json::array();
    for (const TechnologyState& one : state.technologies)
        technologies.push_back(TechnologyDocument(state, one));
    const char* const engine = NameOfEngine(state.engineMask);
    Json json;
    json["profile"] = ProfileName(state.profile);
    json["enable"] = state.isEnabled;
    json["demo"] = IsDemoProfile(state.profile);
    json["technologies"] = technologies;
    json["customProfiles"] = CustomProfiles(state);
    json["engine"] = {{"mask", state.engineMask}, {"name", engine ? Json(engine) : Json()}};
    json["samplingPeriod"] = state.samplingPeriod;
    json["levels"] = LevelsWord(state.levels);
    json["unreadable"] = state.unreadable;
    json["interrupted"] = state.wasInterrupted;
    json["library"] = {{"version", state.version},
                       {"path", state.registration.path},
                       {"fileVersion", state.registration.fileVersion}};
    json["tool"] = {{"version", KORA4_VERSION_TEXT}};
    return json;
}

// ---- Words ------------------------------------------------------------------------------

std::string NameOfProfile(const State& state) {
    const std::string word = ProfileName(state.profile);
    if (state.names && state.profile < state.names->size() && (*state.names)[state.profile])
        return word + " " + Quoted(*(*state.names)[state.profile]);
    return IsAllowableProfile(state.profile) ? word : word + ", which is not a profile";
}

std::string GainsInWords(const Bands& bands) {
    if (bands.empty())
        return "no bands";
    const auto [low, high] =
        std::minmax_element(bands.begin(), bands.end(),
                            [](const Band& a, const Band& b) { return a.gain < b.gain; });
    if (low->gain == 0 && high->gain == 0)
        return "flat";
    return SignedGain(low->gain) + " to " + SignedGain(high->gain) + " dB";
}

// Where in its range a value is; a curve has no more and less.
std::string Position(const Reading& reading, std::size_t columns) {
    const Setting& setting = *reading.setting;
    if (!setting.words.empty() || !setting.lowest || !setting.highest)
        return {};
    const auto* const whole = std::get_if<std::uint32_t>(&*reading.value);
    const double value = whole != nullptr
                             ? static_cast<double>(*whole)
                             : static_cast<double>(std::get<float>(*reading.value));
    const double share =
        std::clamp((value - *setting.lowest) / (*setting.highest - *setting.lowest), 0.0, 1.0);
    const auto filled =
        static_cast<std::size_t>(std::lround(share * static_cast<double>(columns)));
    return Repeated("█", filled) + Repeated("░", columns - filled) + " " + setting.Allowed();
}

std::string Frequencies(const Bands& bands) {
    if (bands.empty())
        return {};
    return std::to_string(bands.size()) + " bands, " + ShortFrequency(bands.front().frequency) +
           " to " + ShortFrequency(bands.back().frequency) + " Hz";
}

constexpr std::size_t cCurveColumns = 16;

// Of bands that share a column of the curve, the one that is farthest from 0 dB.
Bands Thinned(const Bands& bands) {
    const std::size_t columns = std::min(bands.size(), cCurveColumns);
    Bands thinned(columns);
    for (std::size_t i = 0; i < bands.size(); ++i) {
        Band& shown = thinned[i * columns / bands.size()];
        if (std::abs(bands[i].gain) >= std::abs(shown.gain))
            shown = bands[i];
    }
    return thinned;
}

// A wide curve leaves no room for more.
std::string CurveText(const Bands& bands, bool isWide) {
    const bool hasRoom = isWide || bands.size() < cCurveColumns;
    return OneLineCurve(Thinned(bands)) + (hasRoom ? " " + GainsInWords(bands) : std::string());
}

std::vector<std::string> RowOf(const State& state, const TechnologyState& one, bool isWide) {
    const bool isInRange = one.value ? one.value->IsInRange() : AreInRange(state.bands);
    const std::string value =
        one.value ? one.value->Text(true) : CurveText(state.bands, isWide);
    const bool isEffective = one.isOn && state.isEnabled;
    std::vector<std::string> row = {one.technology->title, one.isOn ? "on" : "off",
                                    value + (isInRange ? "" : " !"),
                                    isEffective ? "yes" : "no"};
    if (isWide)
        row.insert(row.end() - 1,
                   one.value ? Position(*one.value, 20) : Frequencies(state.bands));
    return row;
}

std::string CustomNames(const State& state) {
    if (!state.names)
        return "unreadable; see 'kora4ctl lint'";
    std::vector<std::string> texts;
    for (std::uint32_t i = 0; i < state.names->size(); ++i) {
        if ((*state.names)[i])
            texts.push_back(ProfileName(i) + " " + Quoted(*(*state.names)[i]));
    }
    return texts.empty() ? "none" : Join(texts, ", ");
}

std::string EngineText(std::uint32_t mask) {
    if (mask == 0)
        return "none, or one without technologies";
    std::vector<std::string> numbers;
    for (unsigned bit = 0; bit < 32; ++bit) {
        if ((mask >> bit & 1u) != 0)
            numbers.push_back(std::to_string(bit + 1));
    }
    const char* const name = NameOfEngine(mask);
    return Hex(mask, 4) + ", " + (name ? name : "no known configuration") + ": technologies " +
           Join(numbers, " ");
}

std::string LevelsText(const State& state) {
    const std::string period = std::to_string(state.samplingPeriod) + " ms";
    if (state.levels == S_OK)
        return "published; read every " + period;
    if (state.levels == S_FALSE)
        return "none published; read every " + period;
    return "unreadable; see 'kora4ctl lint'";
}

std::string LibraryText(const State& state, std::size_t columns) {
    const std::string version = state.version + ", ";
    return version + CutFront(state.registration.path, columns - version.size());
}

void Print(const State& state, Output& output) {
    const std::size_t width = std::max(output.Width(), 60u);
    const bool isWide = output.IsTerminal() && width >= 110;
    constexpr std::size_t cMargin = 17;
    const auto line = [&](const char* title, const std::string& text) {
        output.Print(Padded(title, cMargin) +
                     (output.IsTerminal() ? Cut(text, width - cMargin - 1) : text));
    };
    const bool isDemo = IsDemoProfile(state.profile);
    line("profile",
         output.Paint(isDemo ? Style::eWarning : Style::eStrong, NameOfProfile(state)));
    line("demo mode", isDemo ? "on: values are built in and cannot be changed" : "off");
    line("master enable", output.Paint(state.isEnabled ? Style::eGood : Style::eWarning,
                                       state.isEnabled ? "on" : "off"));
    output.Print();
    std::vector<std::vector<std::string>> rows;
    for (const TechnologyState& one : state.technologies)
        rows.push_back(RowOf(state, one, isWide));
    std::vector<std::string> headings = {"technology", "switch", "value", "effective"};
    if (isWide)
        headings.insert(headings.end() - 1, "range");
    output.Table(headings, rows);
    if (!state.isEnabled)
        output.Print("The master enable is off: no technology is in effect.");
    const bool isAnyOutside = std::any_of(
        rows.begin(), rows.end(), [](const auto& row) { return row[2].ends_with(" !"); });
    if (isAnyOutside)
        output.Print("! outside what programs can set, but in effect");
    output.Print();
    line("custom profiles", CustomNames(state));
    line("engine", EngineText(state.engineMask));
    line("levels", LevelsText(state));
    if (state.unreadable)
        line("stored values", Counted(state.unreadable, "cannot be read", "cannot be read") +
                                  ": defaults are in effect; see 'kora4ctl lint'");
    line("library", output.IsTerminal() ? LibraryText(state, width - cMargin - 1)
                                        : LibraryText(state, std::string::npos));
    line("tool", "kora4ctl " KORA4_VERSION_TEXT);
}

ExitCode Status(const Context& context, const NoOptions&) {
    SettingAccess access(context);
    const State state = ReadState(access);
    if (context.output.json)
        context.output.PrintJson(DocumentOf(state));
    else
        Print(state, context.output);
    return ExitCode::eDone;
}

}  // namespace

void AddStatus(Context& context) {
    AddVerb(context.root, context, "status", "show everything at a glance", Status);
}

}  // namespace kora4::tools

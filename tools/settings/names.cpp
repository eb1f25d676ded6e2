// SPDX-License-Identifier: MIT
// The tables of words for profiles, technologies and curves, and their look-up.
#include "settings/names.h"

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "contract/technologies.h"

namespace kora4::tools {

const std::vector<ProfileWord>& Profiles() {
    static const std::vector<ProfileWord> profiles = {
        {"movie", cMovieProfile},          {"music", cMusicProfile},
        {"games", cGamesProfile},          {"p1", cFirstCustomProfile},
        {"p2", cFirstCustomProfile + 1},   {"p3", cFirstCustomProfile + 2},
        {"p4", cFirstCustomProfile + 3},   {"p5", cFirstCustomProfile + 4},
        {"p6", cFirstCustomProfile + 5},   {"demo-movie", cDemoMovieProfile},
        {"demo-music", cDemoMusicProfile}, {"demo-games", cDemoGamesProfile},
    };
    return profiles;
}

std::string ProfileName(std::uint32_t profile) {
    for (const ProfileWord& known : Profiles())
        if (known.number == profile)
            return known.word;
    return std::to_string(profile);
}

std::optional<std::uint32_t> FindProfile(std::string_view word) {
    const std::string lower = Lower(word);
    const std::optional<std::uint32_t> number = ReadNumber<std::uint32_t>(word);
    for (const ProfileWord& known : Profiles())
        if (lower == known.word || number == known.number)
            return known.number;
    return {};
}

std::uint32_t ParseProfile(std::string_view word) {
    if (const std::optional<std::uint32_t> profile = FindProfile(word))
        return *profile;
    throw Failure(ExitCode::eBadInput, "Unknown profile '" + std::string(word) + "'.",
                  Suggestion(word, ProfileNames()));
}

std::string CustomProfiles() {
    return ProfileName(cFirstCustomProfile) + " to " + ProfileName(cSelectableProfileBound - 1);
}

std::vector<std::string> ProfileNames() {
    std::vector<std::string> names;
    for (const ProfileWord& known : Profiles())
        names.emplace_back(known.word);
    return names;
}

const std::vector<TechnologyWord>& AllTechnologies() {
    static const std::vector<TechnologyWord> technologies = {
        {"volume-leveler", "volume leveler", Preset(eVolumeTech), 0},
        {"graphic-eq", "graphic equalizer", Preset(eStandardEQTech), 1},
        {"intelligent-eq", "intelligent equalizer", Preset(eDynamicEQTech), 2},
        {"dialog-enhancer", "dialog enhancer", Preset(eEnhancementTech), 3},
        {"headphone-virtualizer", "headphone virtualizer", Preset(eHeadphoneTech), 4},
        {"speaker-virtualizer", "speaker virtualizer", Preset(eVirtualSurroundTech), 5},
        {"next-gen-surround", "next-generation surround", Preset(eNGSurroundTech), {}},
        {"peak-limiter", "peak limiter", Global(ePeakLimiterTech), {}},
        {"audio-regulator", "audio regulator", Global(eAudioRegulatorTech), {}},
        {"audio-optimizer", "audio optimizer", Global(eAudioOptimizerTech), {}},
    };
    return technologies;
}

const TechnologyWord& WordOf(Technology technology) {
    for (const TechnologyWord& known : AllTechnologies())
        if (known.technology == technology)
            return known;
    throw Failure(ExitCode::eFailed, "There is no technology with the number " +
                                         std::to_string(technology.number) + ".");
}

const TechnologyWord* FindTechnology(std::string_view word) {
    const std::string lower = Lower(word);
    const std::optional<std::uint32_t> number = ReadNumber<std::uint32_t>(word);
    for (const TechnologyWord& known : AllTechnologies())
        if (lower == known.word || (number && number == known.apiNumber))
            return &known;
    return nullptr;
}

const std::vector<std::string>& CurveNames() {
    static const std::vector<std::string> names = {"balanced", "open", "focused",
                                                   "bright",   "rich", "warm"};
    return names;
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// The custom profiles by the library's methods, whose E_FAIL stands for several reasons: here
// each gets its own words.
#include "kora4ctl/access/profile_names.h"

#include <algorithm>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/held_store.h"
#include "kora4ctl/terminal/text_layout.h"
#include "settings/content.h"
#include "settings/names.h"

namespace kora4::tools {

namespace {

constexpr char cSeeTable[] = "List the custom profiles: kora4ctl profile list";

// A longer name could be stored but not read back.
std::wstring StorableName(const std::string& name) {
    std::wstring wide = Widen(name);
    if (wide.size() > KORA4_CUSTOM_NAME_MAX_LENGTH)
        throw BadInput("The name has " + std::to_string(wide.size()) +
                       " UTF-16 characters; at most " +
                       std::to_string(KORA4_CUSTOM_NAME_MAX_LENGTH) + " can be read back.");
    return wide;
}

// Understood, and nothing was changed.
[[noreturn]] void Refuse(const std::string& what, const std::string& next = cSeeTable) {
    throw Failure(ExitCode::eRefused, what, next);
}

// The names that are stored and can be read; none without a store.
ProfileTable StoredNames(const Context& context) {
    ProfileTable table;
    try {
        const HeldStore store(context, OpenMode::eRead);
        for (std::uint32_t profile = cFirstCustomProfile; IsCustomProfile(profile); ++profile)
            if (const std::optional<Value> name = Effective(NameValue(profile), *store))
                table[profile] = std::get<std::string>(*name);
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::eNotReady)
            throw;
    }
    return table;
}

template <typename IsMeant>
std::vector<std::string> ProfilesOfName(const ProfileTable& names, IsMeant isMeant) {
    std::vector<std::string> words;
    for (std::uint32_t profile = 0; profile < names.size(); ++profile)
        if (names[profile] && isMeant(*names[profile]))
            words.push_back(ProfileName(profile));
    return words;
}

std::optional<std::uint32_t> FindIn(const ProfileTable& names, const std::string& word) {
    const std::string lower = Lower(word);
    std::vector<std::string> found =
        ProfilesOfName(names, [&](const std::string& name) { return name == word; });
    if (found.empty())
        found = ProfilesOfName(names,
                               [&](const std::string& name) { return Lower(name) == lower; });
    if (word.empty() || found.empty())
        return {};
    if (found.size() > 1)
        throw BadInput("'" + word + "' is the name of " + Join(found, " and ") + ".",
                       "Use one of these words instead.");
    return FindProfile(found.front());
}

bool Exists(std::uint32_t profile, const Api& api) {
    return ReadProfileNames(api)[profile].has_value();
}

}  // namespace

std::optional<std::uint32_t> FindProfileNamed(const Context& context, const std::string& word) {
    const std::optional<std::uint32_t> profile = FindProfile(word);
    return profile ? profile : FindIn(StoredNames(context), word);
}

std::uint32_t ProfileNamed(const Context& context, const std::string& word) {
    if (const std::optional<std::uint32_t> profile = FindProfileNamed(context, word))
        return *profile;
    std::vector<std::string> words = ProfileNames();
    for (const std::optional<std::string>& name : StoredNames(context))
        if (name && !name->empty())
            words.push_back(*name);
    throw BadInput("Unknown profile '" + word + "'.", Suggestion(word, words));
}

void TellIfHidden(const Context& context, std::uint32_t profile, const std::string& name) {
    const std::optional<std::uint32_t> other = FindProfile(name);
    if (other && other != profile)
        context.output.Say(Quoted(name) + " always means the profile " + ProfileName(*other) +
                           "; call this one " + ProfileName(profile) + ".");
}

void CheckIsCustom(std::uint32_t profile) {
    if (!IsCustomProfile(profile))
        throw BadInput(ProfileName(profile) + " is not a custom profile.",
                       "Only " + CustomProfiles() +
                           " have names and can be created, renamed and deleted.");
}

ProfileTable ReadProfileNames(const Api& api) {
    const Result<kora4::ProfileTable> names = api.GetProfileTable();
    if (names.Code() == E_FAIL)
        throw Failure(
            ExitCode::eFailed,
            "The names of the custom profiles cannot be read: one of them is stored in a wrong "
            "form.",
            "Find it with 'kora4ctl lint', repair it with 'kora4ctl lint --fix'.");
    ProfileTable table;
    std::ranges::transform(Check(names, "Reading the table of profiles"), table.begin(),
                           NarrowIfAny);
    return table;
}

void CheckIsFree(std::uint32_t profile, const std::string& name, const Api& api) {
    CheckIsCustom(profile);
    StorableName(name);
    if (Exists(profile, api))
        Refuse(ProfileName(profile) + " already exists, as '" +
                   ReadProfileNames(api)[profile].value_or("") + "'; nothing was changed.",
               "Rename it, delete it first, or choose another of " + CustomProfiles() + ".");
}

void CreateProfile(std::uint32_t profile, const std::string& name, Api& api) {
    CheckIsCustom(profile);
    const HRESULT hr =
        api.CreateCustomProfile(static_cast<LONG>(profile), StorableName(name)).Code();
    if (hr == E_FAIL)
        CheckIsFree(profile, name, api);
    Check(hr, "Creating " + ProfileName(profile));
}

void RenameProfile(std::uint32_t profile, const std::string& name, Api& api) {
    CheckIsCustom(profile);
    const HRESULT hr =
        api.SetCustomProfileName(static_cast<LONG>(profile), StorableName(name)).Code();
    if (hr == E_FAIL && !Exists(profile, api))
        Refuse(ProfileName(profile) + " does not exist; nothing was changed.",
               "Create it: kora4ctl profile create " + ProfileName(profile) + " NAME");
    Check(hr, "Renaming " + ProfileName(profile));
}

void DeleteProfile(std::uint32_t profile, Api& api) {
    CheckIsCustom(profile);
    const HRESULT hr = api.DeleteCustomProfile(static_cast<LONG>(profile)).Code();
    if (hr == S_FALSE)
        Refuse(ProfileName(profile) + " does not exist; nothing was changed.");
    if (hr == E_FAIL && api.GetActiveProfile().ValueOr(-1) == static_cast<LONG>(profile))
        Refuse(ProfileName(profile) + " is the active profile and cannot be deleted.",
               "Select another first: kora4ctl profile use music");
    Check(hr, "Deleting " + ProfileName(profile));
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// The custom profiles by the library's methods, whose E_FAIL stands for several reasons: here
// each gets its own words.
#include "kora4ctl/access/profile_names.h"

#include <algorithm>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
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

bool Exists(std::uint32_t profile, const Api& api) {
    return ReadProfileNames(api)[profile].has_value();
}

}  // namespace

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

void CreateProfile(std::uint32_t profile, const std::string& name, Api& api) {
    CheckIsCustom(profile);
    const HRESULT hr =
        api.CreateCustomProfile(static_cast<LONG>(profile), StorableName(name)).Code();
    if (hr == E_FAIL && Exists(profile, api))
        Refuse(
            ProfileName(profile) + " already exists, as '" +
                ReadProfileNames(api)[profile].value_or("") + "'; nothing was changed.",
            "Rename it, delete it first, or choose another one of " + CustomProfiles() + ".");
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

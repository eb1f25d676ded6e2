// SPDX-License-Identifier: MIT
// Checks of what is stored.
#include "kora4ctl/doctor/checks.h"

#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/explain/trace_log.h"
#include "kora4ctl/explain/trace_word.h"
#include "settings/names.h"
#include "settings/schema.h"
#include "settings/transaction.h"

namespace kora4::tools {
namespace {

constexpr PropertyKey cActiveProfile = pkey::Setting(pkey::cActivePresetPid);
constexpr PropertyKey cSavedProfile = pkey::Setting(pkey::cSavedProfilePid);

// What other checks tell about in more words.
bool IsOfAnotherCheck(const Finding& finding) {
    const std::optional<PropertyKey> key = ParseValueName(finding.valueName);
    const SchemaValue* const value = key ? FindInSchema(finding.keySet, *key) : nullptr;
    if (!value)
        return false;
    return value->role == Role::eName || value->role == Role::eVisualization ||
           value->role == Role::eEngineMask ||
           (value->role == Role::eActiveProfile && finding.severity != Severity::eError);
}

bool Exists(StoreAccess& store, std::uint32_t customProfile) {
    const SchemaValue name = NameValue(customProfile);
    const std::optional<StoredValue> stored = store.Read(name.keySet, name.key);
    return stored && stored->AsText();
}

void LookAtDemo(StoreAccess& store, std::uint32_t demo, CheckResult& result) {
    result.Warning(
        "The demo profile " + ProfileName(demo) +
            " is active: other profiles cannot be selected, and changed values are "
            "not stored. The program that entered it is unknown.",
        "Leave the demo in the program that shows it; if that is gone, run: kora4ctl "
        "demo force-leave");
    const std::optional<StoredValue> saved = store.Read(eKeySetStatic, cSavedProfile);
    const std::optional<std::uint32_t> number = saved ? saved->AsDword() : std::nullopt;
    if (!number || !IsSelectableProfile(*number))
        result.Note("The profile from before the demo is unknown: leaving the demo makes " +
                    ProfileName(cMovieProfile) + " active.");
}

}  // namespace

// What was put back, by name.
std::string Restored(const Recovered& recovered) {
    constexpr std::size_t cMost = 12;
    std::vector<std::string> names = recovered.restored;
    if (names.empty())
        return {};
    if (names.size() > cMost) {
        names.resize(cMost);
        names.push_back("...");
    }
    return " (" + Join(names, ", ") + ")";
}

CheckResult CheckLoad(Examination& examination) {
    const OpenMode mode = examination.isDryRun ? OpenMode::eRead : OpenMode::eReadWrite;
    const JournalFile journal(DefaultJournalPath());
    const OpenedStore opened(examination, mode);
    const Recovered recovered = examination.isDryRun ? Inspect(*opened, journal)
                                                     : Recover(*opened, *opened.lock, journal);
    CheckResult result;
    result.summary = "none was interrupted";
    switch (recovered.outcome) {
        case Recovery::eNothing:
            break;
        case Recovery::eUnreadable:
            result.Warning(recovered.InWords(),
                           "Find out who created it, and remove it: " +
                               (examination.isDryRun ? journal.Path() : recovered.movedTo));
            break;
        default:
            if (examination.isDryRun)
                result.Warning(recovered.InWords(), "kora4ctl doctor");
            else
                result.Note(recovered.InWords() + Restored(recovered),
                            recovered.notRestored.empty()
                                ? "No action needed; already repaired."
                                : "Check them, as an administrator: kora4ctl list");
    }
    return result;
}

CheckResult CheckValues(Examination& examination) {
    std::vector<Finding> findings;
    {
        const OpenedStore opened(examination);
        findings = Lint(*opened);
    }
    std::size_t counts[3] = {};
    for (const Finding& finding : findings) {
        if (!IsOfAnotherCheck(finding))
            ++counts[static_cast<std::size_t>(finding.severity)];
    }
    const auto [notes, warnings, errors] = counts;
    CheckResult result;
    result.summary = "all readable and in range";
    if (errors)
        result.Error(Counted(errors, "value cannot be read: its default is in effect.",
                             "values cannot be read: their defaults are in effect."),
                     "List them: kora4ctl lint; repair them: kora4ctl lint --fix");
    if (warnings)
        result.Warning(
            Counted(warnings, "value is", "values are") + " outside what a client can set.",
            "List them: kora4ctl lint; repair them: kora4ctl lint --fix");
    if (notes)
        result.Note(Counted(notes, "value is", "values are") + " worth checking.",
                    "List them: kora4ctl lint");
    return result;
}

CheckResult CheckProfile(Examination& examination) {
    const OpenedStore opened(examination);
    const std::uint32_t profile = opened->Number(eKeySetDynamic, cActiveProfile, cMovieProfile);
    constexpr char useAnother[] = "Select another: kora4ctl profile use movie";
    CheckResult result;
    result.summary = ProfileName(profile) + " is active";
    if (IsDemoProfile(profile))
        LookAtDemo(*opened, profile, result);
    else if (!IsAllowableProfile(profile))
        result.Warning(
            "The active profile is " + std::to_string(profile) +
                ", which is not a profile: the values of movie are in effect, and every "
                "technology is on.",
            useAnother);
    else if (IsCustomProfile(profile) && !Exists(*opened, profile))
        result.Warning(
            "The custom profile " + ProfileName(profile) + " is active but does not exist.",
            useAnother);
    return result;
}

CheckResult CheckCustomProfiles(Examination& examination) {
    const OpenedStore opened(examination);
    CheckResult result;
    std::size_t count = 0;
    for (std::uint32_t profile = cFirstCustomProfile; IsCustomProfile(profile); ++profile) {
        const SchemaValue name = NameValue(profile);
        const std::optional<StoredValue> stored = opened->Read(name.keySet, name.key);
        if (!stored)
            continue;
        ++count;
        if (!stored->AsText())
            result.Error("The name of " + ProfileName(profile) + " cannot be read (" +
                             Describe(*stored, 20) +
                             "): no client can list the profiles or use this one.",
                         "Delete the profile: kora4ctl profile delete " + ProfileName(profile));
    }
    result.summary =
        count == 0 ? "there are none" : Counted(count, "custom profile", "custom profiles");
    return result;
}

CheckResult CheckTrace(Examination& examination) {
    const OpenedStore opened(examination);
    const TraceWord word = ReadTraceWord(*opened);
    constexpr char off[] = "Trace messages only: kora4ctl trace off";
    CheckResult result;
    result.summary = word.InWords();
    if (word.IsSilent()) {
        result.Note("The trace's master switch is off: not even errors are traced.", off);
        return result;
    }
    if (word.WritesFiles()) {
        result.Warning(
            "Log files are on: every line opens, writes and closes two files "
            "in every program that uses the library, and the files grow without limit.",
            "When you are done: kora4ctl trace off");
        if (!HasLogFolder())
            result.Warning(
                "The log folder, " + LogFolder() + ", does not exist: nothing is written.",
                "Create it, or run: kora4ctl trace on --files");
    } else if (word.Flags() & ~TraceWord().Flags() & ~word.UnknownBits()) {
        result.Note("More than messages are traced: " + word.InWords() + ".", off);
    }
    if (word.UnknownBits())
        result.Warning("The trace word " + Hex(word.Flags()) +
                           " has unknown bits: " + Hex(word.UnknownBits(), 0) + ".",
                       off);
    return result;
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// The rules that a stored value is held against, and how each breach is repaired.
#include "settings/lint.h"

#include <algorithm>
#include <bit>
#include <map>

#include "base/shown_text.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/field_ids.h"
#include "contract/patch_records.h"
#include "contract/profiles.h"
#include "contract/vis_layout.h"
#include "settings/band_rule.h"
#include "settings/content.h"
#include "settings/setting_values.h"

namespace kora4::tools {
namespace {

// What is wrong with one value.
struct Problem {
    Severity severity = Severity::eNote;
    std::string text;
    // By default the value is deleted, and the built-in default is in effect.
    std::optional<StoredValue> repaired;
    bool isRepaired = true;
};

using Verdict = std::optional<Problem>;

// A built-in default passes, whatever the limits of the API are.
bool IsDefault(const SchemaValue& value, const StoredValue& stored) {
    const std::optional<Value> content = Decode(value, stored);
    for (const StoredValue& builtIn : value.Defaults())
        if (stored == builtIn || (content && content == Decode(value, builtIn)))
            return true;
    return false;
}

Problem Error(std::string text) {
    return {Severity::eError, std::move(text), {}, true};
}

Problem Warning(std::string text) {
    return {Severity::eWarning, std::move(text), {}, true};
}

std::string WhyUnreadable(const SchemaValue& value, const StoredValue& stored) {
    if (value.kind == Kind::eCurveIndex && stored.AsDword())
        return "curves are numbered 0 to " + std::to_string(eNumberIEQPatches - 1);
    if (TypeOf(value.kind) == cDwordType)
        return "expected a number of 4 bytes, got " + std::to_string(stored.bytes.size());
    if (!stored.AsText())
        return "a text of " + std::to_string(stored.bytes.size()) +
               " bytes is too long; readers accept " + std::to_string(cMaxTextBytes);
    switch (value.kind) {
        case Kind::eFloat:
            return "the text is not a number";
        case Kind::eNumericArray:
            return "the text is not an array of numbers";
        default:
            return "the text is not an array of flags";
    }
}

bool HasName(std::uint32_t customProfile, StoreAccess& store) {
    const SchemaValue name = NameValue(customProfile);
    const std::optional<StoredValue> stored = store.Read(name.keySet, name.key);
    return stored && stored->AsText();
}

Verdict CheckProfile(const SchemaValue& value, std::uint32_t profile, StoreAccess& store) {
    const bool isSaved = value.role == Role::eSavedDemoState;
    if (!isSaved && IsCustomProfile(profile) && !HasName(profile, store))
        return Warning("the profile " + ProfileName(profile) + " does not exist");
    const bool isRight = isSaved ? IsSelectableProfile(profile) : IsAllowableProfile(profile);
    if (isRight)
        return {};
    return Warning(isSaved ? "not the number of a profile; leaving the demo makes movie active"
                           : "not the number of a profile");
}

Verdict CheckMask(std::uint32_t mask) {
    if ((mask & ~cEngineTechnologies) == 0)
        return {};
    return Problem{Severity::eNote,
                   "bits above " + std::to_string(std::bit_width(cEngineTechnologies) - 1) +
                       " have no meaning: " + Hex(mask),
                   {},
                   false};
}

Verdict CheckLevels(const Bytes& blob) {
    if (blob.size() < vis::cHeadSize)
        return Warning("expected at least " + std::to_string(vis::cHeadSize) +
                       " bytes of levels, got " + std::to_string(blob.size()));
    const std::uint32_t stated = vis::StatedAPOs(blob.data(), blob.size());
    const std::uint32_t records = vis::CountAPOs(blob.data(), blob.size());
    if (records == stated)
        return {};
    return Warning("the levels announce " + std::to_string(stated) + " records but contain " +
                   std::to_string(records));
}

Verdict CheckBandFrequencies(const Value& content) {
    const Bands bands = BandsOf(std::get<std::vector<float>>(content));
    for (std::size_t i = 0; i < bands.size(); ++i)
        if (std::string problem = FrequencyProblem(bands, i); !problem.empty())
            return Warning(std::move(problem));
    return {};
}

// One for each frequency: readers drop others, and take missing ones as 0.
Verdict CheckGains(const SchemaValue& value, const Value& content, StoreAccess& store) {
    const std::vector<float> frequencies =
        GraphicEqArray(pkey::cStandardEQFreqPid, value.profile.value(), store);
    std::vector<float> gains = std::get<std::vector<float>>(content);
    if (CheckBandFrequencies(frequencies))
        return Warning("the frequencies of their bands are not valid");
    const std::string problem = CountProblem(frequencies.size(), gains.size(), "gains");
    if (problem.empty())
        return {};
    gains.resize(frequencies.size());
    Problem found = Warning(problem);
    found.repaired = Encode(value, gains);
    return found;
}

Verdict CheckContent(const SchemaValue& value, const Value& content, StoreAccess& store) {
    if (const auto* const number = std::get_if<std::uint32_t>(&content)) {
        if (value.role == Role::eActiveProfile || value.role == Role::eSavedDemoState)
            return CheckProfile(value, *number, store);
        if (value.role == Role::eEngineMask)
            return CheckMask(*number);
    }
    if (value.role == Role::eVisualization)
        return CheckLevels(std::get<Bytes>(content));
    const Setting* const setting = value.role == Role::eField ? SettingOf(value) : nullptr;
    if (setting && !IsInRange(*setting, content))
        return Warning("out of range, " + setting->Allowed());
    if (setting && setting->unit == "Hz")
        return CheckBandFrequencies(content);
    if (setting && setting->methods == ApiMethods::eGains)
        return CheckGains(value, content, store);
    return {};
}

// Finds texts that readers accept although the terminator is missing or not at the end.
Verdict CheckTermination(const StoredValue& stored) {
    if (stored.type != cTextType)
        return {};
    const StoredValue proper = StoredValue::FromText(*stored.AsText());
    if (proper == stored)
        return {};
    Problem problem = Warning(stored.bytes.size() < proper.bytes.size()
                                  ? "the text has no terminator"
                                  : "the text continues after its terminator");
    // One more character may be more than readers take.
    if (proper.AsText())
        problem.repaired = proper;
    return problem;
}

Verdict CheckFactory(const SchemaValue& value, const StoredValue& stored) {
    if (!IsChangedFactoryValue(value, stored))
        return {};
    return Problem{Severity::eNote,
                   "the factory value is not the built-in one, " + Describe(*value.Default()),
                   {},
                   false};
}

Verdict Check(const SchemaValue& value, const StoredValue& stored, StoreAccess& store) {
    const std::uint32_t type = TypeOf(value.kind);
    if (stored.unread)
        return Error("it has " + std::to_string(stored.unread) + " bytes; more than " +
                     std::to_string(cMaxReadBytes) + " are never read");
    if (stored.type != type)
        return Error("expected a " + TypeName(type) + ", got a " + TypeName(stored.type));
    const std::optional<Value> content = Decode(value, stored);
    if (!content)
        return Error(WhyUnreadable(value, stored));
    if (!IsDefault(value, stored))
        if (Verdict verdict = CheckContent(value, *content, store))
            return verdict;
    if (Verdict verdict = CheckTermination(stored))
        return verdict;
    return CheckFactory(value, stored);
}

std::string RepairOf(const SchemaValue& value, const Problem& problem) {
    if (!problem.isRepaired)
        return {};
    if (problem.repaired)
        return "stored again with a proper terminator";
    const std::optional<StoredValue> builtIn = value.Default();
    return builtIn ? "deleted, so that the default is in effect: " + Describe(*builtIn)
                   : "deleted";
}

Finding FindingOf(const SchemaValue& value, const StoredValue& stored, const Problem& problem) {
    Finding finding;
    finding.severity = problem.severity;
    finding.keySet = value.keySet;
    finding.valueName = value.Name();
    finding.name = NameOf(value);
    finding.profile = value.profile;
    finding.stored = Describe(stored);
    finding.problem = problem.text;
    finding.repair = RepairOf(value, problem);
    if (problem.isRepaired)
        finding.fix = PlannedValue{value, problem.repaired};
    return finding;
}

// A store as it will be after a plan.
class AfterPlan : public StoreAccess {
  public:
    AfterPlan(const Plan& plan, StoreAccess& store) : m_store(store) {
        for (const PlannedValue& planned : plan.values)
            m_planned[{planned.value.keySet, planned.value.Name()}] = &planned.wanted;
    }

    std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) override {
        const auto found = m_planned.find({keySet, ValueName(key)});
        return found == m_planned.end() ? m_store.Read(keySet, key) : *found->second;
    }
    // Nothing checks by writing.
    void Write(KORA4KeySet, const PropertyKey&, const StoredValue&) override {}
    void Delete(KORA4KeySet, const PropertyKey&) override {}
    std::vector<std::string> ValueNames(KORA4KeySet keySet) override {
        return m_store.ValueNames(keySet);
    }

  private:
    StoreAccess& m_store;
    std::map<std::pair<KORA4KeySet, std::string>, const std::optional<StoredValue>*> m_planned;
};

void AddUnknown(std::vector<Finding>& findings, StoreAccess& store, KORA4KeySet keySet) {
    for (const std::string& name : store.ValueNames(keySet)) {
        const std::optional<PropertyKey> key = ParseValueName(name);
        if (key && FindInSchema(keySet, *key))
            continue;
        Finding finding;
        finding.keySet = keySet;
        finding.valueName = name;
        finding.problem = "unknown value name";
        if (key)
            if (const std::optional<StoredValue> stored = store.Read(keySet, *key))
                finding.stored = Describe(*stored);
        findings.push_back(std::move(finding));
    }
}

}  // namespace

const char* SeverityName(Severity severity) {
    static constexpr const char* cNames[] = {"note", "warning", "error"};
    return cNames[static_cast<std::size_t>(severity)];
}

std::string Finding::Words() const {
    const std::string value = valueName.empty() ? "the unnamed value" : ShownText(valueName);
    const std::string place =
        name.empty() ? value + " in the " + KeySetName(keySet) + " keys"
                     : (profile ? ProfileName(*profile) + ": " : std::string()) + name;
    return place + ": " + problem + (stored.empty() ? "" : " (stored: " + stored + ")");
}

std::string Finding::Line() const {
    return std::string(SeverityName(severity)) + ": " + Words();
}

Json Finding::Document() const {
    return {{"severity", SeverityName(severity)},
            {"name", OrNull(name)},
            {"profile", OrNull(profile ? ProfileName(*profile) : std::string())},
            {"keys", KeySetName(keySet)},
            {"value", valueName},
            {"stored", OrNull(stored)},
            {"problem", problem},
            {"repair", OrNull(repair)}};
}

bool IsChangedFactoryValue(const SchemaValue& value, const StoredValue& stored) {
    if (!value.profile || !IsDemoProfile(*value.profile))
        return false;
    const std::optional<Value> content = Decode(value, stored);
    return content && content != Decode(value, *value.Default());
}

std::vector<Finding> Lint(StoreAccess& store) {
    std::vector<Finding> findings;
    for (const SchemaValue& value : Schema())
        if (const std::optional<StoredValue> stored = store.Read(value.keySet, value.key))
            if (Verdict problem = Check(value, *stored, store))
                findings.push_back(FindingOf(value, *stored, *problem));
    for (const KORA4KeySet keySet : {eKeySetStatic, eKeySetDynamic, eKeySetApp})
        AddUnknown(findings, store, keySet);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
        return a.severity > b.severity;
    });
    return findings;
}

std::vector<Finding> LintPlan(const Plan& plan, StoreAccess& store) {
    AfterPlan after(plan, store);
    std::vector<Finding> findings;
    for (const auto& [value, wanted] : plan.values) {
        if (!wanted)
            continue;
        Verdict problem = Check(value, *wanted, after);
        // Only the library enters a demo so that it can be left again.
        if (!problem && value.role == Role::eActiveProfile &&
            IsDemoProfile(wanted->AsDword().value_or(cMovieProfile)))
            problem = Warning("demo profiles are entered with 'kora4ctl demo enter'");
        if (problem && problem->severity != Severity::eNote)
            findings.push_back(FindingOf(value, *wanted, *problem));
    }
    return findings;
}

bool HasFindings(const std::vector<Finding>& findings) {
    return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.severity != Severity::eNote;
    });
}

Plan FixPlan(const std::vector<Finding>& findings) {
    Plan plan;
    plan.scope = Scope::eAll;
    for (const Finding& finding : findings)
        if (finding.fix)
            plan.values.push_back(*finding.fix);
    return plan;
}

}  // namespace kora4::tools

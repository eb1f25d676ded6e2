// SPDX-License-Identifier: MIT
// Between the bits of the flag word, the names of categories and the stored value.
#include "kora4ctl/explain/trace_word.h"

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/general_settings.h"
#include "contract/messages/trace_categories.h"

namespace kora4::tools {
namespace {

constexpr const contract::GeneralSetting& cTraceFlags =
    *contract::FindGeneralSetting(pkey::Setting(pkey::cTraceFlagsPid));

}  // namespace

std::vector<std::string> NamesOfCategories(std::uint32_t bits) {
    std::vector<std::string> names;
    for (const contract::TraceBits& category : contract::cTraceCategories)
        if (category.bits & bits)
            names.emplace_back(category.name);
    return names;
}

TraceWord TraceWord::Usual() {
    return TraceWord(trace::eMessages | trace::eResults | trace::eApiEntryExit);
}

TraceWord TraceWord::Silent() {
    return TraceWord(trace::eMasterSwitchOff);
}

TraceWord TraceWord::Of(const std::vector<std::string>& categories) {
    TraceWord word(0);
    for (const std::string& name : categories) {
        const contract::TraceBits* const known = contract::FindTraceCategory(Lower(name));
        if (Lower(name) == cAllCategories)
            word.m_flags |= contract::AllTraceCategories();
        else if (known)
            word.m_flags |= known->bits;
        else
            throw BadInput("Unknown trace category '" + name + "'. " +
                               Suggestion(name, TraceCategoryNames()),
                           "For the list: kora4ctl trace on --help");
    }
    return word;
}

std::uint32_t TraceWord::UnknownBits() const {
    return m_flags &
           ~(contract::AllTraceCategories() | trace::eLogFiles | trace::eMasterSwitch);
}

std::string TraceWord::InWords() const {
    const std::vector<std::string> names = CategoryNames();
    std::string words = names.empty() ? "nothing" : Join(names, ", ");
    if (WritesFiles())
        words += "; into log files";
    if (UnknownBits())
        words += "; unknown bits " + Hex(UnknownBits(), 0);
    if (IsSilent())
        words = "nothing: the master switch is off";
    return words;
}

TraceWord ReadTraceWord(StoreAccess& store) {
    return TraceWord(
        store.Number(cTraceFlags.keySet, cTraceFlags.key, cTraceFlags.defaultNumber));
}

void WriteTraceWord(StoreAccess& store, TraceWord word) {
    store.WriteNumber(cTraceFlags.keySet, cTraceFlags.key, word.Flags());
}

std::vector<std::string> TraceCategoryNames() {
    std::vector<std::string> names = NamesOfCategories(~0u);
    names.emplace_back(cAllCategories);
    return names;
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// Each platform call of each method fails in turn. Which results a method may then give is
// what docs/api.md says of it.
#include <algorithm>
#include <filesystem>
#include <string_view>

#include "contract/messages/trace_files.h"
#include "contract/trace_flags.h"
#include "faults/fault_matrix.h"
#include "kora4api_codes.h"
#include "windows/cases.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;
using Results = std::vector<HRESULT>;

struct MethodRule {
    std::string_view name;  // of a case, or how it begins
    // What it may give, besides the result of a call without faults, when the platform fails.
    // A getter has its defaults, so that none of it is a failure.
    Results allowed;
    // What the same call may give the next time, besides that result: a call that failed may
    // have done its work all the same.
    Results again;
};

const MethodRule& RuleOf(std::string_view name) {
    // The first that fits.
    static const MethodRule rules[] = {
        {"GetProfileTable", {E_FAIL, E_OUTOFMEMORY}, {}},
        // Without its size the blob is absent.
        {"GetVisualizationData", {E_FAIL, E_OUTOFMEMORY, S_FALSE}, {}},
        {"GetVeltoProfileEditorCommand", {E_OUTOFMEMORY}, {}},
        {"GetVeltoProfileSelectorCommand", {E_OUTOFMEMORY}, {}},
        {"GetVeltoDemoAppCommand", {E_OUTOFMEMORY}, {}},
        {"GetVelto", {}, {}},
        {"Get", {}, {}},
        {"RegisterChangeNotifications", {}, {}},
        {"UnregisterChangeNotifications", {}, {}},
        {"SetActiveProfile to a custom profile", {E_FAIL, KORA4_S_NO_SUCH_CUSTOM_PROFILE}, {}},
        // Without a profile that can be read it is in no demo. Once it has restored it has
        // none to leave.
        {"RevertFromDemoMode",
         {E_FAIL, KORA4_S_NOT_IN_DEMO_PROFILE},
         {KORA4_S_DEMO_MODE_ACTIVE, KORA4_S_NOT_IN_DEMO_PROFILE}},
        {"CreateCustomProfile", {E_FAIL, E_OUTOFMEMORY}, {E_FAIL}},
        {"DeleteCustomProfile", {E_FAIL, S_FALSE}, {S_FALSE}},
        {"", {E_FAIL}, {}},
    };
    return *std::ranges::find_if(
        rules, [&](const MethodRule& rule) { return name.starts_with(rule.name); });
}

class FaultsOfMethods : public FaultMatrix {
  protected:
    void RunCase(bench::Scene& scene, const bench::Case& method) {
        const MethodRule& rule = RuleOf(method.name);
        Run({.name = method.name,
             .prepare =
                 [&] {
                     if (method.prepare)
                         method.prepare(scene);
                     ++scene.round;
                 },
             .call = [&] { return method.call(scene); },
             .expected = method.expected,
             .allowed = rule.allowed,
             .afterFault =
                 [&](const Fault&, HRESULT) {
                     const HRESULT hr = method.call(scene);
                     EXPECT_TRUE(hr == method.expected ||
                                 std::ranges::count(rule.again, hr) != 0)
                         << "the same call again: " << std::hex << hr;
                     ExpectUsable(*scene.pApi);
                 }});
    }

    Told m_told;
};

TEST_F(FaultsOfMethods, LeaveTheObjectUsable) {
    const ComPtr<IVeltoKORA4API> spApi = Initialized();
    bench::Scene scene{spApi.Get(), &m_told, m_place, bench::Bare(m_place)};
    for (const bench::Case& method : bench::Cases())
        if (!HasFailure())
            RunCase(scene, method);
    EXPECT_EQ(S_OK, spApi->RegisterChangeNotifications(&m_told));
    ExpectToldOfTheNextChange(m_told);
    EXPECT_EQ(S_OK, spApi->UnregisterChangeNotifications());
    EXPECT_EQ(0, m_told.References());
}

// A trace that cannot be written is no failure of the method.
TEST_F(FaultsOfMethods, TracedToFilesTheyCostLinesOnly) {
    const std::filesystem::path folder = trace::cLogFolder;
    std::filesystem::create_directories(folder);
    Put(m_place.traceWord, trace::eMessages | trace::eLogFiles);
    const ComPtr<IVeltoKORA4API> spApi = Initialized();
    LONG profile = -1;
    Run({.name = "GetActiveProfile with log files",
         .prepare = [] {},
         .call = [&] { return spApi->GetActiveProfile(&profile); },
         .afterFault = [&](const Fault&, HRESULT) { ExpectUsable(*spApi.Get()); }});
    Put(m_place.traceWord, 0);
    Initialized();
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace kora4::test

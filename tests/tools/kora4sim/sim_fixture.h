// SPDX-License-Identifier: MIT
// What the tests of kora4sim share: a store of their own, a client of the library, and an
// engine that runs beside them.
#ifndef KORA4_TESTS_TOOLS_KORA4SIM_SIM_FIXTURE_H
#define KORA4_TESTS_TOOLS_KORA4SIM_SIM_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "kora4api.h"
#include "support/com_client.h"
#include "support/raw_store.h"
#include "tools/support/json_shape.h"
#include "tools/support/tool_process.h"

namespace kora4::test {

using Microsoft::WRL::ComPtr;
using Texts = std::vector<std::string>;

// What a client of the library reads of the levels.
struct ShownLevels {
    HRESULT result = E_FAIL;
    float gains[KORA4_VISUALIZATION_BANDS] = {};
    float excitations[KORA4_VISUALIZATION_BANDS] = {};

    bool IsFloor() const {
        return std::all_of(std::begin(gains), std::end(gains),
                           [](float level) { return level == KORA4_SILENT_GAIN; }) &&
               std::all_of(std::begin(excitations), std::end(excitations),
                           [](float level) { return level == KORA4_SILENT_EXCITATION; });
    }
    std::size_t LoudestBand() const {
        return static_cast<std::size_t>(
            std::max_element(std::begin(excitations), std::end(excitations)) -
            std::begin(excitations));
    }
};

// An engine that runs until it is told to end, and tells what it sees as JSON.
class RunningSim {
  public:
    // Past its start when the constructor returns.
    explicit RunningSim(Texts arguments = {})
        : m_tool("kora4sim", WithJson(std::move(arguments))), m_ready(Next("ready")) {}

    // The next event of that name; others are skipped.
    Json Next(const std::string& event) {
        const std::string line = m_tool.LineLike([&](const std::string& candidate) {
            return candidate.find("\"event\":\"" + event + "\"") != std::string::npos;
        });
        return ParsedJson(line);
    }
    // The next event, whatever it is.
    Json Next() { return ParsedJson(m_tool.NextLine()); }
    const Json& Ready() const { return m_ready; }
    RunningTool& Tool() { return m_tool; }
    // Ends it as a person does, and gives the summary.
    Json End() {
        m_tool.PressCtrlC();
        const Json summary = Next("summary");
        EXPECT_EQ(0u, m_tool.WaitForEnd().exitCode);
        return summary;
    }

  private:
    static Texts WithJson(Texts arguments) {
        arguments.push_back("--json");
        return arguments;
    }

    RunningTool m_tool;
    Json m_ready;
};

// kora4sim on an empty store, with a client of the library beside it.
class SimTest : public testing::Test {
  protected:
    SimTest() : m_apartment(COINIT_APARTMENTTHREADED) {}

    void SetUp() override { ASSERT_TRUE(m_library.IsLoaded()) << "QXA64T.dll"; }

    // A client that has just been started.
    ComPtr<IVeltoKORA4API> Client() {
        ComPtr<IVeltoKORA4API> api = m_library.Create();
        EXPECT_TRUE(api);
        EXPECT_EQ(S_OK, api->Initialize());
        return api;
    }

    static ShownLevels Shown(IVeltoKORA4API* api) {
        ShownLevels levels;
        levels.result = api->GetVisualizationData(levels.gains, levels.excitations);
        return levels;
    }
    // Whether a display sees levels of that sort within a bounded time.
    static bool ShowsSoon(IVeltoKORA4API* api,
                          const std::function<bool(const ShownLevels&)>& isWanted) {
        return PumpUntil([&] { return isWanted(Shown(api)); });
    }

    static void SetValue(IVeltoKORA4API* api, KORA4APITechnology technology, DWORD amount) {
        KORA4PatchValueUnion value = {};
        value.m_technology = technology;
        value.m_values.m_volumeSlider = amount;
        EXPECT_EQ(S_OK, api->SetSimplePatchValue(&value));
    }
    static KORA4PatchValueUnion GetValue(IVeltoKORA4API* api, KORA4APITechnology technology) {
        KORA4PatchValueUnion value = {};
        value.m_technology = technology;
        EXPECT_EQ(S_OK, api->GetSimplePatchValue(&value));
        return value;
    }

    RawStore m_store;
    Apartment m_apartment;
    ApiLibrary m_library;
};

// The one JSON line of that event in what a tool has printed.
inline Json EventOf(const ToolResult& result, const std::string& event) {
    for (const std::string& line : result.Lines()) {
        if (line.find("\"event\":\"" + event + "\"") != std::string::npos)
            return ParsedJson(line);
    }
    ADD_FAILURE() << "no event " << event << "\n" << result;
    return {};
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_KORA4SIM_SIM_FIXTURE_H

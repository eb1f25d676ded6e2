// SPDX-License-Identifier: MIT
// Own calls and the writes of another process in random order: each foreign change that
// stands is told once, own changes are not.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "multiprocess/api_commands.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"

namespace kora4::test {
namespace {

using Lines = std::vector<std::string>;

constexpr char cBarrier[] = "OnCustomProfileTableChange()";
constexpr std::size_t cTechnologies = 6;
constexpr std::size_t cProfiles = 3;

// The API's numbers in the order in which a pass goes through them.
constexpr KORA4APITechnology cPassOrder[] = {eVolumeLeveler, eDialogEnhancer, eIntelligentEQ,
                                             eGraphicEQ,     eVirtualizerHP,  eVirtualizerSpkr};

// The store, and what one client believes of it. An own write moves the belief only where
// that was right before.
class Model {
  public:
    // Each profile with every flag on and every value 0.
    Model() {
        for (auto& flags : m_flags)
            flags.fill(true);
        m_knownFlags.fill(true);
    }

    void SetProfile(std::size_t profile, bool own) {
        const std::size_t before = std::exchange(m_profile, profile);
        if (!own || before != m_knownProfile || before == profile)
            return;
        m_knownProfile = profile;
        m_knownFlags = m_flags[profile];
    }
    void SetEnable(bool enable, bool own) { Set(m_enable, m_knownEnable, enable, own); }
    void SetFlag(std::size_t technology, std::size_t profile, bool flag, bool own) {
        Set(m_flags[profile][technology], m_knownFlags[technology], flag,
            own && profile == m_knownProfile);
    }
    void SetValue(std::size_t technology, std::size_t profile, std::uint32_t value, bool own) {
        m_values[profile][technology] = value;
        Set(m_triggers[technology], m_knownTriggers[technology], m_triggers[technology] + 1,
            own);
    }
    std::size_t Profile() const { return m_profile; }

    // What the next pass tells, the barrier at its end included.
    Lines Pass() {
        Lines told;
        if (std::exchange(m_knownEnable, m_enable) != m_enable)
            told.push_back(m_enable ? "OnEnableStateChange(1)" : "OnEnableStateChange(0)");
        const bool switched = std::exchange(m_knownProfile, m_profile) != m_profile;
        if (switched)
            told.push_back("OnActiveProfileChange(" + std::to_string(m_profile) + ")");
        for (const KORA4APITechnology technology : cPassOrder) {
            const bool flag = m_flags[m_profile][technology];
            if (m_knownFlags[technology] != flag && !switched)
                told.push_back(ToldFlag(technology, flag));
            if (m_knownTriggers[technology] != m_triggers[technology] && !switched)
                told.push_back(ToldValue(technology, m_values[m_profile][technology]));
        }
        m_knownFlags = m_flags[m_profile];
        m_knownTriggers = m_triggers;
        told.push_back(cBarrier);
        return told;
    }

  private:
    template <typename Value>
    static void Set(Value& stored, Value& known, Value value, bool own) {
        const Value before = std::exchange(stored, value);
        if (own && before == known)
            known = value;
    }

    template <typename Value>
    using ByTechnology = std::array<Value, cTechnologies>;

    std::size_t m_profile = 0;
    bool m_enable = true;
    std::array<ByTechnology<bool>, cProfiles> m_flags{};
    std::array<ByTechnology<std::uint32_t>, cProfiles> m_values{};
    ByTechnology<std::uint32_t> m_triggers{};

    std::size_t m_knownProfile = 0;
    bool m_knownEnable = true;
    ByTechnology<bool> m_knownFlags{};
    ByTechnology<std::uint32_t> m_knownTriggers{};
};

class Interleaving : public testing::TestWithParam<OwnerKind> {
  protected:
    Interleaving() {
        for (std::uint32_t profile = 0; profile < cProfiles; ++profile) {
            for (std::uint32_t technology = 0; technology < cTechnologies; ++technology) {
                Foreign("value", technology, profile, 0);
                Foreign("flag", technology, profile, 1);
            }
        }
        for (std::uint32_t technology = 0; technology < cTechnologies; ++technology)
            RawStore::SetNumber(cDynamic, TriggerName(static_cast<RawTechnology>(technology)),
                                0);
        m_owner.Run([this] { EXPECT_EQ(S_OK, m_client.Start(m_library)); });
    }
    ~Interleaving() override {
        m_owner.Run([this] { m_client = {}; });
    }

    template <typename... Numbers>
    void Foreign(const std::string& what, Numbers... numbers) {
        std::string command = "raw " + what;
        ((command += " " + std::to_string(numbers)), ...);
        m_history += "\n  " + command;
        EXPECT_EQ("ok", m_writer.Ask(command));
    }

    void Own(const std::string& command) {
        m_history += "\n  " + command;
        HRESULT hr = E_FAIL;
        m_owner.Run([&] { hr = RunApiCommand(*m_client.spApi.Get(), command); });
        EXPECT_EQ(S_OK, hr) << command;
    }

    void RandomStep(Model& model) {
        const bool own = Below(2) == 0;
        const std::uint32_t technology = Below(cTechnologies);
        const std::uint32_t number = Below(3);
        // The library works on the active profile only.
        const auto active = static_cast<std::uint32_t>(model.Profile());
        const std::uint32_t profile = own ? active : Below(cProfiles);
        switch (Below(5)) {
            case 0:
                own ? Own("SetActiveProfile " + std::to_string(number))
                    : Foreign("profile", number);
                model.SetProfile(number, own);
                break;
            case 1:
                own ? Own("SetVeltoEnable " + std::to_string(number % 2))
                    : Foreign("enable", number % 2);
                model.SetEnable(number % 2 != 0, own);
                break;
            case 2:
                own ? Own("SetTechnologyOnElseOff " + std::to_string(technology) + " " +
                          std::to_string(number % 2))
                    : Foreign("flag", technology, profile, number % 2);
                model.SetFlag(technology, profile, number % 2 != 0, own);
                break;
            default:
                own ? OwnValue(technology, number % 2)
                    : Foreign("value", technology, profile, number % 2);
                model.SetValue(technology, profile, number % 2, own);
                break;
        }
    }

    void OwnValue(std::uint32_t technology, std::uint32_t value) {
        Own(technology == eGraphicEQ ? "SetGraphicEQData 1 " + std::to_string(value)
                                     : "SetSimplePatchValue " + std::to_string(technology) +
                                           " " + std::to_string(value));
    }

    std::uint32_t Below(std::size_t bound) {
        return static_cast<std::uint32_t>(m_random() % bound);
    }

    RawStore m_store;
    ApiLibrary m_library;
    ChildProcess m_writer{cPeerRole};
    ApartmentThread m_owner{GetParam()};
    WatchingClient m_client;
    std::mt19937 m_random{20260};
    std::string m_history;
};

using IdleInterleaving = Interleaving;

// Nothing is told until the owner pumps, so that every step of a round meets the same pass.
TEST_P(IdleInterleaving, TellsWhatTheModelTells) {
    Model model;
    for (int round = 0; round < 150 && !HasFailure(); ++round) {
        m_owner.SetPumping(false);
        m_client.spRecorder->ClearLog();
        m_history.clear();
        for (std::uint32_t step = Below(8); step > 0; --step)
            RandomStep(model);
        Foreign("table");
        m_owner.SetPumping(true);
        EXPECT_TRUE(m_client.spRecorder->WaitForLine(cBarrier));
        EXPECT_EQ(model.Pass(), m_client.spRecorder->Log())
            << "round " << round << ":" << m_history;
    }
}

INSTANTIATE_TEST_SUITE_P(Owner, IdleInterleaving, testing::Values(OwnerKind::eStaIdle),
                         NameOfOwner);

using LiveInterleaving = Interleaving;

// Of changes in quick succession some may be told as one, with the last value; nothing is
// told that was not written, and nothing twice.
void ExpectInOrder(const Lines& told, const Lines& written, const std::string& method) {
    std::size_t next = 0;
    for (const std::string& line : told) {
        if (!line.starts_with(method))
            continue;
        while (next < written.size() && written[next] != line)
            ++next;
        ASSERT_LT(next, written.size()) << "not written, or told again: " << line;
        ++next;
    }
}

std::string LastOf(const Lines& lines, const std::string& method, const std::string& none) {
    const auto found = std::find_if(lines.rbegin(), lines.rend(), [&](const std::string& line) {
        return line.starts_with(method);
    });
    return found == lines.rend() ? none : *found;
}

// Passes come at any time. The other process writes the dialog enhancer and the enable,
// the client all the rest.
TEST_P(LiveInterleaving, TellsForeignChangesOnceAndOwnOnesNever) {
    Lines written;
    std::uint32_t value = 0;
    bool enable = true;
    for (int round = 0; round < 100 && !HasFailure(); ++round) {
        for (std::uint32_t step = Below(3); step > 0; --step) {
            const std::uint32_t own = Below(5);
            if (own == eDialogEnhancer)
                Own("SetTechnologyOnElseOff 0 " + std::to_string(Below(2)));
            else
                OwnValue(own, Below(2));
        }
        if (Below(2) == 0) {
            enable = !enable;
            value = value % 1000 + 1;
            Foreign("enable", enable ? 1 : 0);
            Foreign("value", 3, 0, value);
            written.push_back(enable ? "OnEnableStateChange(1)" : "OnEnableStateChange(0)");
            written.push_back(ToldValue(eDialogEnhancer, value));
        }
    }
    Foreign("table");
    EXPECT_TRUE(m_client.spRecorder->WaitForLine(cBarrier));
    const Lines told = m_client.spRecorder->Log();
    ExpectInOrder(told, written, "OnEnable");
    ExpectInOrder(told, written, "OnSimple");
    ExpectInOrder(told, {}, "OnGraphic");
    ExpectInOrder(told, {}, "OnTechnology");
    ExpectInOrder(told, {}, "OnActive");
    constexpr char cUntouched[] = "OnEnableStateChange(1)";
    EXPECT_EQ(LastOf(written, "OnEnable", cUntouched), LastOf(told, "OnEnable", cUntouched));
    EXPECT_EQ(LastOf(written, "OnSimple", ""), LastOf(told, "OnSimple", ""));
    EXPECT_EQ(cBarrier, told.back());
}

INSTANTIATE_TEST_SUITE_P(Owner, LiveInterleaving,
                         testing::Values(OwnerKind::eStaPumping, OwnerKind::eMta), NameOfOwner);

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Random interleavings of own calls, own reads, foreign changes and notification passes,
// the first ones also in the midst of a pass, against a small model of what a client must be
// told.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

constexpr std::uint32_t cProfiles = 4;  // the preset profiles and a custom one
constexpr std::uint32_t cSliders = 3;   // the technologies whose values are played with

struct Slider {
    ApiTechnology api;
    KORA4PresetTechnology preset;
};
constexpr Slider cSlider[cSliders] = {
    {ApiTechnology::eVolumeLeveler, eVolumeTech},
    {ApiTechnology::eIntelligentEQ, eDynamicEQTech},
    {ApiTechnology::eGraphicEQ, eStandardEQTech},
};

// One announced item as the model sees it: what the client knows, and whether the store
// has moved away from that by somebody else's doing. An own write of an item with
// nothing foreign pending is known at once; one over a pending foreign change is not.
struct Item {
    std::uint32_t known = 0;
    std::uint32_t stored = 0;

    bool Pending() const { return known != stored; }
    void Foreign(std::uint32_t value) { stored = value; }
    void Own(std::uint32_t value) {
        if (!Pending())
            known = value;
        stored = value;
    }
    // What a pass tells, and the end of all that was pending.
    std::optional<std::uint32_t> Tell() {
        const bool tell = Pending();
        known = stored;
        return tell ? std::optional(stored) : std::nullopt;
    }
};

class Model {
  public:
    struct Found {
        std::string name;
        std::string text;
    };

    Model() {
        m_enable = {1, 1};
        for (auto& profile : m_values)
            profile.fill(0);
    }

    Item m_profile;
    Item m_enable;
    Item m_table;
    std::map<std::uint32_t, Item> m_triggers;  // by preset technology
    // Stored flags by profile, and those that the client knows, of the known profile.
    std::array<std::map<std::uint32_t, std::uint32_t>, cProfiles> m_flags;
    std::map<std::uint32_t, std::uint32_t> m_knownFlags;
    std::array<std::array<std::uint32_t, cSliders>, cProfiles> m_values;

    // What the last pass has found and own writes have replaced since, by its name.
    std::set<std::string> m_overtaken;
    std::uint32_t m_analysed = 0;

    void OwnEnable(std::uint32_t enable) {
        m_enable.Own(enable);
        m_overtaken.insert("enable");
    }
    void OwnProfile(std::uint32_t profile) {
        if (profile != m_analysed) {
            m_overtaken.insert("profile");
            for (std::uint32_t t = eVolumeTech; t <= eVirtualSurroundTech; ++t) {
                m_overtaken.insert("flag" + std::to_string(t));
                m_overtaken.insert("value" + std::to_string(t));
            }
        }
        const std::uint32_t knownBefore = m_profile.known;
        m_profile.Own(profile);
        if (m_profile.known != knownBefore)
            m_knownFlags = m_flags[profile];
    }
    void OwnFlag(std::uint32_t technology, std::uint32_t value) {
        if (m_profile.stored == m_analysed)
            m_overtaken.insert("flag" + std::to_string(technology));
        auto& stored = m_flags[m_profile.stored][technology];
        if (!m_profile.Pending() && stored == m_knownFlags[technology])
            m_knownFlags[technology] = value;
        stored = value;
    }
    void OwnValue(std::uint32_t slider, std::uint32_t value) {
        if (m_profile.stored == m_analysed)
            m_overtaken.insert("value" + std::to_string(cSlider[slider].preset));
        m_values[m_profile.stored][slider] = value;
        Item& trigger = m_triggers[cSlider[slider].preset];
        trigger.Own(trigger.stored + 1);
    }
    void ForeignValue(std::uint32_t slider, std::uint32_t value) {
        m_values[m_profile.stored][slider] = value;
        ++m_triggers[cSlider[slider].preset].stored;
    }

    // In the order in which it is told.
    std::vector<Found> Analyse() {
        std::vector<Found> told;
        const auto find = [&told](const std::string& name, std::uint32_t value) {
            told.push_back({name, name + "=" + std::to_string(value) + ";"});
        };
        m_overtaken.clear();
        m_analysed = m_profile.stored;
        if (const auto enable = m_enable.Tell())
            find("enable", *enable);
        const auto profile = m_profile.Tell();
        if (profile)
            find("profile", *profile);
        for (std::uint32_t t = eVolumeTech; t <= eVirtualSurroundTech; ++t) {
            const std::uint32_t flag = m_flags[m_profile.stored][t];
            if (!profile && flag != m_knownFlags[t])
                find("flag" + std::to_string(t), flag);
            const bool valueChanged = m_triggers[t].Tell().has_value();
            for (std::uint32_t s = 0; s < cSliders; ++s) {
                if (valueChanged && !profile && cSlider[s].preset == t)
                    find("value" + std::to_string(t), m_values[m_profile.stored][s]);
            }
        }
        m_knownFlags = m_flags[m_profile.stored];
        if (m_table.Tell())
            told.push_back({"table", "table;"});
        return told;
    }
};

class Interleaving {
  public:
    // Items that were found and overtaken, of all interleavings.
    static inline unsigned s_overtaken = 0;

    explicit Interleaving(std::uint32_t seed) : m_random(seed) {
        // All flags and values stored, so that the model needs no defaults.
        for (std::uint32_t p = 0; p < cProfiles; ++p) {
            for (std::uint32_t t = eVolumeTech; t < eNumberKORA4PresetTechnologies; ++t) {
                m_store.PutUINT(eKeySetDynamic,
                                PresetPatchKey(static_cast<KORA4PresetTechnology>(t), p, 0), 1);
                m_model.m_flags[p][t] = 1;
            }
            m_store.PutText(eKeySetStatic, ProfileNameKey(p), u"name");
        }
        m_model.m_knownFlags = m_model.m_flags[0];
        EXPECT_EQ(m_own.Start(), result::cOk);
        EXPECT_EQ(m_foreign.Start(), result::cOk);
        for (std::uint32_t p = 0; p < cProfiles; ++p) {
            m_foreign->SetActiveProfile(p);
            for (std::uint32_t s = 0; s < cSliders; ++s)
                Set(m_foreign, s, 0);
        }
        m_foreign->SetActiveProfile(0);
        m_own.Pass();
    }

    void Run(int steps) {
        for (int i = 0; i < steps; ++i) {
            Step();
            if (::testing::Test::HasFailure())
                return;
        }
        Check();
    }

  private:
    static void Set(TestClient& client, std::uint32_t slider, std::uint32_t value) {
        const ApiTechnology api = cSlider[slider].api;
        if (api == ApiTechnology::eGraphicEQ) {
            ApiGraphicEQ eq{};
            eq.m_bands = value;
            ASSERT_EQ(client->SetPatchValue(api, sizeof eq, &eq), result::cOk);
        } else {
            ASSERT_EQ(client->SetPatchValue(api, sizeof value, &value), result::cOk);
        }
    }

    std::uint32_t Below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(m_random() % bound);
    }

    void Step() {
        const bool own = Below(2) == 0;
        TestClient& client = own ? m_own : m_foreign;
        const char* who = own ? "own " : "foreign ";
        switch (Below(8)) {
            case 0: {
                const std::uint32_t profile = Below(cProfiles);
                m_log += who + ("profile " + std::to_string(profile)) + "\n";
                ASSERT_EQ(client->SetActiveProfile(profile), result::cOk);
                own ? m_model.OwnProfile(profile) : m_model.m_profile.Foreign(profile);
                break;
            }
            case 1: {
                const std::uint32_t enable = Below(2);
                m_log += who + ("enable " + std::to_string(enable)) + "\n";
                ASSERT_EQ(client->SetVeltoEnable(enable != 0), result::cOk);
                own ? m_model.OwnEnable(enable) : m_model.m_enable.Foreign(enable);
                break;
            }
            case 2: {
                bool now = false;
                m_log += who + std::string("toggle\n");
                ASSERT_EQ(client->ToggleVeltoEnable(&now), result::cOk);
                own ? m_model.OwnEnable(now) : m_model.m_enable.Foreign(now);
                break;
            }
            case 3: {
                const std::uint32_t t = 1 + Below(eVirtualSurroundTech);
                const std::uint32_t flag = Below(2);
                m_log +=
                    who + ("flag " + std::to_string(t)) + "=" + std::to_string(flag) + "\n";
                ASSERT_EQ(client->SetTechnologyOnElseOff(static_cast<KORA4PresetTechnology>(t),
                                                         flag != 0),
                          result::cOk);
                if (own)
                    m_model.OwnFlag(t, flag);
                else
                    m_model.m_flags[m_model.m_profile.stored][t] = flag;
                break;
            }
            case 4: {
                const std::uint32_t slider = Below(cSliders);
                const std::uint32_t value = Below(6);
                m_log += who + ("value " + std::to_string(slider)) + "=" +
                         std::to_string(value) + "\n";
                Set(client, slider, value);
                own ? m_model.OwnValue(slider, value) : m_model.ForeignValue(slider, value);
                break;
            }
            case 5: {
                m_log += who + std::string("rename\n");
                ASSERT_EQ(client->SetCustomProfileName(3, u"another"), result::cOk);
                Item& table = m_model.m_table;
                own ? table.Own(table.stored + 1) : table.Foreign(table.stored + 1);
                break;
            }
            case 6:
                m_log += "own read\n";
                Read();
                break;
            default:
                if (!m_inPass)
                    Check();
                break;
        }
    }

    // Reads move nothing and see what is stored.
    void Read() {
        std::uint32_t profile = cNoProfile;
        ASSERT_EQ(m_own->GetActiveProfile(&profile), result::cOk);
        ASSERT_EQ(profile, m_model.m_profile.stored) << m_log;
        bool enable = false;
        ASSERT_EQ(m_own->GetVeltoEnable(&enable), result::cOk);
        ASSERT_EQ(enable, m_model.m_enable.stored != 0) << m_log;
        bool flag = false;
        ASSERT_EQ(m_own->GetTechnologyOnElseOff(eHeadphoneTech, &flag), result::cOk);
        ASSERT_EQ(flag, m_model.m_flags[profile][eHeadphoneTech] != 0) << m_log;
        std::uint32_t volume = 99;
        ASSERT_EQ(m_own->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, &volume), result::cOk);
        ASSERT_EQ(volume, m_model.m_values[profile][0]) << m_log;
    }

    void Check() {
        m_log += "pass\n";
        m_inPass = true;
        const auto found = m_own.Analyse();
        const auto expected = m_model.Analyse();
        ASSERT_EQ(Texts(expected), Texts(found)) << m_log;
        for (std::size_t i = 0; i < found.size(); ++i) {
            for (std::uint32_t steps = Below(6); steps > 0; --steps)
                ASSERT_NO_FATAL_FAILURE(Step());
            m_log += found[i].text + "\n";
            const bool overtaken = m_model.m_overtaken.contains(expected[i].name);
            ASSERT_EQ(overtaken, m_own->Overtaken().Contains(found[i].item)) << m_log;
            s_overtaken += overtaken;
        }
        m_inPass = false;
    }

    template <typename Items>
    static std::string Texts(const Items& items) {
        std::string texts;
        for (const auto& item : items)
            texts += item.text;
        return texts;
    }

    bool m_inPass = false;
    std::mt19937 m_random;
    TestStore m_store;
    TestClient m_own{m_store};
    TestClient m_foreign{m_store};
    Model m_model;
    std::string m_log;
};

// The sanitizers slow the model down many times; they see a part of the seeds.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::uint32_t cInterleavings = 300;
#else
constexpr std::uint32_t cInterleavings = 2500;
#endif

TEST(ClientModel, EveryForeignChangeThatStillStandsIsToldOnceAndNoOwnOne) {
    for (std::uint32_t seed = 1; seed <= cInterleavings; ++seed) {
        Interleaving interleaving(seed);
        interleaving.Run(30);
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
    }
    EXPECT_LT(cInterleavings / 2, Interleaving::s_overtaken);
}

}  // namespace
}  // namespace kora4

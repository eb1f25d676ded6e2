// SPDX-License-Identifier: MIT
// Random interleavings of own calls, own reads, foreign changes and notification passes,
// the first ones also in the midst of a pass, against the model of what a client must be told.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "support/baseline_model.h"
#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

using test::Baseline;
using test::cToldTechnologyCount;
using test::News;
using test::OwnWrite;
using test::StoreState;

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

// A technology's place in the model, where there is no number 0.
constexpr std::size_t PlaceOf(std::uint32_t technology) {
    return technology - eVolumeTech;
}

// What of the store is played with, and what a client must be told of it.
class Model {
  public:
    struct Found {
        News news;
        std::string text;
    };

    Model() {
        for (auto& flags : m_flags)
            flags.fill(true);
        m_baseline = Baseline(Stored());
    }

    StoreState Stored() const {
        StoreState stored = m_stored;
        stored.switches = m_flags[stored.profile];
        return stored;
    }
    std::uint32_t Value(std::uint32_t slider) const {
        return m_values[m_stored.profile][slider];
    }

    // Changes by the client itself or by somebody else.
    void SetProfile(bool own, std::uint32_t profile) {
        Make(own, {.profile = true}, [&] { m_stored.profile = profile; });
    }
    void SetEnable(bool own, bool enable) {
        Make(own, {.enable = true}, [&] { m_stored.enable = enable; });
    }
    void SetFlag(bool own, std::uint32_t technology, bool flag) {
        const std::size_t place = PlaceOf(technology);
        Make(own, {.switches = true, .technology = place},
             [&] { m_flags[m_stored.profile][place] = flag; });
    }
    void SetValue(bool own, std::uint32_t slider, std::uint32_t value) {
        const std::size_t place = PlaceOf(cSlider[slider].preset);
        Make(own, {.values = true, .technology = place}, [&] {
            m_values[m_stored.profile][slider] = value;
            ++m_stored.triggers[place];
        });
    }
    void Rename(bool own) {
        Make(own, {}, [&] { ++m_stored.table; });
    }

    // In the order in which it is told.
    std::vector<Found> Analyse() {
        const StoreState stored = Stored();
        std::vector<Found> found;
        for (const News& news : m_baseline.Compare(stored))
            found.push_back({news, Text(news, stored)});
        m_baseline = Baseline(stored);
        m_analysed = stored.profile;
        m_ownWrites.clear();
        return found;
    }

    // Whether own writes have replaced since what the last pass has found.
    bool IsOvertaken(const News& news) const {
        return std::ranges::any_of(m_ownWrites, [&](const OwnWrite& write) {
            return write.Overtakes(news, m_analysed);
        });
    }

  private:
    template <typename Change>
    void Make(bool own, OwnWrite write, Change change) {
        const StoreState before = Stored();
        change();
        if (!own)
            return;
        const StoreState after = Stored();
        m_baseline.MoveWithOwn(before, after);
        write.profileBefore = before.profile;
        write.profileAfter = after.profile;
        m_ownWrites.push_back(write);
    }

    std::string Text(const News& news, const StoreState& stored) const {
        const auto text = [](const std::string& name, std::uint32_t value) {
            return name + "=" + std::to_string(value) + ";";
        };
        const std::string number = std::to_string(news.technology + eVolumeTech);
        switch (news.kind) {
            case News::Kind::eEnable:
                return text("enable", stored.enable);
            case News::Kind::eProfile:
                return text("profile", stored.profile);
            case News::Kind::eSwitch:
                return text("flag" + number, stored.switches[news.technology]);
            case News::Kind::eValue:
                for (std::uint32_t s = 0; s < cSliders; ++s) {
                    if (PlaceOf(cSlider[s].preset) == news.technology)
                        return text("value" + number, Value(s));
                }
                break;
            case News::Kind::eTable:
                return "table;";
        }
        return "nothing that is played with;";
    }

    StoreState m_stored;  // but for the switches
    std::array<std::array<bool, cToldTechnologyCount>, cProfiles> m_flags;
    std::array<std::array<std::uint32_t, cSliders>, cProfiles> m_values{};
    Baseline m_baseline;

    // Of the last pass, and since.
    std::uint32_t m_analysed = 0;
    std::vector<OwnWrite> m_ownWrites;
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
                                pkey::PresetPatch(static_cast<KORA4PresetTechnology>(t), p, 0),
                                1);
            }
            m_store.PutText(eKeySetStatic, pkey::ProfileName(p), u"name");
        }
        EXPECT_EQ(result::cOk, m_own.Start());
        EXPECT_EQ(result::cOk, m_foreign.Start());
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
            ASSERT_EQ(result::cOk, client->SetPatchValue(api, sizeof eq, &eq));
        } else {
            ASSERT_EQ(result::cOk, client->SetPatchValue(api, sizeof value, &value));
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
                ASSERT_EQ(result::cOk, client->SetActiveProfile(profile));
                m_model.SetProfile(own, profile);
                break;
            }
            case 1: {
                const std::uint32_t enable = Below(2);
                m_log += who + ("enable " + std::to_string(enable)) + "\n";
                ASSERT_EQ(result::cOk, client->SetVeltoEnable(enable != 0));
                m_model.SetEnable(own, enable != 0);
                break;
            }
            case 2: {
                bool now = false;
                m_log += who + std::string("toggle\n");
                ASSERT_EQ(result::cOk, client->ToggleVeltoEnable(&now));
                m_model.SetEnable(own, now);
                break;
            }
            case 3: {
                const std::uint32_t t = 1 + Below(eVirtualSurroundTech);
                const std::uint32_t flag = Below(2);
                m_log +=
                    who + ("flag " + std::to_string(t)) + "=" + std::to_string(flag) + "\n";
                ASSERT_EQ(result::cOk, client->SetTechnologyOnElseOff(
                                           static_cast<KORA4PresetTechnology>(t), flag != 0));
                m_model.SetFlag(own, t, flag != 0);
                break;
            }
            case 4: {
                const std::uint32_t slider = Below(cSliders);
                const std::uint32_t value = Below(6);
                m_log += who + ("value " + std::to_string(slider)) + "=" +
                         std::to_string(value) + "\n";
                Set(client, slider, value);
                m_model.SetValue(own, slider, value);
                break;
            }
            case 5: {
                m_log += who + std::string("rename\n");
                ASSERT_EQ(result::cOk, client->SetCustomProfileName(3, u"another"));
                m_model.Rename(own);
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
        const StoreState stored = m_model.Stored();
        std::uint32_t profile = cNoProfile;
        ASSERT_EQ(result::cOk, m_own->GetActiveProfile(&profile));
        ASSERT_EQ(stored.profile, profile) << m_log;
        bool enable = false;
        ASSERT_EQ(result::cOk, m_own->GetVeltoEnable(&enable));
        ASSERT_EQ(stored.enable, enable) << m_log;
        bool flag = false;
        ASSERT_EQ(result::cOk, m_own->GetTechnologyOnElseOff(eHeadphoneTech, &flag));
        ASSERT_EQ(stored.switches[PlaceOf(eHeadphoneTech)], flag) << m_log;
        std::uint32_t volume = 99;
        ASSERT_EQ(result::cOk, m_own->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, &volume));
        ASSERT_EQ(m_model.Value(0), volume) << m_log;
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
            const bool overtaken = m_model.IsOvertaken(expected[i].news);
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

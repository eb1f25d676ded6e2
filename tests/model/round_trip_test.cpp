// SPDX-License-Identifier: MIT
// Each value that can be set, over its whole range: written by one process, read and told
// in another, equal to what the text forms of the store keep of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cwchar>
#include <limits>
#include <memory>
#include <numeric>
#include <random>

#include "model/encodings.h"
#include "model/seats.h"
#include "support/raw_store.h"

namespace kora4::test {
namespace {

constexpr std::size_t cWriter = 0;
constexpr std::size_t cReader = 1;
constexpr unsigned cRandomValues = 10000;
constexpr std::size_t cBatch = 500;
constexpr std::uint32_t cSeed = 20240607;

// A value on its way.
struct Trip {
    Command set{};
    Command get{};
    Reply read{};  // what the reader must be handed
    Told told{};
};

class RoundTrip : public testing::Test {
  protected:
    void SetUp() override {
        RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), 0);
        ASSERT_TRUE(m_library.IsLoaded());
        m_pWriter = std::make_unique<Seat>(m_meeting, cWriter, m_library);
        m_pReader = Seat::InProcess(m_meeting, cReader);
        Command open{};
        open.action = Action::eOpen;
        ASSERT_EQ(S_OK, m_pWriter->Ask(open).hr);
        ASSERT_EQ(S_OK, m_pReader->Ask(open).hr);
    }

    // In batches, whose last value is told after all others: it differs from them.
    void Send(const std::vector<Trip>& trips, std::size_t batch) {
        std::size_t first = 0;
        for (std::size_t i = 0; i < trips.size(); ++i) {
            ASSERT_NO_FATAL_FAILURE(SendOne(trips[i])) << Text(trips[i].set);
            if (i + 1 - first >= batch && IsNew(trips, first, i)) {
                ASSERT_NO_FATAL_FAILURE(CheckTold(trips, first, i)) << Text(trips[i].set);
                first = i + 1;
            }
        }
        ASSERT_EQ(trips.size(), first) << "the last value is not a new one";
    }

    void SendOne(const Trip& trip) {
        ASSERT_EQ(S_OK, m_pWriter->Ask(trip.set).hr);
        const Reply reply = m_pReader->Ask(trip.get);
        ASSERT_EQ(S_OK, reply.hr);
        ASSERT_EQ(trip.read.number, reply.number);
        ASSERT_EQ(trip.read.value.m_technology, reply.value.m_technology);
        ASSERT_EQ(trip.read.value.m_values.m_volumeSlider, reply.value.m_values.m_volumeSlider);
        ASSERT_TRUE(Same(trip.read.eq, reply.eq)) << Told::EQ(reply.eq).Text();
        for (std::size_t i = 0; i < cProfiles; ++i) {
            ASSERT_EQ(trip.read.named[i], reply.named[i]);
            ASSERT_STREQ(trip.read.names[i], reply.names[i]);
        }
    }

    static bool IsNew(const std::vector<Trip>& trips, std::size_t first, std::size_t last) {
        const std::size_t from = first == 0 ? 0 : first - 1;
        return std::none_of(trips.begin() + static_cast<std::ptrdiff_t>(from),
                            trips.begin() + static_cast<std::ptrdiff_t>(last),
                            [&](const Trip& trip) { return trip.told.Says(trips[last].told); });
    }

    // Changes that come close together may be told as one: what was told was written, in
    // that order, and the last one is told in any case.
    void CheckTold(const std::vector<Trip>& trips, std::size_t first, std::size_t last) {
        ASSERT_TRUE(PumpUntil(
            [&] {
                const LONG count = m_pReader->ToldCount();
                return count != 0 && m_pReader->ToldAt(count - 1).Says(trips[last].told);
            },
            m_meeting.ToldEvent()))
            << "not told: " << trips[last].told.Text();
        std::size_t next = first;
        for (LONG i = 0; i < m_pReader->ToldCount(); ++i) {
            while (next <= last && !trips[next].told.Says(m_pReader->ToldAt(i)))
                ++next;
            ASSERT_LE(next, last)
                << "never written, or out of order: " << m_pReader->ToldAt(i).Text();
            ++next;
        }
        m_toldCount += m_pReader->ToldCount();
        m_pReader->Forget();
        // A client is not told what it has done itself.
        ASSERT_EQ(0, m_pWriter->ToldCount());
    }

    void TearDown() override { RecordProperty("told", std::to_string(m_toldCount)); }

    static Trip SliderTrip(KORA4APITechnology technology, ULONG bits, ULONG stored) {
        Trip trip;
        trip.read = Reply::Untouched();
        trip.set.action = Action::eSetSimplePatchValue;
        trip.set.value.m_technology = technology;
        trip.set.value.m_values.m_volumeSlider = bits;
        trip.get.action = Action::eGetSimplePatchValue;
        trip.get.value.m_technology = technology;
        trip.read.value = trip.set.value;
        trip.read.value.m_values.m_volumeSlider = stored;
        trip.told = Told::Value(technology, stored);
        return trip;
    }

    // Every number below `bound` comes after every other one, in a random order.
    void SendIntegers(KORA4APITechnology technology, ULONG bound) {
        std::vector<Trip> trips;
        for (int round = 0; round < 20; ++round) {
            std::vector<ULONG> numbers(bound);
            std::iota(numbers.begin(), numbers.end(), 0u);
            do {
                std::shuffle(numbers.begin(), numbers.end(), m_random);
            } while (!trips.empty() &&
                     trips.back().set.value.m_values.m_volumeSlider == numbers.back());
            for (const ULONG number : numbers)
                trips.push_back(SliderTrip(technology, number, number));
        }
        Send(trips, bound);
    }

    void SendFloats(KORA4APITechnology technology, float highest) {
        std::vector<float> values = {0.0f,       -0.0f,
                                     1.0e-45f,   4.9999997e-7f,
                                     5.0e-7f,    5.0000003e-7f,
                                     1.0e-6f,    1.5e-6f,
                                     2.5e-6f,    0.33f,
                                     0.5f,       0.9999995f,
                                     0.9999999f, std::nextafter(highest, 0.0f),
                                     highest};
        // Odd multiples of 1/128 lie in the middle between two texts of six decimals.
        for (int i = 1; static_cast<float>(i) / 128 < highest; i += 2)
            values.push_back(static_cast<float>(i) / 128);
        std::uniform_int_distribution<std::uint32_t> anyBits(
            0, std::bit_cast<std::uint32_t>(highest));
        std::uniform_real_distribution<float> anyValue(0.0f, highest);
        // Half of them evenly over the range, half over the bit patterns: the tiny ones too.
        while (values.size() < cRandomValues)
            values.push_back(values.size() % 2 == 0 ? anyValue(m_random)
                                                    : std::bit_cast<float>(anyBits(m_random)));
        values.push_back(0.123457f);
        std::vector<Trip> trips;
        for (const float value : values)
            trips.push_back(
                SliderTrip(technology, std::bit_cast<std::uint32_t>(value),
                           std::bit_cast<std::uint32_t>(FloatOf(FloatText(value)))));
        Send(trips, cBatch);
    }

    static Trip EQTrip(const GraphicEQData& eq) {
        Trip trip;
        trip.read = Reply::Untouched();
        trip.set.action = Action::eSetGraphicEQData;
        trip.set.eq = eq;
        trip.get.action = Action::eGetGraphicEQData;
        trip.read.eq = Stored(eq);
        trip.told = Told::EQ(trip.read.eq);
        return trip;
    }

    // A command with a number and its getter.
    static Trip NumberTrip(Action set, LONG number, BOOL flag, Action get, LONG read) {
        Trip trip;
        trip.read = Reply::Untouched();
        trip.set.action = set;
        trip.set.number = number;
        trip.set.flag = flag;
        trip.get.action = get;
        trip.get.number = number;
        trip.read.number = read;
        return trip;
    }

    std::mt19937 m_random{cSeed};
    RawStore m_store;
    Apartment m_apartment{COINIT_APARTMENTTHREADED};
    ApiLibrary m_library;
    Meeting m_meeting{L"kora4-round-trip-" + std::to_wstring(GetCurrentProcessId())};
    std::unique_ptr<Seat> m_pWriter;
    std::unique_ptr<Seat> m_pReader;
    long m_toldCount = 0;
};

TEST_F(RoundTrip, EveryAmountOfTheVolumeLeveler) {
    SendIntegers(eVolumeLeveler, 11);
}

TEST_F(RoundTrip, EveryCurveOfTheIntelligentEQ) {
    SendIntegers(eIntelligentEQ, 6);
}

TEST_F(RoundTrip, TheDialogEnhancerToSixDecimals) {
    SendFloats(eDialogEnhancer, 1.0f);
}

TEST_F(RoundTrip, TheHeadphoneVirtualizerToSixDecimals) {
    SendFloats(eVirtualizerHP, 6.0f);
}

TEST_F(RoundTrip, TheSpeakerVirtualizerToSixDecimals) {
    SendFloats(eVirtualizerSpkr, 6.0f);
}

TEST_F(RoundTrip, TheSamplingPeriodInFull) {
    std::vector<std::uint32_t> periods = {0, 1, 50, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    while (periods.size() < cRandomValues)
        periods.push_back(m_random());
    for (const std::uint32_t period : periods) {
        const auto number = static_cast<LONG>(period);
        ASSERT_NO_FATAL_FAILURE(SendOne(NumberTrip(Action::eSetSamplingPeriod, number, FALSE,
                                                   Action::eGetSamplingPeriod, number)))
            << period;
    }
    EXPECT_EQ(0, m_pReader->ToldCount()) << "nobody is told of the sampling period";
}

TEST_F(RoundTrip, AGraphicEQOfAnyNumberOfBands) {
    std::uniform_real_distribution<float> gain(-13.0f, 13.0f);
    std::uniform_real_distribution<float> frequency(0.0f, 32768.0f);
    std::vector<Trip> trips;
    for (ULONG i = 0; i < 25 * 43; ++i) {
        GraphicEQData eq{};
        eq.m_bands = i % (cMaxBands + 3);  // above the most as well
        for (ULONG band = 0; band < cMaxBands; ++band) {
            eq.m_freq[band] = frequency(m_random);
            eq.m_gain[band] = gain(m_random);
        }
        trips.push_back(EQTrip(eq));
    }
    Send(trips, 43);
}

TEST_F(RoundTrip, AGraphicEQAtTheBordersOfItsElements) {
    constexpr float cInfinity = std::numeric_limits<float>::infinity();
    constexpr float cFrequencies[] = {
        0.0f,      -0.0f,      0.99f,
        -0.99f,    1.0f,       32767.0f,
        32767.9f,  32768.0f,   40000.0f,
        65535.0f,  65536.0f,   65537.5f,
        -32768.0f, -32769.0f,  3.0e9f,
        9.2e18f,   9.3e18f,    -9.3e18f,
        cInfinity, -cInfinity, std::numeric_limits<float>::quiet_NaN()};
    constexpr float cGains[] = {
        0.0f,         1.0f / 256, -1.0f / 256, 0.0039f,
        -0.0039f,     1.999f,     -1.999f,     11.999f,
        -11.999f,     12.0f,      -12.0f,      12.0000010f,
        -12.0000010f, cInfinity,  -cInfinity,  std::numeric_limits<float>::quiet_NaN()};
    std::vector<Trip> trips;
    for (ULONG shift = 0; shift < cMaxBands; ++shift) {
        GraphicEQData eq{};
        eq.m_bands = shift % 3 == 0 ? 0xFFFFFFFF : 21 + shift % 20;
        for (ULONG band = 0; band < cMaxBands; ++band) {
            eq.m_freq[band] = cFrequencies[(band + shift) % std::size(cFrequencies)];
            eq.m_gain[band] = cGains[(band + 3 * shift) % std::size(cGains)];
        }
        trips.push_back(EQTrip(eq));
    }
    GraphicEQData last{};
    last.m_bands = 1;
    last.m_freq[0] = 77.0f;
    trips.push_back(EQTrip(last));
    // 40000 Hz does not fit the text form and comes back as what its 16 bits say.
    ASSERT_EQ(40000.0f - 65536.0f, trips[8].read.eq.m_freq[0]);
    Send(trips, 1);
}

TEST_F(RoundTrip, EveryProfile) {
    for (std::uint32_t custom = cFirstCustom; custom < cProfileBound; ++custom)
        RawStore::SetText(cStatic, ProfileNameName(custom), L"custom");
    std::vector<Trip> trips;
    for (LONG from = 0; from < KORA4_PROFILE_TABLE_ENTRIES; ++from) {
        for (LONG to = 0; to < KORA4_PROFILE_TABLE_ENTRIES; ++to) {
            if (to == from)
                continue;
            for (const LONG profile : {from, to}) {
                if (!trips.empty() && trips.back().set.number == profile)
                    continue;
                trips.push_back(NumberTrip(Action::eSetActiveProfile, profile, FALSE,
                                           Action::eGetActiveProfile, profile));
                trips.back().told = Told::Profile(profile);
            }
        }
    }
    // It is active at the start.
    trips.erase(trips.begin());
    Send(trips, 1);
}

TEST_F(RoundTrip, EveryDemoProfile) {
    std::vector<Trip> trips;
    for (const LONG demo :
         {KORA4_PROFILE_DEMO_MOVIE, KORA4_PROFILE_DEMO_MUSIC, KORA4_PROFILE_DEMO_GAMES,
          KORA4_PROFILE_DEMO_MOVIE, KORA4_PROFILE_DEMO_GAMES, KORA4_PROFILE_DEMO_MUSIC,
          KORA4_PROFILE_DEMO_MOVIE}) {
        trips.push_back(NumberTrip(Action::eSetDemoProfileAndEnable, demo, TRUE,
                                   Action::eGetActiveProfile, demo));
        trips.back().told = Told::Profile(demo);
    }
    Send(trips, 1);
}

TEST_F(RoundTrip, TheMasterEnable) {
    std::vector<Trip> trips;
    for (const BOOL enable : {0, 1, 0, 2, 0, -1, 0, 1}) {
        trips.push_back(NumberTrip(Action::eSetVeltoEnable, 0, enable, Action::eGetVeltoEnable,
                                   enable != 0));
        trips.back().told = Told::Enable(enable != 0);
    }
    Send(trips, 1);
}

TEST_F(RoundTrip, TheSwitchOfEveryTechnology) {
    for (LONG technology = 0; technology < eNumberKORA4APITechnologies; ++technology) {
        Command get{};
        get.action = Action::eGetTechnologyOnElseOff;
        get.number = technology;
        BOOL on = m_pReader->Ask(get).number;
        std::vector<Trip> trips;
        for (int i = 0; i < 8; ++i) {
            on = on ? 0 : i + 1;  // any number but 0 means on
            trips.push_back(NumberTrip(Action::eSetTechnologyOnElseOff, technology, on,
                                       Action::eGetTechnologyOnElseOff, on != 0));
            trips.back().told = Told::OnElseOff(technology, on != 0);
        }
        ASSERT_NO_FATAL_FAILURE(Send(trips, 1)) << technology;
    }
}

// What a table change is about is not told: each is waited for by itself.
TEST_F(RoundTrip, ANameOfAnyCharacters) {
    bool exists = false;
    for (std::size_t length = 0; length < cNameCapacity; ++length) {
        Trip trip;
        trip.read = Reply::Untouched();
        trip.set.action = exists ? Action::eSetCustomProfileName : Action::eCreateCustomProfile;
        trip.set.number = 5;
        for (std::size_t i = 0; i < length; ++i) {
            trip.set.name[i] = static_cast<wchar_t>(m_random());
            if (trip.set.name[i] == 0)
                trip.set.name[i] = L'0';
        }
        trip.set.name[std::min(length, cNameCapacity - 1)] = 0;
        trip.get.action = Action::eGetProfileTable;
        trip.read.named[5] = true;
        std::wcscpy(trip.read.names[5], trip.set.name);
        ASSERT_NO_FATAL_FAILURE(SendOne(trip)) << length;
        ASSERT_TRUE(
            PumpUntil([&] { return m_pReader->ToldCount() == 1; }, m_meeting.ToldEvent()))
            << length;
        ASSERT_TRUE(m_pReader->ToldAt(0).Says(Told::Table()));
        m_pReader->Forget();
        exists = true;
    }
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// kora4.hpp beside the calls that it makes, on the same object.
#include <kora4.hpp>

#include <iterator>
#include <string>

#include "kora4api_constants.h"
#include "windows/measure.h"

namespace kora4::bench {
namespace {

// What is written changes with every round, as a person's hand changes it.
struct Step {
    std::uint32_t round = 0;

    ULONG Leveler() const { return round % KORA4_VOLUME_LEVELER_MAX; }
    float Gain() const { return static_cast<float>(round % 10); }
};

struct Pair {
    const char* name;
    HRESULT (*wrapped)(Api& api, const Step& step);
    HRESULT (*raw)(IVeltoKORA4API& api, const Step& step);
};

KORA4PatchValueUnion Leveler(ULONG amount) {
    KORA4PatchValueUnion value{};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = amount;
    return value;
}

// Whoever reads the names has to free them.
HRESULT RawTable(IVeltoKORA4API& api, const Step&) {
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    const HRESULT hr = api.GetProfileTable(names);
    for (LPWSTR name : names)
        CoTaskMemFree(name);
    return hr;
}

HRESULT RawEqualizer(IVeltoKORA4API& api, const Step& step) {
    GraphicEQData data{};
    data.m_bands = KORA4_GRAPHIC_EQ_MAX_BANDS;
    for (ULONG i = 0; i < data.m_bands; ++i) {
        data.m_freq[i] = static_cast<float>(100 * (i + 1));
        data.m_gain[i] = step.Gain();
    }
    return api.SetGraphicEQData(&data);
}

HRESULT WrappedEqualizer(Api& api, const Step& step) {
    Bands bands(KORA4_GRAPHIC_EQ_MAX_BANDS);
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i] = {static_cast<float>(100 * (i + 1)), step.Gain()};
    return api.SetGraphicEQData(bands).Code();
}

constexpr Pair cPairs[] = {
    {"GetActiveProfile", [](Api& api, const Step&) { return api.GetActiveProfile().Code(); },
     [](IVeltoKORA4API& api, const Step&) {
         LONG profile = 0;
         return api.GetActiveProfile(&profile);
     }},
    {"GetProfileTable", [](Api& api, const Step&) { return api.GetProfileTable().Code(); },
     RawTable},
    {"GetTechnologyOnElseOff",
     [](Api& api, const Step&) { return api.GetTechnologyOnElseOff(eGraphicEQ).Code(); },
     [](IVeltoKORA4API& api, const Step&) {
         BOOL isOn = FALSE;
         return api.GetTechnologyOnElseOff(eGraphicEQ, &isOn);
     }},
    {"GetSimplePatchValue",
     [](Api& api, const Step&) { return api.GetSimplePatchValue(eVolumeLeveler).Code(); },
     [](IVeltoKORA4API& api, const Step&) {
         KORA4PatchValueUnion value = Leveler(0);
         return api.GetSimplePatchValue(&value);
     }},
    {"SetSimplePatchValue",
     [](Api& api, const Step& step) { return api.SetVolumeLeveler(step.Leveler()).Code(); },
     [](IVeltoKORA4API& api, const Step& step) {
         KORA4PatchValueUnion value = Leveler(step.Leveler());
         return api.SetSimplePatchValue(&value);
     }},
    {"SetGraphicEQData, 40 bands", WrappedEqualizer, RawEqualizer},
    {"GetGraphicEQData, 40 bands",
     [](Api& api, const Step&) { return api.GetGraphicEQData().Code(); },
     [](IVeltoKORA4API& api, const Step&) {
         GraphicEQData data;
         return api.GetGraphicEQData(&data);
     }},
    {"GetVisualizationData",
     [](Api& api, const Step&) { return api.GetVisualizationData().Code(); },
     [](IVeltoKORA4API& api, const Step&) {
         float gains[KORA4_VISUALIZATION_BANDS];
         float excitations[KORA4_VISUALIZATION_BANDS];
         return api.GetVisualizationData(gains, excitations);
     }},
};

}  // namespace

void MeasureWrapper(const Library& library, Place& place, const Extent& extent,
                    Results& results) {
    place.Fill();
    Api api(library.Initialized());
    Step step;
    Samples samples[std::size(cPairs)][2];
    // The whole of it several times, so that a bad moment of the machine falls on no row alone.
    for (std::size_t round = 0; round < extent.Of(5, 1); ++round) {
        for (std::size_t i = 0; i < std::size(cPairs); ++i) {
            const Pair& pair = cPairs[i];
            const auto ticksOf = [&step, &pair](auto&& call) {
                ++step.round;
                const std::uint64_t begin = Ticks();
                const HRESULT hr = call();
                const std::uint64_t ticks = Ticks() - begin;
                if (FAILED(hr))
                    Fail(std::string(pair.name) + " fails");
                return ticks;
            };
            SampleInTurns(
                extent, 1, [&] { return ticksOf([&] { return pair.wrapped(api, step); }); },
                [&] { return ticksOf([&] { return pair.raw(*api.Get(), step); }); },
                samples[i][0], samples[i][1]);
        }
    }
    for (std::size_t i = 0; i < std::size(cPairs); ++i)
        results.Compare("kora4.hpp", cPairs[i].name, samples[i][0], samples[i][1]);
}

}  // namespace kora4::bench

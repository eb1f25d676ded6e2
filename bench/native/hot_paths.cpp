// SPDX-License-Identifier: MIT
// Processor time of the library's own work.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "contract/codec/array_text.h"
#include "contract/field_ids.h"
#include "contract/messages/trace_messages_api.h"
#include "contract/profiles.h"
#include "native/stub_key_access.h"
#include "store/access/profile_key.h"
#include "store/clients/ui_keys_client.h"
#include "trace/trace.h"

namespace kora4::bench {
namespace {

constexpr std::uint32_t cManyBands = 40;
constexpr std::uint32_t cSomeElements = 20;

// A client over a store in which every patch has been written.
class Client {
  public:
    Client() {
        trace::SetFlags(0);
        client.ObjInitialize();
        client.InitialKeysLoad();
        for (const std::uint32_t profile : {cGamesProfile, cMusicProfile, cMovieProfile}) {
            client.SetActiveProfile(profile);
            client.RevertActiveProfile();
        }
        equalizer.m_bands = cManyBands;
        for (std::uint32_t band = 0; band < cManyBands; ++band) {
            equalizer.m_freq[band] = 100.0f * static_cast<float>(band + 1);
            equalizer.m_gain[band] = static_cast<float>(band) / 4.0f - 5.0f;
        }
        if (client.SetPatchValue(ApiTechnology::eGraphicEQ, sizeof equalizer, &equalizer) !=
            result::cOk)
            std::abort();
        client.AnalyseChanges(&changes);
    }

    StubKeyAccess access;
    KORA4UIKeysClient client{&access};
    ApiGraphicEQ equalizer{};
    ChangeSet changes;
};

Client& TheClient() {
    static Client client;
    return client;
}

void ReadSlider(benchmark::State& state) {
    Client& all = TheClient();
    std::uint32_t value = 0;
    for (auto _ : state) {
        all.client.GetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(ReadSlider)->Name("slider read");

void WriteSlider(benchmark::State& state) {
    Client& all = TheClient();
    std::uint32_t value = 0;
    for (auto _ : state) {
        value = (value + 1) % 10;
        all.client.SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value);
    }
}
BENCHMARK(WriteSlider)->Name("slider written");

void ReadEqualizer(benchmark::State& state) {
    Client& all = TheClient();
    for (auto _ : state) {
        all.client.GetPatchValue(ApiTechnology::eGraphicEQ, sizeof all.equalizer,
                                 &all.equalizer);
        benchmark::DoNotOptimize(all.equalizer);
    }
    if (all.equalizer.m_bands != cManyBands)
        state.SkipWithError("not 40 bands");
}
BENCHMARK(ReadEqualizer)->Name("40-band equalizer read");

void WriteEqualizer(benchmark::State& state) {
    Client& all = TheClient();
    for (auto _ : state)
        all.client.SetPatchValue(ApiTechnology::eGraphicEQ, sizeof all.equalizer,
                                 &all.equalizer);
}
BENCHMARK(WriteEqualizer)->Name("40-band equalizer written");

void Analyse(benchmark::State& state) {
    Client& all = TheClient();
    for (auto _ : state) {
        all.client.AnalyseChanges(&all.changes);
        benchmark::DoNotOptimize(all.changes);
    }
    if (all.changes.profileChanged || all.changes.patchChanged[eStandardEQTech])
        state.SkipWithError("something was found");
}
BENCHMARK(Analyse)->Name("analysis that finds nothing");

void SwitchProfile(benchmark::State& state) {
    Client& all = TheClient();
    std::uint32_t profile = cMovieProfile;
    for (auto _ : state) {
        profile = profile == cMusicProfile ? cGamesProfile : cMusicProfile;
        all.client.SetActiveProfile(profile);
    }
}
BENCHMARK(SwitchProfile)->Name("profile switch");

// A statement's share of a loop that does nothing else.
void SuppressedTrace(benchmark::State& state) {
    trace::SetFlags(0);
    std::uint32_t value = 0;
    for (auto _ : state) {
        KALTRACE(msg::cGainLimited, value, 0.0, 0.0);
        benchmark::DoNotOptimize(++value);
    }
}
BENCHMARK(SuppressedTrace)->Name("suppressed trace statement");

void ValueName(benchmark::State& state) {
    PropertyKey key = PresetPatchKey(eVolumeTech, cMovieProfile, pkey::cVolumeAmountPid);
    char16_t name[cValueNameCapacity];
    for (auto _ : state) {
        benchmark::DoNotOptimize(key);
        FormatValueName(key, name);
        benchmark::DoNotOptimize(name);
    }
}
BENCHMARK(ValueName)->Name("value name");

class Array {
  public:
    Array() {
        for (std::uint32_t i = 0; i < cSomeElements; ++i)
            elements[i] = static_cast<float>(i) - 10.0f;
        if (codec::EncodeNumericArray(256, cSomeElements, elements, text) != result::cOk)
            std::abort();
    }
    float elements[codec::cArrayCapacity] = {};
    char16_t text[codec::cArrayTextChars];
};

void Decode(benchmark::State& state) {
    Array array;
    std::uint32_t count = 0;
    for (auto _ : state) {
        codec::DecodeNumericArray(array.text, &count, array.elements);
        benchmark::DoNotOptimize(array.elements);
    }
    if (count != cSomeElements)
        state.SkipWithError("not 20 elements");
}
BENCHMARK(Decode)->Name("20-element array decoded");

void Encode(benchmark::State& state) {
    Array array;
    for (auto _ : state) {
        codec::EncodeNumericArray(256, cSomeElements, array.elements, array.text);
        benchmark::DoNotOptimize(array.text);
    }
}
BENCHMARK(Encode)->Name("20-element array encoded");

}  // namespace
}  // namespace kora4::bench

BENCHMARK_MAIN();

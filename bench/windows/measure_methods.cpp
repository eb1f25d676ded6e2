// SPDX-License-Identifier: MIT
// Methods beside the bare platform calls that they need, call by call in turn.
#include <algorithm>
#include <functional>

#include "windows/bare_client.h"
#include "windows/cases.h"
#include "windows/import_hook.h"
#include "windows/measure.h"

namespace kora4::bench {
namespace {

constexpr std::uint32_t cTraceOff = 0;
constexpr std::uint32_t cTraceDefault = 0x400;

// A sample of a call that never leaves the process is that of many calls.
constexpr double cShortMicroseconds = 2;
constexpr std::uint32_t cManyCalls = 64;

class Silent final : public Callback {
    HRESULT Called() override { return S_OK; }
};

struct Measured {
    const Case& method;
    std::size_t lines = 0;  // with the default trace word
    Samples call[2], bare[2];
};

// The word is read when an object is initialised, and is that of the process.
void SetTrace(const Library& library, Place& place, std::uint32_t word) {
    Put(place.traceWord, word);
    library.Initialized();
}

std::uint64_t TicksOf(std::uint32_t calls, const std::function<void()>& call) {
    const std::uint64_t begin = Ticks();
    for (std::uint32_t i = 0; i < calls; ++i)
        call();
    return Ticks() - begin;
}

void CountLines(const Library& library, Scene& scene, std::vector<Measured>& all) {
    ImportHook hook(library.Module());
    for (Measured& measured : all) {
        if (measured.method.prepare)
            measured.method.prepare(scene);
        ++scene.round;
        hook.Start();
        if (measured.method.call(scene) != measured.method.expected)
            Fail(std::string(measured.method.name) + " answers something else");
        hook.Stop();
        const CallList calls = hook.OwnCalls();
        measured.lines = static_cast<std::size_t>(std::ranges::count(calls, call::cLine));
    }
}

void Sample(Scene& scene, Measured& measured, bool traced, const Extent& extent) {
    const Case& method = measured.method;
    const auto call = [&] { method.call(scene); };
    const auto bare = [&] {
        method.bare(scene);
        for (std::size_t line = 0; traced && line < measured.lines; ++line)
            scene.bare.Line();
    };
    std::uint32_t calls = 1;
    const auto sample = [&](const std::function<void()>& function) {
        if (method.prepare)
            method.prepare(scene);
        ++scene.round;
        return TicksOf(calls, function);
    };
    const bool isShort =
        static_cast<double>(std::min(sample(call), sample(call))) * MicrosecondsPerTick() <
        cShortMicroseconds;
    if (isShort && !method.prepare)
        calls = cManyCalls;
    SampleInTurns(
        extent, calls, [&] { return sample(call); }, [&] { return sample(bare); },
        measured.call[traced], measured.bare[traced]);
}

}  // namespace

void SampleInTurns(const Extent& extent, std::uint32_t calls,
                   const std::function<std::uint64_t()>& call,
                   const std::function<std::uint64_t()>& bare, Samples& callSamples,
                   Samples& bareSamples) {
    const double budget = extent.smoke ? 2e3 : 2.5e5;  // microseconds of calls and bare calls
    const std::size_t most = extent.Of(2000, 20);
    double spent = 0;
    for (std::size_t i = 0; i < most && (spent < budget || i < 10); ++i) {
        // Whoever comes second finds warmer caches.
        std::uint64_t ticks[2];
        for (const std::size_t which : {i % 2, 1 - i % 2})
            ticks[which] = which == 0 ? call() : bare();
        callSamples.Add(ticks[0], calls);
        bareSamples.Add(ticks[1], calls);
        spent += static_cast<double>(ticks[0] + ticks[1]) * MicrosecondsPerTick();
    }
}

void MeasureMethods(const Library& library, Place& place, const Extent& extent,
                    Results& results) {
    place.Fill();
    const Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = library.Initialized();
    Silent callback;
    Scene scene{spApi.Get(), &callback, place, Bare(place)};
    std::vector<Measured> all;
    for (const Case& method : Cases())
        all.push_back({method, 0, {}, {}});
    SetTrace(library, place, cTraceDefault);
    CountLines(library, scene, all);

    // The whole of it several times, so that a bad moment of the machine does not fall on
    // one method.
    for (std::size_t round = 0; round < extent.Of(5, 1); ++round) {
        for (const bool traced : {false, true}) {
            SetTrace(library, place, traced ? cTraceDefault : cTraceOff);
            for (Measured& measured : all)
                Sample(scene, measured, traced, extent);
        }
    }
    SetTrace(library, place, cTraceOff);
    for (const Measured& measured : all) {
        results.Compare("methods", measured.method.name, measured.call[0], measured.bare[0]);
        results.Compare("methods, default trace", measured.method.name, measured.call[1],
                        measured.bare[1]);
    }
    spApi->UnregisterChangeNotifications();
}

void MeasureLife(const Library& library, Place& twin, const Extent& extent, Results& results) {
    twin.Fill();
    BareClient bareClient(twin, [] {});
    Samples call[2], bare[2];
    const std::size_t rounds = extent.Of(400, 5);
    for (std::size_t i = 0; i < rounds; ++i) {
        for (const std::size_t which : {i % 2, 1 - i % 2}) {
            std::uint64_t begin = Ticks();
            if (which == 0) {
                Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = library.Create();
                spApi->Initialize();
                call[0].Add(Ticks() - begin);
                begin = Ticks();
                spApi.Reset();
                call[1].Add(Ticks() - begin);
            } else {
                bareClient.Start();
                bare[0].Add(Ticks() - begin);
                begin = Ticks();
                bareClient.Stop();
                bare[1].Add(Ticks() - begin);
            }
        }
    }
    results.Compare("lifetime", "creation and Initialize", call[0], bare[0]);
    results.Compare("lifetime", "Release", call[1], bare[1]);
    results.Compare("lifetime", "together", "us", call[0].Median() + call[1].Median(),
                    bare[0].Median() + bare[1].Median());
}

}  // namespace kora4::bench

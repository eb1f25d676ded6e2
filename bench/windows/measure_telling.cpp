// SPDX-License-Identifier: MIT
// From a foreign write to the client's callback, and what many watching objects cost.
#include <atomic>
#include <memory>

#include "contract/profiles.h"
#include "windows/bare_client.h"
#include "windows/measure.h"

namespace kora4::bench {
namespace {

using Microsoft::WRL::ComPtr;

constexpr DWORD cTooLong = 10000;  // milliseconds

class Timed final : public Callback {
  public:
    // Sets the event with the last of `calls` calls.
    void Expect(LONG calls) { m_left = calls; }
    void Note() {
        if (--m_left == 0) {
            m_end = Ticks();
            SetEvent(m_done.Get());
        }
    }
    std::uint64_t Await() {
        if (WaitForSingleObject(m_done.Get(), cTooLong) != WAIT_OBJECT_0)
            Fail("a change was not told");
        return m_end;
    }

  private:
    HRESULT Called() override {
        Note();
        return S_OK;
    }

    std::atomic<LONG> m_left{0};
    std::uint64_t m_end = 0;
    UniqueHandle m_done{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

// A thread with an apartment of its own that takes calls until it ends.
class Owner {
  public:
    Owner(DWORD model, std::function<void()> begin, std::function<void()> end)
        : m_model(model), m_begin(std::move(begin)), m_end(std::move(end)) {
        m_thread.Reset(CreateThread(nullptr, 0, &Run, this, 0, nullptr));
        WaitForSingleObject(m_ready.Get(), INFINITE);
    }
    ~Owner() {
        SetEvent(m_stop.Get());
        WaitForSingleObject(m_thread.Get(), INFINITE);
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

  private:
    static DWORD WINAPI Run(void* pOwner) {
        auto& self = *static_cast<Owner*>(pOwner);
        CoInitializeEx(nullptr, self.m_model);
        self.m_begin();
        SetEvent(self.m_ready.Get());
        if (self.m_model == COINIT_APARTMENTTHREADED)
            PumpUntil(self.m_stop.Get(), INFINITE - 1);
        else
            WaitForSingleObject(self.m_stop.Get(), INFINITE);
        self.m_end();
        CoUninitialize();
        return 0;
    }

    const DWORD m_model;
    const std::function<void()> m_begin, m_end;
    UniqueHandle m_ready{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    UniqueHandle m_stop{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    UniqueHandle m_thread;
};

// Another program moves the slider. The time begins before the write that is watched.
std::uint64_t MoveSlider(Place& place, std::uint32_t value) {
    WaitForSingleObject(place.Mutex(), INFINITE);
    Put(place.Patch(cMovieProfile, eVolumeTech).fields[0], value);
    const Value& trigger = place.Trigger(eVolumeTech);
    const std::uint32_t count = Get(trigger, 0);
    const std::uint64_t begin = Ticks();
    Put(trigger, count + 1);
    ReleaseMutex(place.Mutex());
    return begin;
}

void MeasureTellingIn(DWORD model, const char* apartment, const Library& library, Place& place,
                      Place& twin, const Extent& extent, Results& results) {
    Timed told[2];
    ComPtr<IVeltoKORA4API> spApi;
    BareClient bareClient(twin, [&] { told[1].Note(); });
    const Owner owner(
        model,
        [&] {
            spApi = library.Initialized();
            spApi->RegisterChangeNotifications(&told[0]);
            bareClient.Start();
        },
        [&] {
            bareClient.Stop();
            spApi.Reset();
        });
    Samples samples[2];
    const std::size_t rounds = extent.Of(1500, 10);
    for (std::size_t i = 0; i < rounds; ++i) {
        for (const std::size_t which : {i % 2, 1 - i % 2}) {
            told[which].Expect(1);
            const std::uint64_t begin =
                MoveSlider(which == 0 ? place : twin, static_cast<std::uint32_t>(i % 5));
            const std::uint64_t end = told[which].Await();
            // What follows the callback must not fall into the next sample.
            Sleep(1);
            samples[which].Add(end - begin);
        }
    }
    results.Compare("foreign write to callback", apartment, samples[0], samples[1]);
}

}  // namespace

void MeasureTelling(const Library& library, Place& place, Place& twin, const Extent& extent,
                    Results& results) {
    place.Fill();
    twin.Fill();
    MeasureTellingIn(COINIT_APARTMENTTHREADED, "single-threaded apartment", library, place,
                     twin, extent, results);
    MeasureTellingIn(COINIT_MULTITHREADED, "multithreaded apartment", library, place, twin,
                     extent, results);
}

void MeasureWatching(const Library& library, Place& place, const Extent& extent,
                     Results& results) {
    place.Fill();
    for (const DWORD model : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
        for (const std::size_t count : {std::size_t{1}, std::size_t{10}, std::size_t{50}}) {
            Timed told;
            std::vector<ComPtr<IVeltoKORA4API>> objects(count);
            const Owner owner(
                model,
                [&] {
                    for (ComPtr<IVeltoKORA4API>& spApi : objects) {
                        spApi = library.Initialized();
                        spApi->RegisterChangeNotifications(&told);
                    }
                },
                [&] { objects.clear(); });
            // Several changes in a row: what an object still does after its callback belongs
            // to the cost of the change, and then falls into the time of the next one.
            constexpr std::uint32_t cInARow = 8;
            Samples samples;
            const std::size_t rounds = extent.Of(count == 1 ? 200 : 30, 2);
            for (std::size_t i = 0; i < rounds; ++i) {
                const std::uint64_t begin = Ticks();
                std::uint64_t end = begin;
                for (std::uint32_t change = 0; change < cInARow; ++change) {
                    told.Expect(static_cast<LONG>(count));
                    MoveSlider(place, change % 5);
                    end = told.Await();
                }
                samples.Add(end - begin, cInARow);
            }
            results.Value("watching objects, per change",
                          std::to_string(count) + (model == COINIT_MULTITHREADED
                                                       ? ", multithreaded apartment"
                                                       : ", single-threaded apartment"),
                          "us", samples.Median());
        }
    }
}

}  // namespace kora4::bench

// SPDX-License-Identifier: MIT
// Each platform call that a method, the life of an object, a pass of its monitor or the
// registration makes fails in turn, once and from then on. Afterwards the mutex is free,
// nothing has leaked, and the same call succeeds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "contract/store_mutex.h"
#include "faults/fault_injector.h"
#include "multiprocess/process_counts.h"
#include "platform/handles.h"
#include "windows/cases.h"
#include "windows/client.h"
#include "windows/place.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr DWORD cToldMilliseconds = 2000;
// A pass that was prevented tells nothing; one that was not takes a few milliseconds.
constexpr DWORD cMaybeToldMilliseconds = 60;

// The results that a client may see when the platform fails it. Reading falls back to
// defaults, so success is among them.
constexpr HRESULT cDocumented[] = {S_OK, E_FAIL, E_OUTOFMEMORY};

class Told final : public bench::Callback {
  public:
    Told() : m_called(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    HRESULT Called() override {
        SetEvent(m_called.Get());
        return S_OK;
    }
    bool Wait(DWORD milliseconds) const {
        return bench::PumpUntil(m_called.Get(), milliseconds);
    }
    void Forget() const { ResetEvent(m_called.Get()); }

  private:
    UniqueHandle m_called;
};

class FaultMatrix : public testing::Test {
  protected:
    struct Trial {
        const char* name;
        std::function<void()> prepare;  // nothing fails meanwhile
        std::function<HRESULT()> call;
        HRESULT expected = S_OK;
        std::function<void()> after = {};  // nothing fails any more
    };

    FaultMatrix() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        m_place.Fill();
    }
    ~FaultMatrix() override { CoUninitialize(); }

    void Run(const Trial& trial) {
        SCOPED_TRACE(trial.name);
        // What the process needs once is there after the first time.
        Succeed(trial);
        Succeed(trial);
        const ProcessCounts before = ProcessCounts::Now();
        trial.prepare();
        m_injector.Count();
        EXPECT_EQ(trial.expected, trial.call());
        m_injector.Disarm();
        const std::vector<FailingCall> calls = m_injector.Calls();
        m_names.clear();
        for (const auto& c : calls) m_names.push_back(c.function);
        if (trial.after)
            trial.after();
        for (std::size_t call = 0; call < calls.size(); ++call)
            for (std::size_t code = 0; code < calls[call].codes.size(); ++code)
                for (const Repeat repeat : {Repeat::eOnce, Repeat::eFromThenOn}) {
                    Fail(trial, call, code, repeat);
                    if (HasFailure())
                        return;
                }
        const ProcessCounts after = ProcessCounts::AtMost(before);
        EXPECT_LE(after.handles, before.handles);
        EXPECT_LE(after.threads, before.threads);
    }

    int Faults() const { return m_faults; }

    // Null when the library refuses.
    ComPtr<IVeltoKORA4API> Create() const {
        const auto get = reinterpret_cast<decltype(&DllGetClassObject)>(
            reinterpret_cast<void*>(GetProcAddress(m_library.Module(), "DllGetClassObject")));
        ComPtr<IClassFactory> spFactory;
        ComPtr<IVeltoKORA4API> spApi;
        if (SUCCEEDED(get(CLSID_VeltoKORA4APITestCoclass, IID_PPV_ARGS(&spFactory))))
            spFactory->CreateInstance(nullptr, IID_PPV_ARGS(&spApi));
        return spApi;
    }

    const bench::Library m_library;
    bench::Place m_place = bench::Place::Library();
    FaultInjector m_injector{m_library.Module()};

  private:
    void Succeed(const Trial& trial) {
        trial.prepare();
        EXPECT_EQ(trial.expected, trial.call());
        if (trial.after)
            trial.after();
    }

    void Fail(const Trial& trial, std::size_t call, std::size_t code, Repeat repeat) {
        trial.prepare();
        std::fprintf(stderr, "%zu %zu %d %s\n", call, code, static_cast<int>(repeat), m_names[call].c_str());
        m_injector.Arm(call, code, repeat);
        const HRESULT hr = trial.call();
        m_injector.Disarm();
        // Another thread may have gone another way, and made fewer calls.
        if (m_injector.Injected() == 0) {
            if (trial.after)
                trial.after();
            return;
        }
        ++m_faults;
        SCOPED_TRACE(m_injector.Description());
        EXPECT_TRUE(hr == trial.expected || std::ranges::count(cDocumented, hr) != 0)
            << std::hex << hr;
        ExpectFreeMutex();
        if (trial.after)
            trial.after();
        Succeed(trial);
    }

    // An object's monitor may hold it for a moment.
    void ExpectFreeMutex() const {
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_place.Mutex(), cToldMilliseconds));
        ReleaseMutex(m_place.Mutex());
    }

    int m_faults = 0;
    std::vector<std::string> m_names;
};

class FaultsOfMethods : public FaultMatrix {};

TEST_F(FaultsOfMethods, LeaveTheObjectUsable) {
    const ComPtr<IVeltoKORA4API> spApi = m_library.Initialized();
    Told told;
    bench::Scene scene{spApi.Get(), &told, m_place, bench::Bare(m_place)};
    for (const bench::Case& method : bench::Cases()) {
        Run({method.name,
             [&] {
                 if (method.prepare)
                     method.prepare(scene);
                 ++scene.round;
             },
             [&] { return method.call(scene); },
             method.expected});
        if (HasFailure())
            break;
    }
    std::printf("%d faults\n", Faults());
    spApi->UnregisterChangeNotifications();
}

class FaultsOfLife : public FaultMatrix {};

TEST_F(FaultsOfLife, LeaveNothingBehind) {
    Told told;
    Run({"create, initialise, register, unregister, release", [] {},
         [&] {
             const ComPtr<IVeltoKORA4API> spApi = Create();
             if (!spApi)
                 return E_OUTOFMEMORY;
             HRESULT hr = spApi->Initialize();
             if (SUCCEEDED(hr))
                 hr = spApi->RegisterChangeNotifications(&told);
             if (SUCCEEDED(hr))
                 hr = spApi->UnregisterChangeNotifications();
             return hr;
         }});
    std::printf("%d faults\n", Faults());
}

TEST_F(FaultsOfLife, InitializeCanBeTriedAgain) {
    ComPtr<IVeltoKORA4API> spApi;
    Run({"Initialize", [&] { spApi = Create(); },
         [&] { return spApi->Initialize(); },
         S_OK,
         [&] {
             // The same object, after the fault.
             const HRESULT hr = spApi->Initialize();
             EXPECT_TRUE(SUCCEEDED(hr)) << std::hex << hr;
             LONG profile = -1;
             EXPECT_EQ(S_OK, spApi->GetActiveProfile(&profile));
             spApi.Reset();
         }});
    std::printf("%d faults\n", Faults());
}

class FaultsOfPasses : public FaultMatrix {
  protected:
    void Switch() { Put(m_place.profile, 1 - bench::Get(m_place.profile, 0) % 2); }
};

TEST_F(FaultsOfPasses, LeaveNewObjectsUntouched) {
    Told told;
    ComPtr<IVeltoKORA4API> spApi;
    const auto begin = [&] {
        spApi = m_library.Initialized();
        spApi->RegisterChangeNotifications(&told);
        told.Forget();
    };
    Run({"pass", begin,
         [&] {
             Switch();
             told.Wait(cMaybeToldMilliseconds);
             return S_OK;
         },
         S_OK,
         [&] {
             LONG profile = -1;
             EXPECT_EQ(S_OK, spApi->GetActiveProfile(&profile));
             spApi->UnregisterChangeNotifications();
             begin();
             Switch();
             EXPECT_TRUE(told.Wait(cToldMilliseconds));
             spApi->UnregisterChangeNotifications();
             spApi.Reset();
         }});
    std::printf("%d faults\n", Faults());
}

class FaultsOfRegistration : public FaultMatrix {
  protected:
    HRESULT Call(const char* name) const {
        const auto call = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
            reinterpret_cast<void*>(GetProcAddress(m_library.Module(), name)));
        return call();
    }
};

TEST_F(FaultsOfRegistration, CanBeTriedAgain) {
    const auto doRegister = [this] { return Call("DllRegisterServer"); };
    const auto doUnregister = [this] { return Call("DllUnregisterServer"); };
    Run({"DllRegisterServer", [] {}, doRegister});
    Run({"DllUnregisterServer", doRegister, doUnregister});
    std::printf("%d faults\n", Faults());
}

}  // namespace
}  // namespace kora4::test

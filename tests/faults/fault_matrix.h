// SPDX-License-Identifier: MIT
// Runs something once for each way in which one of its platform calls can fail.
#ifndef KORA4_TESTS_FAULTS_FAULT_MATRIX_H
#define KORA4_TESTS_FAULTS_FAULT_MATRIX_H

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "faults/fault_injector.h"
#include "multiprocess/process_counts.h"
#include "platform/handles.h"
#include "support/com_client.h"
#include "windows/client.h"
#include "windows/place.h"

namespace kora4::test {

inline constexpr DWORD cToldMilliseconds = 2000;
// A notification that a fault prevents never comes; another takes a few milliseconds.
inline constexpr DWORD cMaybeToldMilliseconds = 60;

// A client's callback that knows whether it was called and how often it is referenced.
class Told final : public bench::Callback {
  public:
    Told() : m_called(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++m_references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--m_references); }

    bool Wait(DWORD milliseconds) const {
        return bench::PumpUntil(m_called.Get(), milliseconds);
    }
    void Forget() const { ResetEvent(m_called.Get()); }
    LONG References() const { return m_references; }

  private:
    HRESULT Called() override {
        SetEvent(m_called.Get());
        return S_OK;
    }

    UniqueHandle m_called;
    std::atomic<LONG> m_references{0};
};

// What is tried.
struct Trial {
    std::string name;
    std::function<void()> prepare;  // nothing fails meanwhile
    std::function<HRESULT()> call;
    HRESULT expected = S_OK;
    // The other results that the documents allow when the platform fails.
    std::vector<HRESULT> allowed = {};
    // After a call in which something failed, when nothing fails any more.
    std::function<void(const Fault& fault, HRESULT hr)> afterFault = {};
    // After a call in which nothing failed.
    std::function<void()> afterSuccess = {};
    // Releases what the call has made.
    std::function<void()> end = [] {};
};

// The built library with a filled store, and an import table that makes it fail.
class FaultMatrix : public testing::Test {
  protected:
    // The apartment of the test: a COINIT value.
    explicit FaultMatrix(DWORD apartment = COINIT_APARTMENTTHREADED);
    ~FaultMatrix() override;

    // Counts the platform calls of a run, then makes another run for each call, each of its
    // codes, failing once and from then on. After each: the result is allowed, the mutex is
    // free, the next run succeeds, and no handle, thread or block of memory is left. Handles
    // and threads take long to count: that is done at the end and, if there are more, in
    // another series of runs after each.
    void Run(const Trial& trial);

    Microsoft::WRL::ComPtr<IVeltoKORA4API> Initialized() const;
    template <typename Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(
            reinterpret_cast<void*>(GetProcAddress(Module(), name)));
    }
    // Another program makes the next one of three profiles active: going back to the last one
    // would be no change for an object that could not read the one between.
    void SwitchProfile() const;
    // Getters give what is stored, and a setter stores what it is given.
    void ExpectUsable(IVeltoKORA4API& api);
    void ExpectToldOfTheNextChange(const Told& told) const;

    const ApiLibrary m_library;
    bench::Place m_place = bench::Place::Library();
    FaultInjector m_injector{Module()};

  private:
    static HMODULE Module() { return GetModuleHandleW(L"QXA64T.dll"); }

    enum class Look { eAtMemory, eAtEverything };

    void Succeed(const Trial& trial);
    void FailAll(const Trial& trial, const std::vector<FailingCall>& calls, Look look);
    // False when nothing failed: another thread may have gone another way.
    bool Fail(const Trial& trial, std::size_t call, std::size_t code, Repeat repeat);
    void ExpectFreeMutex() const;
    bool WaitForBlocks(long blocks) const;
    void ExpectNoLeak(const std::function<void()>& again, const ProcessCounts& before);

    std::uint32_t m_uses = 0;
};

// Only every `each`-th fault is injected, beginning with number `first`.
void SelectFaults(unsigned each, unsigned first);

// How many faults were injected so far; and which, by function and code, in lines.
std::size_t InjectedFaults();
std::string InjectedFaultsText();

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_FAULT_MATRIX_H

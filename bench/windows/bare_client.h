// SPDX-License-Identifier: MIT
// The bare equivalent of an object that watches: what starting, being told and stopping take
// of the platform, and nothing else.
#ifndef KORA4_BENCH_BARE_CLIENT_H
#define KORA4_BENCH_BARE_CLIENT_H

#include <objidl.h>
#include <windows.h>
#include <wrl/client.h>

#include <functional>

#include "comcallbackgate.h"
#include "platform/handles.h"
#include "windows/bare.h"

namespace kora4::bench {

// Lives in the apartment in which it starts; started and stopped on one thread.
class BareClient final : public ICOMCallbackGate {
  public:
    // `told` is called where the client's callback would be.
    BareClient(Place& place, std::function<void()> told)
        : m_place(place), m_bare(place), m_told(std::move(told)) {}

    // The thread with its watch, the mutex, the keys, the first load.
    void Start();
    void Stop();

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP Callback(ULONG value) override;

  private:
    static DWORD WINAPI Watch(void* pClient);
    void WatchKey();
    DWORD RegisterFactory();
    void WaitLettingCallsIn(std::initializer_list<HANDLE> handles);
    bool IsSingleThreaded() const;

    Place& m_place;
    Bare m_bare;
    std::function<void()> m_told;
    UniqueHandle m_stop, m_exited, m_ready, m_thread, m_mutex;
    UniqueRegKey m_static, m_dynamic, m_app;
    CO_MTA_USAGE_COOKIE m_usage = nullptr;
    ULARGE_INTEGER m_spyCookie{};
    DWORD m_factoryCookie = 0;
    Microsoft::WRL::ComPtr<IStream> m_spStream;
    HMODULE m_module = nullptr;
};

}  // namespace kora4::bench

#endif  // KORA4_BENCH_BARE_CLIENT_H

// SPDX-License-Identifier: MIT
// The table of apartments in which the gate's proxy/stub factory is registered, and how many
// monitors share each registration.
#include "monitor/gate_factory.h"

#include <objbase.h>
#include <wrl/client.h>

#include <new>
#include <optional>
#include <utility>

#include "comcallbackgate.h"
#include "platform/module.h"
#include "platform/slim_lock.h"
#include "proxy/proxy_factory.h"

namespace kora4 {
namespace {

// The registration in one apartment. `generation` distinguishes its shares from those of an
// earlier registration that ended with its apartment, unrevoked: the thread id may be in use
// again.
struct ApartmentEntry {
    ApartmentId apartment;
    DWORD generation;
    ULONG shares;
    DWORD cookie;
    ApartmentEntry* next;
    // Held while nobody has a share.
    std::optional<ModuleLock> leftLock;
};

constinit SlimLock s_lock;
ApartmentEntry* s_entries GUARDED_BY(s_lock) PT_GUARDED_BY(s_lock) = nullptr;
DWORD s_lastGeneration GUARDED_BY(s_lock) = 0;

ApartmentEntry** Find(ApartmentId apartment) REQUIRES(s_lock) {
    ApartmentEntry** ppEntry = &s_entries;
    while (*ppEntry && (*ppEntry)->apartment != apartment)
        ppEntry = &(*ppEntry)->next;
    return ppEntry;
}

ApartmentEntry* FindOrAdd(ApartmentId apartment) REQUIRES(s_lock) {
    if (ApartmentEntry* pEntry = *Find(apartment))
        return pEntry;
    auto* pEntry =
        new (std::nothrow) ApartmentEntry{apartment, ++s_lastGeneration, 0, 0, s_entries, {}};
    if (pEntry)
        s_entries = pEntry;
    return pEntry;
}

void Remove(ApartmentEntry** ppEntry) REQUIRES(s_lock) {
    ApartmentEntry* const pEntry = *ppEntry;
    *ppEntry = pEntry->next;
    if (pEntry->cookie)
        CoRevokeClassObject(pEntry->cookie);
    delete pEntry;
}

// Windows keeps several registrations of one class and returns a cookie each time: the newest
// then serves all shares. Wine 8 keeps a single one and returns cookie 0 while it has it, so a
// cookie means that the old registration no longer exists.
void TakeNewCookie(ApartmentEntry& entry, DWORD cookie) REQUIRES(s_lock) {
    if (!cookie)
        return;
    const DWORD old = std::exchange(entry.cookie, cookie);
    if (!old || SUCCEEDED(CoRevokeClassObject(old)))
        return;
    entry.generation = ++s_lastGeneration;
    entry.shares = 0;
}

}  // namespace

HRESULT GateFactoryRegistration::Register() {
    Revoke();
    const IID& iid = __uuidof(ICOMCallbackGate);
    Microsoft::WRL::ComPtr<IUnknown> spFactory;
    HRESULT hr = PrxDllGetClassObject(
        iid, __uuidof(IUnknown), reinterpret_cast<void**>(spFactory.ReleaseAndGetAddressOf()));
    if (FAILED(hr))
        return hr;

    SlimHold hold(s_lock);
    ApartmentEntry* const pEntry = FindOrAdd(CurrentApartment());
    if (!pEntry)
        return E_OUTOFMEMORY;
    DWORD cookie = 0;
    hr = CoRegisterClassObject(iid, spFactory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                               &cookie);
    // One that keeps a single registration, as Wine 8 does, might refuse the next one too.
    if (hr == CO_E_OBJISREG)
        hr = S_OK;
    if (SUCCEEDED(hr)) {
        TakeNewCookie(*pEntry, cookie);
        hr = CoRegisterPSClsid(iid, iid);
    }
    if (SUCCEEDED(hr)) {
        ++pEntry->shares;
        pEntry->leftLock.reset();
        m_registered = true;
        m_apartment = pEntry->apartment;
        m_generation = pEntry->generation;
    } else if (pEntry->shares == 0) {
        Remove(Find(pEntry->apartment));
    }
    return hr;
}

void GateFactoryRegistration::Revoke() {
    if (!std::exchange(m_registered, false))
        return;
    SlimHold hold(s_lock);
    ApartmentEntry** const ppEntry = Find(m_apartment);
    ApartmentEntry* const pEntry = *ppEntry;
    if (!pEntry || pEntry->generation != m_generation || --pEntry->shares != 0)
        return;
    if (CurrentApartment() == m_apartment)
        Remove(ppEntry);
    else
        pEntry->leftLock.emplace();
}

void GateFactoryRegistration::RevokeLeft() {
    SlimHold hold(s_lock);
    ApartmentEntry** const ppEntry = Find(CurrentApartment());
    if (*ppEntry && (*ppEntry)->shares == 0)
        Remove(ppEntry);
}

}  // namespace kora4

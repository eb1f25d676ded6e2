// SPDX-License-Identifier: MIT
// Finds out the apartment of a thread, and waits in the way that lets COM calls into it.
#include "monitor/apartment.h"
#include "platform/non_copyable.h"

#include <algorithm>
#include <atomic>

namespace kora4 {
namespace {

std::atomic<const ApartmentCalls*> s_pCalls{nullptr};

struct Apartment {
    APTTYPE type = APTTYPE_MTA;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;

    bool IsSingleThreaded() const { return type == APTTYPE_STA || type == APTTYPE_MAINSTA; }
};

Apartment AskForApartment() {
    Apartment apartment;
    const ApartmentCalls* const pCalls = s_pCalls.load();
    const HRESULT hr =
        (pCalls ? pCalls->getType : &CoGetApartmentType)(&apartment.type, &apartment.qualifier);
    return SUCCEEDED(hr) ? apartment : Apartment{};
}

HRESULT ComWait(const Apartment& apartment, const HANDLE* handles, DWORD count,
                DWORD milliseconds, DWORD* pIndex) {
    // The wait of any other single-threaded apartment dispatches calls unasked.
    const DWORD flags =
        apartment.IsSingleThreaded() && apartment.qualifier == APTTYPEQUALIFIER_APPLICATION_STA
            ? COWAIT_DISPATCH_CALLS
            : COWAIT_DEFAULT;
    const ApartmentCalls* const pCalls = s_pCalls.load();
    return (pCalls ? pCalls->wait : &CoWaitForMultipleHandles)(
        flags, milliseconds, count, const_cast<HANDLE*>(handles), pIndex);
}

// A call that arrived before, while the host's own loop retrieved another message, does not
// wake the wait under Wine 8, and Windows does not promise that it does; a new message does. It
// is removed again: in a host that does not pump they would accumulate.
class WakingMessage : NonCopyable {
  public:
    explicit WakingMessage(bool isNeeded)
        : m_message(isNeeded ? RegisterWindowMessageW(L"KORA4.WaitLettingCallsIn") : 0) {
        if (m_message)
            PostThreadMessageW(GetCurrentThreadId(), m_message, 0, 0);
    }
    ~WakingMessage() {
        const HWND ofTheThread = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1));
        MSG message;
        if (m_message && PeekMessageW(&message, ofTheThread, m_message, m_message, PM_REMOVE) &&
            message.message == WM_QUIT)  // which no filter keeps out
            PostQuitMessage(static_cast<int>(message.wParam));
    }

  private:
    const UINT m_message;
};

// The wait without COM calls between two COM waits that fail, or that the host's filter ends
// early.
constexpr DWORD cPlainMilliseconds = 5;

DWORD TimeLeft(ULONGLONG begin, DWORD milliseconds) {
    if (milliseconds == INFINITE)
        return INFINITE;
    const ULONGLONG passed = GetTickCount64() - begin;
    return passed < milliseconds ? milliseconds - static_cast<DWORD>(passed) : 0;
}

}  // namespace

ApartmentId CurrentApartment() {
    const Apartment apartment = AskForApartment();
    if (apartment.IsSingleThreaded())
        return GetCurrentThreadId();
    return apartment.type == APTTYPE_NA ? cNeutralApartment : cMultithreadedApartment;
}

DWORD WaitLettingCallsIn(const HANDLE* handles, DWORD count, DWORD milliseconds) {
    const Apartment apartment = AskForApartment();
    const WakingMessage waking(apartment.IsSingleThreaded());
    const ULONGLONG begin = GetTickCount64();
    for (DWORD left = milliseconds;;) {
        DWORD index = count;
        const HRESULT hr = ComWait(apartment, handles, count, left, &index);
        // A wait that the host's message filter cancels may report this although it has waited
        // to the end: the signal of an automatic event is then lost.
        if (hr == S_OK || (hr == RPC_E_CALL_CANCELED && index < count))
            return WAIT_OBJECT_0 + index;
        if (hr == RPC_S_CALLPENDING)
            return WAIT_TIMEOUT;
        // In the multithreaded apartment, or in none, there are no calls to let in. In another
        // the filter may cancel every wait before the handles are tested.
        const bool isPlain = apartment.type == APTTYPE_MTA;
        const DWORD result = WaitForMultipleObjects(
            count, handles, FALSE, isPlain ? left : std::min(left, cPlainMilliseconds));
        if (isPlain || result != WAIT_TIMEOUT)
            return result;
        left = TimeLeft(begin, milliseconds);
        if (left == 0)
            return WAIT_TIMEOUT;
    }
}

void SetApartmentCalls(const ApartmentCalls* pCalls) {
    s_pCalls.store(pCalls);
}

}  // namespace kora4

#include "monitor/apartment.h"

#include <algorithm>

namespace kora4 {
namespace {

// A call that came in before, while the host's own loop took another message, does not
// wake the wait on every platform; a message that is new does. It is taken back: a host
// that does not pump would gather them.
class WakingMessage {
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
    WakingMessage(const WakingMessage&) = delete;
    WakingMessage& operator=(const WakingMessage&) = delete;

  private:
    const UINT m_message;
};

// The wait without calls between two that the host breaks off.
constexpr DWORD cBrokenOffMilliseconds = 5;

DWORD TimeLeft(ULONGLONG begin, DWORD milliseconds) {
    if (milliseconds == INFINITE)
        return INFINITE;
    const ULONGLONG passed = GetTickCount64() - begin;
    return passed < milliseconds ? milliseconds - static_cast<DWORD>(passed) : 0;
}

}  // namespace

ApartmentId CurrentApartment() {
    APTTYPE type = APTTYPE_MTA;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(CoGetApartmentType(&type, &qualifier)))
        return cMultithreadedApartment;
    switch (type) {
        case APTTYPE_STA:
        case APTTYPE_MAINSTA:
            return GetCurrentThreadId();
        case APTTYPE_NA:
            return cNeutralApartment;
        default:
            return cMultithreadedApartment;
    }
}

DWORD WaitLettingCallsIn(const HANDLE* handles, DWORD count, DWORD milliseconds) {
    const WakingMessage waking(CurrentApartment() == GetCurrentThreadId());
    const ULONGLONG begin = GetTickCount64();
    for (DWORD left = milliseconds;;) {
        DWORD index = count;
        const HRESULT hr = CoWaitForMultipleHandles(COWAIT_DEFAULT, left, count,
                                                    const_cast<HANDLE*>(handles), &index);
        // Broken off by the host's message filter. A platform may say so, and have waited
        // to the end all the same: the signal of an automatic event is then gone.
        const bool isBrokenOff = hr == RPC_E_CALL_CANCELED;
        if (hr == S_OK || (isBrokenOff && index < count))
            return WAIT_OBJECT_0 + index;
        if (hr == RPC_S_CALLPENDING)
            return WAIT_TIMEOUT;
        // Without an apartment there are no calls to let in. With one, the filter may break
        // every wait off before the handles are asked.
        const DWORD result = WaitForMultipleObjects(
            count, handles, FALSE, isBrokenOff ? std::min(left, cBrokenOffMilliseconds) : left);
        if (!isBrokenOff || result != WAIT_TIMEOUT)
            return result;
        left = TimeLeft(begin, milliseconds);
        if (left == 0)
            return WAIT_TIMEOUT;
    }
}

}  // namespace kora4

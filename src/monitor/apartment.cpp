#include "monitor/apartment.h"

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
    DWORD index = 0;
    const HRESULT hr = CoWaitForMultipleHandles(COWAIT_DEFAULT, milliseconds, count,
                                                const_cast<HANDLE*>(handles), &index);
    if (hr == S_OK)
        return WAIT_OBJECT_0 + index;
    if (hr == RPC_S_CALLPENDING)
        return WAIT_TIMEOUT;
    // Without an apartment there are no calls to let in.
    return WaitForMultipleObjects(count, handles, FALSE, milliseconds);
}

}  // namespace kora4

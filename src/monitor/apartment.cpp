#include "monitor/apartment.h"

namespace kora4 {

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
    // A call that came in before, while the host's own loop took another message, does not
    // wake the wait on every platform; a message that is new does.
    if (CurrentApartment() == GetCurrentThreadId())
        PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
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

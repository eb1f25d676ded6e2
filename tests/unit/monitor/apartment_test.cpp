// SPDX-License-Identifier: MIT
// The wait that lets calls in, with a platform that answers as only some do.
#include "monitor/apartment.h"

#include <vector>

#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

struct Platform {
    APTTYPE type;
    APTTYPEQUALIFIER qualifier;
    std::vector<HRESULT> answers;  // of the first waits; the others find the first handle set
    std::vector<DWORD> flags;      // of each wait
    bool takesMessage = false;     // as a wait may that dispatches messages
};

// The platform of the calling thread's test.
class PlatformInPlace {
  public:
    explicit PlatformInPlace(Platform& platform) {
        s_pPlatform = &platform;
        SetApartmentCalls(&cCalls);
    }
    ~PlatformInPlace() { SetApartmentCalls(nullptr); }
    PlatformInPlace(const PlatformInPlace&) = delete;
    PlatformInPlace& operator=(const PlatformInPlace&) = delete;

  private:
    static HRESULT WINAPI GetType(APTTYPE* pType, APTTYPEQUALIFIER* pQualifier) {
        *pType = s_pPlatform->type;
        *pQualifier = s_pPlatform->qualifier;
        return S_OK;
    }
    static HRESULT WINAPI Wait(DWORD flags, DWORD, ULONG, HANDLE*, DWORD* pIndex) {
        const std::size_t wait = s_pPlatform->flags.size();
        s_pPlatform->flags.push_back(flags);
        MSG message;
        if (s_pPlatform->takesMessage)
            PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
        if (wait < s_pPlatform->answers.size())
            return s_pPlatform->answers[wait];
        *pIndex = 0;
        return S_OK;
    }

    static constexpr ApartmentCalls cCalls{&GetType, &Wait};
    static inline Platform* s_pPlatform = nullptr;
};

DWORD WaitOn(Platform& platform, DWORD milliseconds) {
    const PlatformInPlace inPlace(platform);
    const UniqueHandle never = MakeManualEvent();
    const HANDLE handle = never.Get();
    return WaitLettingCallsIn(&handle, 1, milliseconds);
}

TEST(WaitInApartment, AsksForCallsInThatOfAPackagedApplicationOnly) {
    const struct {
        APTTYPE type;
        APTTYPEQUALIFIER qualifier;
        DWORD flags;
    } cases[] = {
        {APTTYPE_STA, APTTYPEQUALIFIER_APPLICATION_STA, COWAIT_DISPATCH_CALLS},
        {APTTYPE_STA, APTTYPEQUALIFIER_NONE, COWAIT_DEFAULT},
        {APTTYPE_MAINSTA, APTTYPEQUALIFIER_NONE, COWAIT_DEFAULT},
        {APTTYPE_MTA, APTTYPEQUALIFIER_NONE, COWAIT_DEFAULT},
        {APTTYPE_MTA, APTTYPEQUALIFIER_IMPLICIT_MTA, COWAIT_DEFAULT},
        {APTTYPE_NA, APTTYPEQUALIFIER_NA_ON_STA, COWAIT_DEFAULT},
    };
    for (const auto& one : cases) {
        Platform platform{one.type, one.qualifier, {}, {}};
        EXPECT_EQ(WAIT_OBJECT_0, WaitOn(platform, INFINITE));
        EXPECT_EQ(std::vector<DWORD>{one.flags}, platform.flags);
    }
}

TEST(WaitInApartment, IsTheOwnersForAPackagedApplication) {
    Platform platform{APTTYPE_STA, APTTYPEQUALIFIER_APPLICATION_STA, {}, {}};
    const PlatformInPlace inPlace(platform);
    EXPECT_EQ(GetCurrentThreadId(), CurrentApartment());
}

TEST(WaitInApartment, IsTriedAgainWhenItFails) {
    Platform platform{
        APTTYPE_STA, APTTYPEQUALIFIER_NONE, {E_UNEXPECTED, RPC_E_CALL_CANCELED, E_FAIL}, {}};
    EXPECT_EQ(WAIT_OBJECT_0, WaitOn(platform, 1000));
    EXPECT_EQ(4u, platform.flags.size());
}

TEST(WaitInApartment, IsTriedAgainWithoutALimitToo) {
    Platform platform{APTTYPE_STA, APTTYPEQUALIFIER_NONE, {E_UNEXPECTED, E_FAIL}, {}};
    EXPECT_EQ(WAIT_OBJECT_0, WaitOn(platform, INFINITE));
    EXPECT_EQ(3u, platform.flags.size());
}

TEST(WaitInApartment, IsOverInTimeWhenItAlwaysFails) {
    Platform platform{
        APTTYPE_STA, APTTYPEQUALIFIER_NONE, std::vector<HRESULT>(1000, E_UNEXPECTED), {}};
    const ULONGLONG begin = GetTickCount64();
    EXPECT_EQ(WAIT_TIMEOUT, WaitOn(platform, 60));
    EXPECT_LE(60u - 16, GetTickCount64() - begin);  // less the step of the clock
    EXPECT_LT(1u, platform.flags.size());
}

TEST(WaitInApartment, LeavesTheMessageThatEndsTheHostsLoop) {
    Platform platform{APTTYPE_STA, APTTYPEQUALIFIER_NONE, {}, {}, true};
    PostQuitMessage(7);
    EXPECT_EQ(WAIT_OBJECT_0, WaitOn(platform, 1000));
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(UINT{WM_QUIT}, message.message);
    EXPECT_EQ(WPARAM{7}, message.wParam);
}

TEST(WaitInApartment, IsAPlainOneWhereNoCallsComeIn) {
    Platform platform{APTTYPE_MTA, APTTYPEQUALIFIER_NONE, {CO_E_NOTINITIALIZED}, {}};
    EXPECT_EQ(WAIT_TIMEOUT, WaitOn(platform, 50));
    EXPECT_EQ(1u, platform.flags.size());
}

TEST(WaitInApartment, EndsWithAnyOfTheHandlesWhenItIsAPlainOneToo) {
    Platform platform{APTTYPE_MTA, APTTYPEQUALIFIER_NONE, {CO_E_NOTINITIALIZED}, {}};
    const PlatformInPlace inPlace(platform);
    const UniqueHandle never = MakeManualEvent();
    const UniqueHandle set = MakeManualEvent();
    ASSERT_TRUE(SetEvent(set.Get()));
    const HANDLE handles[] = {never.Get(), set.Get()};
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitLettingCallsIn(handles, ARRAYSIZE(handles), 1000));
}

TEST(WaitInApartment, FailsWithABadHandle) {
    const HANDLE closed = MakeManualEvent().Get();
    EXPECT_EQ(WAIT_FAILED, WaitLettingCallsIn(&closed, 1, 1000));
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// Bringing an object up where something is in the way.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objidl.h>

#include <atomic>
#include <thread>
#include <vector>

#include "kora4api_codes.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/process_counts.h"
#include "multiprocess/roles.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr DWORD cASecond = 1000;

class WithoutTheWatchedKey : public testing::TestWithParam<OwnerKind> {
  protected:
    WithoutTheWatchedKey() { RawStore::DeleteKeys(); }
    ~WithoutTheWatchedKey() override {
        m_owner.Run([this] { m_client = {}; });
        EXPECT_EQ(S_OK, m_library.CanUnloadNow());
    }

    RawStore m_store;
    ApiLibrary m_library;
    ApartmentThread m_owner{GetParam()};
    WatchingClient m_client;
};

TEST_P(WithoutTheWatchedKey, InitializeFailsAtOnceAndLeavesNoKeyBehind) {
    m_owner.Run([this] {
        m_client.spApi = m_library.Create();
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(E_FAIL, m_client.spApi->Initialize());
        EXPECT_GT(cASecond, GetTickCount64() - start);
    });
    for (const wchar_t* key : {cStatic, cDynamic, cApp})
        EXPECT_FALSE(RawStore::KeyExists(key));
}

TEST_P(WithoutTheWatchedKey, FailedCallsLeaveNothingOpen) {
    m_owner.Run([this] { m_client.spApi = m_library.Create(); });
    const auto fail = [this] { EXPECT_EQ(E_FAIL, m_client.spApi->Initialize()); };
    for (int i = 0; i < 5; ++i)
        m_owner.Run(fail);
    const ProcessCounts before = ProcessCounts::Now();
    for (int i = 0; i < 50; ++i)
        m_owner.Run(fail);
    EXPECT_EQ(before, ProcessCounts::AtMost(before));
}

TEST_P(WithoutTheWatchedKey, InitializeWorksOnceTheKeyIsThere) {
    m_owner.Run([this] {
        m_client.spApi = m_library.Create();
        EXPECT_EQ(E_FAIL, m_client.spApi->Initialize());
        EXPECT_EQ(E_FAIL, m_client.spApi->Initialize());
    });
    RawStore::CreateKeys();
    m_owner.Run([this] {
        EXPECT_EQ(S_OK, m_client.spApi->Initialize());
        m_client.spRecorder = CallbackRecorder::Create();
        EXPECT_EQ(S_OK, m_client.spApi->RegisterChangeNotifications(m_client.spRecorder.Get()));
    });
    m_owner.SetPumping(true);
    ChildProcess peer(cPeerRole);
    EXPECT_EQ("ok", peer.Ask("raw profile 1"));
    EXPECT_TRUE(m_client.spRecorder->WaitForLine("OnActiveProfileChange(1)"));
}

INSTANTIATE_TEST_SUITE_P(Owner, WithoutTheWatchedKey, testing::ValuesIn(cEveryOwnerKind),
                         NameOfOwner);

class ConcurrentInitialize : public testing::Test {
  protected:
    // The results of calls that begin at the same moment.
    std::vector<HRESULT> CallFromThreads(IVeltoKORA4API& api) {
        constexpr std::size_t cThreads = 6;
        const UniqueHandle start(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        std::vector<HRESULT> results(cThreads, E_UNEXPECTED);
        std::vector<std::jthread> threads;
        for (HRESULT& hr : results) {
            threads.emplace_back([&] {
                const Apartment apartment(COINIT_MULTITHREADED);
                WaitForSingleObject(start.Get(), INFINITE);
                hr = api.Initialize();
            });
        }
        SetEvent(start.Get());
        threads.clear();
        return results;
    }

    RawStore m_store;
    Apartment m_apartment{COINIT_MULTITHREADED};
    ApiLibrary m_library;
};

TEST_F(ConcurrentInitialize, EveryThreadGetsTheOneResult) {
    for (int round = 0; round < 20 && !HasFailure(); ++round) {
        ComPtr<IVeltoKORA4API> spApi = m_library.Create();
        RawStore::DeleteKeys();
        EXPECT_THAT(CallFromThreads(*spApi.Get()), testing::Each(E_FAIL));
        RawStore::CreateKeys();
        EXPECT_THAT(CallFromThreads(*spApi.Get()), testing::Each(S_OK));
        spApi.Reset();
        EXPECT_EQ(S_OK, m_library.CanUnloadNow());
    }
}

TEST_F(ConcurrentInitialize, ObjectsOfOneProcessComeUpSideBySide) {
    constexpr std::size_t cObjects = 8;
    for (int round = 0; round < 4 && !HasFailure(); ++round) {
        std::vector<HRESULT> results(cObjects, E_UNEXPECTED);
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < cObjects; ++i) {
            threads.emplace_back([&, i] {
                const Apartment apartment(i % 2 == 0 ? COINIT_MULTITHREADED
                                                     : COINIT_APARTMENTTHREADED);
                WatchingClient client;
                results[i] = client.Start(m_library);
            });
        }
        threads.clear();
        EXPECT_THAT(results, testing::Each(S_OK));
        EXPECT_EQ(S_OK, m_library.CanUnloadNow());
    }
}

// An object of a single-threaded apartment that does something when it is called.
class CalledObject : public IPersist {
  public:
    explicit CalledObject(std::function<void()> called) : m_called(std::move(called)) {}
    virtual ~CalledObject() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        *ppv = iid == __uuidof(IUnknown) || iid == __uuidof(IPersist) ? this : nullptr;
        return *ppv ? S_OK : E_NOINTERFACE;
    }
    // Lives on the test's stack.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetClassID(CLSID* pClassId) override {
        *pClassId = CLSID_NULL;
        m_called();
        return S_OK;
    }

  private:
    std::function<void()> m_called;
};

// Has `called` run on this single-threaded apartment's thread by a COM call that is waiting
// to be let in when this returns.
std::jthread CallIn(CalledObject& object) {
    IStream* pStream = nullptr;
    EXPECT_EQ(S_OK,
              CoMarshalInterThreadInterfaceInStream(__uuidof(IPersist), &object, &pStream));
    std::jthread caller([pStream] {
        const Apartment apartment(COINIT_MULTITHREADED);
        ComPtr<IPersist> spObject;
        EXPECT_EQ(S_OK, CoGetInterfaceAndReleaseStream(pStream, IID_PPV_ARGS(&spObject)));
        CLSID classId;
        if (spObject) {
            EXPECT_EQ(S_OK, spObject->GetClassID(&classId));
        }
    });
    // The call has been posted: it is in this thread's queue.
    EXPECT_EQ(WAIT_OBJECT_0, MsgWaitForMultipleObjectsEx(0, nullptr, cBoundedWait, QS_ALLINPUT,
                                                         MWMO_INPUTAVAILABLE));
    return caller;
}

class ReenteredInitialize : public testing::Test {
  protected:
    // Calls `inside` while Initialize waits. The result of Initialize. A start that finds
    // its monitor armed at once lets nothing in: then it is tried with another object.
    HRESULT InitializeWith(std::function<void()> inside) {
        constexpr int cTries = 30;
        for (int i = 0; i < cTries; ++i) {
            bool waiting = true;
            bool called = false;
            CalledObject object([&] {
                if (waiting) {
                    called = true;
                    inside();
                }
            });
            std::jthread caller = CallIn(object);
            IVeltoKORA4API* const pApi = m_spApi.Get();
            const HRESULT hr = pApi->Initialize();
            waiting = false;
            // The caller's proxy wants to be let in too.
            std::atomic<bool> joined = false;
            std::jthread joiner([&] {
                caller.join();
                joined = true;
            });
            EXPECT_TRUE(PumpUntil([&] { return joined.load(); }));
            if (called || FAILED(hr))
                return hr;
            m_spApi = m_library.Create();
        }
        ADD_FAILURE() << "no call was let in by " << cTries << " starts";
        return E_UNEXPECTED;
    }

    RawStore m_store;
    Apartment m_apartment{COINIT_APARTMENTTHREADED};
    ApiLibrary m_library;
    ComPtr<IVeltoKORA4API> m_spApi = m_library.Create();
};

TEST_F(ReenteredInitialize, TheInnerCallFailsAndTheOuterOneSucceeds) {
    HRESULT inner = E_UNEXPECTED;
    EXPECT_EQ(S_OK, InitializeWith([&] { inner = m_spApi->Initialize(); }));
    EXPECT_EQ(E_FAIL, inner);
    EXPECT_EQ(S_OK, m_spApi->Initialize());
    LONG profile = -1;
    EXPECT_EQ(S_OK, m_spApi->GetActiveProfile(&profile));
}

TEST_F(ReenteredInitialize, OtherMethodsFindTheObjectNotInitialised) {
    HRESULT inner = E_UNEXPECTED;
    LONG profile = -1;
    EXPECT_EQ(S_OK, InitializeWith([&] { inner = m_spApi->GetActiveProfile(&profile); }));
    EXPECT_EQ(APOERR_NOT_INITIALIZED, inner);
    EXPECT_EQ(S_OK, m_spApi->GetActiveProfile(&profile));
}

TEST_F(ReenteredInitialize, TheObjectOutlivesItsLastReference) {
    EXPECT_EQ(S_OK, InitializeWith([&] {
                  EXPECT_EQ(1u, m_spApi.Get()->Release());  // the reference of Initialize
                  *m_spApi.GetAddressOf() = nullptr;
              }));
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// The store's mutex between processes.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"
#include "support/foreign_mutex.h"

namespace kora4::test {
namespace {

// How long a call that has to wait is watched to see that it does.
constexpr DWORD cStillWaiting = 100;
constexpr DWORD cAtOnce = 1000;

// A call of another thread.
class BackgroundCall {
  public:
    explicit BackgroundCall(std::function<HRESULT()> call)
        : m_done(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_thread([this, call = std::move(call)] {
              m_hr = call();
              SetEvent(m_done.Get());
          }) {}
    ~BackgroundCall() { m_thread.join(); }
    BackgroundCall(const BackgroundCall&) = delete;
    BackgroundCall& operator=(const BackgroundCall&) = delete;

    bool IsDoneWithin(DWORD milliseconds) const {
        return WaitForSingleObject(m_done.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    HRESULT Result() const { return m_hr; }

  private:
    UniqueHandle m_done;
    std::atomic<HRESULT> m_hr{E_UNEXPECTED};
    std::thread m_thread;
};

class StoreMutex : public testing::Test {
  protected:
    StoreMutex() { EXPECT_EQ(S_OK, m_client.Start(m_library)); }

    RawStore m_store;
    Apartment m_apartment{COINIT_MULTITHREADED};
    ApiLibrary m_library;
    ChildProcess m_holder{cPeerRole};
    WatchingClient m_client;
};

TEST_F(StoreMutex, ACallWaitsForTheProcessThatHoldsIt) {
    EXPECT_EQ("ok", m_holder.Ask("raw begin"));
    const BackgroundCall call([&] { return m_client.spApi->SetActiveProfile(1); });
    EXPECT_FALSE(call.IsDoneWithin(cStillWaiting));
    EXPECT_EQ(std::nullopt, RawStore::Number(cDynamic, SettingName(cProfilePid)));
    EXPECT_EQ("ok", m_holder.Ask("raw end"));
    EXPECT_TRUE(call.IsDoneWithin(cAtOnce));
    EXPECT_EQ(S_OK, call.Result());
    EXPECT_EQ(1u, RawStore::Number(cDynamic, SettingName(cProfilePid)));
}

TEST_F(StoreMutex, InitializeWaitsForTheProcessThatHoldsIt) {
    const Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = m_library.Create();
    EXPECT_EQ("ok", m_holder.Ask("raw begin"));
    const BackgroundCall call([&] {
        const Apartment apartment(COINIT_MULTITHREADED);
        return spApi->Initialize();
    });
    EXPECT_FALSE(call.IsDoneWithin(cStillWaiting));
    EXPECT_EQ("ok", m_holder.Ask("raw end"));
    EXPECT_TRUE(call.IsDoneWithin(cAtOnce));
    EXPECT_EQ(S_OK, call.Result());
}

TEST_F(StoreMutex, TheDeathOfItsHolderLetsTheNextCallGoOnAtOnce) {
    EXPECT_EQ("ok", m_holder.Ask("raw begin"));
    EXPECT_EQ("ok", m_holder.Ask("raw profile 2"));
    const BackgroundCall call([&] { return m_client.spApi->SetVeltoEnable(FALSE); });
    EXPECT_FALSE(call.IsDoneWithin(cStillWaiting));
    m_holder.Kill();
    EXPECT_TRUE(call.IsDoneWithin(cAtOnce));
    EXPECT_EQ(S_OK, call.Result());
    EXPECT_TRUE(m_client.spRecorder->WaitForLine("OnActiveProfileChange(2)"));
}

TEST_F(StoreMutex, TheDeathOfItsHolderLetsANotificationGoOn) {
    EXPECT_EQ("ok", m_holder.Ask("raw begin"));
    EXPECT_EQ("ok", m_holder.Ask("raw enable 0"));
    EXPECT_FALSE(m_client.spRecorder->WaitForLines(1, cStillWaiting));
    m_holder.Kill();
    EXPECT_TRUE(m_client.spRecorder->WaitForLine("OnEnableStateChange(0)", cAtOnce));
}

TEST_F(StoreMutex, EachOfSeveralHoldersMayDieInTurn) {
    EXPECT_EQ("ok", m_holder.Ask("raw begin"));
    std::vector<std::unique_ptr<ChildProcess>> holders;
    for (int i = 0; i < 4; ++i) {
        holders.push_back(std::make_unique<ChildProcess>(cPeerRole));
        holders.back()->Send("raw begin");
    }
    m_holder.Kill();
    // Whichever of them gets it next says so, and dies with it.
    for (int dead = 0; dead < 4; ++dead) {
        std::vector<HANDLE> answers;
        for (const auto& upHolder : holders)
            answers.push_back(upHolder->AnswerEvent());
        const DWORD index = WaitForMultipleObjects(static_cast<DWORD>(answers.size()),
                                                   answers.data(), FALSE, cBoundedWait) -
                            WAIT_OBJECT_0;
        ASSERT_LT(index, answers.size());
        holders[index]->Kill();
        holders.erase(holders.begin() + static_cast<std::ptrdiff_t>(index));
    }
    const BackgroundCall call([&] { return m_client.spApi->SetActiveProfile(1); });
    EXPECT_TRUE(call.IsDoneWithin(cAtOnce));
}

// Each rename reads the counter of the profile table and writes the next number.
TEST_F(StoreMutex, WritersInSeveralProcessesLoseNoUpdate) {
    constexpr DWORD cWriters = 4;
    constexpr DWORD cRenames = 50;
    RawStore::SetText(cStatic, ProfileNameName(3), L"name");
    std::vector<std::unique_ptr<ChildProcess>> writers;
    for (DWORD i = 0; i < cWriters; ++i) {
        writers.push_back(std::make_unique<ChildProcess>(cPeerRole));
        EXPECT_EQ("0x00000000", writers.back()->Ask("open mta"));
    }
    for (const auto& upWriter : writers) {
        for (DWORD i = 0; i < cRenames; ++i)
            upWriter->Send("SetCustomProfileName 3 name");
    }
    for (const auto& upWriter : writers) {
        for (DWORD i = 0; i < cRenames; ++i)
            EXPECT_EQ("0x00000000", upWriter->Receive());
    }
    EXPECT_EQ(cWriters * cRenames, RawStore::Number(cDynamic, SettingName(cTablePid)));
}

// A program with another token was first. On Windows that is every machine where an elevated
// program uses the settings before the others do.
TEST(StoreMutexOfAnotherToken, IsWhatClientsInSeveralProcessesWaitFor) {
    const ForeignMutex foreign;
    const RawStore store;
    const Apartment apartment(COINIT_MULTITHREADED);
    const ApiLibrary library;
    WatchingClient client;
    ASSERT_EQ(S_OK, client.Start(library));
    ChildProcess peer(cPeerRole);
    ASSERT_EQ("0x00000000", peer.Ask("open mta"));

    ASSERT_EQ(WAIT_OBJECT_0, foreign.Take(cBoundedWait));
    const BackgroundCall call([&] { return client.spApi->SetVeltoEnable(FALSE); });
    peer.Send("SetActiveProfile 1");
    EXPECT_FALSE(call.IsDoneWithin(cStillWaiting));
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(peer.AnswerEvent(), 0));
    EXPECT_EQ(std::nullopt, RawStore::Number(cDynamic, SettingName(cProfilePid)));
    foreign.Release();

    EXPECT_TRUE(call.IsDoneWithin(cAtOnce));
    EXPECT_EQ(S_OK, call.Result());
    EXPECT_EQ("0x00000000", peer.Receive());
    EXPECT_TRUE(client.spRecorder->WaitForLine("OnActiveProfileChange(1)"));
}

TEST(StoreMutexOfAnotherToken, IsNoMutexWhenTheNameMeansSomethingElse) {
    const UniqueHandle event(
        CreateEventW(nullptr, TRUE, FALSE, L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}"));
    ASSERT_TRUE(event);
    const RawStore store;
    const Apartment apartment(COINIT_MULTITHREADED);
    const ApiLibrary library;
    const Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = library.Create();
    EXPECT_EQ(E_FAIL, spApi->Initialize());
    for (const wchar_t* key : {cStatic, cDynamic}) {
        EXPECT_TRUE(RawStore::KeyExists(key));
        EXPECT_EQ(0u, RawStore::Count(key)) << "something is written";
    }
}

}  // namespace
}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// One change, many who want to know of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"

namespace kora4::test {
namespace {

using Lines = std::vector<std::string>;

constexpr char cBarrier[] = "OnCustomProfileTableChange()";

// Objects spread over threads of one kind, each with a recorder.
class Watchers {
  public:
    Watchers(const ApiLibrary& library, OwnerKind kind, std::size_t threads,
             std::size_t objects) {
        for (std::size_t t = 0; t < threads; ++t)
            m_threads.push_back(std::make_unique<ApartmentThread>(kind));
        m_clients.resize(objects);
        ForEach([&](WatchingClient& client) { EXPECT_EQ(S_OK, client.Start(library)); });
    }
    ~Watchers() {
        ForEach([](WatchingClient& client) { client = {}; });
    }

    std::vector<WatchingClient>& Clients() { return m_clients; }

  private:
    void ForEach(const std::function<void(WatchingClient&)>& work) {
        for (std::size_t i = 0; i < m_clients.size(); ++i)
            m_threads[i % m_threads.size()]->Run([&] { work(m_clients[i]); });
    }

    std::vector<std::unique_ptr<ApartmentThread>> m_threads;
    std::vector<WatchingClient> m_clients;
};

class ManyClients : public testing::Test {
  protected:
    RawStore m_store;
    ApiLibrary m_library;
    ChildProcess m_writer{cPeerRole};
};

TEST_F(ManyClients, FiftyObjectsInOneProcessAreAllToldOnce) {
    {
        Watchers inStas(m_library, OwnerKind::eStaPumping, 5, 25);
        Watchers inMta(m_library, OwnerKind::eMta, 2, 25);
        EXPECT_EQ("ok", m_writer.Ask("raw profile 1"));
        for (Watchers* pWatchers : {&inStas, &inMta}) {
            for (WatchingClient& client : pWatchers->Clients())
                EXPECT_TRUE(client.spRecorder->WaitForLines(1));
        }
        EXPECT_EQ("ok", m_writer.Ask("raw table"));
        for (Watchers* pWatchers : {&inStas, &inMta}) {
            for (WatchingClient& client : pWatchers->Clients()) {
                EXPECT_TRUE(client.spRecorder->WaitForLines(2));
                EXPECT_EQ((Lines{"OnActiveProfileChange(1)", cBarrier}),
                          client.spRecorder->Log());
            }
        }
    }
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ManyClients, ObjectsThatComeAndGoTakeNothingFromThoseThatStay) {
    Watchers staying(m_library, OwnerKind::eStaPumping, 1, 2);
    Watchers stayingInMta(m_library, OwnerKind::eMta, 1, 2);
    for (unsigned round = 0; round < 5; ++round) {
        {
            Watchers passing(m_library, OwnerKind::eMta, 2, 3);
            Watchers passingStas(m_library, OwnerKind::eStaIdle, 2, 2);
        }
        const std::string profile = std::to_string(round % 3 == 2 ? 0 : round % 3 + 1);
        EXPECT_EQ("ok", m_writer.Ask("raw profile " + profile));
        for (Watchers* pWatchers : {&staying, &stayingInMta}) {
            for (WatchingClient& client : pWatchers->Clients()) {
                EXPECT_TRUE(
                    client.spRecorder->WaitForLine("OnActiveProfileChange(" + profile + ")"));
                client.spRecorder->ClearLog();
            }
        }
    }
}

TEST_F(ManyClients, SixProcessesAreAllToldOnce) {
    std::vector<std::unique_ptr<ChildProcess>> watchers;
    for (int i = 0; i < 6; ++i)
        watchers.push_back(std::make_unique<ChildProcess>(cPeerRole));
    for (std::size_t i = 0; i < watchers.size(); ++i) {
        EXPECT_EQ("0x00000000", watchers[i]->Ask(i % 2 == 0 ? "open sta" : "open mta"));
        EXPECT_EQ("0x00000000", watchers[i]->Ask("watch"));
    }
    EXPECT_EQ("ok", m_writer.Ask("raw profile 2"));
    for (const auto& upWatcher : watchers)
        EXPECT_EQ("OnActiveProfileChange(2)", upWatcher->Ask("log 1"));
    EXPECT_EQ("ok", m_writer.Ask("raw table"));
    for (const auto& upWatcher : watchers)
        EXPECT_EQ(std::string("OnActiveProfileChange(2)|") + cBarrier, upWatcher->Ask("log 2"));
}

}  // namespace
}  // namespace kora4::test

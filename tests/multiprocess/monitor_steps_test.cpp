// SPDX-License-Identifier: MIT
// A write of another program right before and right after every platform call that the library
// makes while it starts to watch, finds and tells a change, and stops: the client shows the
// last state.
#include <gtest/gtest.h>

#include <string>

#include "multiprocess/import_steps.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/watchdog.h"
#include "support/message_filter.h"

namespace kora4::test {
namespace {

constexpr unsigned cProfiles = 3;
constexpr unsigned cMostSteps = 4000;

// Rejects the first calls after each change.
class HesitantFilter final : public MessageFilter {
  public:
    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        if (left == 0)
            return SERVERCALL_ISHANDLED;
        --left;
        return SERVERCALL_REJECTED;
    }

    std::atomic<unsigned> left{0};
};

struct Owner {
    const char* name;
    OwnerKind kind;
    bool hesitant;
};
constexpr Owner cOwners[] = {
    {"Sta", OwnerKind::eStaPumping, false},
    {"HesitantSta", OwnerKind::eStaPumping, true},
    {"Mta", OwnerKind::eMta, false},
};

class WriteAtAnyStep : public testing::TestWithParam<Owner> {
  protected:
    WriteAtAnyStep() {
        AllowSeconds(120);
        if (GetParam().hesitant)
            m_owner.Run([this] { m_upFilter = std::make_unique<HesitantFilter>(); });
    }
    ~WriteAtAnyStep() override {
        m_owner.Run([this] {
            m_client.spApi.Reset();
            m_upFilter.reset();
        });
        EXPECT_TRUE(PumpUntil([this] { return m_library.CanUnloadNow() == S_OK; }));
    }

    void Start() {
        m_owner.Run([this] {
            ASSERT_EQ(S_OK, m_client.Start(m_library));
            // As every client does.
            ASSERT_EQ(S_OK, m_client.spApi->GetActiveProfile(&m_read));
        });
    }
    // Another profile than the one before.
    void Write() {
        m_written = (m_written + 1) % cProfiles;
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), m_written);
    }
    void WriteAtStep(unsigned step) {
        m_steps.Arm(step, [this] { Write(); });
    }
    // What a client shows that has read once and believes what it is told since.
    std::string Shown() const {
        const std::vector<std::string> log = m_client.spRecorder->Log();
        return log.empty() ? Told(static_cast<unsigned>(m_read)) : log.back();
    }
    static std::string Told(unsigned profile) {
        return "OnActiveProfileChange(" + std::to_string(profile) + ")";
    }
    void ExpectLastState() {
        PumpUntil([this] { return Shown() == Told(m_written); });
        EXPECT_EQ(Told(m_written), Shown());
    }

    RawStore m_store;
    ApiLibrary m_library;
    ImportSteps m_steps;
    ApartmentThread m_owner{GetParam().kind};
    std::unique_ptr<HesitantFilter> m_upFilter;
    WatchingClient m_client;
    LONG m_read = -1;
    std::atomic<unsigned> m_written{0};
};

TEST_P(WriteAtAnyStep, OfAPassIsTold) {
    Start();
    unsigned step = 0;
    for (bool hasRun = true; hasRun && step < cMostSteps && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        if (m_upFilter)
            m_upFilter->left = 2;
        WriteAtStep(step);
        Write();
        // Neither is lost, nor is a later write needed to find it.
        PumpUntil([this] { return m_steps.HasRun() && Shown() == Told(m_written); }, nullptr,
                  1000);
        m_steps.AwaitRest();
        hasRun = m_steps.Disarm();
        ExpectLastState();
        m_client.spRecorder->ClearLog();
        m_read = static_cast<LONG>(m_written);
    }
    std::printf("%u steps\n", step - 1);
    EXPECT_LT(40u, step);
}

using WriteAtAnyStepOfALife = WriteAtAnyStep;

TEST_P(WriteAtAnyStepOfALife, OfTheStartIsReadOrTold) {
    unsigned step = 0;
    for (bool hasRun = true; hasRun && step < cMostSteps && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        m_client = {};
        WriteAtStep(step);
        Start();
        m_steps.AwaitRest();
        hasRun = m_steps.Disarm();
        ExpectLastState();
        // It still watches.
        Write();
        ExpectLastState();
        m_owner.Run([this] { m_client.spApi.Reset(); });
    }
    std::printf("%u steps\n", step - 1);
    EXPECT_LT(100u, step);
}

TEST_P(WriteAtAnyStepOfALife, OfTheStopHarmsNothing) {
    unsigned step = 0;
    for (bool hasRun = true; hasRun && step < cMostSteps && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        m_client = {};
        Start();
        WriteAtStep(step);
        m_owner.Run([this] { m_client.spApi.Reset(); });
        EXPECT_TRUE(PumpUntil([this] { return m_library.CanUnloadNow() == S_OK; }));
        EXPECT_EQ(1u, m_client.spRecorder->References());
        m_steps.AwaitRest();
        hasRun = m_steps.Disarm();
    }
    std::printf("%u steps\n", step - 1);
    EXPECT_LT(10u, step);
}

std::string NameOfTest(const testing::TestParamInfo<Owner>& tested) {
    return tested.param.name;
}

INSTANTIATE_TEST_SUITE_P(Owner, WriteAtAnyStep, testing::ValuesIn(cOwners), NameOfTest);
// Nobody calls a busy owner then.
INSTANTIATE_TEST_SUITE_P(Owner, WriteAtAnyStepOfALife, testing::Values(cOwners[0], cOwners[2]),
                         NameOfTest);

}  // namespace
}  // namespace kora4::test

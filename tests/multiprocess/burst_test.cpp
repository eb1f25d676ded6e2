// SPDX-License-Identifier: MIT
// Bursts of writes of another process against a client that reads and writes at the same time,
// in every kind of apartment: what it is told is right, in order, and in the end the last
// state.
#include <gtest/gtest.h>
#include <kora4_proxies.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>

#include "kora4api_constants.h"
#include "multiprocess/burst_listener.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/watchdog.h"
#include "support/message_filter.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr unsigned cBurstsAtATime = 50;
constexpr unsigned cTimes = 4;  // 20,000 bursts in a run that is a hundred times as long

// Where the object lives, and where its client uses it and is told.
struct Place {
    const char* name;
    OwnerKind home;
    OwnerKind user;
    bool carried;  // through proxies
    bool busy;     // its owner's message filter rejects calls at random
};

constexpr Place cPlaces[] = {
    {"Sta", OwnerKind::eStaPumping, OwnerKind::eStaPumping, false, false},
    {"BusySta", OwnerKind::eStaPumping, OwnerKind::eStaPumping, false, true},
    {"Mta", OwnerKind::eMta, OwnerKind::eMta, false, false},
    {"StaUsedFromMta", OwnerKind::eStaPumping, OwnerKind::eMta, true, false},
    {"MtaUsedFromSta", OwnerKind::eMta, OwnerKind::eStaPumping, true, false},
};

// Rejects about every second call, in runs of random length.
class MoodyFilter final : public MessageFilter {
  public:
    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        if (m_left == 0) {
            m_rejects = !m_rejects;
            m_left = 1 + static_cast<unsigned>(m_random()) % 3;
        }
        --m_left;
        rejected += m_rejects;
        return m_rejects ? SERVERCALL_REJECTED : SERVERCALL_ISHANDLED;
    }

    unsigned rejected = 0;

  private:
    std::mt19937 m_random;
    bool m_rejects = false;
    unsigned m_left = 0;
};

class Bursts : public testing::TestWithParam<Place> {
  protected:
    Bursts();
    ~Bursts() override;

    bool OnOneThread() const {
        return !GetParam().carried && GetParam().home == OwnerKind::eStaPumping;
    }
    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random()) % bound; }

    void OwnCall();
    void ReadGroup();
    void WriteShared();
    LastWritten Write();
    void ExpectLastState(const LastWritten& last);

    const std::uint32_t m_seed = static_cast<std::uint32_t>(GetTickCount64());
    std::mt19937 m_random{m_seed};
    RawStore m_store;
    ApiLibrary m_library;
    ChildProcess m_writer{cBurstWriterRole};
    ApartmentThread m_home{GetParam().home};
    std::unique_ptr<ApartmentThread> m_upOther;  // the user's, if that is another one
    ApartmentThread& m_user;
    DWORD m_cookies[2] = {};
    std::unique_ptr<MoodyFilter> m_upFilter;
    ComPtr<IVeltoKORA4API> m_spHome;
    ComPtr<IVeltoKORA4API> m_spApi;  // the user's, m_spHome or a proxy
    ComPtr<BurstListener> m_spListener;
    unsigned m_calls = 0;
};

Bursts::Bursts()
    : m_upOther(GetParam().carried ? std::make_unique<ApartmentThread>(GetParam().user)
                                   : nullptr),
      m_user(m_upOther ? *m_upOther : m_home) {
    std::istringstream first(m_writer.Ask("1 1"));
    LastWritten last;
    EXPECT_TRUE(first >> last);
    m_spListener.Attach(new BurstListener(last, OnOneThread()));
    IStream* pStream = nullptr;
    m_home.Run([&] {
        m_spHome = m_library.Create();
        ASSERT_EQ(S_OK, m_spHome->Initialize());
        if (GetParam().busy)
            m_upFilter = std::make_unique<MoodyFilter>();
        if (!GetParam().carried)
            return;
        EXPECT_EQ(S_OK, Kora4RegisterProxies(&m_cookies[0]));
        EXPECT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(__uuidof(IVeltoKORA4API),
                                                              m_spHome.Get(), &pStream));
    });
    m_user.Run([&] {
        if (GetParam().carried) {
            EXPECT_EQ(S_OK, Kora4RegisterProxies(&m_cookies[1]));
            ASSERT_EQ(S_OK, CoGetInterfaceAndReleaseStream(pStream, IID_PPV_ARGS(&m_spApi)));
        } else {
            m_spApi = m_spHome;
        }
        ASSERT_EQ(S_OK, m_spApi->RegisterChangeNotifications(m_spListener.Get()));
    });
}

Bursts::~Bursts() {
    m_user.Run([this] {
        EXPECT_EQ(S_OK, m_spApi->UnregisterChangeNotifications());
        m_spApi.Reset();
        Kora4RevokeProxies(m_cookies[1]);
    });
    m_home.Run([this] {
        m_upFilter.reset();
        m_spHome.Reset();
        Kora4RevokeProxies(m_cookies[0]);
    });
    EXPECT_TRUE(
        PumpUntil([this] { return m_library.CanUnloadNow() == S_OK; }, nullptr, cBoundedWait));
}

void Bursts::ReadGroup() {
    const std::uint32_t told = m_spListener->Now().writers.group;
    KORA4PatchValueUnion value{};
    value.m_technology = cGroup[0];
    EXPECT_EQ(S_OK, m_spApi->GetSimplePatchValue(&value));
    const auto stamp = static_cast<std::uint32_t>(value.m_values.m_enhancementSlider);
    EXPECT_LE(told, stamp) << "read an older value than was told before";
    m_spListener->HasRead(stamp);
}

void Bursts::WriteShared() {
    KORA4PatchValueUnion value{};
    value.m_technology = cShared;
    value.m_values.m_volumeSlider = Below(cSharedBound);
    EXPECT_EQ(S_OK, m_spApi->SetSimplePatchValue(&value));
    m_spListener->HasWritten(value.m_values.m_volumeSlider);
}

// What only the client changes is never told; what both change is shown as it is stored.
void Bursts::OwnCall() {
    ++m_calls;
    switch (Below(6)) {
        case 0:
            EXPECT_EQ(S_OK, m_spApi->SetTechnologyOnElseOff(eVolumeLeveler,
                                                            static_cast<BOOL>(Below(2))));
            break;
        case 1: {
            GraphicEQData eq{};
            eq.m_bands = 1 + Below(KORA4_GRAPHIC_EQ_MAX_BANDS);
            for (ULONG i = 0; i < eq.m_bands; ++i)
                eq.m_freq[i] = static_cast<float>(100 + i);
            EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&eq));
            break;
        }
        case 2:
            if (OnOneThread())
                WriteShared();
            break;
        default:
            ReadGroup();
            break;
    }
}

// The client goes on until the writer is done.
LastWritten Bursts::Write() {
    m_writer.Send(std::to_string(cBurstsAtATime) + " " + std::to_string(m_random()));
    while (WaitForSingleObject(m_writer.AnswerEvent(), Below(3)) != WAIT_OBJECT_0 &&
           !HasFailure()) {
        m_user.Run([this] {
            for (unsigned calls = 1 + Below(4); calls > 0; --calls)
                OwnCall();
        });
    }
    LastWritten last;
    std::istringstream answer(m_writer.Receive());
    EXPECT_TRUE(answer >> last);
    return last;
}

void Bursts::ExpectLastState(const LastWritten& last) {
    const auto same = [](const LastWritten& a, const LastWritten& b) {
        return a.group == b.group && a.single == b.single && a.enable == b.enable &&
               a.groupSwitch == b.groupSwitch;
    };
    PumpUntil([&] { return same(last, m_spListener->Now().writers); });
    const Shown shown = m_spListener->Now();
    EXPECT_EQ(last.group, shown.writers.group);
    EXPECT_EQ(last.single, shown.writers.single);
    EXPECT_EQ(last.enable, shown.writers.enable);
    EXPECT_EQ(last.groupSwitch, shown.writers.groupSwitch);
    // Whatever is still on its way comes with this.
    RawStore::Bump(SettingName(cTablePid));
    EXPECT_TRUE(PumpUntil([&] { return m_spListener->Now().tables > shown.tables; }));
    if (OnOneThread()) {
        const auto isShown = [this] {
            return RawStore::Number(cStatic, PatchName(RawTechnology::eDynamicEQ, 0, 5)) ==
                   m_spListener->Now().shared;
        };
        EXPECT_TRUE(PumpUntil(isShown)) << "the client shows " << m_spListener->Now().shared;
    }
}

TEST_P(Bursts, AreToldInOrderAndToTheLastState) {
    AllowSeconds(60);
    const unsigned times = cTimes * Times();
    for (unsigned i = 0; i < times && !HasFailure(); ++i) {
        ExpectLastState(Write());
        EXPECT_EQ("", m_spListener->Complaint());
    }
    const Shown shown = m_spListener->Now();
    EXPECT_LT(0u, shown.tables);
    std::printf("seed %u: %u bursts, %u own calls, %u told, %u calls rejected\n",
                static_cast<unsigned>(m_seed), times * cBurstsAtATime, m_calls, shown.calls,
                m_upFilter ? m_upFilter->rejected : 0);
    EXPECT_EQ(GetParam().busy, m_upFilter && m_upFilter->rejected != 0);
}

INSTANTIATE_TEST_SUITE_P(Place, Bursts, testing::ValuesIn(cPlaces),
                         [](const testing::TestParamInfo<Place>& tested) {
                             return std::string(tested.param.name);
                         });

}  // namespace
}  // namespace kora4::test

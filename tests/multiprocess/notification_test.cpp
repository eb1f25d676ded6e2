// SPDX-License-Identifier: MIT
// What a client is told of the changes that another process makes, in each kind of
// apartment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kora4api_constants.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"

namespace kora4::test {
namespace {

using Lines = std::vector<std::string>;
constexpr char cBarrier[] = "OnCustomProfileTableChange()";
constexpr char cSuccess[] = "0x00000000";

// What the other process does, each command by itself, and what this one is told of it.
struct Change {
    const char* name;
    std::vector<std::string> commands;
    Lines told;
};

const Change cApiChanges[] = {
    {"Profile", {"SetActiveProfile 1"}, {"OnActiveProfileChange(1)"}},
    {"ProfileAndBack",
     {"SetActiveProfile 2", "SetActiveProfile 0"},
     {"OnActiveProfileChange(2)", "OnActiveProfileChange(0)"}},
    {"Enable",
     {"SetVeltoEnable 0", "SetVeltoEnable 1"},
     {"OnEnableStateChange(0)", "OnEnableStateChange(1)"}},
    {"VolumeLeveler",
     {"SetTechnologyOnElseOff 0 0", "SetSimplePatchValue 0 10"},
     {"OnTechnologyOnElseOffChange(eVolumeLeveler, 0)",
      "OnSimplePatchValueChange(eVolumeLeveler, 10)"}},
    {"GraphicEQ",
     {"SetTechnologyOnElseOff 1 0", "SetGraphicEQData 2 3.5"},
     {"OnTechnologyOnElseOffChange(eGraphicEQ, 0)",
      "OnGraphicEQChange(2 bands, first gain 3.5)"}},
    {"IntelligentEQ",
     {"SetTechnologyOnElseOff 2 1", "SetSimplePatchValue 2 4"},
     {"OnTechnologyOnElseOffChange(eIntelligentEQ, 1)",
      "OnSimplePatchValueChange(eIntelligentEQ, 4)"}},
    {"DialogEnhancer",
     {"SetTechnologyOnElseOff 3 0", "SetSimplePatchValue 3 0.5"},
     {"OnTechnologyOnElseOffChange(eDialogEnhancer, 0)",
      "OnSimplePatchValueChange(eDialogEnhancer, 0.5)"}},
    {"HeadphoneVirtualizer",
     {"SetTechnologyOnElseOff 4 0", "SetSimplePatchValue 4 2.25"},
     {"OnTechnologyOnElseOffChange(eVirtualizerHP, 0)",
      "OnSimplePatchValueChange(eVirtualizerHP, 2.25)"}},
    {"SpeakerVirtualizer",
     {"SetTechnologyOnElseOff 5 0", "SetSimplePatchValue 5 1"},
     {"OnTechnologyOnElseOffChange(eVirtualizerSpkr, 0)",
      "OnSimplePatchValueChange(eVirtualizerSpkr, 1)"}},
    {"ProfileTable",
     {"CreateCustomProfile 3 first", "SetCustomProfileName 3 second", "DeleteCustomProfile 3"},
     {cBarrier, cBarrier, cBarrier}},
};

// One pass each, though the writer makes several writes.
const Change cGroupedChanges[] = {
    {"EnteringADemo",
     {"SetDemoProfileAndEnable " + std::to_string(KORA4_PROFILE_DEMO_MOVIE) + " 0"},
     {"OnEnableStateChange(0)",
      "OnActiveProfileChange(" + std::to_string(KORA4_PROFILE_DEMO_MOVIE) + ")"}},
    {"TheRevertOfAProfile",
     {"RevertActiveProfile"},
     {"OnSimplePatchValueChange(eVolumeLeveler, 262151)",
      "OnSimplePatchValueChange(eDialogEnhancer, 0.33)",
      "OnSimplePatchValueChange(eIntelligentEQ, 0)",
      "OnGraphicEQChange(10 bands, first gain 0)",
      "OnSimplePatchValueChange(eVirtualizerHP, 6)",
      "OnSimplePatchValueChange(eVirtualizerSpkr, 10)"}},
    {"EverythingButTheProfile",
     {"raw begin", "raw table", "raw value 5 0 1", "raw flag 5 0 0", "raw value 4 0 2",
      "raw flag 4 0 0", "raw value 3 0 0", "raw flag 3 0 0", "raw value 2 0 5",
      "raw flag 2 0 1", "raw value 1 0 3", "raw flag 1 0 0", "raw value 0 0 4",
      "raw flag 0 0 0", "raw enable 0", "raw end"},
     {"OnEnableStateChange(0)", "OnTechnologyOnElseOffChange(eVolumeLeveler, 0)",
      "OnSimplePatchValueChange(eVolumeLeveler, 4)",
      "OnTechnologyOnElseOffChange(eDialogEnhancer, 0)",
      "OnSimplePatchValueChange(eDialogEnhancer, 0)",
      "OnTechnologyOnElseOffChange(eIntelligentEQ, 1)",
      "OnSimplePatchValueChange(eIntelligentEQ, 5)",
      "OnTechnologyOnElseOffChange(eGraphicEQ, 0)", "OnGraphicEQChange(1 bands, first gain 3)",
      "OnTechnologyOnElseOffChange(eVirtualizerHP, 0)",
      "OnSimplePatchValueChange(eVirtualizerHP, 2)",
      "OnTechnologyOnElseOffChange(eVirtualizerSpkr, 0)",
      "OnSimplePatchValueChange(eVirtualizerSpkr, 1)", cBarrier}},
    {"EverythingWithTheProfile",
     {"raw begin", "raw table", "raw value 0 1 4", "raw flag 0 1 0", "raw value 1 1 3",
      "raw profile 1", "raw enable 0", "raw end"},
     {"OnEnableStateChange(0)", "OnActiveProfileChange(1)", cBarrier}},
};

class ForeignChanges : public testing::TestWithParam<std::tuple<OwnerKind, Change>> {
  protected:
    ForeignChanges() {
        EXPECT_EQ(cSuccess, m_peer.Ask("open sta"));
        m_owner.Run([this] { EXPECT_EQ(S_OK, m_client.Start(m_library)); });
    }
    ~ForeignChanges() override {
        m_owner.Run([this] { m_client = {}; });
    }

    OwnerKind Kind() const { return std::get<OwnerKind>(GetParam()); }
    const Change& TheChange() const { return std::get<Change>(GetParam()); }

    // Returns when the other process has made the change.
    void Make(const std::string& command) {
        const bool isRaw = command.starts_with("raw");
        EXPECT_EQ(isRaw ? "ok" : cSuccess, m_peer.Ask(command)) << command;
    }

    // Made while the owner does not pump, if it is one of those.
    void MakeAndAwait(const std::vector<std::string>& commands, std::size_t lines) {
        const std::size_t before = m_client.spRecorder->Log().size();
        m_owner.SetPumping(Kind() == OwnerKind::eStaPumping);
        for (const std::string& command : commands)
            Make(command);
        if (Kind() == OwnerKind::eStaIdle) {
            EXPECT_EQ(before, m_client.spRecorder->Log().size());
        }
        m_owner.SetPumping(true);
        EXPECT_TRUE(m_client.spRecorder->WaitForLines(before + lines));
    }

    void ExpectTold(Lines told) {
        MakeAndAwait({"raw table"}, 1);
        told.push_back(cBarrier);
        EXPECT_EQ(told, m_client.spRecorder->Log());
        if (Kind() != OwnerKind::eMta) {
            EXPECT_EQ(m_owner.Id(), m_client.spRecorder->CallThread());
        }
    }

    RawStore m_store;
    ApiLibrary m_library;
    ChildProcess m_peer{cPeerRole};
    ApartmentThread m_owner{std::get<OwnerKind>(GetParam())};
    WatchingClient m_client;
};

using OneByOne = ForeignChanges;

TEST_P(OneByOne, AreToldOnceAndInOrder) {
    for (const std::string& command : TheChange().commands)
        MakeAndAwait({command}, 1);
    ExpectTold(TheChange().told);
}

using InOnePass = ForeignChanges;

TEST_P(InOnePass, AreToldInTheFixedOrder) {
    MakeAndAwait(TheChange().commands, TheChange().told.size());
    ExpectTold(TheChange().told);
}

std::string NameOfTest(const testing::TestParamInfo<std::tuple<OwnerKind, Change>>& info) {
    return NameOf(std::get<OwnerKind>(info.param)) + "_" + std::get<Change>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Api, OneByOne,
                         testing::Combine(testing::ValuesIn(cEveryOwnerKind),
                                          testing::ValuesIn(cApiChanges)),
                         NameOfTest);
INSTANTIATE_TEST_SUITE_P(Grouped, InOnePass,
                         testing::Combine(testing::ValuesIn(cEveryOwnerKind),
                                          testing::ValuesIn(cGroupedChanges)),
                         NameOfTest);

// What is written while the owner does not pump is told as one state, not as a history.
class IdleOwner : public testing::Test {
  protected:
    IdleOwner() {
        EXPECT_EQ(cSuccess, m_peer.Ask("open mta"));
        m_owner.Run([this] { EXPECT_EQ(S_OK, m_client.Start(m_library)); });
    }
    ~IdleOwner() override {
        m_owner.Run([this] { m_client = {}; });
    }

    RawStore m_store;
    ApiLibrary m_library;
    ChildProcess m_peer{cPeerRole};
    ApartmentThread m_owner{OwnerKind::eStaIdle};
    WatchingClient m_client;
};

TEST_F(IdleOwner, IsToldTheStandingStateWhenItPumpsAgain) {
    for (const char* command :
         {"CreateCustomProfile 3 name", "SetSimplePatchValue 0 9", "SetActiveProfile 2",
          "SetVeltoEnable 0", "SetActiveProfile 1", "SetActiveProfile 0",
          "SetTechnologyOnElseOff 4 0", "SetSimplePatchValue 0 8", "SetVeltoEnable 1"})
        EXPECT_EQ(cSuccess, m_peer.Ask(command)) << command;
    EXPECT_EQ(Lines{}, m_client.spRecorder->Log());
    m_owner.SetPumping(true);
    EXPECT_TRUE(m_client.spRecorder->WaitForLine(cBarrier));
    EXPECT_EQ((Lines{"OnSimplePatchValueChange(eVolumeLeveler, 8)",
                     "OnTechnologyOnElseOffChange(eVirtualizerHP, 0)", cBarrier}),
              m_client.spRecorder->Log());
}

TEST_F(IdleOwner, HarmsNobodyElse) {
    ChildProcess third(cPeerRole);
    EXPECT_EQ(cSuccess, third.Ask("open mta"));
    EXPECT_EQ(cSuccess, third.Ask("watch"));
    ApartmentThread sta(OwnerKind::eStaPumping);
    ApartmentThread mta(OwnerKind::eMta);
    WatchingClient inSta;
    WatchingClient inMta;
    sta.Run([&] { EXPECT_EQ(S_OK, inSta.Start(m_library)); });
    mta.Run([&] { EXPECT_EQ(S_OK, inMta.Start(m_library)); });
    for (const char* profile : {"1", "2", "0", "1"}) {
        EXPECT_EQ(cSuccess, m_peer.Ask(std::string("SetActiveProfile ") + profile));
        const std::string line = std::string("OnActiveProfileChange(") + profile + ")";
        for (const auto* pClient : {&inSta, &inMta}) {
            EXPECT_TRUE(pClient->spRecorder->WaitForLine(line));
            pClient->spRecorder->ClearLog();
        }
    }
    EXPECT_EQ(
        "OnActiveProfileChange(1)|OnActiveProfileChange(2)|OnActiveProfileChange(0)|"
        "OnActiveProfileChange(1)",
        third.Ask("log 4"));
    EXPECT_EQ(Lines{}, m_client.spRecorder->Log());
    sta.Run([&] { inSta = {}; });
    mta.Run([&] { inMta = {}; });
}

}  // namespace
}  // namespace kora4::test

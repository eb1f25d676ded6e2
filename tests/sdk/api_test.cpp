// SPDX-License-Identifier: MIT
// Every method of the wrapper on the registered library; what it left is looked at in the store
// or through the interface itself.
#include <algorithm>
#include <iterator>

#include "sdk/sdk_fixture.h"

namespace kora4::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// ---- Results --------------------------------------------------------------------------------

TEST(SdkStatus, TellsTheOutcomesApart) {
    const struct {
        HRESULT code;
        Outcome outcome;
        bool isTrue;
    } all[] = {{S_OK, Outcome::eDone, true},
               {S_FALSE, Outcome::eAbsent, false},
               {KORA4_S_DEMO_MODE_ACTIVE, Outcome::eUnchanged, false},
               {KORA4_S_NOT_IN_DEMO_PROFILE, Outcome::eUnchanged, false},
               {KORA4_S_NO_SUCH_CUSTOM_PROFILE, Outcome::eUnchanged, false},
               {KORA4_S_NOT_A_PRESET_PROFILE, Outcome::eUnchanged, false},
               {0x000401FF, Outcome::eDone, true},
               {0x00040204, Outcome::eDone, true},
               {E_FAIL, Outcome::eFailed, false},
               {APOERR_NOT_INITIALIZED, Outcome::eFailed, false}};
    for (const auto& [code, outcome, isTrue] : all) {
        const Status status(code);
        EXPECT_EQ(outcome, status.Outcome()) << status.Text();
        EXPECT_EQ(isTrue, static_cast<bool>(status)) << status.Text();
        EXPECT_EQ(outcome == Outcome::eUnchanged, status.IsUnchanged()) << status.Text();
        EXPECT_EQ(outcome == Outcome::eFailed, status.HasFailed()) << status.Text();
    }
}

TEST(SdkStatus, HasNameAndMeaning) {
    const Status demo(KORA4_S_DEMO_MODE_ACTIVE);
    EXPECT_STREQ("KORA4_S_DEMO_MODE_ACTIVE", demo.Name());
    EXPECT_THAT(demo.Meaning(), StartsWith("nothing changed: a demo profile is active"));
    EXPECT_EQ("APOERR_NOT_INITIALIZED (0x887D0002): Initialize has not succeeded yet",
              Status(APOERR_NOT_INITIALIZED).Text());
}

TEST(SdkStatus, KnowsWhatThePlatformAnswersAroundTheApi) {
    EXPECT_EQ(
        "RPC_E_CHANGED_MODE (0x80010106): the thread is in an apartment of the other kind",
        Status(RPC_E_CHANGED_MODE).Text());
    EXPECT_STREQ("E_ACCESSDENIED", Status(E_ACCESSDENIED).Name());
    EXPECT_STREQ("access denied", Status(E_ACCESSDENIED).Meaning());
}

TEST(SdkStatus, GivesThePlatformsWordsForOtherCodes) {
    const Status exists(HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS));
    EXPECT_STREQ("", exists.Name());
    EXPECT_STREQ("", exists.Meaning());
    EXPECT_THAT(exists.Text(), StartsWith("0x800700B7: "));
    EXPECT_LT(std::size("0x800700B7: "), exists.Text().size());
    EXPECT_EQ("0xA1234567", Status(static_cast<HRESULT>(0xA1234567)).Text());
}

TEST(SdkResult, HasAValueExactlyWhenTheCallDidWhatItSays) {
    const Result<int> some(7);
    ASSERT_TRUE(some);
    EXPECT_EQ(7, *some);
    EXPECT_EQ(7, some.ValueOr(9));
    const Result<int> none(Status(S_FALSE));
    EXPECT_FALSE(none);
    EXPECT_EQ(S_FALSE, none.Code());
    EXPECT_EQ(9, none.ValueOr(9));
}

TEST(SdkValue, HoldsEveryAmountExactly) {
    EXPECT_EQ(262151.0, Value(eVolumeLeveler, 262151).Amount());
    EXPECT_TRUE(Value(eVolumeLeveler, 3).IsWhole() && Value(eIntelligentEQ, 3).IsWhole());
    EXPECT_FALSE(Value(eDialogEnhancer, 1).IsWhole() || Value(eVirtualizerHP, 1).IsWhole());
    EXPECT_EQ(4294967295u, Value(eVolumeLeveler, 4294967295.0).Raw().m_values.m_volumeSlider);
    EXPECT_EQ(static_cast<double>(0.1f), Value(eDialogEnhancer, 0.1).Amount());
    EXPECT_EQ(3u, Value(eIntelligentEQ, 3.9).Raw().m_values.m_dynamicEQPatchIndex);
    for (const double impossible : {-1.0, 4294967296.0, std::nan("")})
        EXPECT_EQ(4294967295.0, Value(eVolumeLeveler, impossible).Amount()) << impossible;
}

// ---- Life -----------------------------------------------------------------------------------

TEST(SdkApartment, SaysInWhichKindTheThreadIs) {
    const ApartmentGuard single(ApartmentKind::eSingleThreaded);
    EXPECT_EQ(S_OK, single.Status().Code());
    const ApartmentGuard again(ApartmentKind::eSingleThreaded);
    EXPECT_EQ(S_FALSE, again.Status().Code());
    {
        const ApartmentGuard other(ApartmentKind::eMultithreaded);
        EXPECT_EQ(RPC_E_CHANGED_MODE, other.Status().Code());
    }
    // The refused one has not left the apartment of the others.
    const ApartmentGuard third(ApartmentKind::eSingleThreaded);
    EXPECT_EQ(S_FALSE, third.Status().Code());
}

TEST(SdkApartment, IsLeftAtTheEndOfTheScope) {
    { const ApartmentGuard single(ApartmentKind::eSingleThreaded); }
    const ApartmentGuard multi(ApartmentKind::eMultithreaded);
    EXPECT_EQ(S_OK, multi.Status().Code());
}

// The class is not registered here.
class SdkFromFile : public testing::Test {
  protected:
    // The library under a name with blanks and letters of several scripts.
    static std::wstring CopyOfLibrary() {
        const std::wstring copy = ProgramFolder() + L"\\a c\u00F6py \u03B1 of the library.dll";
        EXPECT_TRUE(CopyFileW(LibraryPath().c_str(), copy.c_str(), FALSE));
        return copy;
    }

    RawStore m_store;
    ApartmentGuard m_apartment{ApartmentKind::eSingleThreaded};
};

TEST_F(SdkFromFile, NothingIsMadeWithoutRegistration) {
    const Result<Api> api = Api::Create();
    EXPECT_EQ(REGDB_E_CLASSNOTREG, api.Code());
    EXPECT_FALSE(api);
}

TEST_F(SdkFromFile, ObjectWorksAndTheFileIsLetGoWithIt) {
    const std::wstring file = CopyOfLibrary();
    {
        Result<Api> api = Api::Open(file.c_str());
        ASSERT_TRUE(api) << api.Text();
        EXPECT_TRUE(api->SetActiveProfile(KORA4_PROFILE_GAMES));
        EXPECT_NE(nullptr, GetModuleHandleW(file.c_str()));
        Api moved = *std::move(api);
        EXPECT_EQ(KORA4_PROFILE_GAMES, moved.GetActiveProfile().ValueOr(-1));
        Result<Api> second = Api::Open(file.c_str());
        ASSERT_TRUE(second) << second.Text();
        moved = *std::move(second);
        EXPECT_EQ(KORA4_PROFILE_GAMES, moved.GetActiveProfile().ValueOr(-1));
    }
    EXPECT_EQ(nullptr, GetModuleHandleW(file.c_str()));
    EXPECT_TRUE(DeleteFileW(file.c_str()));
}

TEST_F(SdkFromFile, ObjectThatSomebodyElseHoldsKeepsTheFileLoaded) {
    const std::wstring file = CopyOfLibrary();
    ComPtr<IVeltoKORA4API> held;
    {
        Result<Api> api = Api::Open(file.c_str());
        ASSERT_TRUE(api) << api.Text();
        held = api->Get();
    }
    LONG profile = -1;
    EXPECT_EQ(S_OK, held->GetActiveProfile(&profile));
    EXPECT_EQ(KORA4_PROFILE_MOVIE, profile);
    held.Reset();
    // The next one gives back both loads.
    { const Result<Api> api = Api::Create(file.c_str()); }
    EXPECT_EQ(nullptr, GetModuleHandleW(file.c_str()));
    EXPECT_TRUE(DeleteFileW(file.c_str()));
}

TEST_F(SdkFromFile, FileThatIsNotThereOrNoLibraryIsAFailure) {
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND),
              Api::Create((ProgramFolder() + L"\\no such file.dll").c_str()).Code());
    wchar_t system[MAX_PATH] = L"";
    GetSystemDirectoryW(system, MAX_PATH);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND),
              Api::Create((std::wstring(system) + L"\\kernel32.dll").c_str()).Code());
}

TEST_F(SdkFromFile, OpeningFailsWithoutTheStoresKeys) {
    RawStore::DeleteKeys();
    const Result<Api> api = Api::Open(LibraryPath().c_str());
    EXPECT_EQ(E_FAIL, api.Code());
    EXPECT_EQ(Outcome::eFailed, api.Outcome());
}

class SdkApi : public SdkTest {};

TEST_F(SdkApi, IsInitialisedByOpenAndNotByCreate) {
    Result<Api> api = Api::Create();
    ASSERT_TRUE(api) << api.Text();
    const Result<LONG> profile = api->GetActiveProfile();
    EXPECT_EQ(APOERR_NOT_INITIALIZED, profile.Code());
    EXPECT_EQ(-1, profile.ValueOr(-1));
    EXPECT_EQ(S_OK, api->Initialize().Code());
    EXPECT_EQ(KORA4_PROFILE_MOVIE, api->GetActiveProfile().ValueOr(-1));
}

TEST_F(SdkApi, VersionIsThatOfTheLibrary) {
    const Result<Version> version = Api::Create()->GetVeltoKORA4Version();
    ASSERT_TRUE(version);
    EXPECT_THAT(version->numbers, ElementsAre(7u, 2u, 7000u, 4u));
}

TEST_F(SdkApi, TakesAPointerFromElsewhere) {
    const Api first = Opened();
    const Api second{ComPtr<IVeltoKORA4API>(first.Get())};
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(KORA4_PROFILE_MOVIE, second.GetActiveProfile().ValueOr(-1));
}

// ---- Profiles and switches
// -------------------------------------------------------------------

TEST_F(SdkApi, ProfileIsSetAndRead) {
    Api api = Opened();
    EXPECT_TRUE(api.SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_EQ(1u, RawStore::Number(cDynamic, SettingName(cProfilePid)));
    EXPECT_EQ(KORA4_PROFILE_MUSIC, api.GetActiveProfile().ValueOr(-1));
    EXPECT_EQ(KORA4_S_NO_SUCH_CUSTOM_PROFILE, api.SetActiveProfile(KORA4_PROFILE_P4).Code());
    EXPECT_EQ(E_INVALIDARG, api.SetActiveProfile(9).Code());
}

TEST_F(SdkApi, CustomProfilesAreCreatedNamedListedAndDeleted) {
    Api api = Opened();
    EXPECT_TRUE(api.CreateCustomProfile(KORA4_PROFILE_P2, L"Na\u00EFve"));
    EXPECT_EQ(E_FAIL, api.CreateCustomProfile(KORA4_PROFILE_P2, L"again").Code());
    EXPECT_TRUE(api.CreateCustomProfile(KORA4_PROFILE_P6, L""));
    EXPECT_TRUE(
        api.SetCustomProfileName(KORA4_PROFILE_P2, L"A longer name, in its own memory"));
    const Result<ProfileTable> table = api.GetProfileTable();
    ASSERT_TRUE(table);
    ProfileTable expected;
    expected[KORA4_PROFILE_P2] = L"A longer name, in its own memory";
    expected[KORA4_PROFILE_P6] = L"";
    EXPECT_EQ(expected, *table);
    EXPECT_TRUE(api.DeleteCustomProfile(KORA4_PROFILE_P2));
    EXPECT_EQ(Outcome::eAbsent, api.DeleteCustomProfile(KORA4_PROFILE_P2).Outcome());
}

TEST_F(SdkApi, TableThatCannotBeReadIsAFailureWithoutOne) {
    Api api = Opened();
    EXPECT_TRUE(api.CreateCustomProfile(KORA4_PROFILE_P1, L"can be read"));
    EXPECT_TRUE(api.CreateCustomProfile(KORA4_PROFILE_P2, std::wstring(3000, L'n')));
    const Result<ProfileTable> table = api.GetProfileTable();
    EXPECT_EQ(E_FAIL, table.Code());
    EXPECT_FALSE(table);
}

TEST_F(SdkApi, ProfileIsReverted) {
    Api api = Opened();
    EXPECT_TRUE(api.SetDialogEnhancer(0.75f));
    EXPECT_TRUE(api.RevertActiveProfile());
    EXPECT_EQ(0.33f, api.GetDialogEnhancer().ValueOr(-1));
    EXPECT_TRUE(api.CreateCustomProfile(KORA4_PROFILE_P1, L"P"));
    EXPECT_TRUE(api.SetActiveProfile(KORA4_PROFILE_P1));
    EXPECT_EQ(KORA4_S_NOT_A_PRESET_PROFILE, api.RevertActiveProfile().Code());
}

TEST_F(SdkApi, DemoIsEnteredAndLeft) {
    Api api = Opened();
    Api other = Opened();
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, api.RevertFromDemoMode().Code());
    EXPECT_TRUE(api.SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, false));
    EXPECT_EQ(KORA4_PROFILE_DEMO_MUSIC, api.GetActiveProfile().ValueOr(-1));
    EXPECT_FALSE(*api.GetVeltoEnable());
    EXPECT_TRUE(other.SetActiveProfile(KORA4_PROFILE_GAMES).IsUnchanged());
    EXPECT_TRUE(api.RevertFromDemoMode());
    EXPECT_EQ(KORA4_PROFILE_MOVIE, api.GetActiveProfile().ValueOr(-1));
    EXPECT_TRUE(*api.GetVeltoEnable());

    EXPECT_TRUE(api.SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, true));
    EXPECT_TRUE(other.ForceRevertFromDemoMode());
    EXPECT_EQ(KORA4_S_NOT_IN_DEMO_PROFILE, api.RevertFromDemoMode().Code());
}

TEST_F(SdkApi, EnableIsSetReadAndToggled) {
    Api api = Opened();
    EXPECT_TRUE(*api.GetVeltoEnable());
    EXPECT_TRUE(api.SetVeltoEnable(false));
    EXPECT_EQ(0u, RawStore::Number(cDynamic, SettingName(cEnablePid)));
    const Result<bool> off = api.GetVeltoEnable();
    ASSERT_TRUE(off);
    EXPECT_FALSE(*off);
    EXPECT_TRUE(*api.ToggleVeltoEnable());
    EXPECT_EQ(1u, RawStore::Number(cDynamic, SettingName(cEnablePid)));
}

TEST_F(SdkApi, EverySwitchIsSetAndRead) {
    Api api = Opened();
    for (int number = 0; number < KORA4_TECHNOLOGIES; ++number) {
        const auto technology = static_cast<KORA4APITechnology>(number);
        const bool before = *api.GetTechnologyOnElseOff(technology);
        EXPECT_TRUE(api.SetTechnologyOnElseOff(technology, !before));
        BOOL after = before;
        EXPECT_EQ(S_OK, api.Get()->GetTechnologyOnElseOff(technology, &after));
        EXPECT_EQ(!before, after != FALSE) << number;
    }
    EXPECT_EQ(E_INVALIDARG, api.GetTechnologyOnElseOff(eNumberKORA4APITechnologies).Code());
}

TEST_F(SdkApi, EngineMaskIsThatOfTheStore) {
    EXPECT_EQ(0u, Opened().GetTechnologyMasterEnables().ValueOr(7));
    RawStore::SetNumber(cStatic, MasterEnablesName(), KORA4_ENGINE_BASIC);
    EXPECT_EQ(KORA4_ENGINE_BASIC, Opened().GetTechnologyMasterEnables().ValueOr(7));
}

// ---- Values ---------------------------------------------------------------------------------

TEST_F(SdkApi, EveryValueIsSetAndReadByItsOwnMethods) {
    Api api = Opened();
    EXPECT_EQ(ULONG{KORA4_VOLUME_LEVELER_MOVIE_DEFAULT}, api.GetVolumeLeveler().ValueOr(0));
    EXPECT_TRUE(api.SetVolumeLeveler(7));
    EXPECT_EQ(7u, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 0, 3)));
    EXPECT_EQ(7u, api.GetVolumeLeveler().ValueOr(0));
    EXPECT_EQ(E_INVALIDARG, api.SetVolumeLeveler(11).Code());

    EXPECT_TRUE(api.SetIntelligentEq(Curve::eRich));
    EXPECT_EQ(4u, RawStore::Number(cStatic, PatchName(RawTechnology::eDynamicEQ, 0, 5)));
    EXPECT_EQ(Curve::eRich, api.GetIntelligentEq().ValueOr(Curve::eBalanced));

    EXPECT_TRUE(api.SetDialogEnhancer(0.5f));
    EXPECT_EQ(L"0.500000",
              RawStore::Text(cStatic, PatchName(RawTechnology::eEnhancement, 0, 3)));
    EXPECT_EQ(0.5f, api.GetDialogEnhancer().ValueOr(-1));

    EXPECT_TRUE(api.SetHeadphoneVirtualizer(1.25f));
    EXPECT_EQ(L"1.250000", RawStore::Text(cStatic, PatchName(RawTechnology::eHeadphone, 0, 3)));
    EXPECT_EQ(1.25f, api.GetHeadphoneVirtualizer().ValueOr(-1));

    EXPECT_EQ(KORA4_SPEAKER_VIRTUALIZER_DEFAULT, api.GetSpeakerVirtualizer().ValueOr(-1));
    EXPECT_TRUE(api.SetSpeakerVirtualizer(2.5f));
    EXPECT_EQ(L"2.500000",
              RawStore::Text(cStatic, PatchName(RawTechnology::eVirtualSurround, 0, 3)));
    EXPECT_EQ(2.5f, api.GetSpeakerVirtualizer().ValueOr(-1));
}

TEST_F(SdkApi, EveryValueIsSetAndReadByItsTechnology) {
    Api api = Opened();
    for (const Value& value :
         {Value(eVolumeLeveler, 3), Value(eIntelligentEQ, 5), Value(eDialogEnhancer, 0.25),
          Value(eVirtualizerHP, 6), Value(eVirtualizerSpkr, 0)}) {
        EXPECT_TRUE(api.SetSimplePatchValue(value)) << value.Technology();
        const Result<Value> read = api.GetSimplePatchValue(value.Technology());
        ASSERT_TRUE(read) << value.Technology();
        EXPECT_EQ(value.Technology(), read->Technology());
        EXPECT_EQ(value.Amount(), read->Amount()) << value.Technology();
    }
    EXPECT_EQ(E_INVALIDARG, api.GetSimplePatchValue(eGraphicEQ).Code());
    EXPECT_EQ(E_INVALIDARG, api.SetSimplePatchValue(Value(eGraphicEQ, 1)).Code());
}

TEST_F(SdkApi, GraphicEqIsSetLimitedAndRead) {
    Api api = Opened();
    EXPECT_TRUE(api.SetGraphicEQData({{100, -20}, {1000, 0.5f}, {10000, 3.25f}}));
    EXPECT_EQ(L"0100,0003,f400,0080,0340",
              RawStore::Text(cStatic, PatchName(RawTechnology::eStandardEQ, 0, 4)));
    const Result<Bands> bands = api.GetGraphicEQData();
    ASSERT_TRUE(bands);
    EXPECT_THAT(*bands, ElementsAre(Band{100, -12}, Band{1000, 0.5f}, Band{10000, 3.25f}));

    Bands many;
    for (int i = 1; i <= KORA4_GRAPHIC_EQ_MAX_BANDS + 5; ++i)
        many.push_back({static_cast<float>(i), 0});
    EXPECT_TRUE(api.SetGraphicEQData(many));
    many.resize(KORA4_GRAPHIC_EQ_MAX_BANDS);
    EXPECT_EQ(many, *api.GetGraphicEQData());
    EXPECT_TRUE(api.SetGraphicEQData({}));
    EXPECT_EQ(Bands{}, *api.GetGraphicEQData());
}

// ---- Levels and commands --------------------------------------------------------------------

TEST_F(SdkApi, SamplingPeriodIsSetAndRead) {
    Api api = Opened();
    EXPECT_EQ(ULONG{KORA4_SAMPLING_PERIOD_DEFAULT},
              api.GetVisualizationSamplingPeriod().ValueOr(0));
    EXPECT_TRUE(api.SetVisualizationSamplingPeriod(25));
    EXPECT_EQ(25u, RawStore::Number(cStatic, SettingName(cPeriodPid)));
    EXPECT_EQ(25u, api.GetVisualizationSamplingPeriod().ValueOr(0));
}

TEST_F(SdkApi, LevelsAreAbsentUntilTheyArePublished) {
    const Api api = Opened();
    const Result<Levels> none = api.GetVisualizationData();
    EXPECT_EQ(Outcome::eAbsent, none.Outcome());
    EXPECT_FALSE(none);
    RawStore::SetBytes(cStatic, SettingName(cBlobPid), {0, 0, 0, 0, 0, 0, 0, 0});
    const Result<Levels> silent = api.GetVisualizationData();
    ASSERT_TRUE(silent);
    EXPECT_THAT(silent->gains, Each(KORA4_SILENT_GAIN));
    EXPECT_THAT(silent->excitations, Each(KORA4_SILENT_EXCITATION));
}

TEST_F(SdkApi, CommandsAreTextsEmptyTextsOrNone) {
    RawStore::SetText(cApp, SettingName(61), L"\"C:\\Program Files\\e.exe\" /edit");
    RawStore::SetText(cApp, SettingName(62), L"");
    const Api api = Opened();
    EXPECT_EQ(L"\"C:\\Program Files\\e.exe\" /edit",
              api.GetVeltoProfileEditorCommand().ValueOr(std::nullopt));
    EXPECT_EQ(L"", api.GetVeltoProfileSelectorCommand().ValueOr(std::nullopt));
    const Result<std::optional<std::wstring>> none = api.GetVeltoDemoAppCommand();
    ASSERT_TRUE(none);
    EXPECT_EQ(std::nullopt, *none);
}

}  // namespace
}  // namespace kora4::test

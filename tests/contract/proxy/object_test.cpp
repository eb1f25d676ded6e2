// SPDX-License-Identifier: MIT
// The library's own object behind a proxy: every method is called once in the object's
// apartment and once from another, on equal stores, and whatever comes out must be equal.
#include <wrl/client.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>

#include "contract/proxy/api_recorder.h"
#include "contract/proxy/border.h"
#include "support/counted.h"
#include "support/raw_store.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr DWORD cLongestWait = 10000;  // ms

std::unique_ptr<SharedApartments> g_apartments;

// What the calls of one run brought out, call by call.
class Transcript {
  public:
    template <typename... Outs>
    void Note(int slot, const char* method, HRESULT hr, const Outs&... outs) {
        std::ostringstream line;
        line << slot << " " << method << " " << std::hex << static_cast<unsigned>(hr)
             << std::dec;
        ((line << " " << outs), ...);
        m_lines.push_back(line.str());
        m_slots[slot] = method;
    }

    const std::vector<std::string>& Lines() const { return m_lines; }
    const std::map<int, std::string>& Slots() const { return m_slots; }

  private:
    std::vector<std::string> m_lines;
    std::map<int, std::string> m_slots;
};

std::string TakeText(LPWSTR text) {
    const std::string narrow = text ? "'" + Narrow(text) + "'" : "null";
    CoTaskMemFree(text);
    return narrow;
}

// Values of every kind of out argument: names, commands (one of them empty, one absent),
// levels and a mask.
void FillStore() {
    ResetStore();
    CreateKey(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetApp));
    RawStore::SetText(cApp, SettingName(61), L"\"C:\\Editor \x00E4.exe\" /edit");
    RawStore::SetText(cApp, SettingName(62), L"");
    RawStore::SetText(cStatic, ProfileNameName(5), L"Night");
    RawStore::SetNumber(cStatic, MasterEnablesName(), 0xFEDC021F);
    RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), 0);
    std::vector<std::uint8_t> blob(8 + 24 + 2 * 4 * 3);
    blob[4] = 1;
    blob[8 + 16] = 3;
    const float levels[] = {-1.5f, -20.0f, -3.25f, -4.0f, -50.0f, -6.0f};
    std::memcpy(blob.data() + 8 + 24, levels, sizeof levels);
    RawStore::SetBytes(cStatic, SettingName(cBlobPid), blob);
}

void CallProfiles(IVeltoKORA4API* api, Transcript& t) {
    LONG profile = -1;
    const auto get = [&] {
        profile = -1;
        const HRESULT hr = api->GetActiveProfile(&profile);
        t.Note(7, "GetActiveProfile", hr, profile);
    };
    get();
    for (const LONG number : {1L, 3L, 240L, -1L}) {
        t.Note(8, "SetActiveProfile", api->SetActiveProfile(number));
        get();
    }
    t.Note(9, "RevertActiveProfile", api->RevertActiveProfile());
    t.Note(24, "CreateCustomProfile", api->CreateCustomProfile(4, L"Day"));
    t.Note(24, "CreateCustomProfile", api->CreateCustomProfile(5, L"Day"));
    t.Note(23, "SetCustomProfileName", api->SetCustomProfileName(4, L"Noon"));
    t.Note(23, "SetCustomProfileName", api->SetCustomProfileName(8, L"Noon"));
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    const HRESULT hr = api->GetProfileTable(names);
    std::string table;
    for (const LPWSTR name : names)
        table += TakeText(name) + ",";
    t.Note(22, "GetProfileTable", hr, table);
    t.Note(8, "SetActiveProfile", api->SetActiveProfile(4));
    get();
    t.Note(9, "RevertActiveProfile", api->RevertActiveProfile());
    t.Note(25, "DeleteCustomProfile", api->DeleteCustomProfile(4));
    t.Note(25, "DeleteCustomProfile", api->DeleteCustomProfile(8));
    t.Note(25, "DeleteCustomProfile", api->DeleteCustomProfile(5));
    t.Note(11, "RevertFromDemoMode", api->RevertFromDemoMode());
    t.Note(10, "SetDemoProfileAndEnable",
           api->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, FALSE));
    get();
    t.Note(8, "SetActiveProfile", api->SetActiveProfile(2));
    t.Note(11, "RevertFromDemoMode", api->RevertFromDemoMode());
    get();
    t.Note(10, "SetDemoProfileAndEnable",
           api->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, TRUE));
    t.Note(12, "ForceRevertFromDemoMode", api->ForceRevertFromDemoMode());
    get();
}

void CallDisplay(IVeltoKORA4API* api, Transcript& t) {
    for (const ULONG period : {0xFEDCBA98UL, 25UL}) {
        ULONG read = 1;
        HRESULT hr = api->GetVisualizationSamplingPeriod(&read);
        t.Note(13, "GetVisualizationSamplingPeriod", hr, read);
        hr = api->SetVisualizationSamplingPeriod(period);
        t.Note(14, "SetVisualizationSamplingPeriod", hr);
    }
    float gain[KORA4_VISUALIZATION_BANDS] = {};
    float excitation[KORA4_VISUALIZATION_BANDS] = {};
    HRESULT hr = api->GetVisualizationData(gain, excitation);
    std::ostringstream levels;
    for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i)
        levels << gain[i] << "/" << excitation[i] << ",";
    t.Note(15, "GetVisualizationData", hr, levels.str());
    LPWSTR text = nullptr;
    hr = api->GetVeltoProfileEditorCommand(&text);
    t.Note(16, "GetVeltoProfileEditorCommand", hr, TakeText(text));
    hr = api->GetVeltoProfileSelectorCommand(&text);
    t.Note(17, "GetVeltoProfileSelectorCommand", hr, TakeText(text));
    hr = api->GetVeltoDemoAppCommand(&text);
    t.Note(18, "GetVeltoDemoAppCommand", hr, TakeText(text));
}

void CallSwitches(IVeltoKORA4API* api, Transcript& t) {
    BOOL on = 77;
    HRESULT hr = api->GetVeltoEnable(&on);
    t.Note(19, "GetVeltoEnable", hr, on);
    t.Note(20, "SetVeltoEnable", api->SetVeltoEnable(FALSE));
    hr = api->GetVeltoEnable(&on);
    t.Note(19, "GetVeltoEnable", hr, on);
    hr = api->ToggleVeltoEnable(&on);
    t.Note(21, "ToggleVeltoEnable", hr, on);
    ULONG mask = 0;
    hr = api->GetTechnologyMasterEnables(&mask);
    t.Note(26, "GetTechnologyMasterEnables", hr, mask);
    for (int number = 0; number <= eNumberKORA4APITechnologies; ++number) {
        const auto technology = NumberAs<KORA4APITechnology>(number);
        on = 77;
        hr = api->GetTechnologyOnElseOff(technology, &on);
        t.Note(27, "GetTechnologyOnElseOff", hr, number, SUCCEEDED(hr) ? on : -1);
        hr = api->SetTechnologyOnElseOff(technology, number % 2 * 5);
        t.Note(28, "SetTechnologyOnElseOff", hr, number);
        hr = api->GetTechnologyOnElseOff(technology, &on);
        t.Note(27, "GetTechnologyOnElseOff", hr, number, SUCCEEDED(hr) ? on : -1);
    }
}

void CallValues(IVeltoKORA4API* api, Transcript& t) {
    KORA4PatchValueUnion values[] = {{eVolumeLeveler, {9}},  {eIntelligentEQ, {4}},
                                     {eDialogEnhancer, {}},  {eVirtualizerHP, {}},
                                     {eVirtualizerSpkr, {}}, {eVolumeLeveler, {11}}};
    values[2].m_values.m_enhancementSlider = 0.625f;
    values[3].m_values.m_headphoneVirtualizerSlider = 5.5f;
    values[4].m_values.m_speakerVirtualizerSlider = 6.5f;
    for (KORA4PatchValueUnion& value : values) {
        KORA4PatchValueUnion read{value.m_technology, {0x11}};
        HRESULT hr = api->GetSimplePatchValue(&read);
        t.Note(29, "GetSimplePatchValue", hr, Text(read));
        hr = api->SetSimplePatchValue(&value);
        t.Note(30, "SetSimplePatchValue", hr, Text(value));
        read.m_values.m_volumeSlider = 0x11;
        hr = api->GetSimplePatchValue(&read);
        t.Note(29, "GetSimplePatchValue", hr, Text(read));
    }
    GraphicEQData eq = SampleEQ(6);
    HRESULT hr = api->GetGraphicEQData(&eq);
    t.Note(32, "GetGraphicEQData", hr, Text(eq));
    eq = SampleEQ(7);
    hr = api->SetGraphicEQData(&eq);
    t.Note(31, "SetGraphicEQData", hr, Text(eq));
    hr = api->GetGraphicEQData(&eq);
    t.Note(32, "GetGraphicEQData", hr, Text(eq));
}

void CallEverything(IVeltoKORA4API* api, IVeltoKORA4APICallback* callback, Transcript& t) {
    LONG profile = -1;
    HRESULT hr = api->GetActiveProfile(&profile);
    t.Note(7, "GetActiveProfile", hr);
    t.Note(4, "Initialize", api->Initialize());
    ULONG v[4] = {};
    hr = api->GetVeltoKORA4Version(&v[0], &v[1], &v[2], &v[3]);
    t.Note(3, "GetVeltoKORA4Version", hr, v[0], v[1], v[2], v[3]);
    t.Note(5, "RegisterChangeNotifications", api->RegisterChangeNotifications(callback));
    t.Note(6, "UnregisterChangeNotifications", api->UnregisterChangeNotifications());
    CallProfiles(api, t);
    CallDisplay(api, t);
    CallSwitches(api, t);
    CallValues(api, t);
}

// A client's callback that may be called on any thread.
class ToldClient final : public Counted<IVeltoKORA4APICallback> {
  public:
    ToldClient() : Counted(0) {}

    STDMETHODIMP OnActiveProfileChange(LONG profile) override {
        return Told(3, "OnActiveProfileChange", profile);
    }
    STDMETHODIMP OnEnableStateChange(BOOL on) override {
        return Told(4, "OnEnableStateChange", on);
    }
    STDMETHODIMP OnCustomProfileTableChange() override {
        return Told(5, "OnCustomProfileTableChange");
    }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology, BOOL on) override {
        return Told(6, "OnTechnologyOnElseOffChange", technology, on);
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* value) override {
        return Told(7, "OnSimplePatchValueChange", Text(*value));
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* data) override {
        return Told(8, "OnGraphicEQChange", Text(*data));
    }

    // The lines so far, once there are `count`; fewer when the wait was in vain.
    std::vector<std::string> WaitFor(std::size_t count) {
        const ULONGLONG end = GetTickCount64() + cLongestWait;
        for (;;) {
            {
                const std::lock_guard<std::mutex> hold(m_mutex);
                if (m_lines.size() >= count || GetTickCount64() >= end)
                    return std::move(m_lines);
            }
            WaitForSingleObject(m_told.Get(), 100);
        }
    }
    DWORD ThreadId() const { return m_threadId; }

  private:
    ~ToldClient() = default;

    template <typename... Arguments>
    HRESULT Told(int slot, const char* method, const Arguments&... arguments) {
        std::ostringstream line;
        line << method;
        ((line << " " << arguments), ...);
        const std::lock_guard<std::mutex> hold(m_mutex);
        ReachedSlots()["IVeltoKORA4APICallback"][slot] = method;
        m_lines.push_back(line.str());
        m_threadId = GetCurrentThreadId();
        SetEvent(m_told.Get());
        return S_OK;
    }

    std::mutex m_mutex;
    std::vector<std::string> m_lines;
    UniqueHandle m_told{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    std::atomic<DWORD> m_threadId{0};
};

struct BorderKinds {
    const char* name;
    Apartment& (*owner)();
    Apartment& (*user)();
};

Apartment& OwnerSta() {
    return *Apartments().owner;
}
Apartment& OtherSta() {
    return *Apartments().single;
}
Apartment& Mta() {
    return *Apartments().multi;
}

const BorderKinds cBorders[] = {{"FromStaToSta", OwnerSta, OtherSta},
                                {"FromMtaToSta", OwnerSta, Mta},
                                {"FromStaToMta", Mta, OtherSta}};

std::string NameOf(const testing::TestParamInfo<BorderKinds>& border) {
    return border.param.name;
}

class ProxiedObject : public testing::TestWithParam<BorderKinds> {
  protected:
    void SetUp() override { FillStore(); }

    ComPtr<IVeltoKORA4API> Create() {
        static LoadedLibrary library;
        ComPtr<IVeltoKORA4API> api;
        m_owner.Run([&] {
            ComPtr<IClassFactory> factory;
            library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.GetAddressOf()));
            if (factory)
                factory->CreateInstance(nullptr, IID_IVeltoKORA4API,
                                        reinterpret_cast<void**>(api.GetAddressOf()));
        });
        EXPECT_TRUE(api);
        return api;
    }

    // Runs `work` on the user's thread with the object's proxy.
    void WithProxy(const std::function<void(IVeltoKORA4API*)>& work) {
        ComPtr<IVeltoKORA4API> object = Create();
        ComPtr<IVeltoKORA4API> proxy = Carry(m_owner, m_user, object.Get());
        ASSERT_TRUE(proxy);
        ASSERT_NE(object.Get(), proxy.Get());
        m_user.Run([&] { work(proxy.Get()); });
        m_user.Run([&] { proxy.Reset(); });
        m_owner.Run([&] { object.Reset(); });
    }

    Apartment& m_owner = GetParam().owner();
    Apartment& m_user = GetParam().user();
};

TEST_P(ProxiedObject, EveryMethodAnswersAsInItsOwnApartment) {
    Transcript direct;
    ComPtr<IVeltoKORA4API> object = Create();
    m_owner.Run([&] {
        ComPtr<ToldClient> callback(new ToldClient);
        CallEverything(object.Get(), callback.Get(), direct);
    });
    m_owner.Run([&] { object.Reset(); });
    const std::string stored = StoreSnapshot();

    FillStore();
    Transcript proxied;
    WithProxy([&](IVeltoKORA4API* api) {
        ComPtr<ToldClient> callback(new ToldClient);
        CallEverything(api, callback.Get(), proxied);
    });
    EXPECT_EQ(direct.Lines(), proxied.Lines());
    EXPECT_EQ(stored, StoreSnapshot());
    EXPECT_EQ(30u, proxied.Slots().size());
    for (const auto& [slot, method] : proxied.Slots())
        ReachedSlots()["IVeltoKORA4API"][slot] = method;
    // The calls did something: the object had a name, a command and levels to give.
    EXPECT_EQ("7 GetActiveProfile 887d0002", proxied.Lines().front());
    const auto contains = [&](const std::string& line) {
        return std::count(proxied.Lines().begin(), proxied.Lines().end(), line) != 0;
    };
    EXPECT_TRUE(contains("7 GetActiveProfile 0 4"));
    EXPECT_TRUE(contains("17 GetVeltoProfileSelectorCommand 0 ''"));
    EXPECT_TRUE(contains("18 GetVeltoDemoAppCommand 0 null"));
    EXPECT_TRUE(contains("26 GetTechnologyMasterEnables 0 4275831327"));
}

TEST_P(ProxiedObject, AnObjectThatGoesReleasesTheCallbackInItsApartment) {
    ComPtr<ToldClient> client;
    m_user.Run([&] { client = new ToldClient; });
    WithProxy([&](IVeltoKORA4API* api) {
        EXPECT_EQ(S_OK, api->Initialize());
        EXPECT_EQ(S_OK, api->RegisterChangeNotifications(client.Get()));
        EXPECT_LT(1u, client->References());
    });
    EXPECT_EQ(1u, client->References());
    m_user.Run([&] { client.Reset(); });
}

TEST_P(ProxiedObject, AllSixNotificationsArriveInTheClientsApartment) {
    ComPtr<ToldClient> client;
    m_user.Run([&] { client = new ToldClient; });
    ComPtr<IVeltoKORA4API> object = Create();
    ComPtr<IVeltoKORA4API> proxy = Carry(m_owner, m_user, object.Get());
    m_user.Run([&] {
        EXPECT_EQ(S_OK, proxy->Initialize());
        EXPECT_EQ(S_OK, proxy->RegisterChangeNotifications(client.Get()));
    });
    {
        const RawTransaction transaction;
        RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 0, 3), 6);
        RawStore::SetText(cStatic, PatchName(RawTechnology::eStandardEQ, 0, 3), L"1,2,64,c8");
        RawStore::SetText(cStatic, PatchName(RawTechnology::eStandardEQ, 0, 4), L"100,1,180");
        RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eVolume, 0, 0), 0);
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
        RawStore::Bump(TriggerName(RawTechnology::eVolume));
        RawStore::Bump(TriggerName(RawTechnology::eStandardEQ));
        RawStore::Bump(SettingName(cTablePid));
    }
    GraphicEQData eq{};
    eq.m_bands = 2;
    eq.m_freq[0] = 100;
    eq.m_freq[1] = 200;
    eq.m_gain[0] = 1.5f;
    EXPECT_EQ((std::vector<std::string>{
                  "OnEnableStateChange 0", "OnTechnologyOnElseOffChange 0 0",
                  "OnSimplePatchValueChange 0:6", "OnGraphicEQChange " + Text(eq),
                  "OnCustomProfileTableChange"}),
              client->WaitFor(5));
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 2);
    EXPECT_EQ(std::vector<std::string>{"OnActiveProfileChange 2"}, client->WaitFor(1));
    if (&m_user == &OtherSta()) {
        EXPECT_EQ(m_user.ThreadId(), client->ThreadId());
    } else {
        EXPECT_NE(m_owner.ThreadId(), client->ThreadId());
    }
    m_user.Run([&] {
        EXPECT_EQ(S_OK, proxy->UnregisterChangeNotifications());
        proxy.Reset();
        client.Reset();
    });
    m_owner.Run([&] { object.Reset(); });
}

TEST_P(ProxiedObject, AValueWithoutACaseFailsInTheProxyAndReachesNothing) {
    const std::string before = [&] {
        WithProxy([](IVeltoKORA4API* api) { EXPECT_EQ(S_OK, api->Initialize()); });
        return StoreSnapshot();
    }();
    WithProxy([](IVeltoKORA4API* api) {
        EXPECT_EQ(S_OK, api->Initialize());
        for (const int number : {static_cast<int>(eGraphicEQ), 6, 255}) {
            KORA4PatchValueUnion value{NumberAs<KORA4APITechnology>(number), {5}};
            EXPECT_EQ(cBadDiscriminant, api->SetSimplePatchValue(&value)) << number;
            EXPECT_EQ(cBadDiscriminant, api->GetSimplePatchValue(&value)) << number;
            EXPECT_EQ(5u, value.m_values.m_volumeSlider);
        }
    });
    EXPECT_EQ(before, StoreSnapshot());
    // The object itself refuses in its own words.
    ComPtr<IVeltoKORA4API> object = Create();
    m_owner.Run([&] {
        EXPECT_EQ(S_OK, object->Initialize());
        KORA4PatchValueUnion value{eGraphicEQ, {5}};
        EXPECT_EQ(E_INVALIDARG, object->SetSimplePatchValue(&value));
        EXPECT_EQ(E_INVALIDARG, object->GetSimplePatchValue(&value));
        object.Reset();
    });
}

INSTANTIATE_TEST_SUITE_P(Border, ProxiedObject, testing::ValuesIn(cBorders), NameOf);

// Says at the end which slots of the library's object were called through a proxy, and
// which of a client's callback; fails a full run that left one out.
class ObjectTests : public testing::Environment {
  public:
    void SetUp() override { g_apartments = std::make_unique<SharedApartments>(); }
    void TearDown() override {
        g_apartments.reset();
        const auto* unit = testing::UnitTest::GetInstance();
        const bool fullRun = unit->test_to_run_count() == unit->total_test_count();
        Report("IVeltoKORA4API", 3, 32, fullRun);
        Report("IVeltoKORA4APICallback", 3, 8, fullRun);
    }

  private:
    static void Report(const char* interfaceName, int first, int last, bool fullRun) {
        const auto& reached = ReachedSlots()[interfaceName];
        for (int slot = first; slot <= last; ++slot) {
            const auto found = reached.find(slot);
            std::printf("%-24s slot %2d  %s\n", interfaceName, slot,
                        found != reached.end() ? found->second.c_str() : "NOT REACHED");
            EXPECT_TRUE(found != reached.end() || !fullRun) << interfaceName << " " << slot;
        }
    }
};

const auto* const g_environment = testing::AddGlobalTestEnvironment(new ObjectTests);

}  // namespace

SharedApartments& Apartments() {
    return *g_apartments;
}

}  // namespace kora4::test

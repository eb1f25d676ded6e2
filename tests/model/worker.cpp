// SPDX-License-Identifier: MIT
// The two threads that make changes, the client that watches, and what each reports.
#include "model/worker.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <thread>

#include "kora4api_codes.h"
#include "model/encodings.h"
#include "support/com_client.h"
#include "support/counted.h"

namespace kora4::test {

using Microsoft::WRL::ComPtr;

namespace {

constexpr std::uint32_t cStamps = 20000;
constexpr DWORD cLongWait = 60000;  // milliseconds

UniqueHandle NamedEvent(const std::wstring& name) {
    // All workers see it, as often as they look.
    return UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
}

void Fail(WorkerReport& report, const std::string& what) {
    if (report.failures++ == 0)
        std::snprintf(report.firstFailure, sizeof report.firstFailure, "%s", what.c_str());
}

std::string Hex(HRESULT hr) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lx", static_cast<unsigned long>(hr));
    return text;
}

// What a callback has been told last of each item; of the single technologies, since the
// active profile was told: a new profile replaces them all.
struct LastTold {
    std::optional<LONG> profile;
    std::optional<BOOL> enable;
    std::array<std::optional<BOOL>, eNumberKORA4APITechnologies> switches;
    std::array<std::optional<ULONG>, eNumberKORA4APITechnologies> values;
    std::optional<GraphicEQData> eq;
};

class Watcher final : public Counted<IVeltoKORA4APICallback> {
  public:
    explicit Watcher(WorkerReport& report) : Counted(1), m_report(report) {}

    LastTold m_last;
    std::uint32_t m_told = 0;  // of its thread, like m_last

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override {
        CountCall();
        const auto enable = m_last.enable;
        m_last = {};
        m_last.enable = enable;
        m_last.profile = profileID;
        return S_OK;
    }
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override {
        CountCall();
        m_last.enable = onElseOff;
        return S_OK;
    }
    STDMETHODIMP OnCustomProfileTableChange() override {
        CountCall();
        return S_OK;
    }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override {
        CountCall();
        m_last.switches[technology] = onElseOff;
        return S_OK;
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override {
        CountCall();
        m_last.values[pPatchValue->m_technology] = pPatchValue->m_values.m_volumeSlider;
        return S_OK;
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override {
        CountCall();
        ++m_report.equalizersSeen;
        m_last.eq = *pGraphicData;
        if (!IsWholeEQ(*pGraphicData))
            Fail(m_report, "told a mixed graphic EQ");
        return S_OK;
    }

  private:
    ~Watcher() = default;

    void CountCall() {
        ++m_told;
        ++m_report.told;
    }

    WorkerReport& m_report;
};

struct Client {
    Client(const ApiLibrary& library, WorkerReport& report) : spApi(library.Create()) {
        spWatcher.Attach(new Watcher(report));
        HRESULT hr = spApi ? spApi->Initialize() : E_FAIL;
        if (SUCCEEDED(hr))
            hr = spApi->RegisterChangeNotifications(spWatcher.Get());
        if (hr != S_OK)
            Die("an object cannot be initialised: " + Hex(hr));
    }

    ComPtr<IVeltoKORA4API> spApi;
    ComPtr<Watcher> spWatcher;
};

// One thread's calls.
class Changer {
  public:
    Changer(Client& client, WorkerReport& report, std::uint32_t seed)
        : m_api(*client.spApi.Get()), m_report(report), m_random(seed) {}

    void Call() {
        ++m_report.calls;
        const std::uint32_t drawn = Below(100);
        if (drawn < 30)
            SetValue();
        else if (drawn < 45)
            SetEQ();
        else if (drawn < 60)
            Check("SetTechnologyOnElseOff",
                  m_api.SetTechnologyOnElseOff(Technology(), static_cast<BOOL>(Below(2))));
        else if (drawn < 68)
            Check("SetVeltoEnable", m_api.SetVeltoEnable(static_cast<BOOL>(Below(2))));
        else if (drawn < 73)
            Rename();
        else if (drawn < 85)
            ReadEQ();
        else if (drawn < 97)
            ReadValue();
        else if (drawn < 99)
            Check("SetActiveProfile",
                  m_api.SetActiveProfile(static_cast<LONG>(Below(cUsedProfiles))));
        else
            Revert();
    }

  private:
    std::uint32_t Below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(m_random()) % bound;
    }
    KORA4APITechnology Technology() {
        return static_cast<KORA4APITechnology>(Below(eNumberKORA4APITechnologies));
    }

    bool Check(const char* what, HRESULT hr) {
        if (hr != S_OK)
            Fail(m_report, std::string(what) + " gives " + Hex(hr));
        return hr == S_OK;
    }

    KORA4PatchValueUnion Slider() {
        KORA4PatchValueUnion value{};
        do {
            value.m_technology = Technology();
        } while (value.m_technology == eGraphicEQ);
        return value;
    }

    void SetValue() {
        // By API technology: its place among the counters.
        static constexpr std::size_t cCounters[] = {0, 1, 2, 3, 4, 5};
        KORA4PatchValueUnion value = Slider();
        if (value.m_technology == eVolumeLeveler || value.m_technology == eIntelligentEQ)
            value.m_values.m_volumeSlider = Below(6);
        else
            value.m_values.m_enhancementSlider = static_cast<float>(Below(1000)) / 1000;
        if (Check("SetSimplePatchValue", m_api.SetSimplePatchValue(&value)))
            ++m_report.announced[cCounters[value.m_technology]];
    }

    void SetEQ() {
        GraphicEQData eq = StampedEQ(1 + Below(cStamps));
        if (Check("SetGraphicEQData", m_api.SetGraphicEQData(&eq)))
            ++m_report.announced[eGraphicEQ];
    }

    void ReadEQ() {
        GraphicEQData eq{};
        if (!Check("GetGraphicEQData", m_api.GetGraphicEQData(&eq)))
            return;
        ++m_report.equalizersSeen;
        if (!IsWholeEQ(eq))
            Fail(m_report, "read a mixed graphic EQ");
    }

    void ReadValue() {
        KORA4PatchValueUnion value = Slider();
        Check("GetSimplePatchValue", m_api.GetSimplePatchValue(&value));
    }

    void Rename() {
        if (Check("SetCustomProfileName", m_api.SetCustomProfileName(3, L"another")))
            ++m_report.tableChanges;
    }

    void Revert() {
        const HRESULT hr = m_api.RevertActiveProfile();
        if (hr == S_OK) {
            for (auto& count : m_report.announced)
                ++count;
        } else if (hr != KORA4_S_NOT_A_PRESET_PROFILE) {
            Fail(m_report, "RevertActiveProfile gives " + Hex(hr));
        }
    }

    IVeltoKORA4API& m_api;
    WorkerReport& m_report;
    std::mt19937 m_random;
};

// The last state as a watcher was told it, against the one that is read.
class Comparison {
  public:
    Comparison(IVeltoKORA4API& api, const LastTold& last) : m_api(api), m_last(last) {}

    bool Holds() {
        m_count = 0;
        m_wrong.clear();
        LONG profile = -1;
        BOOL enable = -1;
        m_api.GetActiveProfile(&profile);
        m_api.GetVeltoEnable(&enable);
        Compare("profile", m_last.profile, profile);
        Compare("enable", m_last.enable, enable);
        for (int i = 0; i < eNumberKORA4APITechnologies; ++i) {
            const auto technology = static_cast<KORA4APITechnology>(i);
            const auto index = static_cast<std::size_t>(i);
            BOOL on = -1;
            m_api.GetTechnologyOnElseOff(technology, &on);
            Compare("switch " + std::to_string(i), m_last.switches[index], on);
            KORA4PatchValueUnion value{};
            value.m_technology = technology;
            if (technology != eGraphicEQ && m_api.GetSimplePatchValue(&value) == S_OK)
                Compare("value " + std::to_string(i), m_last.values[index],
                        ULONG{value.m_values.m_volumeSlider});
        }
        GraphicEQData eq{};
        m_api.GetGraphicEQData(&eq);
        if (m_last.eq) {
            ++m_count;
            if (!Same(*m_last.eq, eq))
                m_wrong += "graphic EQ; ";
        }
        return m_wrong.empty();
    }

    std::uint32_t Count() const { return m_count; }
    const std::string& Wrong() const { return m_wrong; }

  private:
    template <typename T>
    void Compare(const std::string& what, const std::optional<T>& told, T stored) {
        if (!told)
            return;
        ++m_count;
        if (*told != stored)
            m_wrong += what + " was told last as " + std::to_string(*told) + ", it is " +
                       std::to_string(stored) + "; ";
    }

    IVeltoKORA4API& m_api;
    const LastTold& m_last;
    std::uint32_t m_count = 0;
    std::string m_wrong;
};

void Await(HANDLE event, const char* what) {
    if (!PumpUntil([&] { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; }, event,
                   cLongWait))
        Die(std::string("a worker waits in vain: ") + what);
}

void Change(Workshop& workshop, const ApiLibrary& library, WorkerReport& report,
            std::uint32_t seed) {
    const Apartment apartment(COINIT_MULTITHREADED);
    Client client(library, report);
    Changer changer(client, report, seed);
    while (WaitForSingleObject(workshop.Stop(), 0) != WAIT_OBJECT_0)
        changer.Call();
}

// A thread that makes calls until it is to stop; its end lets calls in.
class ChangingThread {
  public:
    ChangingThread(Workshop& workshop, const ApiLibrary& library, WorkerReport& report,
                   std::uint32_t seed)
        : m_done(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_thread([&workshop, &library, &report, seed, done = m_done.Get()] {
              Change(workshop, library, report, seed);
              SetEvent(done);
          }) {}
    ~ChangingThread() {
        Await(m_done.Get(), "the end of its thread");
        m_thread.join();
    }
    ChangingThread(const ChangingThread&) = delete;
    ChangingThread& operator=(const ChangingThread&) = delete;

  private:
    const UniqueHandle m_done;
    std::thread m_thread;
};

void Work(Workshop& workshop, std::size_t worker) {
    WorkerReport& report = workshop.Report(worker);
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    const ApiLibrary library;
    Client observer(library, report);
    SetEvent(workshop.Ready(worker));
    // The driver changes something before anybody else does.
    if (!PumpUntil([&] { return observer.spWatcher->m_told != 0; }))
        Die("an observer is not told a single change");
    SetEvent(workshop.Watching(worker));
    Await(workshop.Go(), "the start");
    {
        const auto seed = static_cast<std::uint32_t>(1 + worker * cThreadsPerWorker);
        static_assert(cThreadsPerWorker == 2);
        const ChangingThread first(workshop, library, report, seed);
        const ChangingThread second(workshop, library, report, seed + 1);
        Await(workshop.Stop(), "the end");
    }
    SetEvent(workshop.Stopped(worker));

    // Nothing changes any more; what is still under way comes in.
    Await(workshop.Compare(), "the comparison");
    Comparison comparison(*observer.spApi.Get(), observer.spWatcher->m_last);
    if (!PumpUntil([&] { return comparison.Holds(); }))
        Fail(report, "missed the last state: " + comparison.Wrong());
    report.itemsCompared = comparison.Count();
    report.toldToObserver = observer.spWatcher->m_told;
}

}  // namespace

Workshop::Workshop(const std::wstring& name)
    : m_state(name),
      m_go(NamedEvent(name + L"-go")),
      m_stop(NamedEvent(name + L"-stop")),
      m_compare(NamedEvent(name + L"-compare")) {
    for (std::size_t i = 0; i < cWorkers; ++i) {
        m_ready[i] = NamedEvent(name + L"-ready-" + std::to_wstring(i));
        m_watching[i] = NamedEvent(name + L"-watching-" + std::to_wstring(i));
        m_stopped[i] = NamedEvent(name + L"-stopped-" + std::to_wstring(i));
    }
}

int WorkIfAsked(int argc, char** argv) {
    const std::size_t length = std::strlen(cWorkerArgument);
    if (argc < 2 || std::strncmp(argv[1], cWorkerArgument, length) != 0)
        return -1;
    char* rest = nullptr;
    const std::size_t worker = std::strtoul(argv[1] + length, &rest, 10);
    const std::string name = rest + 1;
    Workshop workshop(std::wstring(name.begin(), name.end()));
    Work(workshop, worker);
    return 0;
}

GraphicEQData StampedEQ(std::uint32_t stamp) {
    GraphicEQData eq{};
    eq.m_bands = 1 + stamp % cMaxBands;
    for (ULONG i = 0; i < eq.m_bands; ++i) {
        eq.m_freq[i] = static_cast<float>(stamp);
        eq.m_gain[i] = (static_cast<float>(stamp % 6000) - 3000.0f) / 256;
    }
    return eq;
}

bool IsWholeEQ(const GraphicEQData& eq) {
    static constexpr GraphicEQData cBuiltIn = {
        10, {32, 64, 125, 250, 500, 1000, 2000, 4000, 8000, 16000}, {}};
    return Same(eq, cBuiltIn) ||
           (eq.m_bands >= 1 && eq.m_bands <= cMaxBands &&
            Same(eq, StampedEQ(static_cast<std::uint32_t>(eq.m_freq[0]))));
}

}  // namespace kora4::test

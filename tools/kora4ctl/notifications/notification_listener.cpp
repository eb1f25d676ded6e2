// SPDX-License-Identifier: MIT
// The callback object that collects what the library tells, and the words for each kind of
// change.
#include "kora4ctl/notifications/notification_listener.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/profile_names.h"
#include "settings/names.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

std::string TechnologyName(KORA4APITechnology technology) {
    for (const TechnologyWord& word : AllTechnologies()) {
        if (word.apiNumber == static_cast<std::uint32_t>(technology))
            return word.word;
    }
    return "technology-" + std::to_string(technology);
}

// Of one setting, by its name.
void Fill(Notification& told, const char* event, const std::string& name, const Value& value) {
    told.event = event;
    told.name = name;
    if (const Setting* const setting = FindSetting(name)) {
        told.value = ToJson(*setting, value);
        told.text = FormatValue(*setting, value);
    }
}

// The members of the union lie on top of one another: a number or a float.
Value ValueOf(const KORA4PatchValueUnion& patch) {
    if (patch.m_technology == eVolumeLeveler || patch.m_technology == eIntelligentEQ)
        return static_cast<std::uint32_t>(patch.m_values.m_volumeSlider);
    return patch.m_values.m_enhancementSlider;
}

void FillBands(Notification& told, const GraphicEQData& eq) {
    told.event = told.name = "graphic-eq";
    Json frequencies = Json::array();
    Json gains = Json::array();
    std::vector<std::string> bands;
    for (ULONG i = 0; i < std::min<ULONG>(eq.m_bands, KORA4_GRAPHIC_EQ_MAX_BANDS); ++i) {
        frequencies.push_back(Json::parse(Decimal(eq.m_freq[i])));
        gains.push_back(Json::parse(Decimal(eq.m_gain[i])));
        bands.push_back(Decimal(eq.m_freq[i]) + ":" + Decimal(eq.m_gain[i]));
    }
    told.value = {{"frequencies", frequencies}, {"gains", gains}};
    told.text = bands.empty() ? "no bands" : Join(bands, " ");
}

constexpr char cTableEvent[] = "table";

void FillTable(Notification& told, const ProfileTable& table) {
    told.value = Json::object();
    std::vector<std::string> words;
    for (std::uint32_t profile = cFirstCustomProfile; IsCustomProfile(profile); ++profile) {
        const std::string word = ProfileName(profile);
        told.value[word] = OrNull(table[profile]);
        if (table[profile])
            words.push_back(word + " " + Json(*table[profile]).dump());
    }
    told.text = words.empty() ? "none" : Join(words, ", ");
}

}  // namespace

// Keeps what it is told and calls nobody: a call that failed would end the library's monitor,
// and one that waited would hold up the apartment.
class NotificationListener::Callback final : public IVeltoKORA4APICallback {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv)
            return E_POINTER;
        const bool isKnown =
            IsEqualIID(iid, __uuidof(IUnknown)) || IsEqualIID(iid, IID_IVeltoKORA4APICallback);
        *ppv = isKnown ? this : nullptr;
        if (!isKnown)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override {
        return Keep([=](Notification& told) {
            Fill(told, "profile", "profile", static_cast<std::uint32_t>(profileID));
        });
    }
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override {
        return Keep(
            [=](Notification& told) { Fill(told, "enable", "enable", onElseOff != FALSE); });
    }
    STDMETHODIMP OnCustomProfileTableChange() override {
        return Keep([](Notification& told) {
            told.event = cTableEvent;
            told.name = "custom-profiles";
        });
    }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override {
        return Keep([=](Notification& told) {
            Fill(told, "switch", TechnologyName(technology) + ".on", onElseOff != FALSE);
        });
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override {
        return Keep([=](Notification& told) {
            Fill(told, "value", TechnologyName(pPatchValue->m_technology),
                 ValueOf(*pPatchValue));
        });
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override {
        return Keep([=](Notification& told) { FillBands(told, *pGraphicData); });
    }

    bool HasSome() const { return !m_told.empty(); }
    std::vector<Notification> Take() { return std::exchange(m_told, {}); }

  private:
    ~Callback() = default;

    template <typename Filler>
    HRESULT Keep(Filler fill) {
        try {
            Notification told;
            told.time = Moment::Now();
            told.tick = GetTickCount64();
            fill(told);
            m_told.push_back(std::move(told));
        } catch (const std::exception&) {
            // Out of memory: losing this line is better than ending the monitor with a
            // failure.
        }
        return S_OK;
    }

    ULONG m_references = 1;
    std::vector<Notification> m_told;
};

std::string Notification::Line() const {
    return time.Clock() + "  " + name + "  " + text;
}

Json Notification::Document() const {
    return {{"time", time.Iso()}, {"event", event}, {"name", name}, {"value", value}};
}

NotificationListener::NotificationListener(IVeltoKORA4API& api, HANDLE interrupt)
    : m_api(api), m_interrupt(interrupt) {
    m_callback.Attach(new Callback);
    Check(api.RegisterChangeNotifications(m_callback.Get()), "Registering for notifications");
}

NotificationListener::~NotificationListener() {
    m_api.UnregisterChangeNotifications();
}

Wake NotificationListener::Wait(const Deadline& deadline, std::vector<Notification>& told) {
    constexpr double cPatience = 1;  // seconds
    Wake wake = Wake::eTimedOut;
    do {
        const Deadline slice(std::min(cPatience, deadline.Left() / 1000.0));
        wake = WaitWithMessages(m_interrupt, slice, [this] { return m_callback->HasSome(); });
        m_keys.CheckAreThere();
    } while (wake == Wake::eTimedOut && !deadline.IsOver());
    told = m_callback->Take();
    for (Notification& one : told) {
        if (one.event != cTableEvent)
            continue;
        try {
            FillTable(one, ReadProfileNames(m_api));
        } catch (const Failure& failure) {
            one.text = failure.what();
        }
    }
    return wake;
}

}  // namespace kora4::tools

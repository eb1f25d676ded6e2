// SPDX-License-Identifier: MIT
#include "kora4ctl/notifications/notification_listener.h"

#include <algorithm>
#include <utility>
#include <variant>

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

struct TableChange {};
struct SwitchChange {
    KORA4APITechnology technology;
    bool isOn;
};
struct EnableChange {
    bool isOn;
};
struct ProfileChange {
    std::uint32_t profile;
};

}  // namespace

struct Told {
    Moment time;
    ULONGLONG tick;
    std::variant<TableChange, SwitchChange, EnableChange, ProfileChange, KORA4PatchValueUnion,
                 GraphicEQData>
        change;
};

// Keeps what it is told and does nothing else: a call that failed would end the library's
// monitor, and one that waited would hold up the apartment.
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
        return Keep(ProfileChange{static_cast<std::uint32_t>(profileID)});
    }
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override {
        return Keep(EnableChange{onElseOff != FALSE});
    }
    STDMETHODIMP OnCustomProfileTableChange() override { return Keep(TableChange{}); }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override {
        return Keep(SwitchChange{technology, onElseOff != FALSE});
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override {
        return Keep(*pPatchValue);
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override {
        return Keep(*pGraphicData);
    }

    bool HasSome() const { return !m_told.empty(); }
    std::vector<Told> Take() { return std::exchange(m_told, {}); }

  private:
    ~Callback() = default;

    template <typename Change>
    HRESULT Keep(const Change& change) {
        try {
            m_told.push_back({Moment::Now(), GetTickCount64(), change});
        } catch (const std::bad_alloc&) {
            // One line less; the ones to come are worth more than an end of it all.
        }
        return S_OK;
    }

    ULONG m_references = 1;
    std::vector<Told> m_told;
};

namespace {

std::string TechnologyName(KORA4APITechnology technology) {
    for (const TechnologyWord& word : AllTechnologies()) {
        if (word.apiNumber == static_cast<std::uint32_t>(technology))
            return word.word;
    }
    return "technology-" + std::to_string(technology);
}

void SetValue(Notification& notification, const std::string& name, const Value& value) {
    notification.name = name;
    if (const Setting* setting = FindSetting(name)) {
        notification.value = ToJson(*setting, value);
        notification.text = FormatValue(*setting, value);
    }
}

// Fills in what the change says.
class Description {
  public:
    Description(Notification& notification, IVeltoKORA4API& api)
        : m_notification(notification), m_api(api) {}

    void operator()(const EnableChange& change) {
        m_notification.event = "enable";
        SetValue(m_notification, "enable", change.isOn);
    }
    void operator()(const ProfileChange& change) {
        m_notification.event = "profile";
        SetValue(m_notification, "profile", change.profile);
    }
    void operator()(const SwitchChange& change) {
        m_notification.event = "switch";
        SetValue(m_notification, TechnologyName(change.technology) + ".on", change.isOn);
    }
    // The members of the union lie on top of one another: a number or a float.
    void operator()(const KORA4PatchValueUnion& patch) {
        m_notification.event = "value";
        const std::string name = TechnologyName(patch.m_technology);
        if (patch.m_technology == eVolumeLeveler || patch.m_technology == eIntelligentEQ)
            SetValue(m_notification, name,
                     static_cast<std::uint32_t>(patch.m_values.m_volumeSlider));
        else
            SetValue(m_notification, name, patch.m_values.m_enhancementSlider);
    }
    void operator()(const GraphicEQData& eq) {
        m_notification.event = "graphic-eq";
        m_notification.name = "graphic-eq";
        Json frequencies = Json::array();
        Json gains = Json::array();
        std::vector<std::string> bands;
        for (ULONG i = 0; i < std::min<ULONG>(eq.m_bands, KORA4_GRAPHIC_EQ_MAX_BANDS); ++i) {
            frequencies.push_back(Json::parse(Decimal(eq.m_freq[i])));
            gains.push_back(Json::parse(Decimal(eq.m_gain[i])));
            bands.push_back(Decimal(eq.m_freq[i]) + ":" + Decimal(eq.m_gain[i]));
        }
        m_notification.value = {{"frequencies", frequencies}, {"gains", gains}};
        m_notification.text = bands.empty() ? "no bands" : Join(bands, " ");
    }
    void operator()(const TableChange&) {
        m_notification.event = "table";
        m_notification.name = "custom-profiles";
        try {
            DescribeTable(ReadProfileNames(m_api));
        } catch (const Failure& failure) {
            m_notification.text = failure.what();
        }
    }

  private:
    void DescribeTable(const ProfileTable& table) {
        Json names = Json::object();
        std::vector<std::string> words;
        for (std::uint32_t profile = 0; profile < table.size(); ++profile) {
            if (!IsCustomProfile(profile))
                continue;
            const std::string word = ProfileName(profile);
            names[word] = table[profile] ? Json(*table[profile]) : Json();
            if (table[profile])
                words.push_back(word + " " + Json(*table[profile]).dump());
        }
        m_notification.value = names;
        m_notification.text = words.empty() ? "none" : Join(words, ", ");
    }

    Notification& m_notification;
    IVeltoKORA4API& m_api;
};

}  // namespace

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
    told.clear();
    const Wake wake =
        WaitWithMessages(m_interrupt, deadline, [this] { return m_callback->HasSome(); });
    for (const Told& one : m_callback->Take())
        told.push_back(Describe(one));
    return wake;
}

Notification NotificationListener::Describe(const Told& told) {
    Notification notification;
    notification.time = told.time;
    notification.tick = told.tick;
    std::visit(Description(notification, m_api), told.change);
    return notification;
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// The callback object that collects what the library tells, and the words for each kind of
// change.
#include "kora4ctl/notifications/notification_listener.h"

#include <utility>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/api_settings.h"
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

void FillBands(Notification& told, const Bands& bands) {
    told.event = told.name = "graphic-eq";
    Json frequencies = Json::array();
    Json gains = Json::array();
    std::vector<std::string> texts;
    for (const auto& [frequency, gain] : bands) {
        frequencies.push_back(Json::parse(Decimal(frequency)));
        gains.push_back(Json::parse(Decimal(gain)));
        texts.push_back(Decimal(frequency) + ":" + Decimal(gain));
    }
    told.value = {{"frequencies", frequencies}, {"gains", gains}};
    told.text = texts.empty() ? "no bands" : Join(texts, " ");
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

// Keeps what it is told and calls nobody: a call that waited would hold up the apartment. What
// finds no memory is lost.
class NotificationListener::Collector final : public Callback {
  public:
    bool HasSome() const { return !m_told.empty(); }
    std::vector<Notification> Take() { return std::exchange(m_told, {}); }

  private:
    void OnProfile(LONG profile) override {
        Keep([=](Notification& told) {
            Fill(told, "profile", "profile", static_cast<std::uint32_t>(profile));
        });
    }
    void OnEnable(bool isOn) override {
        Keep([=](Notification& told) { Fill(told, "enable", "enable", isOn); });
    }
    void OnProfileTable() override {
        Keep([](Notification& told) {
            told.event = cTableEvent;
            told.name = "custom-profiles";
        });
    }
    void OnSwitch(KORA4APITechnology technology, bool isOn) override {
        Keep([=](Notification& told) {
            Fill(told, "switch", TechnologyName(technology) + ".on", isOn);
        });
    }
    void OnValue(const kora4::Value& value) override {
        Keep([&](Notification& told) {
            Fill(told, "value", TechnologyName(value.Technology()), ContentOf(value));
        });
    }
    void OnGraphicEq(const Bands& bands) override {
        Keep([&](Notification& told) { FillBands(told, bands); });
    }

    template <typename Filler>
    void Keep(Filler fill) {
        Notification told;
        told.time = UtcTime::Now();
        told.tick = GetTickCount64();
        fill(told);
        m_told.push_back(std::move(told));
    }

    std::vector<Notification> m_told;
};

std::string Notification::Line() const {
    return time.Clock() + "  " + name + "  " + text;
}

Json Notification::Document() const {
    return {{"time", time.Iso()}, {"event", event}, {"name", name}, {"value", value}};
}

std::vector<Notification> SnapshotOf(Api& api) {
    constexpr char cSnapshot[] = "snapshot";
    std::vector<Notification> all;
    for (const Setting& setting : SettingsTable()) {
        Notification one;
        one.time = UtcTime::Now();
        if (setting.methods == ApiMethods::eBands) {
            FillBands(one, Check(api.GetGraphicEQData(), "Reading " + setting.name));
            one.event = cSnapshot;
        } else if (setting.methods == ApiMethods::eSwitch ||
                   setting.methods == ApiMethods::ePatchValue) {
            Fill(one, cSnapshot, setting.name, *ReadThroughApi(setting, {}, api));
        } else {
            continue;
        }
        all.push_back(std::move(one));
    }
    return all;
}

NotificationListener::NotificationListener(Api& api, HANDLE interrupt)
    : m_api(api), m_interrupt(interrupt), m_collector(MakeCallback<Collector>()) {
    Check(api.RegisterChangeNotifications(m_collector.Get()), "Registering for notifications");
}

NotificationListener::~NotificationListener() {
    static_cast<void>(m_api.UnregisterChangeNotifications());
}

Wake NotificationListener::Wait(const Deadline& deadline, std::vector<Notification>& told) {
    constexpr double cPatience = 1;  // seconds
    Wake wake = Wake::eTimedOut;
    do {
        const Deadline slice(std::min(cPatience, deadline.Left() / 1000.0));
        wake = WaitWithMessages(m_interrupt, slice, [this] { return m_collector->HasSome(); });
        m_keys.CheckAreThere();
    } while (wake == Wake::eTimedOut && !deadline.IsOver());
    told = m_collector->Take();
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

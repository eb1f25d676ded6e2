// SPDX-License-Identifier: MIT
// Items of the settings: taking, putting, comparing.
#include "panel/model/settings.h"

#include "panel/model/curve.h"

namespace panel {

Item Get(const Settings& settings, Subject subject, std::size_t index) {
    Item item;
    item.subject = subject;
    item.index = index;
    switch (subject) {
        case Subject::eProfile:
            item.number = static_cast<double>(settings.profile);
            break;
        case Subject::eEnable:
            item.number = settings.isEnabled ? 1 : 0;
            break;
        case Subject::eSwitch:
            item.number = settings.switches[index] ? 1 : 0;
            break;
        case Subject::eValue:
            item.number = settings.values[index];
            break;
        case Subject::eBands:
            item.bands = settings.bands;
            break;
        case Subject::eBand:
            if (index < settings.bands.size())
                item.bands = {settings.bands[index]};
            break;
        case Subject::eName:
            item.name = settings.names[index];
            break;
    }
    return item;
}

bool Fits(const Item& band, const kora4::Bands& bands) {
    return band.index < bands.size() && !band.bands.empty() &&
           IsSameBand(band.bands[0], bands[band.index]);
}

void Put(Settings& settings, const Item& item) {
    switch (item.subject) {
        case Subject::eProfile:
            settings.profile = static_cast<long>(item.number);
            break;
        case Subject::eEnable:
            settings.isEnabled = item.number > 0;
            break;
        case Subject::eSwitch:
            settings.switches[item.index] = item.number > 0;
            break;
        case Subject::eValue:
            settings.values[item.index] = item.number;
            break;
        case Subject::eBands:
            settings.bands = item.bands;
            break;
        case Subject::eBand:
            if (Fits(item, settings.bands))
                settings.bands[item.index] = item.bands[0];
            break;
        case Subject::eName:
            settings.names[item.index] = item.name;
            break;
    }
}

Items All(const Settings& settings) {
    Items items;
    for (std::size_t i = 0; i < settings.names.size(); ++i)
        items.push_back(Get(settings, Subject::eName, i));
    items.push_back(Get(settings, Subject::eProfile));
    items.push_back(Get(settings, Subject::eEnable));
    for (const Technology technology : cTechnologies) {
        items.push_back(Get(settings, Subject::eSwitch, IndexOf(technology)));
        if (technology != Technology::eGraphicEq)
            items.push_back(Get(settings, Subject::eValue, IndexOf(technology)));
    }
    items.push_back(Get(settings, Subject::eBands));
    return items;
}

Items Difference(const Settings& from, const Settings& to) {
    Items items;
    const bool areSameBands = AreSameBands(from.bands, to.bands);
    const auto add = [&](const Item& item) {
        if (item != Get(from, item.subject, item.index))
            items.push_back(item);
    };
    for (const Item& item : All(to))
        if (item.subject != Subject::eBands || !areSameBands)
            add(item);
    for (std::size_t band = 0; areSameBands && band < to.bands.size(); ++band)
        add(Get(to, Subject::eBand, band));
    return items;
}

std::optional<kora4::Bands> Together(const Items& items, kora4::Bands bands) {
    for (const Item& item : items) {
        if (item.subject != Subject::eBand)
            continue;
        if (!Fits(item, bands))
            return std::nullopt;
        bands[item.index] = item.bands[0];
    }
    return bands;
}

bool Exists(long profile, const Settings& settings) {
    return IsPreset(profile) ||
           (IsCustom(profile) && settings.names[static_cast<std::size_t>(profile)]);
}

std::optional<long> FreeCustomProfile(const Settings& settings) {
    for (long profile = KORA4_PROFILE_FIRST_CUSTOM; profile <= KORA4_PROFILE_LAST_CUSTOM;
         ++profile)
        if (!Exists(profile, settings))
            return profile;
    return std::nullopt;
}

}  // namespace panel

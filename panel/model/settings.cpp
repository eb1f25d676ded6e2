// SPDX-License-Identifier: MIT
// Items of the settings: taking, putting, comparing.
#include "panel/model/settings.h"

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
        case Subject::eName:
            item.name = settings.names[index];
            break;
    }
    return item;
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
    for (const Item& item : All(to))
        if (item != Get(from, item.subject, item.index))
            items.push_back(item);
    return items;
}

std::optional<long> FreeCustomProfile(const Settings& settings) {
    for (long profile = KORA4_PROFILE_FIRST_CUSTOM; profile <= KORA4_PROFILE_LAST_CUSTOM;
         ++profile)
        if (!settings.names[static_cast<std::size_t>(profile)])
            return profile;
    return std::nullopt;
}

}  // namespace panel

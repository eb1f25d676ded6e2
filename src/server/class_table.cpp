// SPDX-License-Identifier: MIT
// The table of served classes: how each is made, and which script registers it.
#include "server/class_table.h"

#include <veltokora4api.h>

#include "api/create_api_object.h"
#include "server/resource_ids.h"

namespace kora4 {

namespace {

// The type library describes two more classes. They are not served and not registered.
constexpr ServedClass cClasses[] = {
    {&CLSID_VeltoKORA4APITestCoclass, CreateApiObject, KORA4_RES_TEST_CLASS_SCRIPT},
};

}  // namespace

std::span<const ServedClass> ClassTable() {
    return cClasses;
}

const ServedClass* FindServedClass(REFCLSID clsid) {
    for (const ServedClass& served : cClasses)
        if (IsEqualCLSID(*served.clsid, clsid))
            return &served;
    return nullptr;
}

}  // namespace kora4

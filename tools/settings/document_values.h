// SPDX-License-Identifier: MIT
// One value of the settings document.
#ifndef KORA4_SETTINGS_DOCUMENT_VALUES_H
#define KORA4_SETTINGS_DOCUMENT_VALUES_H

#include "base/checked_json.h"
#include "base/output.h"
#include "registry/stored_value.h"
#include "settings/schema.h"
#include "settings/settings_table.h"

namespace kora4::tools {

// In the forms that document.h describes.
Json StoredToJson(const Setting& setting, const SchemaValue& value, const StoredValue& stored);
// Failure with eBadInput names the place.
StoredValue StoredFromJson(const Setting& setting, const SchemaValue& value,
                           const CheckedJson& json);

}  // namespace kora4::tools

#endif  // KORA4_SETTINGS_DOCUMENT_VALUES_H

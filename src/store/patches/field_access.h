// SPDX-License-Identifier: MIT
// Reads and writes one field of a technology record.
#pragma once

#include <cstdint>

#include "contract/field_def.h"
#include "contract/property_key.h"
#include "contract/result.h"
#include "store/access/key_access.h"

namespace kora4 {

// The caller holds the store's named mutex.

// Reads the field under `key` (its pid is replaced) from the static keys. Whatever cannot be
// read takes the default of row `defaultsIndex`, and so does everything with `defaultsOnly`,
// without asking the store. E_FAIL when a default is broken or the type code is unknown.
HRESULT LoadField(const KORA4FieldDef& field, KORA4KeyAccess& access, const PropertyKey& key,
                  std::uint32_t defaultsIndex, bool defaultsOnly, void* pRecord);

// Writes the field; of several arrays none after the first failure.
HRESULT WriteField(const KORA4FieldDef& field, KORA4KeyAccess& access, const PropertyKey& key,
                   const void* pRecord);

}  // namespace kora4

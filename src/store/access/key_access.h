// SPDX-License-Identifier: MIT
// The seam between the store and the platform: seven operations on (key set, property
// key) pairs. KORA4RegPropKeysAccess implements it on the registry and a property store.
#pragma once

#include <cstdint>

#include "contract/property_key.h"
#include "contract/result.h"

namespace kora4 {

// Every operation returns S_OK, S_FALSE when the value is absent (reads and Delete),
// APOERR_NOT_INITIALIZED before the access is open, or a failure. On anything but S_OK the
// outputs are untouched. The app keys are read only: writes to them succeed and store nothing,
// a deletion in them fails. Implementations are called with the store's named mutex held (the
// trace word excepted, which Initialize reads without), by one thread at a time, and call
// nothing back.
class KORA4KeyAccess {
  public:
    // Reads a number of 32 bits. A stored value of another type or size is a failure.
    virtual HRESULT ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                             std::uint32_t* pValue) = 0;

    // The caller frees the zero-terminated text with FreeTaskMemory.
    virtual HRESULT ReadText(KORA4KeySet keySet, const PropertyKey& key, char16_t** ppText) = 0;

    // The caller frees the data with FreeTaskMemory. `pSize` is in bytes.
    virtual HRESULT ReadBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pSize,
                             std::uint8_t** ppData) = 0;

    // Stores a 32-bit number.
    virtual HRESULT WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                              std::uint32_t value) = 0;

    // A null text is written as the empty one.
    virtual HRESULT WriteText(KORA4KeySet keySet, const PropertyKey& key,
                              const char16_t* pwText) = 0;

    // `size` is in bytes. The data is copied before the return.
    virtual HRESULT WriteBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t size,
                              const std::uint8_t* pData) = 0;

    // Removes the value; S_FALSE when there is none.
    virtual HRESULT Delete(KORA4KeySet keySet, const PropertyKey& key) = 0;

  protected:
    ~KORA4KeyAccess() = default;
};

}  // namespace kora4

// SPDX-License-Identifier: MIT
// Typed values over the key access: numbers, flags and the text encodings.
#pragma once

#include <cstdint>

#include "contract/codec/array_text.h"
#include "store/access/key_access.h"

namespace kora4 {

// Reads hand out S_OK with the value, S_FALSE when it is absent, or a failure; on anything but
// S_OK the caller takes its default. Borrows the access, which must outlive it; has no state
// of its own and costs nothing to make. Used under the store's named mutex, like the access.
class KORA4PropKeyStoreAccess {
  public:
    explicit KORA4PropKeyStoreAccess(KORA4KeyAccess& access) : m_access(access) {}

    // Nothing but a number of four bytes is read.
    HRESULT ReadUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pValue);
    // Any non-zero number reads as true.
    HRESULT ReadBool(KORA4KeySet keySet, const PropertyKey& key, bool* pValue);
    // E_FAIL when the text does not begin with a decimal number.
    HRESULT ReadFloat(KORA4KeySet keySet, const PropertyKey& key, float* pValue);

    // The arrays have 40 places; all are cleared first and the count is 0 unless the
    // result is S_OK. A null count gives E_INVALIDARG.
    HRESULT ReadNumericArray(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pCount,
                             float* pElements);
    HRESULT ReadFlagArray(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pCount,
                          std::uint32_t* pFlags);

    // The same reads with the default as the answer to everything but S_OK.
    std::uint32_t UINTOr(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t fallback);
    bool BoolOr(KORA4KeySet keySet, const PropertyKey& key, bool fallback);

    // Stores the low 32 bits.
    HRESULT WriteUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint64_t value);
    // Stores 0 or 1.
    HRESULT WriteBool(KORA4KeySet keySet, const PropertyKey& key, bool value);
    // Stores a text with six decimals.
    HRESULT WriteFloat(KORA4KeySet keySet, const PropertyKey& key, float value);
    // E_INVALIDARG, and nothing is written, for a scale of 0 or of 32768 and above.
    HRESULT WriteNumericArray(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t scale,
                              std::uint32_t count, const float* pElements);
    HRESULT WriteFlagArray(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t count,
                           const std::uint32_t* pFlags);

    // codec::PutArrayField with its entry and exit lines.
    static HRESULT WriteArrayNumericField(char16_t** ppCursor, std::size_t* pCharsAvail,
                                          codec::ArrayField field, std::uint32_t value);

  private:
    KORA4KeyAccess& m_access;
};

}  // namespace kora4

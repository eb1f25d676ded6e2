// SPDX-License-Identifier: MIT
// Keeps values in an open-addressed table that neither allocates nor formats names.
#include "native/stub_key_access.h"

#include "store/access/task_memory.h"

namespace kora4::bench {

// The first field of the GUID, the property id and the key set tell all keys apart.
StubKeyAccess::Slot& StubKeyAccess::SlotOf(KORA4KeySet keySet, const PropertyKey& key) {
    const std::uint64_t address =
        std::uint64_t{key.fmtid.data1} << 32 | (key.pid & 0xFFFFFF) << 8 | keySet;
    std::size_t index = (address * 0x9E3779B97F4A7C15u) >> 53;
    while (m_slots[index].address != address && m_slots[index].address != 0)
        index = (index + 1) % cSlots;
    m_slots[index].address = address;
    return m_slots[index];
}

HRESULT StubKeyAccess::ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                                std::uint32_t* pValue) {
    *pValue = SlotOf(keySet, key).number;
    return result::cOk;
}

HRESULT StubKeyAccess::ReadText(KORA4KeySet keySet, const PropertyKey& key, char16_t** ppText) {
    const Slot& slot = SlotOf(keySet, key);
    if (!slot.isText)
        return result::cFalse;
    *ppText = DuplicateTaskText(slot.text.c_str());
    return *ppText ? result::cOk : result::cOutOfMemory;
}

HRESULT StubKeyAccess::WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                                 std::uint32_t value) {
    SlotOf(keySet, key).number = value;
    return result::cOk;
}

HRESULT StubKeyAccess::WriteText(KORA4KeySet keySet, const PropertyKey& key,
                                 const char16_t* pwText) {
    Slot& slot = SlotOf(keySet, key);
    slot.isText = true;
    slot.text = pwText;
    return result::cOk;
}

}  // namespace kora4::bench

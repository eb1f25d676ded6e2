// SPDX-License-Identifier: MIT
// A store that answers at once: what is left is the time of the code above it.
#ifndef KORA4_BENCH_STUB_KEY_ACCESS_H
#define KORA4_BENCH_STUB_KEY_ACCESS_H

#include <array>
#include <cstdint>
#include <string>

#include "store/access/key_access.h"

namespace kora4::bench {

// Numbers and texts in a table without collisions worth speaking of. Writes are taken, a text
// as long as the one that it replaces without a new allocation.
class StubKeyAccess final : public KORA4KeyAccess {
  public:
    HRESULT ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                     std::uint32_t* pValue) override;
    HRESULT ReadText(KORA4KeySet keySet, const PropertyKey& key, char16_t** ppText) override;
    HRESULT ReadBlob(KORA4KeySet, const PropertyKey&, std::uint32_t*, std::uint8_t**) override {
        return result::cFalse;
    }
    HRESULT WriteUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value) override;
    HRESULT WriteText(KORA4KeySet keySet, const PropertyKey& key,
                      const char16_t* pwText) override;
    HRESULT WriteBlob(KORA4KeySet, const PropertyKey&, std::uint32_t,
                      const std::uint8_t*) override {
        return result::cOk;
    }
    HRESULT Delete(KORA4KeySet, const PropertyKey&) override { return result::cFalse; }

  private:
    static constexpr std::size_t cSlots = 2048;

    struct Slot {
        std::uint64_t address = 0;  // 0: free
        bool isText = false;
        std::uint32_t number = 0;
        std::u16string text;
    };

    Slot& SlotOf(KORA4KeySet keySet, const PropertyKey& key);

    std::array<Slot, cSlots> m_slots;
};

}  // namespace kora4::bench

#endif  // KORA4_BENCH_STUB_KEY_ACCESS_H

// SPDX-License-Identifier: MIT
// The key access on the platform: three registry keys and a property store.
#pragma once

#include <propsys.h>
#include <windows.h>
#include <wrl/client.h>

#include "platform/handles.h"
#include "platform/non_copyable.h"
#include "store/access/key_access.h"

namespace kora4 {

namespace trace {
struct Place;
}

// The only place where values of the store touch the platform. The API object owns one
// by value; it is used by one thread at a time, under the store's named mutex. Handles
// are held from Open to Close: a key that is deleted meanwhile fails every operation,
// also after it is created again.
//
// A key that was absent when the access was opened read-only stays absent: reads say
// S_FALSE, writes and deletes do nothing and succeed.
class KORA4RegPropKeysAccess final : public KORA4KeyAccess, NonCopyable {
  public:
    ~KORA4RegPropKeysAccess() { Close(); }

    // Key set 1 lives in the store that is handed in here; without one its operations fail
    // with E_FAIL. Takes a reference of its own.
    void SetPropertyStore(IPropertyStore* pIPropertyStore);

    // S_FALSE: open, but at least one key does not exist. The app keys are opened
    // read-only in any case; the other two are created when `writable` is set.
    HRESULT Open(bool writable);

    // Closes the keys; the property store stays. Harmless when not open.
    void Close();
    bool IsOpen() const { return m_opened; }

    // KORA4KeyAccess.
    HRESULT ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                     std::uint32_t* pValue) override;
    HRESULT ReadText(KORA4KeySet keySet, const PropertyKey& key, char16_t** ppText) override;
    HRESULT ReadBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pSize,
                     std::uint8_t** ppData) override;
    HRESULT WriteUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value) override;
    HRESULT WriteText(KORA4KeySet keySet, const PropertyKey& key,
                      const char16_t* pwText) override;
    HRESULT WriteBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t size,
                      const std::uint8_t* pData) override;
    HRESULT Delete(KORA4KeySet keySet, const PropertyKey& key) override;

  private:
    template <typename OnStore, typename OnKey>
    HRESULT Operate(const trace::Place& place, KORA4KeySet keySet, HRESULT hrOtherKeySet,
                    OnStore&& onStore, OnKey&& onKey);

    // The registry key of a key set; null for a set that is not in the registry.
    const UniqueRegKey* RegistryKey(KORA4KeySet keySet) const;

    // The app keys belong to the installer of the companion applications: writes to them store
    // nothing, whether they exist or not.
    HKEY HandleToWrite(const UniqueRegKey& key) const;

    Microsoft::WRL::ComPtr<IPropertyStore> m_spIPropertyStore;
    bool m_opened = false;
    UniqueRegKey m_hStaticKeys;
    UniqueRegKey m_hDynamicKeys;
    UniqueRegKey m_hAppKeys;
};

}  // namespace kora4

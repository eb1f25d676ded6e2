// SPDX-License-Identifier: MIT
// The key access on the platform: three registry keys and a property store.
#ifndef KORA4_STORE_ACCESS_REG_PROP_KEYS_ACCESS_H
#define KORA4_STORE_ACCESS_REG_PROP_KEYS_ACCESS_H

#include <propsys.h>
#include <windows.h>
#include <wrl/client.h>

#include "platform/handles.h"
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
class KORA4RegPropKeysAccess final : public KORA4KeyAccess {
  public:
    KORA4RegPropKeysAccess() = default;
    ~KORA4RegPropKeysAccess() { Close(); }
    KORA4RegPropKeysAccess(const KORA4RegPropKeysAccess&) = delete;
    KORA4RegPropKeysAccess& operator=(const KORA4RegPropKeysAccess&) = delete;

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

    static HRESULT OpenGlobalKey(const wchar_t* pwRegPath, UniqueRegKey& key, bool writable);

    // `*pSize` is the room at `pData` in bytes, and afterwards the size of the value.
    // `pStatus`, which may be null, gets what the platform said when it was asked.
    static HRESULT QueryRegistryValue(HKEY hKey, const PropertyKey& key, DWORD expectedType,
                                      void* pData, DWORD* pSize, LSTATUS* pStatus = nullptr);
    static HRESULT ReadRegistryBlob(HKEY hKey, const PropertyKey& key, std::uint32_t* pSize,
                                    std::uint8_t** ppData);
    static HRESULT SetRegistryValue(HKEY hKey, const PropertyKey& key, DWORD type,
                                    const void* pData, DWORD size);
    static HRESULT DeleteRegistryKey(HKEY hKey, const PropertyKey& key);
    static HRESULT ReadRegistryDWORD(HKEY hKey, const PropertyKey& key, std::uint32_t* pValue);
    static HRESULT ReadRegistryText(HKEY hKey, const PropertyKey& key, char16_t** ppText);

    template <typename Body>
    HRESULT OnPropertyStore(const trace::Place& place, Body&& body);
    HRESULT ReadPropStoreDWORD(const PropertyKey& key, std::uint32_t* pValue);
    HRESULT WritePropStoreDWORD(const PropertyKey& key, std::uint32_t value);
    HRESULT ReadPropStoreText(const PropertyKey& key, char16_t** ppText);
    HRESULT WritePropStoreText(const PropertyKey& key, const char16_t* pwText);

    Microsoft::WRL::ComPtr<IPropertyStore> m_spIPropertyStore;
    bool m_opened = false;
    UniqueRegKey m_hStaticKeys;
    UniqueRegKey m_hDynamicKeys;
    UniqueRegKey m_hAppKeys;
};

}  // namespace kora4

#endif  // KORA4_STORE_ACCESS_REG_PROP_KEYS_ACCESS_H

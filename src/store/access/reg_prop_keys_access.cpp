// SPDX-License-Identifier: MIT
// The seven operations: their common frame, then each of them on the registry and on the
// property store.
#include "store/access/reg_prop_keys_access.h"

#include <propidl.h>

#include <bit>
#include <cstring>
#include <cwchar>

#include "contract/messages/trace_messages_store.h"
#include "contract/registry_paths.h"
#include "contract/value_kind.h"
#include "platform/non_copyable.h"
#include "platform/win32_result.h"
#include "store/access/task_memory.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

// How often a blob that grows between the query of its size and the read is tried: the engine
// rewrites the visualization blob without holding the mutex.
constexpr int cBlobAttempts = 4;

// A value name with its terminator, made from a property key. Every key has one that fits.
class ValueName {
  public:
    explicit ValueName(const PropertyKey& key) { FormatValueName(key, m_name); }
    const wchar_t* Get() const { return reinterpret_cast<const wchar_t*>(m_name); }

  private:
    char16_t m_name[cValueNameCapacity];
};

class PropVariant : NonCopyable {
  public:
    PropVariant() { PropVariantInit(&m_value); }
    ~PropVariant() { PropVariantClear(&m_value); }

    PROPVARIANT* operator->() { return &m_value; }
    PROPVARIANT* Put() { return &m_value; }
    const PROPVARIANT& Get() const { return m_value; }

  private:
    PROPVARIANT m_value;
};

const PROPERTYKEY& PlatformKey(const PropertyKey& key) {
    static_assert(sizeof(PROPERTYKEY) == sizeof(PropertyKey));
    static_assert(alignof(PROPERTYKEY) == alignof(PropertyKey));
    return reinterpret_cast<const PROPERTYKEY&>(key);
}

// Leaves the place alone when there is no memory.
HRESULT HandOutCopy(const char16_t* pwText, char16_t** ppText) {
    char16_t* const copy = DuplicateTaskText(pwText);
    if (!copy)
        return E_OUTOFMEMORY;
    *ppText = copy;
    return S_OK;
}

const char16_t* TextOrEmpty(const char16_t* pwText) {
    return pwText ? pwText : u"";
}

HRESULT OpenGlobalKey(const wchar_t* pwRegPath, UniqueRegKey& key, bool writable) {
    static constexpr trace::Site cSite = trace::cSiteOf<msg::cOpenKeyEntry>;
    HRESULT hr = S_OK;
    const trace::ExitLine exitLine(cSite, __LINE__, &hr);
    KALASSERT(cSite, msg::cAssertRegPath, pwRegPath != NULL);
    KALTRACE(msg::cOpenKeyEntry, pwRegPath);
    HKEY hKey = nullptr;
    const LSTATUS status =
        writable ? RegCreateKeyExW(HKEY_LOCAL_MACHINE, pwRegPath, 0, nullptr,
                                   REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr,
                                   &hKey, nullptr)
                 : RegOpenKeyExW(HKEY_LOCAL_MACHINE, pwRegPath, 0, KEY_READ, &hKey);
    KALTRACE(msg::cOpenKeyStatus, status);
    key.Reset(status == ERROR_SUCCESS ? hKey : nullptr);
    return hr = writable ? ResultOfWrite(status) : ResultOfKeyLookup(status);
}

// ---- Registry ---------------------------------------------------------------------------

// `*pSize` is the room at `pData` in bytes, and afterwards the size of the value. `pStatus`,
// which may be null, gets what the platform said when it was asked.
HRESULT QueryRegistryValue(HKEY hKey, const PropertyKey& key, DWORD expectedType, void* pData,
                           DWORD* pSize, LSTATUS* pStatus = nullptr) {
    KALTRACE_RESULT(hr, S_FALSE, msg::cQueryValue.function);
    if (!hKey)
        return hr;
    const ValueName name(key);
    KALTRACE(msg::cQueryValue, name.Get());
    DWORD type = REG_NONE;
    const LSTATUS status =
        RegQueryValueExW(hKey, name.Get(), nullptr, &type, static_cast<BYTE*>(pData), pSize);
    if (pStatus)
        *pStatus = status;
    hr = ResultOfValueLookup(status);
    if (hr == S_OK && type != expectedType)
        hr = E_FAIL;
    return hr;
}

HRESULT ReadRegistryDWORD(HKEY hKey, const PropertyKey& key, std::uint32_t* pValue) {
    std::uint32_t value = 0;
    DWORD size = sizeof(value);
    const HRESULT hr = QueryRegistryValue(hKey, key, REG_DWORD, &value, &size);
    if (hr != S_OK)
        return hr;
    if (size != sizeof(value))
        return E_FAIL;
    *pValue = value;
    return S_OK;
}

HRESULT ReadRegistryText(HKEY hKey, const PropertyKey& key, char16_t** ppText) {
    // One place more than a value may fill: the terminator of a text that was stored without
    // one. An odd last byte is dropped.
    char16_t text[cMaxTextBytes / sizeof(char16_t) + 1];
    DWORD size = cMaxTextBytes;
    const HRESULT hr = QueryRegistryValue(hKey, key, REG_SZ, text, &size);
    if (hr != S_OK)
        return hr;
    text[size / sizeof(char16_t)] = u'\0';
    return HandOutCopy(text, ppText);
}

HRESULT ReadRegistryBlob(HKEY hKey, const PropertyKey& key, std::uint32_t* pSize,
                         std::uint8_t** ppData) {
    KALTRACE_RESULT(hr, S_FALSE, "KORA4RegPropKeysAccess::ReadRegistryBlob");
    for (int attempt = 0; attempt < cBlobAttempts; ++attempt) {
        DWORD size = 0;
        hr = QueryRegistryValue(hKey, key, REG_BINARY, nullptr, &size);
        if (hr != S_OK)
            return hr;
        // An empty blob is a value too: its data is not null.
        TaskPtr<std::uint8_t> data(
            static_cast<std::uint8_t*>(AllocTaskMemory(size != 0 ? size : 1)));
        if (!data)
            return hr = E_OUTOFMEMORY;
        LSTATUS status = ERROR_SUCCESS;
        hr = QueryRegistryValue(hKey, key, REG_BINARY, data.Get(), &size, &status);
        if (hr == S_OK) {
            *pSize = size;
            *ppData = data.Detach();
        }
        if (status != ERROR_MORE_DATA)
            return hr;
    }
    return hr;
}

HRESULT SetRegistryValue(HKEY hKey, const PropertyKey& key, DWORD type, const void* pData,
                         DWORD size) {
    KALTRACE_RESULT(hr, S_OK, msg::cSetValueStatus.function);
    if (!hKey)
        return hr;
    const ValueName name(key);
    const LSTATUS status = RegSetKeyValueW(hKey, nullptr, name.Get(), type, pData, size);
    KALTRACE(msg::cSetValueStatus, status);
    return hr = ResultOfWrite(status);
}

HRESULT DeleteRegistryKey(HKEY hKey, const PropertyKey& key) {
    KALTRACE_RESULT(hr, S_OK, msg::cDeleteValue.function);
    if (!hKey)
        return hr;
    const ValueName name(key);
    KALTRACE(msg::cDeleteValue, name.Get());
    const LSTATUS status = RegDeleteValueW(hKey, name.Get());
    KALTRACE(msg::cDeleteValueStatus, status);
    return hr = ResultOfValueLookup(status);
}

// ---- Property store -----------------------------------------------------------------------

// Their frame: without a store they fail.
template <typename Body>
HRESULT OnPropertyStore(const trace::Place& place, IPropertyStore* pStore, Body&& body) {
    HRESULT hr = E_FAIL;
    const trace::Scope scope(place.site, place.line, &hr);
    KALASSERT(place.site, msg::cAssertPropertyStore, pStore);
    if (pStore)
        hr = body();
    return hr;
}

HRESULT ReadPropStoreDWORD(IPropertyStore* pStore, const PropertyKey& key,
                           std::uint32_t* pValue) {
    return OnPropertyStore("KORA4RegPropKeysAccess::ReadPropStoreDWORD", pStore, [&] {
        PropVariant value;
        const HRESULT hr = pStore->GetValue(PlatformKey(key), value.Put());
        if (FAILED(hr))
            return hr;
        if (value->vt != VT_UI4)
            return S_FALSE;
        *pValue = value->ulVal;
        return S_OK;
    });
}

HRESULT WritePropStoreDWORD(IPropertyStore* pStore, const PropertyKey& key,
                            std::uint32_t value) {
    return OnPropertyStore("KORA4RegPropKeysAccess::WritePropStoreDWORD", pStore, [&] {
        PropVariant variant;
        variant->vt = VT_UI4;
        variant->ulVal = value;
        return pStore->SetValue(PlatformKey(key), variant.Get());
    });
}

HRESULT ReadPropStoreText(IPropertyStore* pStore, const PropertyKey& key, char16_t** ppText) {
    return OnPropertyStore("KORA4RegPropKeysAccess::ReadPropStoreText", pStore, [&] {
        PropVariant value;
        const HRESULT hr = pStore->GetValue(PlatformKey(key), value.Put());
        if (FAILED(hr))
            return hr;
        if (value->vt != VT_LPWSTR || !value->pwszVal)
            return S_FALSE;
        return HandOutCopy(reinterpret_cast<const char16_t*>(value->pwszVal), ppText);
    });
}

HRESULT WritePropStoreText(IPropertyStore* pStore, const PropertyKey& key,
                           const char16_t* pwText) {
    return OnPropertyStore("KORA4RegPropKeysAccess::WritePropStoreText", pStore, [&] {
        PropVariant variant;
        variant->pwszVal = reinterpret_cast<wchar_t*>(DuplicateTaskText(pwText));
        if (!variant->pwszVal)
            return E_OUTOFMEMORY;
        variant->vt = VT_LPWSTR;
        return pStore->SetValue(PlatformKey(key), variant.Get());
    });
}

}  // namespace

void KORA4RegPropKeysAccess::SetPropertyStore(IPropertyStore* pIPropertyStore) {
    m_spIPropertyStore = pIPropertyStore;
}

// ---- Opening and closing ------------------------------------------------------------

HRESULT KORA4RegPropKeysAccess::Open(bool writable) {
    KALTRACE_RESULT(hr, S_OK, "KORA4RegPropKeysAccess::Open");
    if (m_opened)
        return hr;
    KALASSERT(cSite, msg::cAssertKeysClosed, !m_hStaticKeys && !m_hDynamicKeys && !m_hAppKeys);
    const struct {
        const wchar_t* pwPath;
        UniqueRegKey& key;
        bool writable;
    } keys[] = {
        {cStaticKeysPath, m_hStaticKeys, writable},
        {cDynamicKeysPath, m_hDynamicKeys, writable},
        {cAppKeysPath, m_hAppKeys, false},
    };
    for (const auto& [pwPath, key, keyWritable] : keys) {
        const HRESULT hrKey = OpenGlobalKey(pwPath, key, keyWritable);
        if (hrKey != S_OK)
            hr = hrKey;
        if (FAILED(hr))
            break;
    }
    m_opened = true;
    if (FAILED(hr))
        Close();
    return hr;
}

void KORA4RegPropKeysAccess::Close() {
    KALTRACE_SCOPE("KORA4RegPropKeysAccess::Close");
    if (!m_opened)
        return;
    m_hAppKeys.Reset();
    m_hDynamicKeys.Reset();
    m_hStaticKeys.Reset();
    m_opened = false;
}

const UniqueRegKey* KORA4RegPropKeysAccess::RegistryKey(KORA4KeySet keySet) const {
    switch (keySet) {
        case eKeySetStatic:
            return &m_hStaticKeys;
        case eKeySetDynamic:
            return &m_hDynamicKeys;
        case eKeySetApp:
            return &m_hAppKeys;
        default:
            return nullptr;
    }
}

HKEY KORA4RegPropKeysAccess::HandleToWrite(const UniqueRegKey& key) const {
    return &key == &m_hAppKeys ? nullptr : key.Get();
}

// ---- The seven operations -------------------------------------------------------------

// Their frame: refused before Open, then the property store or a registry key by key set.
template <typename OnStore, typename OnKey>
HRESULT KORA4RegPropKeysAccess::Operate(const trace::Place& place, KORA4KeySet keySet,
                                        HRESULT hrOtherKeySet, OnStore&& onStore,
                                        OnKey&& onKey) {
    HRESULT hr = hrOtherKeySet;
    const trace::Scope scope(place.site, place.line, &hr);
    if (!m_opened)
        hr = APOERR_NOT_INITIALIZED;
    else if (keySet == eKeySetPropertyStore)
        hr = onStore();
    else if (const UniqueRegKey* const pKey = RegistryKey(keySet))
        hr = onKey(*pKey);
    return hr;
}

HRESULT KORA4RegPropKeysAccess::ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                                         std::uint32_t* pValue) {
    return Operate(
        "KORA4RegPropKeysAccess::ReadUINT", keySet, E_FAIL,
        [&] { return ReadPropStoreDWORD(m_spIPropertyStore.Get(), key, pValue); },
        [&](const UniqueRegKey& from) { return ReadRegistryDWORD(from.Get(), key, pValue); });
}

HRESULT KORA4RegPropKeysAccess::ReadText(KORA4KeySet keySet, const PropertyKey& key,
                                         char16_t** ppText) {
    return Operate(
        "KORA4RegPropKeysAccess::ReadText", keySet, E_FAIL,
        [&] { return ReadPropStoreText(m_spIPropertyStore.Get(), key, ppText); },
        [&](const UniqueRegKey& from) { return ReadRegistryText(from.Get(), key, ppText); });
}

HRESULT KORA4RegPropKeysAccess::ReadBlob(KORA4KeySet keySet, const PropertyKey& key,
                                         std::uint32_t* pSize, std::uint8_t** ppData) {
    return Operate(
        "KORA4RegPropKeysAccess::ReadBlob", keySet, E_FAIL, [] { return E_FAIL; },
        [&](const UniqueRegKey& from) {
            return ReadRegistryBlob(from.Get(), key, pSize, ppData);
        });
}

HRESULT KORA4RegPropKeysAccess::WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                                          std::uint32_t value) {
    return Operate(
        "KORA4RegPropKeysAccess::WriteUINT", keySet, E_FAIL,
        [&] { return WritePropStoreDWORD(m_spIPropertyStore.Get(), key, value); },
        [&](const UniqueRegKey& to) {
            return SetRegistryValue(HandleToWrite(to), key, REG_DWORD, &value, sizeof(value));
        });
}

HRESULT KORA4RegPropKeysAccess::WriteText(KORA4KeySet keySet, const PropertyKey& key,
                                          const char16_t* pwText) {
    return Operate(
        "KORA4RegPropKeysAccess::WriteText", keySet, E_FAIL,
        [&] { return WritePropStoreText(m_spIPropertyStore.Get(), key, TextOrEmpty(pwText)); },
        [&](const UniqueRegKey& to) {
            const auto* const pwWide = reinterpret_cast<const wchar_t*>(TextOrEmpty(pwText));
            const std::size_t bytes = (std::wcslen(pwWide) + 1) * sizeof(wchar_t);
            return SetRegistryValue(HandleToWrite(to), key, REG_SZ, pwWide,
                                    static_cast<DWORD>(bytes));
        });
}

HRESULT KORA4RegPropKeysAccess::WriteBlob(KORA4KeySet keySet, const PropertyKey& key,
                                          std::uint32_t size, const std::uint8_t* pData) {
    return Operate(
        "KORA4RegPropKeysAccess::WriteBlob", keySet, E_FAIL, [] { return E_FAIL; },
        [&](const UniqueRegKey& to) {
            return SetRegistryValue(HandleToWrite(to), key, REG_BINARY, pData, size);
        });
}

HRESULT KORA4RegPropKeysAccess::Delete(KORA4KeySet keySet, const PropertyKey& key) {
    return Operate(
        "KORA4RegPropKeysAccess::Delete", keySet, E_INVALIDARG, [] { return E_INVALIDARG; },
        [&](const UniqueRegKey& from) { return DeleteRegistryKey(from.Get(), key); });
}

}  // namespace kora4

// SPDX-License-Identifier: MIT
// The seven operations: their common frame, then each of them on the registry and on the
// property store.
#include "store/access/reg_prop_keys_access.h"

#include <propidl.h>

#include <bit>
#include <cstring>
#include <cwchar>

#include "contract/registry_paths.h"
#include "contract/value_kind.h"
#include "platform/win32_result.h"
#include "store/access/task_memory.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

constexpr const char* cTag = "KOLFXPropKeysAccess";

// How often a blob that grows between the query of its size and the read is tried: the engine
// rewrites the visualization blob without holding the mutex.
constexpr int cBlobAttempts = 4;

// A value name with its terminator, made from a property key.
class ValueName {
  public:
    explicit ValueName(const PropertyKey& key) : m_length(FormatValueName(key, m_name)) {}
    bool IsValid() const { return m_length != 0; }
    const wchar_t* Get() const { return reinterpret_cast<const wchar_t*>(m_name); }

  private:
    char16_t m_name[cValueNameCapacity];
    std::size_t m_length;
};

class PropVariant {
  public:
    PropVariant() { PropVariantInit(&m_value); }
    ~PropVariant() { PropVariantClear(&m_value); }
    PropVariant(const PropVariant&) = delete;
    PropVariant& operator=(const PropVariant&) = delete;

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

const char16_t* TextOrEmpty(const char16_t* pwText) {
    return pwText ? pwText : u"";
}

}  // namespace

void KORA4RegPropKeysAccess::SetPropertyStore(IPropertyStore* pIPropertyStore) {
    m_spIPropertyStore = pIPropertyStore;
}

// ---- Opening and closing ------------------------------------------------------------

HRESULT KORA4RegPropKeysAccess::Open(bool writable) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::Open"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    if (m_opened)
        return hr;
    KALASSERT_TEXT(cSite, !m_hStaticKeys && !m_hDynamicKeys && !m_hAppKeys,
                   "(NULL == m_hStaticKeys) && (NULL == m_hDynamicKeys) && "
                   "(NULL == m_hAppKeys)");
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

HRESULT KORA4RegPropKeysAccess::OpenGlobalKey(const wchar_t* pwRegPath, UniqueRegKey& key,
                                              bool writable) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::OpenGlobalKey"};
    KALASSERT(cSite, pwRegPath != NULL);
    KALTRACE(trace::eStoreEntry, cSite, ">> pwRegPath: %S\n", pwRegPath);
    HKEY hKey = nullptr;
    const LSTATUS status =
        writable ? RegCreateKeyExW(HKEY_LOCAL_MACHINE, pwRegPath, 0, nullptr,
                                   REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr,
                                   &hKey, nullptr)
                 : RegOpenKeyExW(HKEY_LOCAL_MACHINE, pwRegPath, 0, KEY_READ, &hKey);
    KALTRACE(trace::eStoreEntry, cSite, "reg open retStatus: %ld\n", status);
    key.Reset(status == ERROR_SUCCESS ? hKey : nullptr);
    const HRESULT hr = writable ? ResultOfWrite(status) : ResultOfKeyLookup(status);
    KALTRACE(trace::eStoreExitResult, cSite, "<< hr: 0x%08x\n", static_cast<unsigned>(hr));
    return hr;
}

void KORA4RegPropKeysAccess::Close() {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::Close"};
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreEntry);
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
HRESULT KORA4RegPropKeysAccess::Operate(const trace::Site& site, int line, KORA4KeySet keySet,
                                        HRESULT hrOtherKeySet, OnStore&& onStore,
                                        OnKey&& onKey) {
    HRESULT hr = hrOtherKeySet;
    trace::Scope scope(site, line, trace::eStoreEntry, trace::eStoreExitResult, &hr);
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
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::ReadUINT"};
    return Operate(
        cSite, __LINE__, keySet, E_FAIL, [&] { return ReadPropStoreDWORD(key, pValue); },
        [&](const UniqueRegKey& from) { return ReadRegistryDWORD(from.Get(), key, pValue); });
}

HRESULT KORA4RegPropKeysAccess::ReadText(KORA4KeySet keySet, const PropertyKey& key,
                                         char16_t** ppText) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::ReadText"};
    return Operate(
        cSite, __LINE__, keySet, E_FAIL, [&] { return ReadPropStoreText(key, ppText); },
        [&](const UniqueRegKey& from) { return ReadRegistryText(from.Get(), key, ppText); });
}

HRESULT KORA4RegPropKeysAccess::ReadBlob(KORA4KeySet keySet, const PropertyKey& key,
                                         std::uint32_t* pSize, std::uint8_t** ppData) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::ReadBlob"};
    return Operate(
        cSite, __LINE__, keySet, E_FAIL, [] { return E_FAIL; },
        [&](const UniqueRegKey& from) {
            return ReadRegistryBlob(from.Get(), key, pSize, ppData);
        });
}

HRESULT KORA4RegPropKeysAccess::WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                                          std::uint32_t value) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::WriteUINT"};
    return Operate(
        cSite, __LINE__, keySet, E_FAIL, [&] { return WritePropStoreDWORD(key, value); },
        [&](const UniqueRegKey& to) {
            return SetRegistryValue(HandleToWrite(to), key, REG_DWORD, &value, sizeof(value));
        });
}

HRESULT KORA4RegPropKeysAccess::WriteText(KORA4KeySet keySet, const PropertyKey& key,
                                          const char16_t* pwText) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::WriteText"};
    return Operate(
        cSite, __LINE__, keySet, E_FAIL,
        [&] { return WritePropStoreText(key, TextOrEmpty(pwText)); },
        [&](const UniqueRegKey& to) {
            const auto* const pwWide = reinterpret_cast<const wchar_t*>(TextOrEmpty(pwText));
            const std::size_t bytes = (std::wcslen(pwWide) + 1) * sizeof(wchar_t);
            return SetRegistryValue(HandleToWrite(to), key, REG_SZ, pwWide,
                                    static_cast<DWORD>(bytes));
        });
}

HRESULT KORA4RegPropKeysAccess::WriteBlob(KORA4KeySet keySet, const PropertyKey& key,
                                          std::uint32_t size, const std::uint8_t* pData) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::WriteBlob"};
    return Operate(
        cSite, __LINE__, keySet, E_FAIL, [] { return E_FAIL; },
        [&](const UniqueRegKey& to) {
            return SetRegistryValue(HandleToWrite(to), key, REG_BINARY, pData, size);
        });
}

HRESULT KORA4RegPropKeysAccess::Delete(KORA4KeySet keySet, const PropertyKey& key) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::Delete"};
    return Operate(
        cSite, __LINE__, keySet, E_INVALIDARG, [] { return E_INVALIDARG; },
        [&](const UniqueRegKey& from) { return DeleteRegistryKey(from.Get(), key); });
}

// ---- Registry ---------------------------------------------------------------------------

HRESULT KORA4RegPropKeysAccess::QueryRegistryValue(HKEY hKey, const PropertyKey& key,
                                                   DWORD expectedType, void* pData,
                                                   DWORD* pSize, LSTATUS* pStatus) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::QueryRegistryValue"};
    HRESULT hr = S_FALSE;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    if (!hKey)
        return hr;
    const ValueName name(key);
    if (!name.IsValid())
        return hr = E_FAIL;
    KALTRACE(trace::eStoreEntry, cSite, "to RegQueryValueEx of: %S\n", name.Get());
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

HRESULT KORA4RegPropKeysAccess::ReadRegistryDWORD(HKEY hKey, const PropertyKey& key,
                                                  std::uint32_t* pValue) {
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

HRESULT KORA4RegPropKeysAccess::ReadRegistryText(HKEY hKey, const PropertyKey& key,
                                                 char16_t** ppText) {
    // One place more than a value may fill: the terminator of a text that was stored without
    // one. An odd last byte is dropped.
    char16_t text[cMaxTextBytes / sizeof(char16_t) + 1];
    DWORD size = cMaxTextBytes;
    const HRESULT hr = QueryRegistryValue(hKey, key, REG_SZ, text, &size);
    if (hr != S_OK)
        return hr;
    text[size / sizeof(char16_t)] = u'\0';
    char16_t* const copy = DuplicateTaskText(text);
    if (!copy)
        return E_OUTOFMEMORY;
    *ppText = copy;
    return S_OK;
}

HRESULT KORA4RegPropKeysAccess::ReadRegistryBlob(HKEY hKey, const PropertyKey& key,
                                                 std::uint32_t* pSize, std::uint8_t** ppData) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::ReadRegistryBlob"};
    HRESULT hr = S_FALSE;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
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

HRESULT KORA4RegPropKeysAccess::SetRegistryValue(HKEY hKey, const PropertyKey& key, DWORD type,
                                                 const void* pData, DWORD size) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::SetRegistryValue"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    if (!hKey)
        return hr;
    const ValueName name(key);
    if (!name.IsValid())
        return hr = E_FAIL;
    const LSTATUS status = RegSetKeyValueW(hKey, nullptr, name.Get(), type, pData, size);
    KALTRACE(trace::eStoreEntry, cSite, "RegSetValue retStatus: %ld\n", status);
    return hr = ResultOfWrite(status);
}

HRESULT KORA4RegPropKeysAccess::DeleteRegistryKey(HKEY hKey, const PropertyKey& key) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::DeleteRegistryKey"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    if (!hKey)
        return hr;
    const ValueName name(key);
    if (!name.IsValid())
        return hr = E_FAIL;
    KALTRACE(trace::eStoreEntry, cSite, "to RegDeleteValue of: %S\n", name.Get());
    const LSTATUS status = RegDeleteValueW(hKey, name.Get());
    KALTRACE(trace::eStoreEntry, cSite, "RegDeleteValue retStatus: %ld\n", status);
    return hr = ResultOfValueLookup(status);
}

// ---- Property store -----------------------------------------------------------------------

HRESULT KORA4RegPropKeysAccess::ReadPropStoreDWORD(const PropertyKey& key,
                                                   std::uint32_t* pValue) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::ReadPropStoreDWORD"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    KALASSERT_TEXT(cSite, m_spIPropertyStore, "m_spIPropertyStore != NULL");
    if (!m_spIPropertyStore)
        return hr;
    PropVariant value;
    hr = m_spIPropertyStore->GetValue(PlatformKey(key), value.Put());
    if (FAILED(hr))
        return hr;
    if (value->vt != VT_UI4)
        return hr = S_FALSE;
    *pValue = value->ulVal;
    return hr = S_OK;
}

HRESULT KORA4RegPropKeysAccess::WritePropStoreDWORD(const PropertyKey& key,
                                                    std::uint32_t value) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::WritePropStoreDWORD"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    KALASSERT_TEXT(cSite, m_spIPropertyStore, "m_spIPropertyStore != NULL");
    if (!m_spIPropertyStore)
        return hr;
    PropVariant variant;
    variant->vt = VT_UI4;
    variant->ulVal = value;
    return hr = m_spIPropertyStore->SetValue(PlatformKey(key), variant.Get());
}

HRESULT KORA4RegPropKeysAccess::ReadPropStoreText(const PropertyKey& key, char16_t** ppText) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::ReadPropStoreText"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    KALASSERT_TEXT(cSite, m_spIPropertyStore, "m_spIPropertyStore != NULL");
    if (!m_spIPropertyStore)
        return hr;
    PropVariant value;
    hr = m_spIPropertyStore->GetValue(PlatformKey(key), value.Put());
    if (FAILED(hr))
        return hr;
    if (value->vt != VT_LPWSTR || !value->pwszVal)
        return hr = S_FALSE;
    char16_t* const copy = DuplicateTaskText(reinterpret_cast<const char16_t*>(value->pwszVal));
    if (!copy)
        return hr = E_OUTOFMEMORY;
    *ppText = copy;
    return hr = S_OK;
}

HRESULT KORA4RegPropKeysAccess::WritePropStoreText(const PropertyKey& key,
                                                   const char16_t* pwText) {
    static constexpr trace::Site cSite{cTag, "KORA4RegPropKeysAccess::WritePropStoreText"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    KALASSERT_TEXT(cSite, m_spIPropertyStore, "m_spIPropertyStore != NULL");
    if (!m_spIPropertyStore)
        return hr;
    PropVariant variant;
    variant->pwszVal = reinterpret_cast<wchar_t*>(DuplicateTaskText(pwText));
    if (!variant->pwszVal)
        return hr = E_OUTOFMEMORY;
    variant->vt = VT_LPWSTR;
    return hr = m_spIPropertyStore->SetValue(PlatformKey(key), variant.Get());
}

}  // namespace kora4

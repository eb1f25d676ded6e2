// SPDX-License-Identifier: MIT
// The steps of registering and unregistering: scripts from the resources, the type library,
// and the keys of the store.
#include "server/registration.h"

#include <oleauto.h>
#include <wrl/client.h>

#include <array>
#include <memory>
#include <new>
#include <span>
#include <string_view>

#include "contract/registry_paths.h"
#include "monitor/reg_key_security.h"
#include "platform/module.h"
#include "platform/non_copyable.h"
#include "platform/win32_result.h"
#include "server/class_table.h"
#include "server/registrar.h"
#include "server/resource_ids.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

using Microsoft::WRL::ComPtr;

constexpr std::u16string_view cAppId = u"{D4086C01-F20F-480F-A293-938122C6452B}";

// The keys that every user writes. The keys of the companion applications belong to their
// installer.
constexpr const wchar_t* cSettingKeys[] = {cBaseKeyPath, cStaticKeysPath, cDynamicKeysPath,
                                           nullptr};

// Sets the thread's locale to the system's for a scope, so that registered texts do not depend
// on the caller's language.
class SystemThreadLocale : NonCopyable {
  public:
    SystemThreadLocale() : m_former(GetThreadLocale()) {
        SetThreadLocale(LOCALE_SYSTEM_DEFAULT);
    }
    ~SystemThreadLocale() { SetThreadLocale(m_former); }

  private:
    LCID m_former;
};

// The library's own full path.
class ModulePath {
  public:
    HRESULT Load() {
        // The longest path that Windows knows.
        constexpr DWORD capacity = 32768;
        m_path.reset(new (std::nothrow) wchar_t[capacity]);
        if (!m_path)
            return E_OUTOFMEMORY;
        m_length = GetModuleFileNameW(Module::Instance(), m_path.get(), capacity);
        return m_length != 0 && m_length < capacity ? S_OK : E_FAIL;
    }
    const wchar_t* Get() const { return m_path.get(); }
    std::u16string_view View() const {
        return {reinterpret_cast<const char16_t*>(m_path.get()), m_length};
    }

  private:
    std::unique_ptr<wchar_t[]> m_path;
    DWORD m_length = 0;
};

using RunScript = HRESULT(std::string_view, std::span<const ScriptParameter>);

HRESULT RunScriptResource(int id, const ModulePath& path, RunScript* run) {
    const HINSTANCE instance = Module::Instance();
    const HRSRC resource = FindResourceW(instance, MAKEINTRESOURCEW(id), L"REGISTRY");
    const HGLOBAL loaded = resource ? LoadResource(instance, resource) : nullptr;
    const void* const text = loaded ? LockResource(loaded) : nullptr;
    if (!text)
        return E_FAIL;
    const std::string_view script(static_cast<const char*>(text),
                                  SizeofResource(instance, resource));
    const std::array parameters{ScriptParameter{"APPID", cAppId},
                                ScriptParameter{"MODULE", path.View()}};
    return run(script, parameters);
}

HRESULT RunClassScripts(const ModulePath& path, RunScript* run) {
    HRESULT hr = S_OK;
    for (const ServedClass& served : ClassTable())
        if (SUCCEEDED(hr))
            hr = RunScriptResource(served.script, path, run);
    return hr;
}

HRESULT RegisterTypes(const ModulePath& path) {
    ComPtr<ITypeLib> spTypeLib;
    const HRESULT hr = LoadTypeLibEx(path.Get(), REGKIND_NONE, spTypeLib.GetAddressOf());
    if (FAILED(hr))
        return hr;
    return RegisterTypeLib(spTypeLib.Get(), const_cast<wchar_t*>(path.Get()), nullptr);
}

HRESULT UnregisterTypes(const ModulePath& path) {
    ComPtr<ITypeLib> spTypeLib;
    HRESULT hr = LoadTypeLibEx(path.Get(), REGKIND_NONE, spTypeLib.GetAddressOf());
    if (FAILED(hr))
        return hr;
    TLIBATTR* pAttributes = nullptr;
    hr = spTypeLib->GetLibAttr(&pAttributes);
    if (FAILED(hr))
        return hr;
    const auto release = [&spTypeLib](TLIBATTR* p) { spTypeLib->ReleaseTLibAttr(p); };
    const std::unique_ptr<TLIBATTR, decltype(release)> attributes(pAttributes, release);
    return UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum,
                             attributes->wMinorVerNum, attributes->lcid, attributes->syskind);
}

}  // namespace

HRESULT RegisterModule() {
    const SystemThreadLocale locale;
    ModulePath path;
    HRESULT hr = path.Load();
    if (SUCCEEDED(hr))
        hr = RunScriptResource(KORA4_RES_APPID_SCRIPT, path, RegisterScript);
    if (SUCCEEDED(hr))
        hr = RunClassScripts(path, RegisterScript);
    if (SUCCEEDED(hr))
        hr = RegisterTypes(path);
    return hr;
}

HRESULT UnregisterModule() {
    const SystemThreadLocale locale;
    ModulePath path;
    HRESULT hr = path.Load();
    if (SUCCEEDED(hr))
        hr = RunClassScripts(path, UnregisterScript);
    if (SUCCEEDED(hr))
        hr = UnregisterTypes(path);
    if (SUCCEEDED(hr))
        hr = RunScriptResource(KORA4_RES_APPID_SCRIPT, path, UnregisterScript);
    return hr;
}

HRESULT OnRegisterServer() {
    KALTRACE_RETURN("OnRegisterServer", RegKeySecurity::MakeRegKeysAccessible(cSettingKeys));
}

}  // namespace kora4

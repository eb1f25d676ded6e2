// SPDX-License-Identifier: MIT
// The two receivers of a walked script: one creates keys and values, one removes them.
#include "server/registrar.h"

#include <array>
#include <utility>

#include "platform/handles.h"
#include "platform/win32_result.h"

namespace kora4 {

namespace {

constexpr REGSAM cKeyAccess = KEY_READ | KEY_WRITE | DELETE;

const wchar_t* Wide(const ScriptText& text) {
    return reinterpret_cast<const wchar_t*>(text.Get());
}

HKEY PredefinedKey(ScriptRoot root) {
    switch (root) {
        case ScriptRoot::eClassesRoot:
            return HKEY_CLASSES_ROOT;
        case ScriptRoot::eCurrentUser:
            return HKEY_CURRENT_USER;
        case ScriptRoot::eUsers:
            return HKEY_USERS;
        case ScriptRoot::eLocalMachine:
            break;
    }
    return HKEY_LOCAL_MACHINE;
}

HRESULT IgnoreAbsence(LSTATUS status) {
    return FAILED(ResultOfKeyLookup(status)) ? E_FAIL : S_OK;
}

// The open keys on the way from a root to the key that the walk stands in.
class KeyPathSink : public RegistrarScriptSink {
  public:
    HRESULT OnRoot(ScriptRoot root) override {
        m_root = PredefinedKey(root);
        return S_OK;
    }

  protected:
    struct Level {
        UniqueRegKey key;  // none: the key does not exist
        ScriptText name;
        ScriptKeyMode mode = ScriptKeyMode::eRemovable;
    };

    ~KeyPathSink() = default;
    HKEY KeyAt(std::size_t depth) const {
        return depth == 0 ? m_root : m_levels[depth - 1].key.Get();
    }
    Level& At(std::size_t depth) { return m_levels[depth - 1]; }

  private:
    HKEY m_root = nullptr;
    std::array<Level, cMaxScriptDepth> m_levels;
};

class RegisteringSink final : public KeyPathSink {
  public:
    HRESULT OnKey(std::size_t depth, ScriptKeyMode mode, ScriptText name,
                  const ScriptText& text) override {
        const HKEY parent = KeyAt(depth - 1);
        HRESULT hr = S_OK;
        if (mode == ScriptKeyMode::eForceRemove)
            hr = IgnoreAbsence(RegDeleteTreeW(parent, Wide(name)));
        if (SUCCEEDED(hr))
            hr = ResultOfWrite(RegCreateKeyExW(parent, Wide(name), 0, nullptr,
                                               REG_OPTION_NON_VOLATILE, cKeyAccess, nullptr,
                                               At(depth).key.Put(), nullptr));
        if (SUCCEEDED(hr) && text)
            hr = SetText(KeyAt(depth), nullptr, text);
        return hr;
    }

    HRESULT OnValue(std::size_t depth, const ScriptText& name,
                    const ScriptText& text) override {
        return SetText(KeyAt(depth), Wide(name), text);
    }

    HRESULT OnKeyEnd(std::size_t depth) override {
        At(depth).key.Reset();
        return S_OK;
    }

  private:
    static HRESULT SetText(HKEY hKey, const wchar_t* pwName, const ScriptText& text) {
        const auto bytes = static_cast<DWORD>((text.Length() + 1) * sizeof(wchar_t));
        return ResultOfWrite(RegSetKeyValueW(hKey, nullptr, pwName, REG_SZ, text.Get(), bytes));
    }
};

class UnregisteringSink final : public KeyPathSink {
  public:
    HRESULT OnKey(std::size_t depth, ScriptKeyMode mode, ScriptText name,
                  const ScriptText&) override {
        Level& level = At(depth);
        level.key.Reset();
        level.name = std::move(name);
        level.mode = mode;
        const HKEY parent = KeyAt(depth - 1);
        if (!parent)
            return S_OK;
        if (mode == ScriptKeyMode::eForceRemove)
            return IgnoreAbsence(RegDeleteTreeW(parent, Wide(level.name)));
        return IgnoreAbsence(
            RegOpenKeyExW(parent, Wide(level.name), 0, cKeyAccess, level.key.Put()));
    }

    HRESULT OnValue(std::size_t depth, const ScriptText& name, const ScriptText&) override {
        const HKEY hKey = KeyAt(depth);
        return hKey ? IgnoreAbsence(RegDeleteValueW(hKey, Wide(name))) : S_OK;
    }

    HRESULT OnKeyEnd(std::size_t depth) override {
        Level& level = At(depth);
        const UniqueRegKey key = std::move(level.key);
        if (!key || level.mode != ScriptKeyMode::eRemovable)
            return S_OK;
        DWORD subkeys = 0;
        const HRESULT hr = ResultOfWrite(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr,
                                                          &subkeys, nullptr, nullptr, nullptr,
                                                          nullptr, nullptr, nullptr, nullptr));
        if (FAILED(hr) || subkeys != 0)
            return hr;
        return IgnoreAbsence(RegDeleteKeyW(KeyAt(depth - 1), Wide(level.name)));
    }
};

HRESULT Run(std::string_view script, std::span<const ScriptParameter> parameters,
            RegistrarScriptSink& sink) {
    const HRESULT hr = CheckRegistrarScript(script, parameters);
    return SUCCEEDED(hr) ? WalkRegistrarScript(script, parameters, sink) : hr;
}

}  // namespace

HRESULT RegisterScript(std::string_view script, std::span<const ScriptParameter> parameters) {
    RegisteringSink sink;
    return Run(script, parameters, sink);
}

HRESULT UnregisterScript(std::string_view script, std::span<const ScriptParameter> parameters) {
    UnregisteringSink sink;
    return Run(script, parameters, sink);
}

}  // namespace kora4

// SPDX-License-Identifier: MIT
// Registrar scripts: the text form in which a module states its registry entries.
//
//   script := { root '{' { item } '}' }
//   root   := HKCR | HKCU | HKLM | HKU
//   item   := 'val' name '=' 's' text
//           | [ NoRemove | ForceRemove ] name [ '=' 's' text ] [ '{' { item } '}' ]
//
// Tokens are separated by white space, so that a brace stands alone and a braced GUID is a
// name. A token in apostrophes may hold anything, and a doubled apostrophe for one; it is
// never a keyword or a brace. In names and texts %NAME% stands for a parameter and %% for
// a per cent sign. What a parameter is replaced by is taken as it is.
//
// Pure: no platform header, and scripts are ASCII.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include "contract/result.h"

namespace kora4 {

// What %NAME% in a script stands for. Both texts are borrowed.
struct ScriptParameter {
    std::string_view name;
    std::u16string_view text;
};

// The roots that a script may have: HKCR, HKCU, HKLM, HKU.
enum class ScriptRoot { eClassesRoot, eCurrentUser, eLocalMachine, eUsers };

// What becomes of a key on unregistration, and of an old one on registration.
enum class ScriptKeyMode {
    eRemovable,    // removed when it has no subkeys left
    eNoRemove,     // stays
    eForceRemove,  // removed with its whole subtree, also before it is registered again
};

// A zero-terminated text in memory of its own, or none.
class ScriptText {
  public:
    explicit operator bool() const { return m_text != nullptr; }
    const char16_t* Get() const { return m_text.get(); }
    std::size_t Length() const { return m_length; }

  private:
    friend class ScriptExpander;

    std::unique_ptr<char16_t[]> m_text;
    std::size_t m_length = 0;
};

// Receives a script in its order; this one ignores it. A failure ends the walk and becomes its
// result.
class RegistrarScriptSink {
  public:
    virtual HRESULT OnRoot(ScriptRoot) { return result::cOk; }
    // The text is the key's default value, or none. The depth counts from 1, below the root.
    virtual HRESULT OnKey(std::size_t /*depth*/, ScriptKeyMode, ScriptText /*name*/,
                          const ScriptText& /*text*/) {
        return result::cOk;
    }
    // A named value of the key that was opened last and not yet ended (depth 0: the root).
    virtual HRESULT OnValue(std::size_t /*depth*/, const ScriptText& /*name*/,
                            const ScriptText& /*text*/) {
        return result::cOk;
    }
    // The key that was opened last and not yet ended is complete.
    virtual HRESULT OnKeyEnd(std::size_t /*depth*/) { return result::cOk; }

  protected:
    ~RegistrarScriptSink() = default;
};

// How deep keys may nest below the root.
inline constexpr std::size_t cMaxScriptDepth = 16;

// E_FAIL when the script is malformed or names an unknown parameter; the sink may have
// received a part of it by then.
HRESULT WalkRegistrarScript(std::string_view script,
                            std::span<const ScriptParameter> parameters,
                            RegistrarScriptSink& sink);

// The same without a sink: S_OK when the script can be walked to its end.
HRESULT CheckRegistrarScript(std::string_view script,
                             std::span<const ScriptParameter> parameters);

}  // namespace kora4

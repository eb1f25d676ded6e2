// SPDX-License-Identifier: MIT
// Tokens, parameters and grammar of registrar scripts.
#include "server/registrar_script.h"

#include <algorithm>
#include <new>
#include <utility>

namespace kora4 {

namespace {

constexpr std::string_view cBlanks = " \t\r\n\v\f";

constexpr struct {
    std::string_view word;
    ScriptRoot root;
} cRoots[] = {
    {"HKCR", ScriptRoot::eClassesRoot},
    {"HKCU", ScriptRoot::eCurrentUser},
    {"HKLM", ScriptRoot::eLocalMachine},
    {"HKU", ScriptRoot::eUsers},
};

struct Token {
    enum class Kind { eEnd, eWord, eQuoted, eBad };

    Kind kind = Kind::eEnd;
    std::string_view text;  // without the outer apostrophes

    bool IsName() const { return kind == Kind::eWord || kind == Kind::eQuoted; }
    bool Is(std::string_view word) const { return kind == Kind::eWord && text == word; }
};

class Tokens {
  public:
    explicit Tokens(std::string_view script) : m_rest(script) { Advance(); }

    const Token& Current() const { return m_current; }

    // Consumes the current token when it is the unquoted `word`.
    bool Accept(std::string_view word) {
        if (!m_current.Is(word))
            return false;
        Advance();
        return true;
    }

    Token Take() {
        const Token token = m_current;
        Advance();
        return token;
    }

  private:
    void Advance() {
        const std::size_t start = m_rest.find_first_not_of(cBlanks);
        m_rest.remove_prefix(std::min(start, m_rest.size()));
        if (m_rest.empty())
            m_current = Token{};
        else if (m_rest.front() == '\'')
            m_current = TakeQuoted();
        else
            m_current = TakeWord();
        const auto isAscii = [](char c) { return c > 0 && c < 0x7F; };
        if (!std::all_of(m_current.text.begin(), m_current.text.end(), isAscii))
            m_current.kind = Token::Kind::eBad;
    }

    Token TakeWord() {
        const std::size_t length = std::min(m_rest.find_first_of(cBlanks), m_rest.size());
        const Token token{Token::Kind::eWord, m_rest.substr(0, length)};
        m_rest.remove_prefix(length);
        return token;
    }

    Token TakeQuoted() {
        m_rest.remove_prefix(1);
        std::size_t end = m_rest.find('\'');
        while (end != std::string_view::npos && end + 1 < m_rest.size() &&
               m_rest[end + 1] == '\'')
            end = m_rest.find('\'', end + 2);
        if (end == std::string_view::npos) {
            m_rest = {};
            return Token{Token::Kind::eBad, {}};
        }
        const Token token{Token::Kind::eQuoted, m_rest.substr(0, end)};
        m_rest.remove_prefix(end + 1);
        return token;
    }

    std::string_view m_rest;
    Token m_current;
};

}  // namespace

// Makes the text that a token stands for. What a parameter is replaced by is copied and
// never looked at: paths may hold apostrophes, braces, blanks and per cent signs.
class ScriptExpander {
  public:
    explicit ScriptExpander(std::span<const ScriptParameter> parameters)
        : m_parameters(parameters) {}

    HRESULT Expand(const Token& token, ScriptText& text) const {
        std::size_t length = 0;
        if (!Copy(token, nullptr, length))
            return result::cFail;
        text.m_text.reset(new (std::nothrow) char16_t[length + 1]);
        if (!text.m_text)
            return result::cOutOfMemory;
        length = 0;
        Copy(token, text.m_text.get(), length);
        text.m_text[length] = u'\0';
        text.m_length = length;
        return result::cOk;
    }

  private:
    // Appends to `out` (when there is one) at `length`; false for a bad per cent sign.
    bool Copy(const Token& token, char16_t* out, std::size_t& length) const {
        const auto put = [&](std::u16string_view part) {
            if (out)
                std::copy(part.begin(), part.end(), out + length);
            length += part.size();
        };
        const std::string_view text = token.text;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char16_t c = static_cast<unsigned char>(text[i]);
            if (c == u'\'' && token.kind == Token::Kind::eQuoted)
                ++i;  // the second of a pair
            if (c != u'%') {
                put({&c, 1});
                continue;
            }
            const std::size_t end = text.find('%', i + 1);
            if (end == std::string_view::npos)
                return false;
            const std::string_view name = text.substr(i + 1, end - i - 1);
            const ScriptParameter* const parameter = Find(name);
            if (!name.empty() && !parameter)
                return false;
            put(name.empty() ? u"%" : parameter->text);
            i = end;
        }
        return true;
    }

    const ScriptParameter* Find(std::string_view name) const {
        const auto found = std::find_if(
            m_parameters.begin(), m_parameters.end(),
            [name](const ScriptParameter& parameter) { return parameter.name == name; });
        return found != m_parameters.end() ? &*found : nullptr;
    }

    std::span<const ScriptParameter> m_parameters;
};

namespace {

bool IsPunctuation(const Token& token) {
    return token.Is("{") || token.Is("}") || token.Is("=");
}

bool IsKeyword(const Token& token) {
    return token.Is("val") || token.Is("NoRemove") || token.Is("ForceRemove");
}

class Walker {
  public:
    Walker(std::string_view script, std::span<const ScriptParameter> parameters,
           RegistrarScriptSink& sink)
        : m_tokens(script), m_expander(parameters), m_sink(sink) {}

    HRESULT Run() {
        HRESULT hr = result::cOk;
        while (result::Succeeded(hr) && m_tokens.Current().kind != Token::Kind::eEnd)
            hr = Root();
        return hr;
    }

  private:
    HRESULT Root() {
        const Token word = m_tokens.Take();
        const auto* const found =
            std::find_if(std::begin(cRoots), std::end(cRoots),
                         [&word](const auto& root) { return word.Is(root.word); });
        if (found == std::end(cRoots) || !m_tokens.Accept("{"))
            return result::cFail;
        HRESULT hr = m_sink.OnRoot(found->root);
        m_depth = 0;
        m_inside = true;
        while (result::Succeeded(hr) && m_inside)
            hr = Item();
        return hr;
    }

    HRESULT Item() {
        if (m_tokens.Accept("}"))
            return Close();
        if (m_tokens.Accept("val"))
            return Value();
        return Key(m_tokens.Accept("NoRemove")      ? ScriptKeyMode::eNoRemove
                   : m_tokens.Accept("ForceRemove") ? ScriptKeyMode::eForceRemove
                                                    : ScriptKeyMode::eRemovable);
    }

    HRESULT Close() {
        if (m_depth == 0) {
            m_inside = false;
            return result::cOk;
        }
        return m_sink.OnKeyEnd(m_depth--);
    }

    HRESULT Value() {
        ScriptText name;
        ScriptText text;
        HRESULT hr = Name(name);
        if (result::Succeeded(hr))
            hr = m_tokens.Accept("=") ? Text(text) : result::cFail;
        if (result::Succeeded(hr))
            hr = m_sink.OnValue(m_depth, name, text);
        return hr;
    }

    HRESULT Key(ScriptKeyMode mode) {
        ScriptText name;
        ScriptText text;
        HRESULT hr = m_depth < cMaxScriptDepth ? Name(name) : result::cFail;
        // A backslash would create nested keys, which nothing would remove again.
        if (result::Succeeded(hr) &&
            std::u16string_view(name.Get(), name.Length()).find(u'\\') !=
                std::u16string_view::npos)
            hr = result::cFail;
        if (result::Succeeded(hr) && m_tokens.Accept("="))
            hr = Text(text);
        if (result::Succeeded(hr))
            hr = m_sink.OnKey(++m_depth, mode, std::move(name), text);
        if (result::Succeeded(hr) && !m_tokens.Accept("{"))
            hr = m_sink.OnKeyEnd(m_depth--);
        return hr;
    }

    HRESULT Name(ScriptText& name) {
        const Token token = m_tokens.Take();
        if (!token.IsName() || IsPunctuation(token) || IsKeyword(token))
            return result::cFail;
        const HRESULT hr = m_expander.Expand(token, name);
        return result::Succeeded(hr) && name.Length() == 0 ? result::cFail : hr;
    }

    // The type marker and the text.
    HRESULT Text(ScriptText& text) {
        if (!m_tokens.Accept("s"))
            return result::cFail;
        const Token token = m_tokens.Take();
        if (!token.IsName() || IsPunctuation(token))
            return result::cFail;
        return m_expander.Expand(token, text);
    }

    Tokens m_tokens;
    ScriptExpander m_expander;
    RegistrarScriptSink& m_sink;
    std::size_t m_depth = 0;
    bool m_inside = false;  // between the braces of a root
};

}  // namespace

HRESULT WalkRegistrarScript(std::string_view script,
                            std::span<const ScriptParameter> parameters,
                            RegistrarScriptSink& sink) {
    return Walker(script, parameters, sink).Run();
}

HRESULT CheckRegistrarScript(std::string_view script,
                             std::span<const ScriptParameter> parameters) {
    class : public RegistrarScriptSink {
    } sink;
    return WalkRegistrarScript(script, parameters, sink);
}

}  // namespace kora4

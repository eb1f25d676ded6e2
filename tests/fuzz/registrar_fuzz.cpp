// SPDX-License-Identifier: MIT
// Registrar scripts: what the reader tells its sink is compared with what an oracle finds in
// the list of all tokens.
#include <algorithm>
#include <map>
#include <optional>

#include "fuzz/frame.h"
#include "server/registrar_script.h"

namespace kora4::fuzz {

namespace {

using Events = std::vector<std::string>;

const std::map<std::string, std::string> cParameters = {
    {"MODULE", "C:\\it's {here}\\100%\\x.dll"}, {"APPID", "{A}"}, {"EMPTY", ""}};

std::string Event(const char* kind, std::size_t depth, const std::string& name,
                  const std::optional<std::string>& text) {
    return std::string(kind) + " " + std::to_string(depth) + " <" + name + ">" +
           (text ? " = <" + *text + ">" : "");
}

// ---- The oracle --------------------------------------------------------------------------

struct Word {
    std::string text;  // apostrophes undone
    bool isQuoted;
};

// Ends the reading of a script that is refused.
struct Refused {};

// Every token of the script up to a bad one, which ends the list as an optional without value.
std::vector<std::optional<Word>> WordsOf(const std::string& script) {
    const auto isBlank = [](char c) {
        return c != '\0' && std::string(" \t\r\n\v\f").find(c) != std::string::npos;
    };
    std::vector<std::optional<Word>> words;
    for (std::size_t i = 0; i < script.size();) {
        if (isBlank(script[i])) {
            ++i;
            continue;
        }
        Word word{"", script[i] == '\''};
        bool isWhole = !word.isQuoted;
        for (i += word.isQuoted ? 1 : 0; i < script.size(); ++i) {
            if (!word.isQuoted && isBlank(script[i]))
                break;
            if (word.isQuoted && script[i] == '\'') {
                if (i + 1 == script.size() || script[i + 1] != '\'') {
                    ++i;
                    isWhole = true;
                    break;
                }
                ++i;
            }
            word.text += script[i];
        }
        for (const char c : word.text)
            isWhole = isWhole && c >= 0x01 && c <= 0x7E;
        if (!isWhole) {
            words.emplace_back();
            break;
        }
        words.emplace_back(word);
    }
    return words;
}

class Oracle {
  public:
    explicit Oracle(const std::string& script) : m_words(WordsOf(script)) {}

    // Whether the script is accepted.
    bool Read() {
        try {
            while (m_at < m_words.size())
                Root();
            return true;
        } catch (const Refused&) {
            return false;
        }
    }

    Events events;

  private:
    Word Next() {
        if (m_at == m_words.size() || !m_words[m_at])
            throw Refused();
        return *m_words[m_at++];
    }

    bool Takes(const char* text) {
        if (m_at == m_words.size() || !m_words[m_at] || m_words[m_at]->isQuoted ||
            m_words[m_at]->text != text)
            return false;
        ++m_at;
        return true;
    }

    static std::string Replaced(const std::string& text) {
        std::string replaced;
        std::string name;
        bool inName = false;
        for (const char c : text) {
            if (c != '%') {
                (inName ? name : replaced) += c;
                continue;
            }
            if (inName && name.empty()) {
                replaced += '%';
            } else if (inName) {
                const auto known = cParameters.find(name);
                if (known == cParameters.end())
                    throw Refused();
                replaced += known->second;
            }
            name.clear();
            inName = !inName;
        }
        if (inName)
            throw Refused();
        return replaced;
    }

    std::string TextOf(bool isName) {
        const Word word = Next();
        for (const char* reserved : {"{", "}", "=", "val", "NoRemove", "ForceRemove"}) {
            const bool isKeyword = reserved[1] != '\0';
            if (!word.isQuoted && word.text == reserved && (isName || !isKeyword))
                throw Refused();
        }
        const std::string text = Replaced(word.text);
        if (isName && text.empty())
            throw Refused();
        return text;
    }

    std::string Value() {
        if (!Takes("s"))
            throw Refused();
        return TextOf(false);
    }

    void Root() {
        static const std::map<std::string, int> roots = {
            {"HKCR", 0}, {"HKCU", 1}, {"HKLM", 2}, {"HKU", 3}};
        const Word word = Next();
        const auto root = roots.find(word.text);
        if (word.isQuoted || root == roots.end() || !Takes("{"))
            throw Refused();
        events.push_back("root " + std::to_string(root->second));
        Items(0);
    }

    // What stands behind an opening brace, and the closing one.
    void Items(std::size_t depth) {
        while (!Takes("}")) {
            if (Takes("val")) {
                const std::string name = TextOf(true);
                if (!Takes("="))
                    throw Refused();
                events.push_back(Event("value", depth, name, Value()));
            } else {
                Key(depth + 1);
            }
        }
    }

    void Key(std::size_t depth) {
        const char* const mode = Takes("NoRemove")      ? "key stays"
                                 : Takes("ForceRemove") ? "key forced"
                                                        : "key";
        if (depth > 16)
            throw Refused();
        const std::string name = TextOf(true);
        if (name.find('\\') != std::string::npos)
            throw Refused();
        std::optional<std::string> text;
        if (Takes("="))
            text = Value();
        events.push_back(Event(mode, depth, name, text));
        if (Takes("{"))
            Items(depth);
        events.push_back("end " + std::to_string(depth));
    }

    std::vector<std::optional<Word>> m_words;
    std::size_t m_at = 0;
};

// ---- What the library finds -----------------------------------------------------------------

std::string Narrow(const ScriptText& text) {
    const std::u16string_view wide(text.Get(), text.Length());
    return {wide.begin(), wide.end()};
}

class Sink : public RegistrarScriptSink {
  public:
    Events events;

    HRESULT OnRoot(ScriptRoot root) override {
        events.push_back("root " + std::to_string(static_cast<int>(root)));
        return result::cOk;
    }
    HRESULT OnKey(std::size_t depth, ScriptKeyMode mode, ScriptText name,
                  const ScriptText& text) override {
        const char* const word = mode == ScriptKeyMode::eNoRemove      ? "key stays"
                                 : mode == ScriptKeyMode::eForceRemove ? "key forced"
                                                                       : "key";
        events.push_back(Event(word, depth, Narrow(name),
                               text ? std::optional(Narrow(text)) : std::nullopt));
        return result::cOk;
    }
    HRESULT OnValue(std::size_t depth, const ScriptText& name,
                    const ScriptText& text) override {
        events.push_back(Event("value", depth, Narrow(name), Narrow(text)));
        return result::cOk;
    }
    HRESULT OnKeyEnd(std::size_t depth) override {
        events.push_back("end " + std::to_string(depth));
        return result::cOk;
    }
};

}  // namespace

void Check(std::string_view input) {
    Oracle oracle{std::string(input)};
    const bool isAccepted = oracle.Read();
    std::vector<std::u16string> texts;
    texts.reserve(cParameters.size());
    std::vector<ScriptParameter> parameters;
    for (const auto& [name, text] : cParameters) {
        texts.emplace_back(text.begin(), text.end());
        parameters.push_back({name, texts.back()});
    }
    // Without the terminator that a string literal has.
    const std::vector<char> script(input.begin(), input.end());
    Sink sink;
    const HRESULT hr = WalkRegistrarScript({script.data(), script.size()}, parameters, sink);
    ExpectSame("result", isAccepted ? result::cOk : result::cFail, hr);
    ExpectSame("events", oracle.events, sink.events);
    ExpectSame("result of the check", hr,
               CheckRegistrarScript({script.data(), script.size()}, parameters));
}

}  // namespace kora4::fuzz

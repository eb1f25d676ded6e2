// SPDX-License-Identifier: MIT
// The checks of a member, and the messages that name its place.
#include "base/checked_json.h"

#include <algorithm>
#include <cmath>

#include "base/nearest.h"
#include "base/text.h"

namespace kora4::tools {

namespace {

std::string Quoted(const std::vector<std::string>& names) {
    return "'" + Join(names, "', '") + "'";
}

}  // namespace

Failure CheckedJson::Bad(const std::string& what, const std::string& next) const {
    std::string sentence;
    for (const std::string& part : {m_file, m_place})
        sentence += part.empty() ? "" : part + ": ";
    return Failure(ExitCode::eBadInput, sentence + what, next);
}

void CheckedJson::CheckMembers(const std::vector<std::string>& needed,
                               const std::vector<std::string>& optional) const {
    if (!m_value.is_object())
        throw Bad("expected an object.");
    std::vector<std::string> known = needed;
    known.insert(known.end(), optional.begin(), optional.end());
    for (const auto& [name, value] : m_value.items()) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw Child(value, name).Bad("unknown member. " + Suggestion(name, known));
    }
    for (const std::string& name : needed) {
        if (!m_value.contains(name))
            throw Bad("member '" + name + "' is missing. Required: " + Quoted(needed) + ".");
    }
}

CheckedJson CheckedJson::Child(const Json& value, const std::string& member) const {
    return CheckedJson(value, m_file, m_place.empty() ? member : m_place + "." + member);
}

CheckedJson CheckedJson::operator[](const std::string& member) const {
    return Child(m_value.at(member), member);
}

CheckedJson CheckedJson::Section(const std::string& member) const {
    static const Json cEmpty = Json::object();
    return Child(Has(member) ? m_value.at(member) : cEmpty, member);
}

std::vector<CheckedJson> CheckedJson::Elements(std::size_t least, std::size_t most) const {
    if (!m_value.is_array())
        throw Bad("expected an array.");
    if (m_value.size() < least || m_value.size() > most)
        throw Bad("expected " + Range(static_cast<double>(least), static_cast<double>(most)) +
                  " elements, got " + std::to_string(m_value.size()) + ".");
    std::vector<CheckedJson> elements;
    for (std::size_t i = 0; i < m_value.size(); ++i)
        elements.emplace_back(m_value[i], m_file, m_place + "[" + std::to_string(i) + "]");
    return elements;
}

double CheckedJson::Number(double least, double most) const {
    const double number = m_value.is_number() ? m_value.get<double>() : least - 1;
    if (!(number >= least) || !(number <= most))
        throw Bad("expected a number from " + Range(least, most) + ".");
    return number;
}

unsigned CheckedJson::Count(unsigned least, unsigned most) const {
    const double number = m_value.is_number() ? m_value.get<double>() : -1.0;
    if (number != std::floor(number) || number < least || number > most)
        throw Bad("expected a whole number from " + Range(least, most) + ".");
    return static_cast<unsigned>(number);
}

std::string CheckedJson::Text() const {
    if (!m_value.is_string())
        throw Bad("expected a text.");
    return m_value.get<std::string>();
}

std::string CheckedJson::Word(const std::vector<std::string>& words) const {
    std::string word = Text();
    if (std::find(words.begin(), words.end(), word) == words.end())
        throw Bad("unknown value '" + word + "'. " + Suggestion(word, words));
    return word;
}

bool CheckedJson::Switch() const {
    if (!m_value.is_boolean())
        throw Bad("expected true or false.");
    return m_value.get<bool>();
}

}  // namespace kora4::tools

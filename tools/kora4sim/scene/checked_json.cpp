// SPDX-License-Identifier: MIT
// The checks of a scene's members, and the messages that name their place.
#include "kora4sim/scene/checked_json.h"

#include <algorithm>
#include <cmath>

#include "base/nearest.h"
#include "base/strict_json.h"
#include "base/text.h"

namespace kora4::tools::sim {

namespace {

std::string Shown(double number) {
    return Decimal(static_cast<float>(number));
}

std::string Quoted(const std::vector<std::string>& names) {
    return "'" + Join(names, "', '") + "'";
}

}  // namespace

Json ParseJson(std::string_view text, const std::string& file) {
    try {
        return ParseStrictJson(text);
    } catch (const Failure& failure) {
        throw Failure(failure.Code(), file + ": " + failure.what());
    }
}

Failure CheckedJson::Bad(const std::string& what) const {
    const std::string place = m_place.empty() ? "" : m_place + ": ";
    return Failure(ExitCode::eBadInput, m_file + ": " + place + what);
}

void CheckedJson::CheckMembers(const std::vector<std::string>& needed,
                               const std::vector<std::string>& optional) const {
    if (!m_value.is_object())
        throw Bad("this must be an object.");
    std::vector<std::string> known = needed;
    known.insert(known.end(), optional.begin(), optional.end());
    for (const auto& [name, value] : m_value.items()) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw Bad("there is no member '" + name + "' here. " + Suggestion(name, known));
    }
    for (const std::string& name : needed) {
        if (!m_value.contains(name))
            throw Bad("the member '" + name +
                      "' is missing. These are needed: " + Quoted(needed) + ".");
    }
}

CheckedJson CheckedJson::operator[](const char* member) const {
    return {m_value.at(member), m_file, m_place.empty() ? member : m_place + "." + member};
}

std::vector<CheckedJson> CheckedJson::Elements(std::size_t least, std::size_t most) const {
    if (!m_value.is_array())
        throw Bad("this must be an array.");
    if (m_value.size() < least || m_value.size() > most)
        throw Bad("this must have " + std::to_string(least) + " to " + std::to_string(most) +
                  " elements; it has " + std::to_string(m_value.size()) + ".");
    std::vector<CheckedJson> elements;
    for (std::size_t i = 0; i < m_value.size(); ++i)
        elements.push_back({m_value[i], m_file, m_place + "[" + std::to_string(i) + "]"});
    return elements;
}

double CheckedJson::Number(double least, double most) const {
    const double number = m_value.is_number() ? m_value.get<double>() : least - 1;
    if (!(number >= least) || !(number <= most))
        throw Bad("this must be a number from " + Shown(least) + " to " + Shown(most) + ".");
    return number;
}

unsigned CheckedJson::Count(unsigned least, unsigned most) const {
    const double number = m_value.is_number() ? m_value.get<double>() : -1.0;
    if (number != std::floor(number) || number < least || number > most)
        throw Bad("this must be a whole number from " + std::to_string(least) + " to " +
                  std::to_string(most) + ".");
    return static_cast<unsigned>(number);
}

std::string CheckedJson::Text() const {
    if (!m_value.is_string())
        throw Bad("this must be a text.");
    return m_value.get<std::string>();
}

std::string CheckedJson::Word(const std::vector<std::string>& words) const {
    const std::string word = Text();
    if (std::find(words.begin(), words.end(), word) == words.end())
        throw Bad("'" + word + "' is not known here. " + Suggestion(word, words));
    return word;
}

bool CheckedJson::Switch() const {
    if (!m_value.is_boolean())
        throw Bad("this must be true or false.");
    return m_value.get<bool>();
}

}  // namespace kora4::tools::sim

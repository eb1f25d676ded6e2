// SPDX-License-Identifier: MIT
// A JSON value that is checked while it is read: every complaint names its place.
#ifndef KORA4_KORA4SIM_SCENE_CHECKED_JSON_H
#define KORA4_KORA4SIM_SCENE_CHECKED_JSON_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/output.h"

namespace kora4::tools::sim {

// Parses a whole document. Failure with eBadInput names the line and the column of what is
// no JSON, and members that stand twice.
Json ParseJson(std::string_view text, const std::string& file);

// A value inside a document that outlives it.
class CheckedJson {
  public:
    CheckedJson(const Json& value, std::string file, std::string place = {})
        : m_value(value), m_file(std::move(file)), m_place(std::move(place)) {}

    // An object that has no other members than these, and all that are needed.
    void CheckMembers(const std::vector<std::string>& needed,
                      const std::vector<std::string>& optional = {}) const;
    bool Has(const char* member) const { return m_value.contains(member); }

    // The member of an object, which must be there (CheckMembers).
    CheckedJson operator[](const char* member) const;
    // An array of that many elements.
    std::vector<CheckedJson> Elements(std::size_t least, std::size_t most) const;

    // A number within the limits, both included.
    double Number(double least, double most) const;

    // A whole number within the limits.
    unsigned Count(unsigned least, unsigned most) const;
    // A text.
    std::string Text() const;
    // One of these words.
    std::string Word(const std::vector<std::string>& words) const;

    // True or false.
    bool Switch() const;

    // The raw value, for what may have several forms.
    const Json& Raw() const { return m_value; }

    // "scene.json: records[1].bands: <what>", to be thrown.
    Failure Bad(const std::string& what) const;

  private:
    const Json& m_value;
    std::string m_file;
    std::string m_place;
};

}  // namespace kora4::tools::sim

#endif  // KORA4_KORA4SIM_SCENE_CHECKED_JSON_H

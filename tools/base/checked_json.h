// SPDX-License-Identifier: MIT
// A JSON value that is checked while it is read: every complaint names its place.
#pragma once

#include <string>
#include <vector>

#include "base/failure.h"
#include "base/output.h"

namespace kora4::tools {

// A value inside a document that outlives it. What is not as demanded is thrown as Failure
// with eBadInput.
class CheckedJson {
  public:
    // file: begins every complaint; may be empty.
    explicit CheckedJson(const Json& value, std::string file = {}, std::string place = {})
        : m_value(value), m_file(std::move(file)), m_place(std::move(place)) {}

    // An object that has no other members than these, and all that are needed.
    void CheckMembers(const std::vector<std::string>& needed,
                      const std::vector<std::string>& optional = {}) const;
    bool Has(const std::string& member) const { return m_value.contains(member); }
    CheckedJson operator[](const std::string& member) const;
    // The member, or an empty object in its place.
    CheckedJson Section(const std::string& member) const;
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
    Failure Bad(const std::string& what, const std::string& next = {}) const;

  private:
    CheckedJson Child(const Json& value, const std::string& member) const;

    const Json& m_value;
    std::string m_file;
    std::string m_place;
};

}  // namespace kora4::tools

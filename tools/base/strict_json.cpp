// SPDX-License-Identifier: MIT
// A guard around the JSON parser, which by itself accepts repeated names and any depth.
#include "base/strict_json.h"

#include <set>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/text.h"

namespace kora4::tools {

namespace {

// No file of the tools needs more than a few levels.
constexpr int cDeepest = 64;

// Watches a text being parsed.
class Guard {
  public:
    void Take(int depth, Json::parse_event_t event, const Json& parsed) {
        if (depth > cDeepest)
            throw BadInput("The document is nested too deeply.");
        if (event == Json::parse_event_t::object_start)
            m_open.emplace_back();
        else if (event == Json::parse_event_t::object_end)
            m_open.pop_back();
        else if (event == Json::parse_event_t::key)
            Add(parsed.get<std::string>());
    }

  private:
    struct Object {
        std::set<std::string> names;
        std::string current;
    };

    void Add(const std::string& name) {
        Object& object = m_open.back();
        object.current = name;
        if (object.names.insert(name).second)
            return;
        std::vector<std::string> path;
        for (const Object& open : m_open)
            path.push_back(open.current);
        throw BadInput(Join(path, ".") + ": duplicate member.");
    }

    std::vector<Object> m_open;
};

}  // namespace

Json ParseStrictJson(std::string_view text) {
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
        throw BadInput("The document is empty.");
    Guard guard;
    try {
        return Json::parse(text, [&guard](int depth, Json::parse_event_t event, Json& parsed) {
            guard.Take(depth, event, parsed);
            return true;
        });
    } catch (const Json::exception& error) {
        const auto* const mistake = dynamic_cast<const Json::parse_error*>(&error);
        if (mistake != nullptr && mistake->byte > text.size())
            throw BadInput("The document is truncated: it ends unexpectedly.");
        throw BadInput("Not valid JSON: " + ProblemOf(error) + ".");
    }
}

std::string ProblemOf(const Json::exception& error) {
    std::string problem = error.what();
    problem.erase(0, problem.find("] ") + 2);
    // "parse error at line 1, column 2: while it did something - what is wrong"
    constexpr std::string_view cPrefix = "parse error at ";
    const std::size_t place = problem.find(": ");
    const std::size_t what = problem.find(" - ");
    if (problem.starts_with(cPrefix) && place < what && what != std::string::npos)
        problem.replace(place + 2, what + 3 - (place + 2), "").erase(0, cPrefix.size());
    return problem;
}

}  // namespace kora4::tools

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

// Nor more members in one object. An object looks up a name by walking over all of them.
constexpr std::size_t cMostMembers = 1000;

constexpr std::size_t cEventsBetweenPolls = 5000;

// Watches a text being parsed.
class Guard {
  public:
    explicit Guard(const std::function<void()>& poll) : m_poll(poll) {}

    void Take(int depth, Json::parse_event_t event, const Json& parsed) {
        if (m_poll && ++m_events % cEventsBetweenPolls == 0)
            m_poll();
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
        if (!object.names.insert(name).second)
            Refuse("duplicate member.");
        if (object.names.size() > cMostMembers)
            Refuse("too many members; an object has at most " + std::to_string(cMostMembers) +
                   ".");
    }

    [[noreturn]] void Refuse(const std::string& what) const {
        std::vector<std::string> path;
        for (const Object& open : m_open)
            path.push_back(open.current);
        throw BadInput(Join(path, ".") + ": " + what);
    }

    const std::function<void()>& m_poll;
    std::size_t m_events = 0;
    std::vector<Object> m_open;
};

}  // namespace

Json ParseStrictJson(std::string_view text, const std::function<void()>& poll) {
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
        throw BadInput("The document is empty.");
    // The parser takes a null character for the end of the text and ignores what follows.
    if (text.find('\0') != std::string_view::npos)
        throw BadInput("Not valid JSON: it contains a null character.");
    Guard guard(poll);
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

// SPDX-License-Identifier: MIT
// Edit distance between names, and the sentence that suggests the nearest ones.
#include "base/nearest.h"

#include <algorithm>
#include <numeric>

#include "base/text.h"

namespace kora4::tools {

namespace {

constexpr std::size_t cMost = 3;

// Edit distance: letters to change, insert, remove, or swap with their neighbour.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t other = a[i - 1] == b[j - 1] ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + other});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        std::swap(beforeLast, last);
        std::swap(last, row);
    }
    return last[b.size()];
}

// The distance that still counts as near: a third of the letters, at least one.
std::size_t Allowed(std::string_view word) {
    return std::max<std::size_t>(1, word.size() / 3);
}

struct Candidate {
    std::size_t distance;
    const std::string* name;
};

}  // namespace

std::vector<std::string> Nearest(std::string_view word, const std::vector<std::string>& names) {
    const std::string lower = Lower(word);
    std::vector<Candidate> candidates;
    for (const std::string& name : names) {
        const std::string other = Lower(name);
        const std::size_t distance = Distance(lower, other);
        // The begin or the last part of a name is not a typing error, but less near than one.
        if (!lower.empty() && distance <= Allowed(lower))
            candidates.push_back({2 * distance, &name});
        else if (!lower.empty() && (other.starts_with(lower) || other.ends_with("-" + lower)))
            candidates.push_back({2 * Allowed(lower) + 1, &name});
    }
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; });
    candidates.resize(std::min(candidates.size(), cMost));
    std::vector<std::string> nearest;
    for (const Candidate& candidate : candidates)
        nearest.push_back(*candidate.name);
    return nearest;
}

std::string Suggestion(std::string_view word, const std::vector<std::string>& names) {
    const std::vector<std::string> nearest = Nearest(word, names);
    if (nearest.empty())
        return "Expected one of: " + Join(names, ", ") + ".";
    std::string text = "Did you mean ";
    for (std::size_t i = 0; i < nearest.size(); ++i) {
        const bool isLast = i + 1 == nearest.size();
        text += i == 0 ? "'" : isLast ? " or '" : ", '";
        text += nearest[i] + "'";
    }
    return text + "?";
}

}  // namespace kora4::tools

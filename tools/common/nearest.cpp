#include "common/nearest.h"

#include "common/text.h"

namespace kora4::tools {

std::vector<std::string> Nearest(std::string_view word, const std::vector<std::string>& names) {
    std::vector<std::string> near;
    for (const std::string& name : names) {
        if (near.size() < 3 && Lower(name).starts_with(Lower(word)))
            near.push_back(name);
    }
    return near;
}

std::string Suggestion(std::string_view word, const std::vector<std::string>& names) {
    const std::vector<std::string> near = Nearest(word, names);
    return near.empty() ? "It is one of: " + Join(names, ", ") + "."
                        : "Did you mean '" + Join(near, "' or '") + "'?";
}

}  // namespace kora4::tools

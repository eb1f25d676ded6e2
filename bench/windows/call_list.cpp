// SPDX-License-Identifier: MIT
// Writes a list of calls as text, with repeated groups folded.
#include "windows/call_list.h"

#include <cstddef>

namespace kora4::bench {
namespace {

// How often the group of `length` calls at `begin` stands there in a row.
std::size_t Repeats(const CallList& calls, std::size_t begin, std::size_t length) {
    std::size_t repeats = 0;
    for (std::size_t at = begin; at + length <= calls.size(); at += length, ++repeats)
        for (std::size_t i = 0; i < length; ++i)
            if (calls[at + i] != calls[begin + i])
                return repeats;
    return repeats;
}

}  // namespace

std::string Written(const CallList& calls) {
    std::string text;
    for (std::size_t begin = 0; begin < calls.size();) {
        const std::size_t alike = Repeats(calls, begin, 1);
        const std::size_t pairs = Repeats(calls, begin, 2);
        const bool isPair = pairs > 1 && 2 * pairs > alike;
        if (!text.empty())
            text += ", ";
        if (isPair)
            text +=
                std::to_string(pairs) + " x (" + calls[begin] + ", " + calls[begin + 1] + ")";
        else
            text += (alike > 1 ? std::to_string(alike) + " " : "") + calls[begin];
        begin += isPair ? 2 * pairs : alike;
    }
    return text.empty() ? "none" : text;
}

}  // namespace kora4::bench

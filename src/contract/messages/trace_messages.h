// SPDX-License-Identifier: MIT
// Every trace message with its meaning, and the search for the row of a written line.
#pragma once

#include <cstddef>
#include <string_view>

#include "contract/messages/trace_message.h"
#include "contract/messages/trace_messages_api.h"
#include "contract/messages/trace_messages_general.h"
#include "contract/messages/trace_messages_store.h"
#include "contract/messages/trace_text.h"

namespace kora4::contract {

namespace msg {

#define KORA4_ROW(make, name, ...) name,
#define KORA4_ASSERTION(name, ...) name,
inline constexpr TraceMessage cTraceMessages[] = {
    cEntry, cExit, cExitResult, cNotInitialized, cRefused, cAssertion,
#include "contract/messages/trace_messages_api.inc"
#include "contract/messages/trace_messages_assertions.inc"
#include "contract/messages/trace_messages_store.inc"
};
#undef KORA4_ROW
#undef KORA4_ASSERTION

}  // namespace msg

// The row found for a message.
struct TraceMatch {
    const TraceMessage* pMessage = nullptr;
    TraceValues values;
    // How many rows match equally well; more than one only if no function is given.
    std::size_t equals = 0;
};

// The row that matches a message best: the one with the most literal characters, and a row for
// the function rather than one for any. An empty function: of any.
constexpr TraceMatch FindTraceMessage(std::string_view function, std::string_view message) {
    TraceMatch best;
    std::size_t bestScore = 0;
    for (const TraceMessage& row : msg::cTraceMessages) {
        const bool isOfFunction = row.function != nullptr && function == row.function;
        if (row.function != nullptr && !function.empty() && !isOfFunction)
            continue;
        TraceValues values;
        const std::size_t exact = MatchTraceText(row, message, &values);
        if (exact == 0)
            continue;
        const std::size_t score = 2 * exact + (isOfFunction ? 1 : 0);
        if (score > bestScore) {
            bestScore = score;
            best = {&row, values, 1};
        } else if (score == bestScore) {
            ++best.equals;
        }
    }
    return best;
}

}  // namespace kora4::contract

// SPDX-License-Identifier: MIT
// The frame that all methods of the API object share: entry line, argument checks,
// initialisation check, the method's own work, exit line. A method states what is its
// own in a `Method` table and a body.
#pragma once

#include <windows.h>

#include <cstdint>
#include <source_location>

#include "contract/messages/trace_messages_api.h"
#include "kora4api_codes.h"
#include "trace/trace.h"

namespace kora4 {

// Where the initialisation check stands. Clients rely on each method's own order.
enum class InitializationCheck { eAfterArguments, eBeforeArguments, eNone };

// The line of a refused argument; none unless given. The message has no arguments.
struct Refusal {
    constexpr Refusal() = default;
    consteval Refusal(const contract::TraceMessage& message) : text(message.text) {
        if (!trace::FitsFormat(message.text, trace::Types<>()))
            trace::DoesNotMatchTheCatalogue();
    }

    const char* text = nullptr;
};

// What differs from method to method in the frame.
struct MethodRules {
    Refusal badArgument = {};
    InitializationCheck initialization = InitializationCheck::eAfterArguments;
    bool tellsNotInitialized = true;
};

// The lines of the frame show where this stands.
struct Method {
    consteval explicit Method(const trace::Place& methodPlace,
                              const MethodRules& methodRules = {})
        : place(methodPlace), rules(methodRules) {}

    // A method with a line for a refused argument: it is the function of that message.
    consteval explicit Method(
        const contract::TraceMessage& badArgument, MethodRules methodRules = {},
        const std::source_location& location = std::source_location::current())
        : place(badArgument.function, location), rules(methodRules) {
        rules.badArgument = badArgument;
    }

    trace::Place place;
    MethodRules rules;
};

// For methods without an argument to check.
inline constexpr bool cNothingToCheck = true;

// The refusal of a call, told in a line if the method tells it; S_OK lets the call in.
inline HRESULT Admit(const Method& method, bool initialized, bool argumentsAreGood) {
    const MethodRules& rules = method.rules;
    const bool stateIsGood = initialized || rules.initialization == InitializationCheck::eNone;
    const bool stateFirst = rules.initialization == InitializationCheck::eBeforeArguments;
    const char* pText = nullptr;
    HRESULT hr = S_OK;
    if (!argumentsAreGood && (stateIsGood || !stateFirst)) {
        hr = E_INVALIDARG;
        pText = rules.badArgument.text;
    } else if (!stateIsGood) {
        hr = APOERR_NOT_INITIALIZED;
        pText = rules.tellsNotInitialized ? msg::cNotInitialized.text : nullptr;
    }
    const std::uint32_t flags = trace::Flags();
    if (pText && trace::IsEnabled(flags, trace::eMessages))
        trace::Write(flags, method.place.site, method.place.line, pText);
    return hr;
}

// `body` makes the call, writes the method's message lines and returns the result, which
// travels up unchanged, success codes included. The entry line may be a message with the
// arguments of the call.
template <const contract::TraceMessage& entry = msg::cEntry, typename Body,
          typename... EntryArguments>
HRESULT RunMethod(const Method& method, bool initialized, bool argumentsAreGood, Body&& body,
                  EntryArguments... entryArguments) {
    const auto& [site, line] = method.place;
    KALTRACE_LINE(trace::eEntry, site, line, entry.text, entryArguments...);
    HRESULT hr = S_OK;
    const trace::ExitLine exitLine(site, line, &hr);
    hr = Admit(method, initialized, argumentsAreGood);
    if (SUCCEEDED(hr))
        hr = body();
    return hr;
}

}  // namespace kora4

// SPDX-License-Identifier: MIT
// The frame that all methods of the API object share: entry line, argument checks,
// initialisation check, the method's own work, exit line. A method states what is its
// own in a `Method` table and a body.
#ifndef KORA4_API_METHOD_FRAME_H
#define KORA4_API_METHOD_FRAME_H

#include <windows.h>

#include <cstdint>
#include <source_location>

#include "kora4api_codes.h"
#include "trace/trace.h"

namespace kora4 {

// The tag of all lines of the API object; also the name of its log file.
inline constexpr char cApiTag[] = "KORA4ASL";

// Where the initialisation check stands. Clients rely on each method's own order.
enum class InitializationCheck { eAfterArguments, eBeforeArguments, eNone };

// What differs from method to method in the frame.
struct MethodRules {
    // What the line of a refused argument says after "**** Error: "; null: no line.
    const char* badArgument = nullptr;
    InitializationCheck initialization = InitializationCheck::eAfterArguments;
    bool tellsNotInitialized = true;
    // The whole format of the entry line; its own arguments go to RunMethod.
    const char* entry = "%s: %4d %s:>>\n";
};

// What a method states of itself: its name in the trace and its rules. A static constexpr in
// each method.
struct Method {
    constexpr explicit Method(
        const char* function, const MethodRules& methodRules = {},
        const std::source_location& location = std::source_location::current())
        : site{cApiTag, function},
          rules(methodRules),
          line(static_cast<int>(location.line())) {}

    trace::Site site;
    MethodRules rules;
    int line;  // what the lines of the frame show
};

// For methods without an argument to check.
inline constexpr bool cNothingToCheck = true;

// The refusal of a call, told in a line if the method tells it; S_OK lets the call in.
inline HRESULT Admit(const Method& method, bool initialized, bool argumentsAreGood) {
    const MethodRules& rules = method.rules;
    const bool stateIsGood = initialized || rules.initialization == InitializationCheck::eNone;
    const bool stateFirst = rules.initialization == InitializationCheck::eBeforeArguments;
    if (!argumentsAreGood && (stateIsGood || !stateFirst)) {
        if (rules.badArgument)
            KALTRACE_AT(trace::eMessages, method.site, method.line, "**** Error: %s\n",
                        rules.badArgument);
        return E_INVALIDARG;
    }
    if (!stateIsGood) {
        if (rules.tellsNotInitialized)
            KALTRACE_AT(trace::eMessages, method.site, method.line,
                        "**** Error: APOERR_NOT_INITIALIZED\n");
        return APOERR_NOT_INITIALIZED;
    }
    return S_OK;
}

// `body` makes the call, writes the method's message lines and returns the result, which
// travels up unchanged, success codes included.
template <typename Body, typename... EntryArguments>
HRESULT RunMethod(const Method& method, bool initialized, bool argumentsAreGood, Body&& body,
                  EntryArguments... entryArguments) {
    const std::uint32_t flags = trace::Flags();
    if (trace::IsEnabled(flags, trace::eEntry))
        trace::Write(flags, method.site, method.line, method.rules.entry, entryArguments...);
    HRESULT hr = S_OK;
    const trace::Scope exitLine(method.site, method.line, 0, trace::eExitResult, &hr);
    hr = Admit(method, initialized, argumentsAreGood);
    if (SUCCEEDED(hr))
        hr = body();
    return hr;
}

}  // namespace kora4

#endif  // KORA4_API_METHOD_FRAME_H

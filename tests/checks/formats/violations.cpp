// SPDX-License-Identifier: MIT
// What the compiler refuses about trace statements. As it stands this compiles; with one
// VIOLATION it must not, and the message must have the words below it. violations.sh tries one
// after the other.
#include "trace/trace.h"

#ifndef VIOLATION
#define VIOLATION 0
#endif

namespace kora4 {
namespace {

using enum contract::TraceKind;

constexpr auto cCount = msg::Message("CKORA4ASL::Count", "%d of %u", {eCount, eCount}, "");
constexpr auto cTexts =
    msg::Message("CKORA4ASL::Texts", "%16s %S %ls", {eName, eName, eName}, "");
constexpr auto cOthers =
    msg::Message("CKORA4ASL::Others", "%p %10f 0x%08x", {ePointer, eGain, eMask}, "");
constexpr auto cWhole = msg::Message("CKORA4ASL::Whole", "100 per cent", {}, "");
constexpr auto cUnknown = msg::Message("CKORA4ASL::Unknown", "%e", {eGain}, "");
constexpr auto cNobodys = msg::Message("Nobody::Writes", "this", {}, "");

}  // namespace

void Fits(const void* pointer, float number, long long wide, const char16_t* text) {
    KALTRACE(cCount, 1, 2u);
    KALTRACE(cTexts, "a", L"b", text);
    KALTRACE(cOthers, pointer, number, static_cast<unsigned>(wide));
    KALTRACE(cWhole);
#if VIOLATION == 1
    // says: the message does not take these arguments
    KALTRACE(cCount, 1);
#elif VIOLATION == 2
    // says: the message does not take these arguments
    KALTRACE(cCount, 1, 2u, 3);
#elif VIOLATION == 3
    // says: the message does not take these arguments
    KALTRACE(cCount, 1, wide);
#elif VIOLATION == 4
    // says: the message does not take these arguments
    KALTRACE(cCount, 1, "two");
#elif VIOLATION == 5
    // says: the message does not take these arguments
    KALTRACE(cTexts, L"a", L"b", text);
#elif VIOLATION == 6
    // says: the message does not take these arguments
    KALTRACE(cTexts, "a", "b", text);
#elif VIOLATION == 7
    // says: the message does not take these arguments
    KALTRACE(cOthers, number, number, 0u);
#elif VIOLATION == 8
    // says: the message does not take these arguments
    KALTRACE(cOthers, pointer, 1, 0u);
#elif VIOLATION == 9
    // says: the message does not take these arguments
    KALTRACE(cWhole, 1);
#elif VIOLATION == 10
    // says: the message does not take these arguments
    KALTRACE(cUnknown, number);
#elif VIOLATION == 11
    // says: DoesNotMatchTheCatalogue
    KALTRACE(cNobodys);
#elif VIOLATION == 12
    // says: DoesNotMatchTheCatalogue
    KALTRACE_SCOPE("Nobody::Writes");
#elif VIOLATION == 13
    // says: KindsDoNotFitTheText
    constexpr auto cFew = msg::Message("CKORA4ASL::Few", "%d of %u", {eCount}, "");
#elif VIOLATION == 14
    // says: KindsDoNotFitTheText
    constexpr auto cMany = msg::Message("CKORA4ASL::Many", "%d", {eCount, eCount}, "");
#elif VIOLATION == 15
    // says: invalid initialization of reference
    constexpr auto cFive = msg::Message("CKORA4ASL::Five", "%d %d %d %d %d",
                                        {eCount, eCount, eCount, eCount, eCount}, "");
#elif VIOLATION == 16
    // says: the message does not take these arguments
    KALASSERT(trace::cSiteOf<cCount>, msg::cAssertion, pointer);
#elif VIOLATION == 17
    // says: cAssertPointr
    KALASSERT(trace::cSiteOf<cCount>, msg::cAssertPointr, pointer);
#endif
}

}  // namespace kora4

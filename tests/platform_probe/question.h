// SPDX-License-Identifier: MIT
// What this system relies on or works around in its platform, as questions that a program can
// answer on the machine that it runs on.
#ifndef KORA4_TESTS_PLATFORM_PROBE_QUESTION_H
#define KORA4_TESTS_PLATFORM_PROBE_QUESTION_H

#include <span>
#include <string>

namespace kora4::probe {

struct Question {
    const char* name;
    const char* text;
    // What Windows answers by its documentation, and the title of that document; both empty
    // where none tells.
    const char* expected;
    const char* document;
    // The files that depend on it, separated by blanks.
    const char* code;
    // Null: no program can tell.
    std::string (*ask)();
};

// Subject by subject.
std::span<const Question> RegistryQuestions();
std::span<const Question> ObjectQuestions();
std::span<const Question> FileQuestions();
std::span<const Question> ProcessQuestions();
std::span<const Question> ComQuestions();

inline constexpr char cCannotTell[] = "a program cannot tell";
// Under Wine 8, one run in ten or so waits for ever in a call between apartments, or at the
// end of a thread that watches a key.
inline constexpr char cNoAnswer[] = "a program cannot tell: the call has not come back";

// Asks in a process of its own, on a thread that is in no apartment: a call that does not come
// back may keep what others need. `cCannotTell`, with a reason or not, begins an answer that is
// none.
std::string Answer(const Question& question);

// "same", "different" or "not known".
const char* Verdict(const Question& question, const std::string& answer);

}  // namespace kora4::probe

#endif  // KORA4_TESTS_PLATFORM_PROBE_QUESTION_H

// SPDX-License-Identifier: MIT
// Does something once, right before or right after one of the platform calls that the library
// makes, on the thread that makes it.
#ifndef KORA4_TESTS_MULTIPROCESS_IMPORT_STEPS_H
#define KORA4_TESTS_MULTIPROCESS_IMPORT_STEPS_H

#include <functional>
#include <memory>

namespace kora4::test {

// Numbers the moments before and after each platform call of the loaded library, and of each
// call through the monitor's gate, on whatever thread. One at a time; what runs in a call when
// it goes still ends here.
class ImportSteps {
  public:
    ImportSteps();
    ~ImportSteps();
    ImportSteps(const ImportSteps&) = delete;
    ImportSteps& operator=(const ImportSteps&) = delete;

    // From now on the steps count, from 0; in step `step` it runs `action`.
    void Arm(unsigned step, std::function<void()> action);
    // No step counts any more. True: the action has run.
    bool Disarm();
    bool HasRun() const;
    // Until the library has made no call for a while.
    void AwaitRest() const;

  private:
    struct Redirections;

    std::unique_ptr<Redirections> m_upRedirections;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_IMPORT_STEPS_H

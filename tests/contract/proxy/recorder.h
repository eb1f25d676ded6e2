// SPDX-License-Identifier: MIT
// The base of the test's objects: each method notes its slot and what came in, so that a
// test compares one text, and the program can say at its end which slots were reached.
#ifndef KORA4_TESTS_CONTRACT_PROXY_RECORDER_H
#define KORA4_TESTS_CONTRACT_PROXY_RECORDER_H

#include <objbase.h>
#include <windows.h>

#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include "support/counted.h"

namespace kora4::test {

// The slots that calls through a proxy have reached, by interface; the value is the name of
// the method that answered.
std::map<std::string, std::map<int, std::string>>& ReachedSlots();

// A number that the enumeration may not have.
template <typename Enumeration>
Enumeration NumberAs(int number) {
    Enumeration value;
    static_assert(sizeof value == sizeof number);
    std::memcpy(&value, &number, sizeof value);
    return value;
}

// `I`: the interface that the derived class implements. Belongs to its references; its
// methods run on the owner's thread, its fields are read after the call has returned.
template <typename I>
class Recorder : public Counted<I> {
  public:
    // What the next calls return.
    HRESULT m_result = S_OK;

    // The calls so far: "slot method arguments;" each.
    std::string TakeLog() {
        std::string log;
        log.swap(m_log);
        return log;
    }

    // The thread that ran the last call.
    DWORD m_threadId = 0;

    // True while calls arrive through a proxy: only these count as reached.
    bool m_throughProxy = true;

  protected:
    Recorder() : Counted<I>(0) {}
    virtual const char* InterfaceName() const = 0;

    template <typename... Arguments>
    HRESULT Saw(int slot, const char* method, const Arguments&... arguments) {
        m_threadId = GetCurrentThreadId();
        if (m_throughProxy)
            ReachedSlots()[InterfaceName()][slot] = method;
        std::ostringstream line;
        line << slot << " " << method;
        ((line << " " << arguments), ...);
        m_log += line.str() + ";";
        return m_result;
    }

  private:
    std::string m_log;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_PROXY_RECORDER_H

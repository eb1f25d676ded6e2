// SPDX-License-Identifier: MIT
// kora4ctl on a store that fails, dies or waits at a certain write.
//
// KORA4_FAULTS in the environment has steps between blanks. Writes and deletions are counted
// together, from 1 on.
//   fail:N       write N fails
//   fail-from:N  and so do all later ones
//   die:N        the process ends before write N, without any goodbye
//   die-after:N  and behind it
//   wait:N       before write N: sets the event KORA4-reached and waits for KORA4-go-on
//   ctrl-c:N     before write N: sets the event KORA4-reached and waits for Ctrl-C
#include <windows.h>

#include <cstdlib>
#include <sstream>

#include "base/failure.h"
#include "kora4ctl/command_line/command_line.h"
#include "platform/handles.h"
#include "registry/registry_store.h"

namespace {

using namespace kora4;
using namespace kora4::tools;

constexpr UINT cDied = 99;
constexpr DWORD cLongest = 60000;  // milliseconds

const Interrupt* g_interrupt = nullptr;

void SetNamed(const wchar_t* name) {
    SetEvent(UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, name)).Get());
}

void WaitForNamed(const wchar_t* name) {
    const UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, name));
    WaitForSingleObject(event.Get(), cLongest);
}

// Until the tool itself knows of it.
void WaitForControl() {
    SetNamed(L"KORA4-reached");
    g_interrupt->WaitFor(cLongest);
}

struct Step {
    std::string kind;
    unsigned long number = 0;
};

std::vector<Step> StepsOfEnvironment() {
    std::vector<Step> steps;
    const char* const text = std::getenv("KORA4_FAULTS");
    std::istringstream words(text ? text : "");
    for (std::string word; words >> word;) {
        const std::size_t colon = word.find(':');
        steps.push_back(
            {word.substr(0, colon), std::strtoul(word.c_str() + colon + 1, nullptr, 10)});
    }
    return steps;
}

class FaultyStore : public StoreAccess {
  public:
    explicit FaultyStore(std::unique_ptr<StoreAccess> store) : m_store(std::move(store)) {}

    std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) override {
        return m_store->Read(keySet, key);
    }
    void Write(KORA4KeySet keySet, const PropertyKey& key, const StoredValue& value) override {
        Before();
        m_store->Write(keySet, key, value);
        After();
    }
    void Delete(KORA4KeySet keySet, const PropertyKey& key) override {
        Before();
        m_store->Delete(keySet, key);
        After();
    }
    std::vector<std::string> ValueNames(KORA4KeySet keySet) override {
        return m_store->ValueNames(keySet);
    }

  private:
    bool IsAt(const char* kind) const {
        for (const Step& step : m_steps)
            if (step.kind == kind && step.number == m_count)
                return true;
        return false;
    }

    void Before() {
        ++m_count;
        if (IsAt("die"))
            TerminateProcess(GetCurrentProcess(), cDied);
        if (IsAt("wait")) {
            SetNamed(L"KORA4-reached");
            WaitForNamed(L"KORA4-go-on");
        }
        if (IsAt("ctrl-c"))
            WaitForControl();
        m_isBroken = m_isBroken || IsAt("fail-from");
        if (m_isBroken || IsAt("fail"))
            throw Failure(ExitCode::eFailed, "The write was refused for a trial.");
    }
    void After() {
        if (IsAt("die-after"))
            TerminateProcess(GetCurrentProcess(), cDied);
    }

    std::unique_ptr<StoreAccess> m_store;
    const std::vector<Step> m_steps = StepsOfEnvironment();
    unsigned long m_count = 0;
    bool m_isBroken = false;
};

}  // namespace

int wmain(int count, wchar_t** arguments) {
    SetStoreWrapper([](std::unique_ptr<StoreAccess> store) -> std::unique_ptr<StoreAccess> {
        return std::make_unique<FaultyStore>(std::move(store));
    });
    return RunProgram("kora4ctl", "kora4ctl on a faulty store", Arguments(count, arguments),
                      [](Context& context) {
                          g_interrupt = &context.interrupt;
                          AddVerbs(context);
                      });
}

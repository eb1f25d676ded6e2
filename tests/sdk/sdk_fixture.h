// SPDX-License-Identifier: MIT
// What the tests of the wrapper share: a store of their own, the registered library, and a
// callback that writes down what it is told.
#ifndef KORA4_TESTS_SDK_SDK_FIXTURE_H
#define KORA4_TESTS_SDK_SDK_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kora4.hpp>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "support/com_client.h"
#include "support/raw_store.h"
#include "support/registry_fixture.h"

namespace kora4::test {

using Lines = std::vector<std::string>;
using Microsoft::WRL::ComPtr;

// Appends a line for each call, for example "switch 3 on".
class Recorder final : public Callback {
  public:
    // Runs in each handler, after its line.
    std::function<void(const std::string& line)> reaction;
    int exceptions = 0;
    DWORD thread = 0;
    bool* pDestroyed = nullptr;

    ~Recorder() override {
        if (pDestroyed)
            *pDestroyed = true;
    }

    Lines Log() const {
        const std::lock_guard<std::mutex> hold(m_mutex);
        return m_log;
    }
    bool WaitForLine(const std::string& line, DWORD milliseconds = cBoundedWait) const {
        return PumpUntil(
            [&] {
                const Lines log = Log();
                return std::find(log.begin(), log.end(), line) != log.end();
            },
            nullptr, milliseconds);
    }

  private:
    void OnProfile(LONG profile) override { Note("profile " + std::to_string(profile)); }
    void OnEnable(bool isOn) override { Note(std::string("enable ") + (isOn ? "on" : "off")); }
    void OnProfileTable() override { Note("table"); }
    void OnSwitch(KORA4APITechnology technology, bool isOn) override {
        Note("switch " + std::to_string(technology) + (isOn ? " on" : " off"));
    }
    void OnValue(const Value& value) override {
        Note("value " + std::to_string(value.Technology()) + " " +
             FormatDecimal(static_cast<float>(value.Amount())));
    }
    void OnGraphicEq(const Bands& bands) override { Note(FormatGraphicEq(bands)); }
    void OnException() noexcept override { ++exceptions; }

    void Note(const std::string& line) {
        {
            const std::lock_guard<std::mutex> hold(m_mutex);
            thread = GetCurrentThreadId();
            m_log.push_back(line);
        }
        if (reaction)
            reaction(line);
    }

    mutable std::mutex m_mutex;
    Lines m_log;
};

class SdkTest : public testing::Test {
  protected:
    explicit SdkTest(ApartmentKind kind = ApartmentKind::eSingleThreaded) : m_apartment(kind) {}

    // An object on the registered library.
    static Api Opened() {
        Result<Api> api = Api::Open();
        EXPECT_EQ(S_OK, api.Code());
        return *std::move(api);
    }

    RawStore m_store;
    RegisteredLibrary m_registered;
    ApartmentGuard m_apartment;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SDK_SDK_FIXTURE_H

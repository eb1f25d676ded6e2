// SPDX-License-Identifier: MIT
// One API object on one damaged store: each of its 30 methods is called on whatever the
// store holds at that moment, and its result, what it hands out and what it writes are held
// against the independent reader.
#ifndef KORA4_TESTS_FAULTS_STORE_TRIAL_H
#define KORA4_TESTS_FAULTS_STORE_TRIAL_H

#include <wrl/client.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "faults/damage.h"
#include "faults/store_reader.h"
#include "kora4api.h"
#include "support/com_client.h"

namespace kora4::test {

// Calls an object on a damaged store and holds what it answers against the reader.
class StoreTrial {
  public:
    StoreTrial(StoreKeys& keys, Damage& damage) : m_keys(keys), m_damage(damage) {}

    // Calls Initialize, then all methods in random order, damaging the store in between.
    void Run(Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi);
    // A change that another program makes, on this store, is told.
    void RunNotification();

    // How often each outcome of a method was seen.
    static std::map<std::string, unsigned>& Outcomes();

  private:
    using Step = void (StoreTrial::*)();
    struct NamedStep {
        const char* name;
        Step step;
    };
    static const std::vector<NamedStep>& Steps();

    void DamageSome(unsigned count);
    void Note(const char* method, HRESULT hr);

    void CheckVersion();
    void CheckInitialize();
    void CheckRegister();
    void CheckUnregister();
    void CheckGetActiveProfile();
    void CheckSetActiveProfile();
    void CheckRevertActiveProfile();
    void CheckSetDemo();
    void CheckRevertFromDemo();
    void CheckForceRevert();
    void CheckGetPeriod();
    void CheckSetPeriod();
    void CheckLevels();
    void CheckEditorCommand();
    void CheckSelectorCommand();
    void CheckDemoCommand();
    void CheckGetEnable();
    void CheckSetEnable();
    void CheckToggleEnable();
    void CheckTable();
    void CheckRename();
    void CheckCreate();
    void CheckDelete();
    void CheckMask();
    void CheckGetSwitch();
    void CheckSetSwitch();
    void CheckGetValue();
    void CheckSetValue();
    void CheckSetEQ();
    void CheckGetEQ();

    using Values = std::vector<FieldValue>;
    void ExpectCommand(std::size_t index,
                       HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*method)(LPWSTR*));
    GraphicEQData ExpectedEQ();
    GraphicEQData SomeEQ();
    // The values of a technology as a writer of `profile` takes them over.
    Values ValuesOf(const Technology& technology, std::uint32_t profile);
    void ExpectStored(const Technology& technology, std::uint32_t profile, bool flag,
                      const Values& values);
    void ExpectRestored(std::uint32_t profile, bool enable);
    // The whole store; none in most calls, for it takes a while.
    using Snapshot = std::optional<std::map<std::wstring, StoredValue>>;
    Snapshot SometimesEverything();
    void ExpectUntouched(const Snapshot& before);

    StoreKeys& m_keys;
    Damage& m_damage;
    StoreReader m_reader{m_keys};
    Microsoft::WRL::ComPtr<IVeltoKORA4API> m_spApi;
    bool m_demo = false;  // this object entered a demo
    std::uint32_t m_mask = 0;
    StoredText m_commands[3];
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_STORE_TRIAL_H

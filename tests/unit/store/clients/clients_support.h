// SPDX-License-Identifier: MIT
// A store in memory with any number of clients on it, as the tests of the clients use it.
#ifndef KORA4_TESTS_UNIT_STORE_CLIENTS_CLIENTS_SUPPORT_H
#define KORA4_TESTS_UNIT_STORE_CLIENTS_CLIENTS_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "store/clients/ui_keys_client.h"
#include "support/memory_key_access.h"
#include "support/native_named_mutex.h"

namespace kora4 {

// Every access is made while the store's mutex is held.
class TestStore {
  public:
    TestStore() {
        m_access.m_onOperation = [](const std::string& entry) {
            EXPECT_TRUE(test::StoreMutex().IsHeld()) << entry;
        };
    }
    TestStore(const TestStore&) = delete;

    void PutUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value) {
        m_access.Put(keySet, key, value);
    }
    void PutText(KORA4KeySet keySet, const PropertyKey& key, const char16_t* text) {
        m_access.Put(keySet, key, std::u16string(text));
    }
    void PutSetting(std::uint32_t pid, std::uint32_t value) {
        PutUINT(eKeySetDynamic, pkey::Setting(pid), value);
    }
    std::uint32_t Setting(std::uint32_t pid) const {
        return m_access.NumberAt(eKeySetDynamic, pkey::Setting(pid)).value_or(0xDEAD);
    }
    std::uint32_t StaticSetting(std::uint32_t pid) const {
        return m_access.NumberAt(eKeySetStatic, pkey::Setting(pid)).value_or(0xDEAD);
    }
    std::uint32_t Profile() const { return Setting(pkey::cActivePresetPid); }
    std::uint32_t Enable() const { return Setting(pkey::cMasterEnablePid); }

    test::MemoryKeyAccess m_access;
};

// One client, and what its notification passes tell in the order of the API's callbacks.
class TestClient {
  public:
    explicit TestClient(TestStore& store) : m_client(&store.m_access) {}

    HRESULT Start() {
        const HRESULT hr = m_client.ObjInitialize();
        return result::Succeeded(hr) ? m_client.InitialKeysLoad() : hr;
    }

    KORA4UIKeysClient* operator->() { return &m_client; }

    // Something that a pass has found, and by what an own write overtakes it.
    struct Found {
        std::string text;
        OvertakenItems::Items item;
    };

    // In the order of the API's callbacks. For example "enable=0;", "profile=1;", "table;" or
    // "flag2=1;", "value2=..."; values of the graphic EQ are shown by their number of bands,
    // floats in thousandths.
    std::vector<Found> Analyse() {
        ChangeSet changes;
        EXPECT_EQ(result::cOk, m_client.AnalyseChanges(&changes));
        std::vector<Found> found;
        if (changes.enableChanged)
            found.push_back(
                {"enable=" + std::to_string(changes.enable) + ";", OvertakenItems::cEnable});
        if (changes.profileChanged)
            found.push_back(
                {"profile=" + std::to_string(changes.profile) + ";", OvertakenItems::cProfile});
        for (std::uint32_t t = eVolumeTech; t < eNGSurroundTech && !changes.profileChanged;
             ++t) {
            const std::string number = std::to_string(t);
            if (changes.onElseOffChanged[t])
                found.push_back(
                    {"flag" + number + "=" + std::to_string(changes.onElseOff[t]) + ";",
                     OvertakenItems::Switch(t)});
            if (changes.patchChanged[t])
                found.push_back({"value" + number + "=" + Value(changes, t) + ";",
                                 OvertakenItems::Value(t)});
        }
        if (changes.tableChanged)
            found.push_back({"table;", 0});
        return found;
    }

    // All of that, told at once.
    std::string Pass() {
        std::string told;
        for (const Found& found : Analyse())
            told += found.text;
        return told;
    }

  private:
    static std::string Value(const ChangeSet& changes, std::uint32_t technology) {
        if (technology == eStandardEQTech)
            return std::to_string(changes.graphicEQ.m_bands);
        const ApiPatchValue& value = changes.presetPatchValues[technology];
        EXPECT_EQ(APITechOf(static_cast<KORA4PresetTechnology>(technology)),
                  value.m_technology);
        if (technology == eVolumeTech || technology == eDynamicEQTech)
            return std::to_string(value.m_values.m_volumeSlider);
        return std::to_string(static_cast<int>(value.m_values.m_enhancementSlider * 1000));
    }

    KORA4UIKeysClient m_client;
};

}  // namespace kora4

#endif  // KORA4_TESTS_UNIT_STORE_CLIENTS_CLIENTS_SUPPORT_H

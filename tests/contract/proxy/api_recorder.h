// SPDX-License-Identifier: MIT
// Implementations of the public interfaces that note each call with its arguments and hand out
// known values, to be reached through a proxy.
#ifndef KORA4_TESTS_CONTRACT_PROXY_API_RECORDER_H
#define KORA4_TESTS_CONTRACT_PROXY_API_RECORDER_H

#include <wrl/client.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "contract/proxy/recorder.h"
#include "kora4api.h"

namespace kora4::test {

inline std::string Narrow(const wchar_t* text) {
    if (!text)
        return "null";
    std::string narrow;
    for (; *text; ++text)
        narrow += static_cast<char>(*text);
    return narrow;
}

inline LPWSTR TaskCopy(const wchar_t* text) {
    const size_t bytes = (wcslen(text) + 1) * sizeof(wchar_t);
    auto* copy = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
    std::memcpy(copy, text, bytes);
    return copy;
}

inline std::string Bits(const void* value) {
    ULONG bits;
    std::memcpy(&bits, value, sizeof bits);
    return std::to_string(bits);
}

inline std::string Text(const KORA4PatchValueUnion& value) {
    return std::to_string(value.m_technology) + ":" + Bits(&value.m_values);
}

inline std::string Text(const GraphicEQData& data) {
    std::ostringstream text;
    text << data.m_bands;
    for (float freq : data.m_freq)
        text << "," << freq;
    for (float gain : data.m_gain)
        text << "," << gain;
    return text.str();
}

// A value whose four bytes differ from case to case.
inline KORA4PatchValueUnion SampleValue(KORA4APITechnology technology, ULONG seed) {
    return {technology, {seed + static_cast<ULONG>(technology)}};
}

// Every entry differs from every other, and from those of another `seed`.
inline GraphicEQData SampleEQ(ULONG seed) {
    GraphicEQData data;
    data.m_bands = seed;
    for (ULONG i = 0; i < KORA4_GRAPHIC_EQ_MAX_BANDS; ++i) {
        data.m_freq[i] = static_cast<float>(1000 * seed + i);
        data.m_gain[i] = static_cast<float>(2000 * seed + i);
    }
    return data;
}

// Records the calls of the public interface.
class ApiRecorder : public Recorder<IVeltoKORA4API> {
  public:
    // What the methods hand out.
    LONG m_long = -7;
    ULONG m_unsigned = 0xFEDCBA98;
    BOOL m_bool = TRUE;
    std::optional<std::wstring> m_command;
    std::vector<std::optional<std::wstring>> m_names{9};
    KORA4PatchValueUnion m_patch{};
    GraphicEQData m_eq = SampleEQ(3);
    bool m_leaveNames = false;
    Microsoft::WRL::ComPtr<IVeltoKORA4APICallback> m_callback;

    STDMETHODIMP GetVeltoKORA4Version(ULONG* v3, ULONG* v2, ULONG* v1, ULONG* v0) override {
        *v3 = 7;
        *v2 = 0x80000002;
        *v1 = 7000;
        *v0 = 4;
        return Saw(3, "GetVeltoKORA4Version");
    }
    STDMETHODIMP Initialize() override { return Saw(4, "Initialize"); }
    STDMETHODIMP RegisterChangeNotifications(IVeltoKORA4APICallback* callback) override {
        m_callback = callback;
        return Saw(5, "RegisterChangeNotifications", callback ? "set" : "null");
    }
    STDMETHODIMP UnregisterChangeNotifications() override {
        m_callback.Reset();
        return Saw(6, "UnregisterChangeNotifications");
    }
    STDMETHODIMP GetActiveProfile(LONG* id) override {
        *id = m_long;
        return Saw(7, "GetActiveProfile");
    }
    STDMETHODIMP SetActiveProfile(LONG id) override { return Saw(8, "SetActiveProfile", id); }
    STDMETHODIMP RevertActiveProfile() override { return Saw(9, "RevertActiveProfile"); }
    STDMETHODIMP SetDemoProfileAndEnable(LONG id, BOOL enable) override {
        return Saw(10, "SetDemoProfileAndEnable", id, enable);
    }
    STDMETHODIMP RevertFromDemoMode() override { return Saw(11, "RevertFromDemoMode"); }
    STDMETHODIMP ForceRevertFromDemoMode() override {
        return Saw(12, "ForceRevertFromDemoMode");
    }
    STDMETHODIMP GetVisualizationSamplingPeriod(ULONG* period) override {
        *period = m_unsigned;
        return Saw(13, "GetVisualizationSamplingPeriod");
    }
    STDMETHODIMP SetVisualizationSamplingPeriod(ULONG period) override {
        return Saw(14, "SetVisualizationSamplingPeriod", period);
    }
    STDMETHODIMP GetVisualizationData(float gain[KORA4_VISUALIZATION_BANDS],
                                      float excitation[KORA4_VISUALIZATION_BANDS]) override {
        std::ostringstream in;
        for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i)
            in << gain[i] << "/" << excitation[i] << ",";
        for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i) {
            gain[i] = -static_cast<float>(i) - 0.5f;
            excitation[i] = static_cast<float>(i) + 100.25f;
        }
        return Saw(15, "GetVisualizationData", in.str());
    }
    STDMETHODIMP GetVeltoProfileEditorCommand(LPWSTR* text) override {
        *text = m_command ? TaskCopy(m_command->c_str()) : nullptr;
        return Saw(16, "GetVeltoProfileEditorCommand");
    }
    STDMETHODIMP GetVeltoProfileSelectorCommand(LPWSTR* text) override {
        *text = m_command ? TaskCopy(m_command->c_str()) : nullptr;
        return Saw(17, "GetVeltoProfileSelectorCommand");
    }
    STDMETHODIMP GetVeltoDemoAppCommand(LPWSTR* text) override {
        *text = m_command ? TaskCopy(m_command->c_str()) : nullptr;
        return Saw(18, "GetVeltoDemoAppCommand");
    }
    STDMETHODIMP GetVeltoEnable(BOOL* enable) override {
        *enable = m_bool;
        return Saw(19, "GetVeltoEnable");
    }
    STDMETHODIMP SetVeltoEnable(BOOL enable) override {
        return Saw(20, "SetVeltoEnable", enable);
    }
    STDMETHODIMP ToggleVeltoEnable(BOOL* enable) override {
        *enable = m_bool;
        return Saw(21, "ToggleVeltoEnable");
    }
    STDMETHODIMP GetProfileTable(LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES]) override {
        std::string in;
        for (int i = 0; i < KORA4_PROFILE_TABLE_ENTRIES; ++i) {
            in += Narrow(names[i]) + ",";
            const auto& name = m_names[static_cast<size_t>(i)];
            if (!m_leaveNames)
                names[i] = name ? TaskCopy(name->c_str()) : nullptr;
        }
        return Saw(22, "GetProfileTable", in);
    }
    STDMETHODIMP SetCustomProfileName(LONG id, LPCWSTR name) override {
        return Saw(23, "SetCustomProfileName", id, Narrow(name));
    }
    STDMETHODIMP CreateCustomProfile(LONG id, LPCWSTR name) override {
        return Saw(24, "CreateCustomProfile", id, Narrow(name));
    }
    STDMETHODIMP DeleteCustomProfile(LONG id) override {
        return Saw(25, "DeleteCustomProfile", id);
    }
    STDMETHODIMP GetTechnologyMasterEnables(ULONG* mask) override {
        *mask = m_unsigned;
        return Saw(26, "GetTechnologyMasterEnables");
    }
    STDMETHODIMP GetTechnologyOnElseOff(KORA4APITechnology technology, BOOL* on) override {
        *on = m_bool;
        return Saw(27, "GetTechnologyOnElseOff", technology);
    }
    STDMETHODIMP SetTechnologyOnElseOff(KORA4APITechnology technology, BOOL on) override {
        return Saw(28, "SetTechnologyOnElseOff", technology, on);
    }
    STDMETHODIMP GetSimplePatchValue(KORA4PatchValueUnion* value) override {
        const HRESULT hr = Saw(29, "GetSimplePatchValue", Text(*value));
        value->m_values = m_patch.m_values;
        return hr;
    }
    STDMETHODIMP SetSimplePatchValue(KORA4PatchValueUnion* value) override {
        return Saw(30, "SetSimplePatchValue", Text(*value));
    }
    STDMETHODIMP SetGraphicEQData(GraphicEQData* data) override {
        return Saw(31, "SetGraphicEQData", Text(*data));
    }
    STDMETHODIMP GetGraphicEQData(GraphicEQData* data) override {
        const HRESULT hr = Saw(32, "GetGraphicEQData", Text(*data));
        *data = m_eq;
        return hr;
    }

  private:
    const char* InterfaceName() const override { return "IVeltoKORA4API"; }
};

// Records the calls of a client's callback.
class CallbackRecorder : public Recorder<IVeltoKORA4APICallback> {
  public:
    STDMETHODIMP OnActiveProfileChange(LONG id) override {
        return Saw(3, "OnActiveProfileChange", id);
    }
    STDMETHODIMP OnEnableStateChange(BOOL on) override {
        return Saw(4, "OnEnableStateChange", on);
    }
    STDMETHODIMP OnCustomProfileTableChange() override {
        return Saw(5, "OnCustomProfileTableChange");
    }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology, BOOL on) override {
        return Saw(6, "OnTechnologyOnElseOffChange", technology, on);
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* value) override {
        return Saw(7, "OnSimplePatchValueChange", Text(*value));
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* data) override {
        return Saw(8, "OnGraphicEQChange", Text(*data));
    }

  private:
    const char* InterfaceName() const override { return "IVeltoKORA4APICallback"; }
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_PROXY_API_RECORDER_H

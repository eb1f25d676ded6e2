// SPDX-License-Identifier: MIT
// changer: changes settings, one command a line of its input:
//
//   profile NAME                   Movie, Music, Games, P1 to P6
//   revert                         the active preset profile gets its factory values
//   demo NAME on|off               enters the demo of a preset profile
//   leave-demo                     leaves the demo that was entered
//   create PROFILE NAME            a custom profile, P1 to P6
//   rename PROFILE NAME
//   delete PROFILE
//   enable on|off                  the master enable
//   switch TECHNOLOGY: on|off      for example "switch volume leveler: off"
//   value TECHNOLOGY: NUMBER
//   eq GAIN...                     the gains of the graphic EQ's bands, dB
//
// It answers with what became different by the command, and with its result:
//
//   TIME|changed|SETTING|FROM|TO   TIME is when the command was begun
//   TIME|result|HRESULT
//
// One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++20 -static -I../include changer.cpp sample_client.cpp -o changer.exe -L../lib -lkora4_sdk_guids -lole32 -luuid
#include <cstdio>
#include <iostream>
#include <iterator>
#include <sstream>

#include "sample_client.h"

namespace {

// The rest of a command's line after its verb, taken apart piece by piece.
class Arguments {
  public:
    explicit Arguments(const std::string& text) : m_stream(text) {}

    std::string Word() {
        std::string word;
        m_stream >> word;
        return word;
    }
    std::string UpTo(char end) {
        std::string text;
        std::getline(m_stream >> std::ws, text, end);
        return text;
    }
    std::string Rest() { return UpTo('\n'); }
    bool Switch() { return Word() == "on"; }
    bool Number(float& number) { return static_cast<bool>(m_stream >> number); }

  private:
    std::istringstream m_stream;
};

LONG Profile(Arguments& arguments) {
    LONG profile = -1;
    sample::FindProfile(arguments.Word(), profile);
    return profile;
}

KORA4APITechnology Technology(Arguments& arguments) {
    KORA4APITechnology technology = eNumberKORA4APITechnologies;
    sample::FindTechnology(arguments.UpTo(':'), technology);
    return technology;
}

HRESULT EnterDemo(IVeltoKORA4API& api, Arguments& arguments) {
    LONG demo = -1;
    sample::FindProfile("demo of " + arguments.Word(), demo);
    return api.SetDemoProfileAndEnable(demo, arguments.Switch());
}

HRESULT NameProfile(IVeltoKORA4API& api, Arguments& arguments,
                    HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*method)(LONG, LPCWSTR)) {
    const LONG profile = Profile(arguments);
    return (api.*method)(profile, sample::Widen(arguments.Rest()).c_str());
}

HRESULT SetSwitch(IVeltoKORA4API& api, Arguments& arguments) {
    const KORA4APITechnology technology = Technology(arguments);
    return api.SetTechnologyOnElseOff(technology, arguments.Switch());
}

HRESULT SetValue(IVeltoKORA4API& api, Arguments& arguments) {
    KORA4PatchValueUnion value{};
    value.m_technology = Technology(arguments);
    float number = 0;
    if (!arguments.Number(number)) {
        return E_INVALIDARG;
    }
    switch (value.m_technology) {
        case eVolumeLeveler:
            value.m_values.m_volumeSlider = static_cast<ULONG>(number);
            break;
        case eIntelligentEQ:
            value.m_values.m_dynamicEQPatchIndex = static_cast<ULONG>(number);
            break;
        case eDialogEnhancer:
            value.m_values.m_enhancementSlider = number;
            break;
        case eVirtualizerHP:
            value.m_values.m_headphoneVirtualizerSlider = number;
            break;
        default:
            value.m_values.m_speakerVirtualizerSlider = number;
            break;
    }
    return api.SetSimplePatchValue(&value);
}

HRESULT SetCurve(IVeltoKORA4API& api, Arguments& arguments) {
    GraphicEQData curve{};
    HRESULT hr = api.GetGraphicEQData(&curve);
    ULONG band = 0;
    for (float gain = 0; band < std::size(curve.m_gain) && arguments.Number(gain); ++band) {
        curve.m_gain[band] = gain;
    }
    return SUCCEEDED(hr) ? api.SetGraphicEQData(&curve) : hr;
}

HRESULT Run(IVeltoKORA4API& api, const std::string& verb, Arguments& arguments) {
    if (verb == "profile") {
        return api.SetActiveProfile(Profile(arguments));
    }
    if (verb == "revert") {
        return api.RevertActiveProfile();
    }
    if (verb == "demo") {
        return EnterDemo(api, arguments);
    }
    if (verb == "leave-demo") {
        return api.RevertFromDemoMode();
    }
    if (verb == "create") {
        return NameProfile(api, arguments, &IVeltoKORA4API::CreateCustomProfile);
    }
    if (verb == "rename") {
        return NameProfile(api, arguments, &IVeltoKORA4API::SetCustomProfileName);
    }
    if (verb == "delete") {
        return api.DeleteCustomProfile(Profile(arguments));
    }
    if (verb == "enable") {
        return api.SetVeltoEnable(arguments.Switch());
    }
    if (verb == "switch") {
        return SetSwitch(api, arguments);
    }
    if (verb == "value") {
        return SetValue(api, arguments);
    }
    return verb == "eq" ? SetCurve(api, arguments) : E_NOTIMPL;
}

// With another profile every value is another one; clients are told of the profile alone.
void ReportChanges(long long when, const sample::Settings& before, sample::Settings after) {
    const auto same = [&](const std::string& name) {
        const auto old = before.find(name);
        return old != before.end() && old->second == after[name];
    };
    const bool switched = !same(sample::cActiveProfile);
    for (const auto& [name, value] : sample::Settings(after)) {
        const bool ofNoProfile = name == sample::cActiveProfile || name == sample::cEnable ||
                                 name.starts_with("custom profile");
        if (same(name) || (switched && !ofNoProfile)) {
            continue;
        }
        const auto old = before.find(name);
        sample::Report(
            when, "changed",
            name + "|" + (old == before.end() ? "unknown" : old->second) + "|" + value);
    }
}

}  // namespace

int main() {
    const sample::Apartment apartment;
    Microsoft::WRL::ComPtr<IVeltoKORA4API> api;
    HRESULT hr = FAILED(apartment.Result()) ? apartment.Result() : sample::CreateApi(api);
    if (FAILED(hr)) {
        std::fprintf(stderr,
                     "changer: the library cannot be used (is it registered?): 0x%08lx\n",
                     static_cast<unsigned long>(hr));
        return 1;
    }
    sample::Report(sample::Now(), "ready", std::to_string(GetCurrentProcessId()));
    for (std::string line; std::getline(std::cin, line);) {
        Arguments arguments(line);
        const std::string verb = arguments.Word();
        const sample::Settings before = sample::ReadSettings(*api.Get());
        const long long when = sample::Now();
        hr = Run(*api.Get(), verb, arguments);
        ReportChanges(when, before, sample::ReadSettings(*api.Get()));
        char result[16];
        std::snprintf(result, sizeof result, "0x%08lx", static_cast<unsigned long>(hr));
        sample::Report(sample::Now(), "result", result);
    }
    return 0;
}

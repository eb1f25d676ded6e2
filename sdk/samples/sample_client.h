// SPDX-License-Identifier: MIT
// What several samples need: the API object in this thread's apartment, and settings as words.
#ifndef KORA4_SAMPLES_SAMPLE_CLIENT_H
#define KORA4_SAMPLES_SAMPLE_CLIENT_H

#include <kora4api.h>
#include <wrl/client.h>

#include <map>
#include <string>

namespace sample {

// A single-threaded apartment for as long as this lives.
class Apartment {
  public:
    Apartment() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~Apartment() {
        if (SUCCEEDED(m_result)) {
            CoUninitialize();
        }
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    HRESULT Result() const { return m_result; }

  private:
    HRESULT m_result;
};

// Creates the registered class and initialises the object.
HRESULT CreateApi(Microsoft::WRL::ComPtr<IVeltoKORA4API>& api);

// Settings by name, in words; only those that the object can tell.
using Settings = std::map<std::string, std::string>;
Settings ReadSettings(IVeltoKORA4API& api);

// The settings that name the custom profiles only.
Settings ReadProfileTable(IVeltoKORA4API& api);

// Names and values, as they stand in Settings.
inline constexpr const char* cActiveProfile = "active profile";
inline constexpr const char* cEnable = "audio processing";
std::string ProfileWord(LONG profile);
std::string SwitchWord(BOOL onElseOff);
std::string SwitchName(KORA4APITechnology technology);
std::string ValueName(KORA4APITechnology technology);
std::string ValueWord(const KORA4PatchValueUnion& value);
std::string CurveWord(const GraphicEQData& curve);

// Levels of all display bands in dB: the gains, a slash, the excitations. And the gains as
// bars, one character a band: a full block is 0 dB, a blank is -60 dB or less.
std::string LevelsWord(const float* gains, const float* excitations);
std::string LevelsBars(const float* gains);

// The opposite direction; false when there is no such profile or technology.
bool FindProfile(const std::string& word, LONG& profile);
bool FindTechnology(const std::string& word, KORA4APITechnology& technology);

// UTF-8 to UTF-16 and back.
std::wstring Widen(const std::string& text);
std::string Narrow(const wchar_t* text);

// Microseconds since 1970, the same clock in every process.
long long Now();

// One line of output: the time, what it is, and its fields, separated by bars.
void Report(long long when, const std::string& kind, const std::string& fields);

}  // namespace sample

#endif  // KORA4_SAMPLES_SAMPLE_CLIENT_H

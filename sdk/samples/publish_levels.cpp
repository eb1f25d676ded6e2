// SPDX-License-Identifier: MIT
// publish_levels: what an engine does for the level displays: it publishes a picture of its
// levels every sampling period, here a hill that runs over the bands, until Enter is pressed or
// the input ends. An engine is no client of the library: it knows the settings store, which
// docs/store-schema.md describes value by value. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++17 -static -I../include publish_levels.cpp -o publish_levels.exe
#include <kora4api_constants.h>
#include <windows.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <thread>

namespace {

constexpr wchar_t cStaticKeys[] = L"SOFTWARE\\Velto\\KORA4\\StaticKeys";
constexpr wchar_t cLevels[] = L"{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},4";
constexpr wchar_t cSamplingPeriod[] = L"{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},3";

// The stored levels of one processing object that has all bands, in dB.
struct Picture {
    std::uint32_t reserved = 0;
    std::uint32_t records = 1;
    std::uint8_t header[16] = {};
    std::uint32_t bands = KORA4_VISUALIZATION_BANDS;
    std::uint32_t reservedOfRecord = 0;
    float gains[KORA4_VISUALIZATION_BANDS];
    float excitations[KORA4_VISUALIZATION_BANDS];  // displays add KORA4_EXCITATION_OFFSET
};
static_assert(sizeof(Picture) == 32 + 2 * 4 * KORA4_VISUALIZATION_BANDS, "no gaps");

Picture HillAt(float top) {
    Picture picture;
    for (int band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        const float distance = (static_cast<float>(band) - top) / 3;
        picture.gains[band] = -60 + 54 * std::exp(-distance * distance);
        picture.excitations[band] = picture.gains[band] - 20;
    }
    return picture;
}

// Milliseconds; a display reads the levels as often.
DWORD SamplingPeriod(HKEY key) {
    DWORD period = KORA4_SAMPLING_PERIOD_DEFAULT;
    DWORD size = sizeof period;
    RegGetValueW(key, nullptr, cSamplingPeriod, RRF_RT_REG_DWORD, nullptr, &period, &size);
    return period < 10 ? 10 : period;
}

}  // namespace

int main() {
    HKEY key = nullptr;
    LSTATUS result = RegOpenKeyExW(HKEY_LOCAL_MACHINE, cStaticKeys, 0,
                                   KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_WOW64_64KEY, &key);
    if (result != ERROR_SUCCESS) {
        std::fprintf(stderr, "publish_levels: the store cannot be opened: %ld\n", result);
        return 1;
    }
    static std::atomic<bool> s_isOver{false};
    std::thread([] {
        std::getchar();
        s_isOver = true;
    }).detach();
    unsigned pictures = 0;
    for (; !s_isOver && result == ERROR_SUCCESS; ++pictures) {
        const Picture picture =
            HillAt(9.5f - 9.5f * std::cos(static_cast<float>(pictures) / 8));
        result = RegSetValueExW(key, cLevels, 0, REG_BINARY,
                                reinterpret_cast<const BYTE*>(&picture), sizeof picture);
        Sleep(SamplingPeriod(key));
    }
    // Nobody else does: without this, displays show the last picture for ever.
    RegDeleteValueW(key, cLevels);
    RegCloseKey(key);
    std::printf("%u pictures published\n", pictures);
    return result == ERROR_SUCCESS ? 0 : 1;
}

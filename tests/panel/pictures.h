// SPDX-License-Identifier: MIT
// What stands on the display.
#ifndef KORA4_TESTS_PANEL_PICTURES_H
#define KORA4_TESTS_PANEL_PICTURES_H

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kora4::test {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0x00RRGGBB, the upper row first

    std::uint32_t At(int x, int y) const {
        return pixels[static_cast<std::size_t>(y * width + x)];
    }
    // How many different colours there are, counted up to 100.
    std::size_t Colors() const;
    friend bool operator==(const Picture&, const Picture&) = default;
};

// A part of the display, in pixels.
Picture TakePicture(const RECT& place);
// A window of any process, as it stands on the display.
Picture TakePicture(HWND window);
// Waits until everything has been drawn: two pictures with a pause between them are equal.
Picture StillPicture(HWND window);
// As a file of the kind .bmp.
void SavePicture(const Picture& picture, const std::wstring& path);

}  // namespace kora4::test

#endif  // KORA4_TESTS_PANEL_PICTURES_H

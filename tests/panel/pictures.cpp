// SPDX-License-Identifier: MIT
// Reading the display.
#include "panel/pictures.h"

#include <gtest/gtest.h>

#include <set>

namespace kora4::test {

std::size_t Picture::Colors() const {
    std::set<std::uint32_t> colors;
    for (std::size_t i = 0; i < pixels.size() && colors.size() < 100; ++i)
        colors.insert(pixels[i]);
    return colors.size();
}

Picture TakePicture(const RECT& place) {
    Picture picture;
    picture.width = static_cast<int>(place.right - place.left);
    picture.height = static_cast<int>(place.bottom - place.top);
    picture.pixels.resize(static_cast<std::size_t>(picture.width * picture.height));
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = picture.width;
    info.bmiHeader.biHeight = -picture.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const HDC screen = GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, picture.width, picture.height);
    const HGDIOBJ before = SelectObject(dc, bitmap);
    EXPECT_TRUE(BitBlt(dc, 0, 0, picture.width, picture.height, screen, place.left, place.top,
                       SRCCOPY));
    SelectObject(dc, before);
    EXPECT_EQ(picture.height, GetDIBits(dc, bitmap, 0, static_cast<UINT>(picture.height),
                                        picture.pixels.data(), &info, DIB_RGB_COLORS));
    DeleteObject(bitmap);
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
    for (std::uint32_t& pixel : picture.pixels)
        pixel &= 0xFFFFFF;
    return picture;
}

Picture TakePicture(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return TakePicture(place);
}

Picture StillPicture(HWND window) {
    Picture last;
    Picture now = TakePicture(window);
    for (int i = 0; i < 50 && !(now == last); ++i) {
        Sleep(100);
        last = std::move(now);
        now = TakePicture(window);
    }
    return now;
}

void SavePicture(const Picture& picture, const std::wstring& path) {
    const auto size = static_cast<DWORD>(picture.pixels.size() * sizeof picture.pixels[0]);
    BITMAPFILEHEADER file{};
    BITMAPINFOHEADER info{};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof file + sizeof info;
    file.bfSize = file.bfOffBits + size;
    info.biSize = sizeof info;
    info.biWidth = picture.width;
    info.biHeight = -picture.height;
    info.biPlanes = 1;
    info.biBitCount = 32;
    const HANDLE out =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, out);
    DWORD written = 0;
    WriteFile(out, &file, sizeof file, &written, nullptr);
    WriteFile(out, &info, sizeof info, &written, nullptr);
    EXPECT_TRUE(WriteFile(out, picture.pixels.data(), size, &written, nullptr));
    CloseHandle(out);
}

}  // namespace kora4::test

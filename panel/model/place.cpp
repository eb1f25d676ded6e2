// SPDX-License-Identifier: MIT
// The window's place to text and back.
#include "panel/model/place.h"

#include <algorithm>
#include <charconv>

namespace panel {

namespace {

int Scaled(int length, int from, int to) {
    return static_cast<int>((static_cast<long long>(length) * to + from / 2) / from);
}

}  // namespace

std::string PlaceText(const Area& window, const Area& workArea, int dpi) {
    const auto plain = [dpi](int length) {
        return std::to_string(Scaled(length, dpi, cPlainDpi));
    };
    return plain(window.left - workArea.left) + ' ' + plain(window.top - workArea.top) + ' ' +
           plain(window.Width()) + ' ' + plain(window.Height());
}

std::optional<Area> PlaceOf(std::string_view text, const Area& workArea, int dpi, Point least) {
    constexpr int cFarthest = 100000;
    int numbers[4] = {};
    for (int& number : numbers) {
        while (!text.empty() && text.front() == ' ')
            text.remove_prefix(1);
        const std::from_chars_result result =
            std::from_chars(text.data(), text.data() + text.size(), number);
        if (result.ec != std::errc() || number < -cFarthest || number > cFarthest)
            return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
        number = Scaled(number, cPlainDpi, dpi);
    }
    if (!text.empty() || numbers[2] <= 0 || numbers[3] <= 0)
        return std::nullopt;
    const int left = workArea.left + numbers[0];
    const int top = workArea.top + numbers[1];
    return MovedInto({left, top, left + numbers[2], top + numbers[3]}, workArea, least);
}

Area MovedInto(Area window, const Area& workArea, Point least) {
    const int width = std::max(std::min(window.Width(), workArea.Width()), least.x);
    const int height = std::max(std::min(window.Height(), workArea.Height()), least.y);
    const int left = std::max(std::min(window.left, workArea.right - width), workArea.left);
    const int top = std::max(std::min(window.top, workArea.bottom - height), workArea.top);
    return {left, top, left + width, top + height};
}

}  // namespace panel

// SPDX-License-Identifier: MIT
// The functions of the platform that readers of the tools call: conversions between UTF-8 and
// UTF-16, whose units are held by wide characters of 32 bits here and in which malformed parts
// become U+FFFD; and one that knows no message.
#include <windows.h>

#include <cstdint>

namespace {

// Takes what one character or a malformed part consists of.
std::uint32_t NextCharacter(const unsigned char*& p, const unsigned char* end) {
    const std::uint32_t first = *p++;
    if (first < 0x80)
        return first;
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4)
        return 0xFFFD;
    std::uint32_t character = first & (0x3Fu >> more);
    for (int i = 0; i < more; ++i) {
        // The second byte has a smaller range where the first one alone would allow too much.
        const unsigned lowest = i > 0           ? 0x80
                                : first == 0xE0 ? 0xA0
                                : first == 0xF0 ? 0x90
                                                : 0x80;
        const unsigned highest = i > 0           ? 0xBF
                                 : first == 0xED ? 0x9F
                                 : first == 0xF4 ? 0x8F
                                                 : 0xBF;
        if (p == end || *p < lowest || *p > highest)
            return 0xFFFD;
        character = character << 6 | (*p++ & 0x3Fu);
    }
    return character;
}

class Units {
  public:
    Units(void* p, int room) : m_p(p), m_room(room) {}

    template <typename Unit>
    void Put(std::uint32_t unit) {
        if (m_count < m_room)
            static_cast<Unit*>(m_p)[m_count] = static_cast<Unit>(unit);
        ++m_count;
    }
    int Count() const { return m_room != 0 && m_count > m_room ? 0 : m_count; }

  private:
    void* m_p;
    int m_room;
    int m_count = 0;
};

}  // namespace

extern "C" int WINAPI MultiByteToWideChar(UINT, DWORD, LPCSTR text, INT length, LPWSTR wide,
                                          INT room) {
    Units units(wide, room);
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    for (const unsigned char* const end = p + length; p != end;) {
        const std::uint32_t c = NextCharacter(p, end);
        if (c >= 0x10000)
            units.Put<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
        units.Put<wchar_t>(c >= 0x10000 ? 0xDC00 + (c & 0x3FF) : c);
    }
    return units.Count();
}

extern "C" int WINAPI WideCharToMultiByte(UINT, DWORD, LPCWSTR text, INT length, LPSTR narrow,
                                          INT room, LPCSTR, LPBOOL) {
    Units units(narrow, room);
    for (int i = 0; i < length; ++i) {
        std::uint32_t c = static_cast<std::uint32_t>(text[i]);
        const bool isPair = c >= 0xD800 && c < 0xDC00 && i + 1 < length &&
                            (static_cast<std::uint32_t>(text[i + 1]) & 0xFC00) == 0xDC00;
        if (isPair)
            c = 0x10000 + ((c & 0x3FF) << 10 | (static_cast<std::uint32_t>(text[++i]) & 0x3FF));
        else if ((c & 0xFFFFF800) == 0xD800)
            c = 0xFFFD;
        const int more = c >= 0x10000 ? 3 : c >= 0x800 ? 2 : c >= 0x80 ? 1 : 0;
        constexpr std::uint32_t cFirst[] = {0, 0xC0, 0xE0, 0xF0};
        units.Put<char>(cFirst[more] | c >> (6 * more));
        for (int j = more - 1; j >= 0; --j)
            units.Put<char>(0x80 | (c >> (6 * j) & 0x3F));
    }
    return units.Count();
}

extern "C" DWORD WINAPI FormatMessageW(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD,
                                       __ms_va_list*) {
    return 0;
}

// Nobody else has the object.
extern "C" HANDLE WINAPI CreateEventW(SECURITY_ATTRIBUTES*, BOOL, BOOL, LPCWSTR) {
    return nullptr;
}

extern "C" DWORD WINAPI GetLastError() {
    return ERROR_SUCCESS;
}

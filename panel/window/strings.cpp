// SPDX-License-Identifier: MIT
// Texts from the resources.
#include "panel/window/strings.h"

namespace panel {

Language Strings::OfUser() {
    return PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_GERMAN ? Language::eGerman
                                                                    : Language::eEnglish;
}

bool Strings::IsUserRightToLeft() {
    DWORD layout = 0;
    const LCID locale = MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT);
    GetLocaleInfoW(locale, LOCALE_IREADINGLAYOUT | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<LPWSTR>(&layout), sizeof layout / sizeof(wchar_t));
    return layout == 1;
}

// Not LoadString: it takes the language of the thread, which another program could not choose.
std::wstring Strings::Text(UINT id) const {
    constexpr UINT cInBlock = 16;
    const LANGID language = m_language == Language::eGerman
                                ? MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN)
                                : MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
    const HMODULE module = GetModuleHandleW(nullptr);
    const HRSRC found =
        FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(id / cInBlock + 1), language);
    const HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
    const auto* pText = loaded ? static_cast<const WCHAR*>(LockResource(loaded)) : nullptr;
    if (!pText)
        return {};
    // Sixteen texts one after the other, each with its length in front.
    for (UINT i = 0; i < id % cInBlock; ++i)
        pText += 1 + *pText;
    return std::wstring(pText + 1, *pText);
}

std::wstring Strings::Format(UINT id, std::wstring_view first, std::wstring_view second) const {
    std::wstring result;
    const std::wstring text = Text(id);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPlace = text[i] == L'%' && i + 1 < text.size() &&
                             (text[i + 1] == L'1' || text[i + 1] == L'2');
        if (isPlace)
            result += text[++i] == L'1' ? first : second;
        else
            result += text[i];
    }
    return result;
}

std::wstring Strings::Plain(UINT id) const {
    std::wstring text = Text(id);
    std::erase(text, L'&');
    while (!text.empty() && (text.back() == L':' || text.back() == L'\u2026'))
        text.pop_back();
    return text;
}

std::wstring Strings::Number(std::string_view number) const {
    std::wstring text = Widen(number);
    const std::wstring sign = Text(IDS_DECIMAL_SIGN);
    if (const std::size_t point = text.find(L'.'); point != std::wstring::npos)
        text.replace(point, 1, sign);
    return text;
}

std::wstring Strings::Marked(std::wstring_view name) {
    std::wstring text;
    for (const wchar_t letter : name)
        text.append(letter == L'&' ? 2 : 1, letter);
    return text;
}

std::wstring Widen(std::string_view utf8) {
    const int size = static_cast<int>(utf8.size());
    std::wstring text(utf8.size(), L'\0');
    text.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), size)));
    return text;
}

std::string Narrow(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    std::string utf8(text.size() * 3, '\0');
    utf8.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(),
                            static_cast<int>(utf8.size()), nullptr, nullptr)));
    return utf8;
}

}  // namespace panel

// SPDX-License-Identifier: MIT
// Names and meanings of results, from the published tables or else from the platform, and the
// exit code that each becomes.
#include "base/results.h"

#include <algorithm>
#include <iterator>

#include "base/failure.h"
#include "base/text.h"
#include "contract/results.h"

namespace kora4::tools {

namespace {

std::string MessageOf(DWORD code) {
    wchar_t text[1024] = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                   text, static_cast<DWORD>(std::size(text)), nullptr);
    std::string message = Narrow(text);
    std::replace_if(
        message.begin(), message.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    while (!message.empty() && (message.back() == ' ' || message.back() == '.'))
        message.pop_back();
    return message;
}

std::string Sentence(std::string_view doing, const char* outcome, HRESULT hr) {
    std::string sentence(doing);
    if (!sentence.empty() && sentence[0] >= 'a' && sentence[0] <= 'z')
        sentence[0] = static_cast<char>(sentence[0] - 'a' + 'A');
    return sentence + outcome + InWords(hr) + ".";
}

ExitCode ExitCodeOf(HRESULT hr) {
    if (SUCCEEDED(hr))
        return ExitCode::eRefused;
    return hr == APOERR_NOT_INITIALIZED ? ExitCode::eNotReady
           : hr == E_INVALIDARG         ? ExitCode::eBadInput
                                        : ExitCode::eFailed;
}

}  // namespace

std::string PlatformWords(std::uint32_t code) {
    const std::string message = MessageOf(code);
    const bool isWin32 = (code & 0xFFFF0000) == contract::cWin32Results;
    return message.empty() && isWin32 ? MessageOf(code & 0xFFFF) : message;
}

std::string InWords(HRESULT hr) {
    const auto code = static_cast<std::uint32_t>(hr);
    if (const contract::Result* const pResult = contract::FindResult(code))
        return std::string(pResult->name) + " (" + Hex(code) + "): " + pResult->meaning;
    const std::string words = PlatformWords(code);
    return words.empty() ? "an unknown result (" + Hex(code) + ")"
                         : words + " (" + Hex(code) + ")";
}

HRESULT Check(HRESULT hr, std::string_view doing) {
    const contract::Result* const pResult =
        contract::FindResult(static_cast<std::uint32_t>(hr));
    // An unpublished success code is still a success.
    if (hr == S_OK || hr == S_FALSE || (SUCCEEDED(hr) && !pResult))
        return hr;
    throw Failure(ExitCodeOf(hr),
                  Sentence(doing, SUCCEEDED(hr) ? " was refused: " : " failed: ", hr),
                  pResult ? pResult->next : "Run 'kora4ctl doctor' to find out why.");
}

}  // namespace kora4::tools

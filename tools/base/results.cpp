// SPDX-License-Identifier: MIT
// Names and meanings of results, from the published tables or else from the platform, and the
// exit code that each becomes.
#include "base/results.h"

#include "base/text.h"

namespace kora4::tools {

namespace {

std::string Sentence(std::string_view doing, const char* outcome, HRESULT hr) {
    std::string sentence(doing);
    if (!sentence.empty() && sentence[0] >= 'a' && sentence[0] <= 'z')
        sentence[0] = static_cast<char>(sentence[0] - 'a' + 'A');
    // Of the meanings of E_FAIL, the one that is left: the verbs look for all others first.
    const std::string cause =
        hr == E_FAIL ? "the settings store cannot be read or written (E_FAIL)" : InWords(hr);
    return sentence + outcome + cause + ".";
}

ExitCode ExitCodeOf(HRESULT hr) {
    if (SUCCEEDED(hr))
        return ExitCode::eRefused;
    return hr == APOERR_NOT_INITIALIZED ? ExitCode::eNotReady
           : hr == E_INVALIDARG         ? ExitCode::eBadInput
                                        : ExitCode::eFailed;
}

}  // namespace

std::string InWords(HRESULT hr) {
    const auto code = CodeOf(hr);
    if (const ResultCode* const pResult = FindResult(code))
        return std::string(pResult->name) + " (" + Hex(code) + "): " + pResult->meaning;
    const std::string words = PlatformWords(code);
    return words.empty() ? "an unknown result (" + Hex(code) + ")"
                         : words + " (" + Hex(code) + ")";
}

Failure RefusalOf(HRESULT hr, std::string_view doing) {
    const ResultCode* const pResult = FindResult(CodeOf(hr));
    return Failure(
        ExitCodeOf(hr), Sentence(doing, SUCCEEDED(hr) ? " was refused: " : " failed: ", hr),
        pResult && hr != E_FAIL ? pResult->next : "Run 'kora4ctl doctor' to find out why.");
}

HRESULT Check(HRESULT hr, std::string_view doing) {
    // An unpublished success code is still a success.
    if (hr == S_OK || hr == S_FALSE || (SUCCEEDED(hr) && !FindResult(CodeOf(hr))))
        return hr;
    throw RefusalOf(hr, doing);
}

}  // namespace kora4::tools

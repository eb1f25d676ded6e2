#include "common/results.h"

#include <kora4api.h>

#include "common/failure.h"
#include "common/text.h"

namespace kora4::tools {

std::string InWords(HRESULT hr) {
    wchar_t text[512] = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   static_cast<DWORD>(hr), 0, text, 512, nullptr);
    return Narrow(text) + " (" + Hex(static_cast<std::uint32_t>(hr)) + ")";
}

HRESULT Check(HRESULT hr, std::string_view doing) {
    if (hr == S_OK || hr == S_FALSE)
        return hr;
    const ExitCode code = SUCCEEDED(hr)                  ? ExitCode::eRefused
                          : hr == APOERR_NOT_INITIALIZED ? ExitCode::eNotReady
                          : hr == E_INVALIDARG           ? ExitCode::eBadInput
                                                         : ExitCode::eFailed;
    throw Failure(code, std::string(doing) + ": " + InWords(hr) + ".");
}

}  // namespace kora4::tools

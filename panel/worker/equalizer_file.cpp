// SPDX-License-Identifier: MIT
// Files with an equalizer.
#include "panel/worker/equalizer_file.h"

#include <algorithm>
#include <cmath>

#include "panel/model/plain_text.h"
#include "panel/worker/command.h"

namespace panel {

namespace {

// Bytes. No text of 40 bands is nearly as long.
constexpr DWORD cMost = 1 << 20;

class File {
  public:
    File(const std::wstring& path, DWORD access, DWORD creation)
        : m_file(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, creation,
                             FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~File() {
        if (m_file != INVALID_HANDLE_VALUE)
            CloseHandle(m_file);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    explicit operator bool() const { return m_file != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_file; }

  private:
    const HANDLE m_file;
};

FileResult LastFailure() {
    return {HRESULT_FROM_WIN32(GetLastError()), {}};
}

FileResult Refused(const kora4::ParsedEqualizer& parsed) {
    return {E_INVALIDARG, std::to_string(parsed.line) + ": " + Excerpt(parsed.problem)};
}

FileResult ReadText(const std::wstring& path, std::string& text) {
    const File file(path, GENERIC_READ, OPEN_EXISTING);
    if (!file)
        return LastFailure();
    text.resize(cMost + 1);
    DWORD read = 0;
    if (!ReadFile(file.Get(), text.data(), cMost + 1, &read, nullptr))
        return LastFailure();
    text.resize(read);
    if (!IsPlainText(text))
        return {cNoText, {}};
    return {read > cMost ? cTooLong : S_OK, {}};
}

bool HaveFrequencies(const kora4::Bands& bands) {
    return !bands.empty() && std::all_of(bands.begin(), bands.end(), [](const auto& band) {
        return band.frequency > 0 && std::isfinite(band.frequency);
    });
}

}  // namespace

FileResult ImportEqualizer(const std::wstring& path, kora4::Bands& bands) {
    std::string text;
    FileResult result = ReadText(path, text);
    if (result.code != S_OK)
        return result;
    kora4::ParsedEqualizer parsed = kora4::ParseGraphicEq(text);
    if (!parsed)
        return Refused(parsed);
    bands = HaveFrequencies(bands) ? kora4::Resample(parsed.bands, std::move(bands))
                                   : std::move(parsed.bands);
    return {};
}

FileResult ExportEqualizer(const std::wstring& path, const kora4::Bands& bands) {
    const std::string text = kora4::FormatGraphicEq(bands) + "\n";
    if (const kora4::ParsedEqualizer parsed = kora4::ParseGraphicEq(text); !parsed)
        return Refused(parsed);
    const File file(path, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD written = 0;
    if (!file ||
        !WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
        return LastFailure();
    return {};
}

}  // namespace panel

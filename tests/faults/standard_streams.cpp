// SPDX-License-Identifier: MIT
// Temporary files in place of the standard streams.
#include "faults/standard_streams.h"

#include <cstdlib>

namespace kora4::test {
namespace {

constexpr DWORD cStreams[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};

void Empty(HANDLE file) {
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    SetEndOfFile(file);
}

}  // namespace

StandardStreams::StandardStreams() : m_in(MakeFile()), m_out(MakeFile()), m_err(MakeFile()) {
    const HANDLE files[] = {m_in.Get(), m_out.Get(), m_err.Get()};
    for (std::size_t i = 0; i < 3; ++i) {
        m_before[i] = GetStdHandle(cStreams[i]);
        SetStdHandle(cStreams[i], files[i]);
    }
}

StandardStreams::~StandardStreams() {
    for (std::size_t i = 0; i < 3; ++i)
        SetStdHandle(cStreams[i], m_before[i]);
}

UniqueHandle StandardStreams::MakeFile() {
    wchar_t folder[MAX_PATH];
    wchar_t path[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"kor", 0, path);
    const HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        std::abort();
    return UniqueHandle(file);
}

void StandardStreams::Begin(std::string_view input) {
    for (const UniqueHandle* pFile : {&m_in, &m_out, &m_err})
        Empty(pFile->Get());
    DWORD written = 0;
    WriteFile(m_in.Get(), input.data(), static_cast<DWORD>(input.size()), &written, nullptr);
    SetFilePointer(m_in.Get(), 0, nullptr, FILE_BEGIN);
}

std::string StandardStreams::ContentOf(HANDLE file) {
    std::string content(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr);
    content.resize(read);
    return content;
}

}  // namespace kora4::test

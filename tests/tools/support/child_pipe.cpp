// SPDX-License-Identifier: MIT
// Overlapped reads and writes on a named pipe, advanced whenever the test waits.
#include "tools/support/child_pipe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace kora4::test {
namespace {

std::wstring UniquePipeName() {
    static std::atomic<unsigned> s_number{0};
    return L"\\\\.\\pipe\\kora4-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++s_number);
}

UniqueHandle Checked(HANDLE handle) {
    if (handle != INVALID_HANDLE_VALUE)
        return UniqueHandle(handle);
    ADD_FAILURE() << "no pipe, error " << GetLastError();
    return {};
}

}  // namespace

ChildPipe::ChildPipe(Direction direction)
    : m_direction(direction), m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    const bool fromChild = direction == Direction::eFromChild;
    const std::wstring name = UniquePipeName();
    m_end = Checked(CreateNamedPipeW(
        name.c_str(),
        (fromChild ? PIPE_ACCESS_INBOUND : PIPE_ACCESS_OUTBOUND) | FILE_FLAG_OVERLAPPED,
        PIPE_TYPE_BYTE | PIPE_WAIT, 1, 65536, 65536, 0, nullptr));
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    m_childEnd = Checked(CreateFileW(name.c_str(), fromChild ? GENERIC_WRITE : GENERIC_READ, 0,
                                     &inheritable, OPEN_EXISTING, 0, nullptr));
}

void ChildPipe::Write(std::string_view text) {
    m_text += text;
    Advance();
}

void ChildPipe::CloseWhenWritten() {
    m_closeWhenWritten = true;
    Advance();
}

void ChildPipe::Advance() {
    while (m_end) {
        if (!m_isPending) {
            if (m_direction == Direction::eToChild && m_text.empty()) {
                if (m_closeWhenWritten)
                    Close();
                return;
            }
            Begin();
        }
        DWORD moved = 0;
        if (GetOverlappedResult(m_end.Get(), &m_overlapped, &moved, FALSE)) {
            m_isPending = false;
            Finish(moved);
        } else if (GetLastError() == ERROR_IO_INCOMPLETE) {
            return;
        } else {
            m_isPending = false;
            Close();
        }
    }
}

void ChildPipe::Begin() {
    m_overlapped = {};
    m_overlapped.hEvent = m_event.Get();
    m_isPending = true;
    BOOL done = FALSE;
    if (m_direction == Direction::eFromChild) {
        done = ReadFile(m_end.Get(), m_buffer, sizeof m_buffer, nullptr, &m_overlapped);
    } else {
        const std::size_t size = std::min(m_text.size(), sizeof m_buffer);
        std::memcpy(m_buffer, m_text.data(), size);
        done =
            WriteFile(m_end.Get(), m_buffer, static_cast<DWORD>(size), nullptr, &m_overlapped);
    }
    // Nobody is at the other end.
    if (!done && GetLastError() != ERROR_IO_PENDING) {
        m_isPending = false;
        Close();
    }
}

void ChildPipe::Finish(DWORD moved) {
    if (m_direction == Direction::eFromChild)
        m_text.append(m_buffer, moved);
    else
        m_text.erase(0, moved);
}

void ChildPipe::Close() {
    if (m_end && m_isPending) {
        DWORD moved = 0;
        CancelIo(m_end.Get());
        GetOverlappedResult(m_end.Get(), &m_overlapped, &moved, TRUE);
        m_isPending = false;
    }
    m_end.Reset();
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// What a call came to: the HRESULT with its name and meaning, and the value that it gave.
// Include kora4.hpp.
#ifndef KORA4_RESULT_HPP
#define KORA4_RESULT_HPP

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "kora4/result_codes.hpp"
#include "kora4api.h"

namespace kora4 {
inline namespace v1 {

// What a client has to tell apart.
enum class Outcome {
    eDone,       // S_OK
    eAbsent,     // S_FALSE: what was asked for does not exist; there is no value
    eUnchanged,  // one of the four informational codes: understood, and nothing was changed
    eFailed      // a failure: what was to be changed is as it was, where nothing else is said
};

// What the platform says of a code, in UTF-8, in one line without its full stop; empty when it
// knows nothing of it. May throw std::bad_alloc.
inline std::string PlatformWords(std::uint32_t code) {
    wchar_t wide[512];
    const auto read = [&wide](std::uint32_t number) {
        DWORD length =
            FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                               FORMAT_MESSAGE_MAX_WIDTH_MASK,
                           nullptr, number, 0, wide, 512, nullptr);
        while (length > 0 && (wide[length - 1] <= L' ' || wide[length - 1] == L'.'))
            --length;
        return static_cast<int>(length);
    };
    int length = read(code);
    // Some platforms know only the number itself.
    if (length == 0 && (code & 0xFFFF0000) == cWin32Results)
        length = read(code & 0xFFFF);
    char narrow[3 * 512];
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, wide, length, narrow, sizeof narrow, nullptr, nullptr);
    return std::string(narrow, static_cast<std::size_t>(bytes));
}

// The outcome of a call. True in a condition when the call did what it says (S_OK) and only
// then: `if (!status)` also catches the success codes that changed nothing.
class [[nodiscard]] Status {
  public:
    // From the result of any COM call.
    constexpr explicit Status(HRESULT code) noexcept : m_code(code) {}

    // The result as the method gave it.
    constexpr HRESULT Code() const noexcept { return m_code; }

    // Success codes that are none of the API's count as done.
    constexpr kora4::Outcome Outcome() const noexcept {
        if (m_code < 0)
            return kora4::Outcome::eFailed;
        if (m_code == S_FALSE)
            return kora4::Outcome::eAbsent;
        if (m_code >= KORA4_S_DEMO_MODE_ACTIVE && m_code <= KORA4_S_NOT_A_PRESET_PROFILE)
            return kora4::Outcome::eUnchanged;
        return kora4::Outcome::eDone;
    }

    constexpr explicit operator bool() const noexcept {
        return m_code == S_OK || Outcome() == kora4::Outcome::eDone;
    }
    // Understood, and nothing was changed.
    constexpr bool IsUnchanged() const noexcept {
        return Outcome() == kora4::Outcome::eUnchanged;
    }
    // The call failed; success codes that changed nothing are no failures.
    constexpr bool HasFailed() const noexcept { return m_code < 0; }

    // "KORA4_S_DEMO_MODE_ACTIVE"; empty when FindResult does not know the code.
    constexpr const char* Name() const noexcept {
        const ResultCode* const known = FindResult(CodeOf(m_code));
        return known ? known->name : "";
    }

    // What the code says, for a person, without a full stop; empty when FindResult does not
    // know it.
    constexpr const char* Meaning() const noexcept {
        const ResultCode* const known = FindResult(CodeOf(m_code));
        return known ? known->meaning : "";
    }

    // All of it in UTF-8: "E_FAIL (0x80004005): the store failed; ...". For codes that
    // FindResult does not know the platform's words, in its language. May throw std::bad_alloc.
    std::string Text() const {
        char number[16];
        std::snprintf(number, sizeof number, "0x%08lX", static_cast<unsigned long>(m_code));
        if (const ResultCode* const known = FindResult(CodeOf(m_code)))
            return std::string(known->name) + " (" + number + "): " + known->meaning;
        const std::string words = PlatformWords(CodeOf(m_code));
        return words.empty() ? number : number + (": " + words);
    }

  private:
    HRESULT m_code;
};

// A Status and, exactly when the call did what it says, the value that it gave.
template <typename T>
class [[nodiscard]] Result : public Status {
  public:
    // No value: the call failed, or changed or found nothing.
    constexpr explicit Result(Status status) noexcept : Status(status) {}
    constexpr explicit Result(T value, HRESULT code = S_OK) noexcept
        : Status(code), m_value(std::move(value)) {}

    constexpr explicit operator bool() const noexcept { return m_value.has_value(); }

    // Only of a Result that is true. What is taken from a temporary may be moved away.
    constexpr T& operator*() & noexcept { return *m_value; }
    constexpr const T& operator*() const& noexcept { return *m_value; }
    constexpr T&& operator*() && noexcept { return *std::move(m_value); }
    constexpr T* operator->() noexcept { return &*m_value; }
    constexpr const T* operator->() const noexcept { return &*m_value; }

    // The value, or `other` when there is none.
    constexpr T ValueOr(T other) const& { return m_value ? *m_value : std::move(other); }
    constexpr T ValueOr(T other) && { return m_value ? *std::move(m_value) : std::move(other); }

  private:
    std::optional<T> m_value;
};

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_RESULT_HPP

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

namespace detail {

// A code of the API with its name and its meaning.
struct NamedCode {
    HRESULT code;
    const char* name;
    const char* meaning;
};

inline constexpr NamedCode cNamedCodes[] = {
    {S_OK, "S_OK", KORA4_MEANING_S_OK},
    {S_FALSE, "S_FALSE", KORA4_MEANING_S_FALSE},
    {KORA4_S_DEMO_MODE_ACTIVE, "KORA4_S_DEMO_MODE_ACTIVE", KORA4_MEANING_DEMO_MODE_ACTIVE},
    {KORA4_S_NOT_IN_DEMO_PROFILE, "KORA4_S_NOT_IN_DEMO_PROFILE",
     KORA4_MEANING_NOT_IN_DEMO_PROFILE},
    {KORA4_S_NO_SUCH_CUSTOM_PROFILE, "KORA4_S_NO_SUCH_CUSTOM_PROFILE",
     KORA4_MEANING_NO_SUCH_CUSTOM_PROFILE},
    {KORA4_S_NOT_A_PRESET_PROFILE, "KORA4_S_NOT_A_PRESET_PROFILE",
     KORA4_MEANING_NOT_A_PRESET_PROFILE},
    {E_POINTER, "E_POINTER", KORA4_MEANING_E_POINTER},
    {E_FAIL, "E_FAIL", KORA4_MEANING_E_FAIL},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY", KORA4_MEANING_E_OUTOFMEMORY},
    {E_INVALIDARG, "E_INVALIDARG", KORA4_MEANING_E_INVALIDARG},
    {APOERR_NOT_INITIALIZED, "APOERR_NOT_INITIALIZED", KORA4_MEANING_NOT_INITIALIZED},
};

// Null when the code is none of the API.
constexpr const NamedCode* FindCode(HRESULT code) noexcept {
    for (const NamedCode& named : cNamedCodes)
        if (named.code == code)
            return &named;
    return nullptr;
}

// The platform's words for a code in UTF-8, without line ends; empty when it has none.
inline std::string SystemMessage(HRESULT code) {
    wchar_t wide[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, static_cast<DWORD>(code), 0, wide, 512, nullptr);
    while (length > 0 && wide[length - 1] <= L' ')
        --length;
    char narrow[3 * 512];
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide, static_cast<int>(length), narrow,
                                          sizeof narrow, nullptr, nullptr);
    return std::string(narrow, static_cast<std::size_t>(bytes));
}

}  // namespace detail

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

    // "KORA4_S_DEMO_MODE_ACTIVE"; empty when the code is none of the API.
    constexpr const char* Name() const noexcept {
        const detail::NamedCode* const named = detail::FindCode(m_code);
        return named ? named->name : "";
    }

    // What the code says, for a person, without a full stop; empty when the code is none of
    // the API.
    constexpr const char* Meaning() const noexcept {
        const detail::NamedCode* const named = detail::FindCode(m_code);
        return named ? named->meaning : "";
    }

    // All of it in UTF-8: "E_FAIL (0x80004005): the store failed; ...". For other codes the
    // platform's words, in its language. May throw std::bad_alloc.
    std::string Text() const {
        char number[16];
        std::snprintf(number, sizeof number, "0x%08lX", static_cast<unsigned long>(m_code));
        if (const detail::NamedCode* const named = detail::FindCode(m_code))
            return std::string(named->name) + " (" + number + "): " + named->meaning;
        const std::string words = detail::SystemMessage(m_code);
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

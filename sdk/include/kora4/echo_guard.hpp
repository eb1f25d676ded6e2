// SPDX-License-Identifier: MIT
// Keeps a client from setting what it has just been told. Include kora4.hpp.
#ifndef KORA4_ECHO_GUARD_HPP
#define KORA4_ECHO_GUARD_HPP

#include <array>
#include <optional>

#include "kora4/equalizer.hpp"
#include "kora4/lock_hold.hpp"
#include "kora4/values.hpp"
#include "kora4api.h"

namespace kora4 {
inline namespace v1 {

namespace detail {

inline bool IsSame(const KORA4PatchValueUnion& a, const KORA4PatchValueUnion& b) noexcept {
    return a.m_technology == b.m_technology &&
           a.m_values.m_volumeSlider == b.m_values.m_volumeSlider;
}

inline bool IsSame(const GraphicEQData& a, const GraphicEQData& b) noexcept {
    const auto isSame = [&](const float(&x)[KORA4_GRAPHIC_EQ_MAX_BANDS],
                            const float(&y)[KORA4_GRAPHIC_EQ_MAX_BANDS]) {
        return std::equal(x, x + (std::min<ULONG>)(a.m_bands, KORA4_GRAPHIC_EQ_MAX_BANDS), y);
    };
    return a.m_bands == b.m_bands && isSame(a.m_freq, b.m_freq) && isSame(a.m_gain, b.m_gain);
}

// What is known of one value.
template <typename Record>
class KnownValue {
  public:
    bool Is(const Record& record) const noexcept { return m_known && IsSame(*m_known, record); }
    void Know(const Record& record) noexcept { m_known = record; }
    void Forget() noexcept { m_known.reset(); }

    // Something happened to the value; says which happening this is.
    unsigned Happened() noexcept { return ++m_happenings; }
    bool IsLatest(unsigned happening) const noexcept { return m_happenings == happening; }

  private:
    std::optional<Record> m_known;
    unsigned m_happenings = 0;
};

}  // namespace detail

// What is known to be stored for each value of the active profile, from notifications and from
// the client's own sets. A panel that moves its slider when it is told a value, and sets the
// value when its slider moves, answers every notification with a set, which is told to the next
// panel, and so on for ever. With a guard, a set of the value that is known already ends
// without a call. Every Callback has one; Api::RegisterGuarded puts it to use. Safe to use from
// several threads.
class EchoGuard {
  public:
    EchoGuard() noexcept = default;
    EchoGuard(const EchoGuard&) = delete;
    EchoGuard& operator=(const EchoGuard&) = delete;

    // A notification told the value: it is what is stored.
    void Told(const KORA4PatchValueUnion& value) noexcept {
        if (IsTechnology(value.m_technology))
            Tell(m_values[Index(value)], value);
    }
    void Told(const GraphicEQData& bands) noexcept { Tell(m_bands, bands); }

    // Another profile is active, or its values were reverted: nothing is known.
    void Forget() noexcept {
        const detail::LockHold hold(m_lock);
        for (detail::KnownValue<KORA4PatchValueUnion>& value : m_values)
            Drop(value);
        Drop(m_bands);
    }

    // Makes the call that sets the value, and returns its result; S_OK and no call if the value
    // is known to be stored.
    template <typename Call>
    HRESULT Set(const KORA4PatchValueUnion& value, Call call) noexcept {
        return IsTechnology(value.m_technology) ? Guard(m_values[Index(value)], value, call)
                                                : call();
    }
    template <typename Call>
    HRESULT Set(const GraphicEQData& bands, Call call) noexcept {
        return Guard(m_bands, bands, call);
    }

  private:
    static bool IsTechnology(KORA4APITechnology technology) noexcept {
        return technology >= 0 && technology < eNumberKORA4APITechnologies;
    }
    static std::size_t Index(const KORA4PatchValueUnion& value) noexcept {
        return static_cast<std::size_t>(value.m_technology);
    }

    template <typename Record>
    void Tell(detail::KnownValue<Record>& known, const Record& record) noexcept {
        const detail::LockHold hold(m_lock);
        known.Happened();
        known.Know(record);
    }

    template <typename Record>
    static void Drop(detail::KnownValue<Record>& known) noexcept {
        known.Happened();
        known.Forget();
    }

    template <typename Record, typename Call>
    HRESULT Guard(detail::KnownValue<Record>& known, const Record& record, Call call) noexcept {
        unsigned own = 0;
        {
            const detail::LockHold hold(m_lock);
            if (known.Is(record))
                return S_OK;
            known.Forget();
            own = known.Happened();
        }
        const HRESULT hr = call();
        const detail::LockHold hold(m_lock);
        // After another set or a notification in between, nobody can say which one is stored.
        if (!known.IsLatest(own))
            Drop(known);
        else if (hr == S_OK)
            known.Know(record);
        return hr;
    }

    SRWLOCK m_lock = SRWLOCK_INIT;
    std::array<detail::KnownValue<KORA4PatchValueUnion>, KORA4_TECHNOLOGIES> m_values;
    detail::KnownValue<GraphicEQData> m_bands;
};

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_ECHO_GUARD_HPP

// SPDX-License-Identifier: MIT
// A natural number of bounded width, for the exact conversion of decimal texts.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace kora4::codec {

// Holds up to 1024 bits; the caller knows that its numbers stay below that. Limbs run from
// the lowest to the highest, the highest in use is not zero.
class BigNumber {
  public:
    explicit BigNumber(std::uint32_t value) { MultiplyAdd(1, value); }

    // The number of bits without leading zeros. The number is not zero.
    int BitLength() const {
        const auto width = static_cast<std::size_t>(std::bit_width(m_limbs[m_used - 1]));
        return static_cast<int>(32 * (m_used - 1) + width);
    }

    // this = this * factor + addend, for a factor that is not zero.
    void MultiplyAdd(std::uint32_t factor, std::uint32_t addend) {
        std::uint64_t carry = addend;
        for (std::size_t i = 0; i < m_used; ++i) {
            carry += std::uint64_t{m_limbs[i]} * factor;
            m_limbs[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        if (carry != 0)
            m_limbs[m_used++] = static_cast<std::uint32_t>(carry);
    }

    // this = this * 10^power, for a power that is not negative.
    void MultiplyByPowerOfTen(int power) {
        constexpr std::uint32_t cPowers[] = {1,      10,      100,      1000,     10000,
                                             100000, 1000000, 10000000, 100000000};
        constexpr int cGroup = 9;
        for (; power >= cGroup; power -= cGroup)
            MultiplyAdd(1000000000, 0);
        if (power > 0)
            MultiplyAdd(cPowers[power], 0);
    }

    // this = this * 2^bits, for a number of bits that is not negative.
    void ShiftLeft(int bits) {
        const std::size_t limbs = static_cast<std::size_t>(bits) / 32;
        const int rest = bits % 32;
        if (rest != 0)
            MultiplyAdd(1u << rest, 0);
        if (m_used == 0 || limbs == 0)
            return;
        for (std::size_t i = m_used; i-- > 0;)
            m_limbs[i + limbs] = m_limbs[i];
        for (std::size_t i = 0; i < limbs; ++i)
            m_limbs[i] = 0;
        m_used += limbs;
    }

    bool IsZero() const { return m_used == 0; }

    // Whether this number is less than the other one.
    bool IsBelow(const BigNumber& other) const {
        if (m_used != other.m_used)
            return m_used < other.m_used;
        for (std::size_t i = m_used; i-- > 0;) {
            if (m_limbs[i] != other.m_limbs[i])
                return m_limbs[i] < other.m_limbs[i];
        }
        return false;
    }

    // this = this - other, for an `other` that is not larger.
    void Subtract(const BigNumber& other) {
        std::uint64_t borrow = 0;
        for (std::size_t i = 0; i < m_used; ++i) {
            const std::uint64_t taken = (i < other.m_used ? other.m_limbs[i] : 0) + borrow;
            borrow = m_limbs[i] < taken ? 1 : 0;
            m_limbs[i] = static_cast<std::uint32_t>(m_limbs[i] - taken);
        }
        while (m_used > 0 && m_limbs[m_used - 1] == 0)
            --m_used;
    }

  private:
    std::array<std::uint32_t, 32> m_limbs{};
    std::size_t m_used = 0;
};

}  // namespace kora4::codec

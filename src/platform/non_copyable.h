// SPDX-License-Identifier: MIT
// What owns something is not copied. Includes nothing, so that platform-free files can use it.
#ifndef KORA4_PLATFORM_NON_COPYABLE_H
#define KORA4_PLATFORM_NON_COPYABLE_H

namespace kora4 {

// A base that keeps a class from being copied and moved.
class NonCopyable {
  public:
    NonCopyable(const NonCopyable&) = delete;
    NonCopyable& operator=(const NonCopyable&) = delete;

  protected:
    constexpr NonCopyable() = default;
    ~NonCopyable() = default;
};

}  // namespace kora4

#endif  // KORA4_PLATFORM_NON_COPYABLE_H

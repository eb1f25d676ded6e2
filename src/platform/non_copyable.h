// SPDX-License-Identifier: MIT
// What owns something is not copied. Includes nothing, so that platform-free files can use it.
#pragma once

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

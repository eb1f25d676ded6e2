// SPDX-License-Identifier: MIT
// The name of the mutex that serialises the readers and writers of the store.
#pragma once

namespace kora4 {

// Without a namespace prefix: the mutex is that of the session.
inline constexpr char16_t cStoreMutexName[] = u"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}";

}  // namespace kora4

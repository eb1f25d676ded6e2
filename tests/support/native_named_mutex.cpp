// SPDX-License-Identifier: MIT
// A NamedMutex that counts what is done to it and never waits.
#include "support/native_named_mutex.h"

#include <algorithm>

#include "store/access/named_mutex.h"

namespace kora4 {

namespace test {

NamedMutexRecord& StoreMutex() {
    static NamedMutexRecord record;
    return record;
}

void NamedMutexRecord::Clear() {
    const unsigned held = heldNow;
    *this = NamedMutexRecord{};
    heldNow = deepest = held;
}

}  // namespace test

NamedMutex::~NamedMutex() {
    FreeMutex();
}

HRESULT NamedMutex::Create(const char16_t* pwName) {
    test::NamedMutexRecord& record = test::StoreMutex();
    if (m_hMutex || record.failCreate)
        return result::cFail;
    m_hMutex = &record;
    record.name = pwName;
    ++record.created;
    return result::cOk;
}

void NamedMutex::Acquire() {
    test::NamedMutexRecord& record = test::StoreMutex();
    ++record.acquired;
    ++record.heldNow;
    record.deepest = std::max(record.deepest, record.heldNow);
    m_acquired = true;
}

HRESULT NamedMutex::Release() {
    test::NamedMutexRecord& record = test::StoreMutex();
    ++record.released;
    if (record.heldNow != 0)
        --record.heldNow;
    m_acquired = false;
    return record.failRelease ? result::cFail : result::cOk;
}

void NamedMutex::FreeMutex() {
    m_hMutex = nullptr;
}

}  // namespace kora4

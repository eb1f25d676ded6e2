// SPDX-License-Identifier: MIT
// A NamedMutex that counts what is done to it, and keeps threads apart.
#include "support/native_named_mutex.h"

#include <algorithm>
#include <mutex>

#include "store/access/named_mutex.h"

namespace kora4 {

namespace {

// As the platform's: its owner may acquire it again.
std::recursive_mutex& Lock() {
    static std::recursive_mutex lock;
    return lock;
}

}  // namespace

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
    Lock().lock();
    test::NamedMutexRecord& record = test::StoreMutex();
    ++record.acquired;
    ++record.heldNow;
    record.deepest = std::max(record.deepest, record.heldNow);
    m_acquired = true;
}

HRESULT NamedMutex::Release() {
    test::NamedMutexRecord& record = test::StoreMutex();
    ++record.released;
    m_acquired = false;
    const HRESULT hr = record.failRelease ? result::cFail : result::cOk;
    if (record.heldNow != 0) {
        --record.heldNow;
        Lock().unlock();
    }
    return hr;
}

void NamedMutex::FreeMutex() {
    m_hMutex = nullptr;
}

}  // namespace kora4

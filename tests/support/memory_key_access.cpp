// SPDX-License-Identifier: MIT
// The seven operations on maps, with their log, their counts and the failures that a test
// asked for.
#include "support/memory_key_access.h"

#include <algorithm>
#include <cstring>

#include "contract/property_key.h"
#include "contract/value_kind.h"
#include "store/access/task_memory.h"

namespace kora4::test {

namespace {

// The registry access reads texts into a buffer of this size, terminator included.

constexpr const char* cOperationNames[] = {"R", "RT", "RB", "W", "WT", "WB", "D"};
static_assert(std::size(cOperationNames) == static_cast<std::size_t>(Operation::eCount));

bool IsRead(Operation operation) {
    return operation <= Operation::eReadBlob;
}

bool IsRegistry(KORA4KeySet keySet) {
    return keySet == eKeySetStatic || keySet == eKeySetDynamic || keySet == eKeySetApp;
}

std::u16string NameOf(const PropertyKey& key) {
    char16_t name[cValueNameCapacity];
    return std::u16string(name, FormatValueName(key, name));
}

// For the log: what is no ASCII shows as a question mark.
std::string Narrow(std::u16string_view text) {
    std::string narrow;
    for (const char16_t c : text)
        narrow += c < 0x80 ? static_cast<char>(c) : '?';
    return narrow;
}

bool FitsBuffer(const std::u16string& text) {
    return (text.size() + 1) * sizeof(char16_t) <= cMaxTextBytes;
}
template <typename T>
bool FitsBuffer(const T&) {
    return true;
}

}  // namespace

std::string LogEntry(Operation operation, KORA4KeySet keySet, const PropertyKey& key,
                     const std::string& value) {
    std::string entry = cOperationNames[static_cast<std::size_t>(operation)];
    entry += std::to_string(static_cast<unsigned>(keySet)) + " " + Narrow(NameOf(key));
    if (!IsRead(operation) && operation != Operation::eDelete)
        entry += "=" + value;
    return entry;
}

std::string ReadEntry(KORA4KeySet keySet, const PropertyKey& key) {
    return LogEntry(Operation::eReadUINT, keySet, key);
}

std::string WriteEntry(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value) {
    return LogEntry(Operation::eWriteUINT, keySet, key, std::to_string(value));
}

// --- reads -----------------------------------------------------------------------------

template <typename T>
HRESULT MemoryKeyAccess::Read(KORA4KeySet keySet, const PropertyKey& key,
                              const T** ppValue) const {
    if (!m_open)
        return APOERR_NOT_INITIALIZED;
    const bool isPropertyStore =
        keySet == eKeySetPropertyStore && m_hasPropertyStore && !std::is_same_v<T, Blob>;
    if (!isPropertyStore && !IsRegistry(keySet))
        return result::cFail;
    const auto found = m_values.find(Address(keySet, NameOf(key)));
    if (found == m_values.end())
        return result::cFalse;
    *ppValue = std::get_if<T>(&found->second);
    if (*ppValue && (isPropertyStore || FitsBuffer(**ppValue)))
        return result::cOk;
    // A property of another type counts as absent, a registry value does not.
    return isPropertyStore ? result::cFalse : result::cFail;
}

HRESULT MemoryKeyAccess::ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                                  std::uint32_t* pValue) {
    Record(Operation::eReadUINT, keySet, key);
    const std::uint32_t* pStored = nullptr;
    const HRESULT hr = Read(keySet, key, &pStored);
    if (hr == result::cOk)
        *pValue = *pStored;
    return hr;
}

HRESULT MemoryKeyAccess::ReadText(KORA4KeySet keySet, const PropertyKey& key,
                                  char16_t** ppText) {
    Record(Operation::eReadText, keySet, key);
    const std::u16string* pStored = nullptr;
    const HRESULT hr = Read(keySet, key, &pStored);
    if (hr == result::cOk)
        *ppText = DuplicateTaskText(pStored->c_str());
    return hr;
}

HRESULT MemoryKeyAccess::ReadBlob(KORA4KeySet keySet, const PropertyKey& key,
                                  std::uint32_t* pSize, std::uint8_t** ppData) {
    Record(Operation::eReadBlob, keySet, key);
    const Blob* pStored = nullptr;
    const HRESULT hr = Read(keySet, key, &pStored);
    if (hr != result::cOk)
        return hr;
    // An empty blob is a value too: its data is not null.
    const std::size_t size = std::max<std::size_t>(pStored->size(), 1);
    *ppData = static_cast<std::uint8_t*>(AllocTaskMemory(size));
    std::copy(pStored->begin(), pStored->end(), *ppData);
    *pSize = static_cast<std::uint32_t>(pStored->size());
    return result::cOk;
}

// --- writes ----------------------------------------------------------------------------

HRESULT MemoryKeyAccess::Write(KORA4KeySet keySet, const PropertyKey& key,
                               std::optional<StoredValue> value, HRESULT badKeySet) {
    if (!m_open)
        return APOERR_NOT_INITIALIZED;
    const bool isPropertyStore = keySet == eKeySetPropertyStore && m_hasPropertyStore &&
                                 value && !std::holds_alternative<Blob>(*value);
    if (!isPropertyStore && !IsRegistry(keySet))
        return badKeySet;
    ++m_writesDone;
    if (m_writesDone >= m_firstFailingWrite && m_writesDone <= m_lastFailingWrite)
        return m_writeFailure;
    // These keys are open for reading only: a write goes nowhere, a deletion is refused.
    if (keySet == eKeySetApp)
        return value ? result::cOk : result::cFail;
    const Address address(keySet, NameOf(key));
    if (!value)
        return m_values.erase(address) != 0 ? result::cOk : result::cFalse;
    m_values[address] = std::move(*value);
    return result::cOk;
}

HRESULT MemoryKeyAccess::WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                                   std::uint32_t value) {
    Record(Operation::eWriteUINT, keySet, key, std::to_string(value));
    return Write(keySet, key, value, result::cFail);
}

HRESULT MemoryKeyAccess::WriteText(KORA4KeySet keySet, const PropertyKey& key,
                                   const char16_t* pwText) {
    std::u16string text = pwText ? pwText : u"";
    Record(Operation::eWriteText, keySet, key, Narrow(text));
    return Write(keySet, key, std::move(text), result::cFail);
}

HRESULT MemoryKeyAccess::WriteBlob(KORA4KeySet keySet, const PropertyKey& key,
                                   std::uint32_t size, const std::uint8_t* pData) {
    Record(Operation::eWriteBlob, keySet, key, std::to_string(size));
    return Write(keySet, key, Blob(pData, pData + size), result::cFail);
}

HRESULT MemoryKeyAccess::Delete(KORA4KeySet keySet, const PropertyKey& key) {
    Record(Operation::eDelete, keySet, key);
    return Write(keySet, key, std::nullopt, result::cInvalidArg);
}

// --- what another process does ---------------------------------------------------------

void MemoryKeyAccess::Put(KORA4KeySet keySet, const PropertyKey& key, StoredValue value) {
    m_values[Address(keySet, NameOf(key))] = std::move(value);
}

void MemoryKeyAccess::Erase(KORA4KeySet keySet, const PropertyKey& key) {
    m_values.erase(Address(keySet, NameOf(key)));
}

namespace {

template <typename T>
std::optional<T> ValueAt(const Snapshot& values, KORA4KeySet keySet, const PropertyKey& key) {
    const auto found = values.find({keySet, NameOf(key)});
    if (found == values.end() || !std::holds_alternative<T>(found->second))
        return std::nullopt;
    return std::get<T>(found->second);
}

}  // namespace

std::optional<std::uint32_t> MemoryKeyAccess::NumberAt(KORA4KeySet keySet,
                                                       const PropertyKey& key) const {
    return ValueAt<std::uint32_t>(m_values, keySet, key);
}

std::optional<std::u16string> MemoryKeyAccess::TextAt(KORA4KeySet keySet,
                                                      const PropertyKey& key) const {
    return ValueAt<std::u16string>(m_values, keySet, key);
}

bool MemoryKeyAccess::Has(KORA4KeySet keySet, const PropertyKey& key) const {
    return m_values.contains({keySet, NameOf(key)});
}

// --- counts, log, failing ----------------------------------------------------------------

void MemoryKeyAccess::Record(Operation operation, KORA4KeySet keySet, const PropertyKey& key,
                             const std::string& value) {
    ++m_counts[static_cast<std::size_t>(operation)];
    m_log.push_back(LogEntry(operation, keySet, key, value));
    if (m_onOperation)
        m_onOperation(std::string(m_log.back()));
}

unsigned MemoryKeyAccess::Count(Operation operation) const {
    return m_counts[static_cast<std::size_t>(operation)];
}

unsigned MemoryKeyAccess::Reads() const {
    return Count(Operation::eReadUINT) + Count(Operation::eReadText) +
           Count(Operation::eReadBlob);
}

unsigned MemoryKeyAccess::Writes() const {
    return Count(Operation::eWriteUINT) + Count(Operation::eWriteText) +
           Count(Operation::eWriteBlob) + Count(Operation::eDelete);
}

std::vector<std::string> MemoryKeyAccess::WriteLog() const {
    std::vector<std::string> writes = m_log;
    std::erase_if(writes, [](const std::string& entry) { return entry[0] == 'R'; });
    return writes;
}

void MemoryKeyAccess::ClearLog() {
    m_log.clear();
    m_counts = {};
}

void MemoryKeyAccess::FailWrite(unsigned n, HRESULT hr) {
    m_firstFailingWrite = m_lastFailingWrite = m_writesDone + n;
    m_writeFailure = hr;
}

void MemoryKeyAccess::StopWritingAfter(unsigned n, HRESULT hr) {
    m_firstFailingWrite = m_writesDone + n + 1;
    m_lastFailingWrite = std::numeric_limits<unsigned>::max();
    m_writeFailure = hr;
}

void MemoryKeyAccess::HealAll() {
    m_open = true;
    m_lastFailingWrite = 0;
}

}  // namespace kora4::test

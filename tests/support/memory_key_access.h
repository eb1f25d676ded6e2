// SPDX-License-Identifier: MIT
// The store in memory: the key access of tests. It answers as the registry does, counts
// and records every operation, and fails on demand.
#ifndef KORA4_TESTS_SUPPORT_MEMORY_KEY_ACCESS_H
#define KORA4_TESTS_SUPPORT_MEMORY_KEY_ACCESS_H

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "store/access/key_access.h"

namespace kora4::test {

// The operations by name, for the log and for injected failures.
enum class Operation {
    eReadUINT,
    eReadText,
    eReadBlob,
    eWriteUINT,
    eWriteText,
    eWriteBlob,
    eDelete,
    eCount
};

// A stored value that no read accepts: a DWORD of three bytes, a type nobody knows.
struct Unreadable {
    friend bool operator==(const Unreadable&, const Unreadable&) = default;
};
using Blob = std::vector<std::uint8_t>;
using StoredValue = std::variant<std::uint32_t, std::u16string, Blob, Unreadable>;

// Every value of the store by key set and value name.
using Snapshot = std::map<std::pair<KORA4KeySet, std::u16string>, StoredValue>;

// The entry that the log holds for an operation. `value` belongs to writes: the number,
// the text, or the size of a blob.
//     R2 {...},5    RT2, RB2    W3 {...},5=1    WT2 {...},5=abc    WB2 {...},5=16    D2 {...},0
std::string LogEntry(Operation operation, KORA4KeySet keySet, const PropertyKey& key,
                     const std::string& value = {});
std::string ReadEntry(KORA4KeySet keySet, const PropertyKey& key);
std::string WriteEntry(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value);

// The store in memory. Logs each operation, and fails or runs a test's hook when told to.
class MemoryKeyAccess final : public KORA4KeyAccess {
  public:
    // --- the seven operations --------------------------------------------------------------
    HRESULT ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                     std::uint32_t* pValue) override;
    HRESULT ReadText(KORA4KeySet keySet, const PropertyKey& key, char16_t** ppText) override;
    HRESULT ReadBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pSize,
                     std::uint8_t** ppData) override;
    HRESULT WriteUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value) override;
    HRESULT WriteText(KORA4KeySet keySet, const PropertyKey& key,
                      const char16_t* pwText) override;
    HRESULT WriteBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t size,
                      const std::uint8_t* pData) override;
    HRESULT Delete(KORA4KeySet keySet, const PropertyKey& key) override;

    // --- what another process does to the store: neither counted nor recorded ------------
    void Put(KORA4KeySet keySet, const PropertyKey& key, StoredValue value);
    void Erase(KORA4KeySet keySet, const PropertyKey& key);
    // The value, if there is one and it is of that kind.
    std::optional<std::uint32_t> NumberAt(KORA4KeySet keySet, const PropertyKey& key) const;
    std::optional<std::u16string> TextAt(KORA4KeySet keySet, const PropertyKey& key) const;
    bool Has(KORA4KeySet keySet, const PropertyKey& key) const;
    const Snapshot& Values() const { return m_values; }

    // --- counts and log ------------------------------------------------------------------
    unsigned Count(Operation operation) const;
    unsigned Reads() const;
    unsigned Writes() const;  // deletions among them
    unsigned Operations() const { return Reads() + Writes(); }
    const std::vector<std::string>& Log() const { return m_log; }
    // The entries of writes and deletions alone.
    std::vector<std::string> WriteLog() const;
    void ClearLog();  // and the counts

    // --- failing -------------------------------------------------------------------------
    // A closed access answers APOERR_NOT_INITIALIZED.
    void SetOpen(bool open) { m_open = open; }
    // Without a property store its operations fail.
    void SetPropertyStore(bool present) { m_hasPropertyStore = present; }
    // The n-th write from now on (1 is the next one) fails and stores nothing.
    void FailWrite(unsigned n, HRESULT hr = result::cFail);
    // The next n writes are done, all later ones fail: a writer that died.
    void StopWritingAfter(unsigned n, HRESULT hr = result::cFail);
    void HealAll();

    // Called before each operation with its log entry. It may use the members above.
    std::function<void(const std::string& entry)> m_onOperation;

  private:
    using Address = std::pair<KORA4KeySet, std::u16string>;

    void Record(Operation operation, KORA4KeySet keySet, const PropertyKey& key,
                const std::string& value = {});
    template <typename T>
    HRESULT Read(KORA4KeySet keySet, const PropertyKey& key, const T** ppValue) const;
    HRESULT Write(KORA4KeySet keySet, const PropertyKey& key, std::optional<StoredValue> value,
                  HRESULT badKeySet);

    Snapshot m_values;
    std::array<unsigned, static_cast<std::size_t>(Operation::eCount)> m_counts{};
    std::vector<std::string> m_log;
    bool m_open = true;
    bool m_hasPropertyStore = false;
    HRESULT m_writeFailure = result::cFail;
    unsigned m_writesDone = 0;
    unsigned m_firstFailingWrite = std::numeric_limits<unsigned>::max();
    unsigned m_lastFailingWrite = 0;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_MEMORY_KEY_ACCESS_H

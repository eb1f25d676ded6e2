// SPDX-License-Identifier: MIT
// A read-only view over one copy of the visualization blob.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kora4 {

// The blob as vis_layout.h describes it. The view trusts no number in the blob: a record exists
// only when it lies wholly inside, and none exists behind one that does not. It neither copies
// nor owns; the blob has to outlive it and the pointers that it gives. Immutable, no lock, any
// thread.
class KORA4VisKeyData {
  public:
    // pBlob may be null, its size then does not matter.
    KORA4VisKeyData(const void* pBlob, std::size_t size);

    // The records that exist, at most the number that the blob states.
    std::uint32_t GetNumAPOs() const;

    // Where the records begin; null without a blob or with one too short for its 8 bytes
    // of head. A record stands there when GetNumAPOs is not 0.
    const std::uint8_t* FirstAPOData() const;

    // The record behind pAPOData; null for null, for a pointer that is not a record of this
    // blob, and when no whole record follows.
    const std::uint8_t* NextAPOData(const std::uint8_t* pAPOData) const;

    // The bands of a record; 0, null and null when pAPOData is null or no record of this
    // blob. Both arrays have *pNumBands floats, aligned like the blob: to 4 bytes when it
    // is, as task memory always is.
    void GetData(const std::uint8_t* pAPOData, std::uint32_t* pNumBands, const float** ppGains,
                 const float** ppExcitation) const;

    // Writes the whole content to the trace. pModule tells which object asks, pMessage
    // where the blob came from.
    void DebugPrint(const void* pModule, const char* pMessage) const;

  private:
    struct Record;

    const std::uint8_t* Begin() const;
    bool ReadRecord(const std::uint8_t* pAPOData, Record* pRecord) const;
    void PrintRecord(std::uint32_t index, const std::uint8_t* pAPOData) const;

    const std::uint8_t* m_pBlob;
    std::size_t m_size;
};

}  // namespace kora4

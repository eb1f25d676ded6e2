// SPDX-License-Identifier: MIT
// Walks over the records of a levels blob, each step checked against its size; writes the
// content to the trace.
#include "store/visdata/vis_key_data.h"

#include <cstring>

#include "contract/vis_layout.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

constexpr char cTag[] = "KORA4VisKeyData";

// Band `index` of an array that may stand at any address.
double ReadBand(const std::uint8_t* pArray, std::uint32_t index) {
    float band;
    std::memcpy(&band, pArray + std::size_t{index} * sizeof band, sizeof band);
    return band;
}

}  // namespace

struct KORA4VisKeyData::Record {
    std::uint32_t numBands;
    const std::uint8_t* pGains;
    const std::uint8_t* pExcitation;
    const std::uint8_t* pEnd;
};

KORA4VisKeyData::KORA4VisKeyData(const void* pBlob, std::size_t size)
    : m_pBlob(static_cast<const std::uint8_t*>(pBlob)), m_size(pBlob != nullptr ? size : 0) {}

const std::uint8_t* KORA4VisKeyData::Begin() const {
    return m_size >= vis::cHeadSize ? m_pBlob + vis::cHeadSize : nullptr;
}

bool KORA4VisKeyData::ReadRecord(const std::uint8_t* pAPOData, Record* pRecord) const {
    // As numbers: pointers into different objects have no order.
    const auto begin = reinterpret_cast<std::uintptr_t>(m_pBlob);
    const auto record = reinterpret_cast<std::uintptr_t>(pAPOData);
    std::uint32_t numBands = 0;
    if (m_pBlob == nullptr || record < begin ||
        !vis::ReadNumBands(m_pBlob, m_size, record - begin, &numBands))
        return false;
    pRecord->numBands = numBands;
    pRecord->pGains = pAPOData + vis::cRecordHeadSize;
    pRecord->pExcitation = pRecord->pGains + std::size_t{numBands} * sizeof(float);
    pRecord->pEnd = pRecord->pExcitation + std::size_t{numBands} * sizeof(float);
    return true;
}

std::uint32_t KORA4VisKeyData::GetNumAPOs() const {
    static constexpr trace::Site cSite{cTag, "KORA4VisKeyData::GetNumAPOs"};
    KALTRACE(trace::eMonitorEntry, cSite, ">>\n");
    const std::uint32_t numberAPOs = vis::CountAPOs(m_pBlob, m_size);
    KALTRACE(trace::eMonitorExitResult, cSite, "<< numberAPOs: %u\n", numberAPOs);
    return numberAPOs;
}

const std::uint8_t* KORA4VisKeyData::FirstAPOData() const {
    static constexpr trace::Site cSite{cTag, "KORA4VisKeyData::FirstAPOData"};
    KALTRACE(trace::eMonitorEntry, cSite, ">>\n");
    const std::uint8_t* const pAPOData = Begin();
    KALTRACE(trace::eMonitorExitResult, cSite, "<< pAPOData: %p\n", pAPOData);
    return pAPOData;
}

const std::uint8_t* KORA4VisKeyData::NextAPOData(const std::uint8_t* pAPOData) const {
    static constexpr trace::Site cSite{cTag, "KORA4VisKeyData::NextAPOData"};
    KALTRACE(trace::eMonitorEntry, cSite, ">>\n");
    Record record;
    Record next;
    const bool found = ReadRecord(pAPOData, &record) && ReadRecord(record.pEnd, &next);
    const std::uint8_t* const pNextAPOData = found ? record.pEnd : nullptr;
    KALTRACE(trace::eMonitorExitResult, cSite, "<< pNextAPOData: %p\n", pNextAPOData);
    return pNextAPOData;
}

void KORA4VisKeyData::GetData(const std::uint8_t* pAPOData, std::uint32_t* pNumBands,
                              const float** ppGains, const float** ppExcitation) const {
    static constexpr trace::Site cSite{cTag, "KORA4VisKeyData::GetData"};
    KALTRACE(trace::eMonitorEntry, cSite, ">>\n");
    Record record{};
    ReadRecord(pAPOData, &record);
    *pNumBands = record.numBands;
    *ppGains = reinterpret_cast<const float*>(record.pGains);
    *ppExcitation = reinterpret_cast<const float*>(record.pExcitation);
    KALTRACE(trace::eMonitorExitResult, cSite, "<< numBands: %u pGains: %p pExcitation: %p\n",
             *pNumBands, *ppGains, *ppExcitation);
}

void KORA4VisKeyData::DebugPrint(const void* pModule, const char* pMessage) const {
    static constexpr trace::Site cSite{cTag, "KORA4VisKeyData::DebugPrint"};
    // No need to walk the records when all of these lines are off.
    constexpr std::uint32_t cAllLines =
        std::uint32_t{trace::eVisualizationDump} | trace::eMonitorExitResult;
    if (!trace::IsEnabled(trace::Flags(), cAllLines))
        return;
    KALTRACE(trace::eMonitorEntry, cSite, ">> pModule: %p pMessage: %p\n", pModule, pMessage);
    KALTRACE(trace::eVisualizationDump, cSite, "Vis Key Data: Module: %p: %s\n", pModule,
             pMessage != nullptr ? pMessage : "");
    const std::uint32_t numAPOs = GetNumAPOs();
    const std::uint8_t* pAPOData = FirstAPOData();
    KALTRACE(trace::eVisualizationDump, cSite, "    NumAPOs: %u pAPOData: %p\n", numAPOs,
             pAPOData);
    for (std::uint32_t i = 0; i < numAPOs; ++i) {
        PrintRecord(i, pAPOData);
        pAPOData = NextAPOData(pAPOData);
    }
    KALTRACE(trace::eMonitorEntry, cSite, "<<\n");
}

void KORA4VisKeyData::PrintRecord(std::uint32_t index, const std::uint8_t* pAPOData) const {
    static constexpr trace::Site cSite{cTag, "KORA4VisKeyData::DebugPrint"};
    KALTRACE(trace::eVisualizationDump, cSite, "      APO: %u pAPOData: %p\n", index, pAPOData);
    std::uint32_t numBands = 0;
    const float* pGains = nullptr;
    const float* pExcitation = nullptr;
    GetData(pAPOData, &numBands, &pGains, &pExcitation);
    KALTRACE(trace::eVisualizationDump, cSite,
             "        (APO %u) numBands: %u pGains: %p pExcitiation: %p\n", index, numBands,
             pGains, pExcitation);
    const auto* const pGainBytes = reinterpret_cast<const std::uint8_t*>(pGains);
    const auto* const pExcitationBytes = reinterpret_cast<const std::uint8_t*>(pExcitation);
    for (std::uint32_t j = 0; j < numBands; ++j) {
        KALTRACE(trace::eVisualizationDump, cSite,
                 "        (Band %u) gain: %10f excitation: %10f\n", j, ReadBand(pGainBytes, j),
                 ReadBand(pExcitationBytes, j));
    }
}

}  // namespace kora4

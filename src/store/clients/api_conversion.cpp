// SPDX-License-Identifier: MIT
// The mapping of technologies, and the copying of values between the API's records and the
// working records.
#include "store/clients/api_conversion.h"

#include <algorithm>
#include <cstring>

#include "contract/messages/trace_messages_api.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

struct ApiTechnologyRow {
    KORA4PresetTechnology presetTech;
    std::uint32_t size;  // of the API value, bytes
    RecordPart working;  // where PatchRecords has it
};

// Indexed by API technology.
constexpr ApiTechnologyRow cApiTechnologies[] = {
    {eVolumeTech, 4, {offsetof(PatchRecords, volume.amount), 4}},
    {eStandardEQTech,
     sizeof(ApiGraphicEQ),
     {offsetof(PatchRecords, standardEQ), sizeof(StandardEQPatch)}},
    {eDynamicEQTech, 4, {offsetof(PatchRecords, dynamicEQ.curveIndex), 4}},
    {eEnhancementTech, 4, {offsetof(PatchRecords, enhancement.amount), 4}},
    {eHeadphoneTech, 4, {offsetof(PatchRecords, headphone.surroundBoost), 4}},
    {eVirtualSurroundTech, 4, {offsetof(PatchRecords, virtualSurround.surroundBoost), 4}},
};
constexpr std::size_t cApiTechnologyCount = std::size(cApiTechnologies);
static_assert(cApiTechnologyCount ==
              static_cast<std::size_t>(ApiTechnology::eNumberKORA4APITechnologies));
static_assert(std::size(StandardEQPatch{}.stdEqFreq) == std::size(StandardEQPatch{}.stdEqGain));
static_assert(std::size(ApiGraphicEQ{}.m_freq) == std::size(StandardEQPatch{}.stdEqFreq));

const ApiTechnologyRow* RowOf(ApiTechnology technology) {
    return IsValidASLTechnology(static_cast<std::uint32_t>(technology))
               ? &cApiTechnologies[static_cast<std::size_t>(technology)]
               : nullptr;
}

void StandardEQToApi(const StandardEQPatch& eq, ApiGraphicEQ* pOut) {
    const std::uint32_t bands = std::min(eq.freqCount, cMaxArrayElements);
    *pOut = {};
    pOut->m_bands = bands;
    std::copy_n(eq.stdEqFreq, bands, pOut->m_freq);
    std::copy_n(eq.stdEqGain, bands, pOut->m_gain);
}

// Entries beyond the caller's bands keep what they had.
void StandardEQFromApi(StandardEQPatch& eq, const ApiGraphicEQ& in) {
    const std::uint32_t bands = std::min(in.m_bands, cMaxArrayElements);
    eq.freqCount = bands;
    eq.gainCount = bands;
    std::copy_n(in.m_freq, bands, eq.stdEqFreq);
    std::copy_n(in.m_gain, bands, eq.stdEqGain);
}

}  // namespace

KORA4PresetTechnology PresetTechOf(ApiTechnology technology) {
    KALTRACE_SCOPE("KORA4UIKeysClient::PresetTechOf");
    const ApiTechnologyRow* pRow = RowOf(technology);
    return pRow ? pRow->presetTech : ePresetNoTech;
}

ApiTechnology APITechOf(KORA4PresetTechnology technology) {
    KALTRACE_SCOPE("KORA4UIKeysClient::APITechOf");
    const auto* pRow =
        std::find_if(std::begin(cApiTechnologies), std::end(cApiTechnologies),
                     [=](const ApiTechnologyRow& row) { return row.presetTech == technology; });
    KALASSERT(cSite, msg::cAssertApiNumber,
              pRow != std::end(cApiTechnologies) || technology == eNGSurroundTech);
    return static_cast<ApiTechnology>(pRow - cApiTechnologies);
}

std::uint32_t ASLPatchSizeOf(ApiTechnology technology) {
    KALTRACE_SCOPE("KORA4UIKeysClient::ASLPatchSizeOf");
    const ApiTechnologyRow* pRow = RowOf(technology);
    return pRow ? pRow->size : 0;
}

HRESULT GetASLPatchUnionField(ApiTechnology technology, ApiPatchValue* pValue,
                              std::uint32_t* pSize, void** ppField) {
    KALTRACE_RESULT(hr, result::cInvalidArg, msg::cNoSimpleValue.function);
    *pSize = 0;
    *ppField = nullptr;
    const ApiTechnologyRow* pRow = RowOf(technology);
    if (!pRow || pRow->size != sizeof pValue->m_values) {
        KALTRACE(msg::cNoSimpleValue, static_cast<std::uint32_t>(technology));
        return hr;
    }
    *pSize = pRow->size;
    *ppField = &pValue->m_values;
    return hr = result::cOk;
}

RecordPart WorkingPartOf(ApiTechnology technology) {
    const ApiTechnologyRow* pRow = RowOf(technology);
    return pRow ? pRow->working : RecordPart{};
}

HRESULT ToASLPatch(const PatchRecords& records, ApiTechnology technology, std::uint32_t size,
                   void* pValue) {
    KALTRACE_RESULT(hr, result::cInvalidArg, "KORA4UIKeysClient::ToASLPatch");
    if (size < ASLPatchSizeOf(technology))
        return hr;
    const ApiTechnologyRow* pRow = RowOf(technology);
    KALASSERT(cSite, msg::cAssertReadable, pRow != nullptr);
    if (technology == ApiTechnology::eGraphicEQ) {
        ApiGraphicEQ eq;
        StandardEQToApi(records.standardEQ, &eq);
        std::memcpy(pValue, &eq, sizeof eq);
    } else if (pRow) {
        std::memcpy(pValue, reinterpret_cast<const char*>(&records) + pRow->working.begin,
                    pRow->size);
    }
    return hr = result::cOk;
}

HRESULT FromASLPatch(PatchRecords& records, ApiTechnology technology, std::uint32_t size,
                     const void* pValue) {
    KALTRACE_RESULT(hr, result::cInvalidArg, "KORA4UIKeysClient::FromASLPatch");
    if (size < ASLPatchSizeOf(technology))
        return hr;
    const ApiTechnologyRow* pRow = RowOf(technology);
    KALASSERT(cSite, msg::cAssertWritable, pRow != nullptr);
    if (technology == ApiTechnology::eGraphicEQ) {
        ApiGraphicEQ eq;
        std::memcpy(&eq, pValue, sizeof eq);
        StandardEQFromApi(records.standardEQ, eq);
    } else if (pRow) {
        std::memcpy(reinterpret_cast<char*>(&records) + pRow->working.begin, pValue,
                    pRow->size);
    }
    return hr = result::cOk;
}

}  // namespace kora4

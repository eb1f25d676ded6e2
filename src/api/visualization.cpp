// SPDX-License-Identifier: MIT
// The engine's levels for a display, and how often to read them.
#include <algorithm>

#include "api/kora4asl.h"
#include "contract/defaults.h"
#include "contract/display_levels.h"
#include "store/access/task_memory.h"
#include "store/visdata/vis_key_data.h"

namespace kora4 {
namespace {

struct Levels {
    float gain = cLevelFloor;
    float excitation = cLevelFloor;
};

// The loudest of the first `records` records that have the band. What follows the stated
// number of records may look like a record but is not one.
Levels LoudestOf(const KORA4VisKeyData& data, std::uint32_t records, std::uint32_t band) {
    Levels loudest;
    const std::uint8_t* pAPOData = data.FirstAPOData();
    for (std::uint32_t i = 0; i < records; ++i, pAPOData = data.NextAPOData(pAPOData)) {
        std::uint32_t bands = 0;
        const float* pGains = nullptr;
        const float* pExcitation = nullptr;
        data.GetData(pAPOData, &bands, &pGains, &pExcitation);
        if (band >= bands)
            continue;
        loudest.gain = std::max(loudest.gain, pGains[band]);
        loudest.excitation = std::max(loudest.excitation, pExcitation[band]);
    }
    return loudest;
}

}  // namespace

STDMETHODIMP CKORA4ASL::GetVisualizationSamplingPeriod(ULONG* pSamplingPeriod) {
    static constexpr Method cMethod{"CKORA4ASL::GetVisualizationSamplingPeriod",
                                    {.badArgument = "NULL == pSamplingPeriod"}};
    return RunMethod(cMethod, m_initialized, pSamplingPeriod != nullptr, [&] {
        std::uint32_t milliseconds = defaults::cSamplingPeriod;
        const HRESULT hr = m_uiKeysClient.GetSamplingPeriod(&milliseconds);
        if (SUCCEEDED(hr))
            *pSamplingPeriod = milliseconds;
        KALTRACE(trace::eMessages, cMethod.site, "= %d milliseconds\n",
                 static_cast<int>(milliseconds));
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetVisualizationSamplingPeriod(ULONG samplingPeriod) {
    static constexpr Method cMethod{"CKORA4ASL::SetVisualizationSamplingPeriod"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const HRESULT hr = m_uiKeysClient.SetSamplingPeriod(samplingPeriod);
        if (hr != S_OK)
            KALTRACE(trace::eMessages, cMethod.site,
                     "**** Error setting Visualization Sampling Period to %d msecs, "
                     "hr: 0x%08x\n",
                     static_cast<int>(samplingPeriod), static_cast<unsigned>(hr));
        else
            KALTRACE(trace::eMessages, cMethod.site, "set to %d milliseconds\n",
                     static_cast<int>(samplingPeriod));
        return hr;
    });
}

// The arrays are not tested for null: a caller always passes two of 20.
STDMETHODIMP CKORA4ASL::GetVisualizationData(float* pGain, float* pExcitation) {
    static constexpr Method cMethod{"CKORA4ASL::GetVisualizationData"};
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        TaskPtr<std::uint8_t> blob;
        std::uint32_t size = 0;
        const HRESULT hr = m_uiKeysClient.GetVisualizationBlob(&size, blob.Put());
        if (hr != S_OK) {
            KALTRACE(trace::eMessages, cMethod.site,
                     "**** Error getting Visualization Data, hr: 0x%08x\n",
                     static_cast<unsigned>(hr));
            return hr;
        }
        const KORA4VisKeyData data(blob.Get(), size);
        data.DebugPrint(this, "Visualization key Data READ (API)");
        const std::uint32_t records = data.GetNumAPOs();
        for (std::uint32_t band = 0; band < cDisplayBands; ++band) {
            const Levels loudest = LoudestOf(data, records, band);
            pGain[band] = loudest.gain;
            pExcitation[band] = loudest.excitation + cExcitationOffset;
        }
        return S_OK;
    });
}

}  // namespace kora4

// SPDX-License-Identifier: MIT
/* A client in C11 that includes the public header and nothing else: what it cannot use, no
 * C client can. The binary contract is checked while it compiles. */
#include "kora4api.h"
/* The private interfaces; not for clients. */
#include "comcallbackgate.h"
#include "kaltrixaudioprocessor.h"
#include "kaltrixveltokora4.h"
#include "kaltrixversion.h"

#include "layout_c.h"

#define CHECK(condition) _Static_assert(condition, #condition)
#define SLOTS(name, count) CHECK(sizeof(name##Vtbl) == (count) * sizeof(void*))
#define SLOT(name, slot, method) CHECK(offsetof(name##Vtbl, method) == (slot) * sizeof(void*))

CHECK(sizeof(KORA4PatchValueUnion) == 8);
CHECK(_Alignof(KORA4PatchValueUnion) == 4);
CHECK(offsetof(KORA4PatchValueUnion, m_technology) == 0);
CHECK(offsetof(KORA4PatchValueUnion, m_values) == 4);
CHECK(offsetof(KORA4PatchValueUnion, m_values.m_volumeSlider) == 4);
CHECK(offsetof(KORA4PatchValueUnion, m_values.m_enhancementSlider) == 4);
CHECK(offsetof(KORA4PatchValueUnion, m_values.m_headphoneVirtualizerSlider) == 4);
CHECK(offsetof(KORA4PatchValueUnion, m_values.m_speakerVirtualizerSlider) == 4);
CHECK(offsetof(KORA4PatchValueUnion, m_values.m_dynamicEQPatchIndex) == 4);
CHECK(sizeof(KORA4APITechnology) == 4);

CHECK(sizeof(GraphicEQData) == 324);
CHECK(_Alignof(GraphicEQData) == 4);
CHECK(offsetof(GraphicEQData, m_bands) == 0);
CHECK(offsetof(GraphicEQData, m_freq) == 4);
CHECK(offsetof(GraphicEQData, m_gain) == 164);
CHECK(sizeof(((GraphicEQData*)0)->m_freq) == KORA4_GRAPHIC_EQ_MAX_BANDS * sizeof(float));
CHECK(sizeof(((GraphicEQData*)0)->m_gain) == KORA4_GRAPHIC_EQ_MAX_BANDS * sizeof(float));

CHECK(eVolumeLeveler == 0);
CHECK(eGraphicEQ == 1);
CHECK(eIntelligentEQ == 2);
CHECK(eDialogEnhancer == 3);
CHECK(eVirtualizerHP == 4);
CHECK(eVirtualizerSpkr == 5);
CHECK(eNumberKORA4APITechnologies == 6);

SLOTS(IVeltoKORA4API, 33);
SLOTS(IVeltoKORA4APICallback, 9);
SLOTS(ICOMCallbackGate, 4);
SLOTS(IKaltrixAudioProcessor, 7);
SLOTS(IKaltrixVersion, 4);
SLOTS(IKaltrixVeltoKORA4, 16);

SLOT(IVeltoKORA4API, 3, GetVeltoKORA4Version);
SLOT(IVeltoKORA4API, 4, Initialize);
SLOT(IVeltoKORA4API, 5, RegisterChangeNotifications);
SLOT(IVeltoKORA4API, 6, UnregisterChangeNotifications);
SLOT(IVeltoKORA4API, 7, GetActiveProfile);
SLOT(IVeltoKORA4API, 8, SetActiveProfile);
SLOT(IVeltoKORA4API, 9, RevertActiveProfile);
SLOT(IVeltoKORA4API, 10, SetDemoProfileAndEnable);
SLOT(IVeltoKORA4API, 11, RevertFromDemoMode);
SLOT(IVeltoKORA4API, 12, ForceRevertFromDemoMode);
SLOT(IVeltoKORA4API, 13, GetVisualizationSamplingPeriod);
SLOT(IVeltoKORA4API, 14, SetVisualizationSamplingPeriod);
SLOT(IVeltoKORA4API, 15, GetVisualizationData);
SLOT(IVeltoKORA4API, 16, GetVeltoProfileEditorCommand);
SLOT(IVeltoKORA4API, 17, GetVeltoProfileSelectorCommand);
SLOT(IVeltoKORA4API, 18, GetVeltoDemoAppCommand);
SLOT(IVeltoKORA4API, 19, GetVeltoEnable);
SLOT(IVeltoKORA4API, 20, SetVeltoEnable);
SLOT(IVeltoKORA4API, 21, ToggleVeltoEnable);
SLOT(IVeltoKORA4API, 22, GetProfileTable);
SLOT(IVeltoKORA4API, 23, SetCustomProfileName);
SLOT(IVeltoKORA4API, 24, CreateCustomProfile);
SLOT(IVeltoKORA4API, 25, DeleteCustomProfile);
SLOT(IVeltoKORA4API, 26, GetTechnologyMasterEnables);
SLOT(IVeltoKORA4API, 27, GetTechnologyOnElseOff);
SLOT(IVeltoKORA4API, 28, SetTechnologyOnElseOff);
SLOT(IVeltoKORA4API, 29, GetSimplePatchValue);
SLOT(IVeltoKORA4API, 30, SetSimplePatchValue);
SLOT(IVeltoKORA4API, 31, SetGraphicEQData);
SLOT(IVeltoKORA4API, 32, GetGraphicEQData);

SLOT(IVeltoKORA4APICallback, 3, OnActiveProfileChange);
SLOT(IVeltoKORA4APICallback, 4, OnEnableStateChange);
SLOT(IVeltoKORA4APICallback, 5, OnCustomProfileTableChange);
SLOT(IVeltoKORA4APICallback, 6, OnTechnologyOnElseOffChange);
SLOT(IVeltoKORA4APICallback, 7, OnSimplePatchValueChange);
SLOT(IVeltoKORA4APICallback, 8, OnGraphicEQChange);

SLOT(ICOMCallbackGate, 3, Callback);
SLOT(IKaltrixVeltoKORA4, 6, LocalWrite);
SLOT(IKaltrixVeltoKORA4, 7, Configure);
SLOT(IKaltrixVeltoKORA4, 15, GetCounters);

CHECK(sizeof(KaltrixStreamFormat) == 36);
CHECK(sizeof(KaltrixHeader) == 16);
CHECK(sizeof(KaltrixParameterBlock) == 2900);

HRESULT InitializeFromC(IVeltoKORA4API* pApi) {
    return IVeltoKORA4API_Initialize(pApi);
}

const IID* ApiIidFromC(void) {
    return &IID_IVeltoKORA4API;
}

HRESULT CodeFromC(int index) {
    static const HRESULT codes[] = {APOERR_NOT_INITIALIZED, KORA4_S_DEMO_MODE_ACTIVE,
                                    KORA4_S_NOT_IN_DEMO_PROFILE, KORA4_S_NO_SUCH_CUSTOM_PROFILE,
                                    KORA4_S_NOT_A_PRESET_PROFILE};
    return codes[index];
}

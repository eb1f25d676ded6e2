// SPDX-License-Identifier: MIT
/* c_client: switches a profile, sets and reads a slider and the graphic EQ, and is told of
 * what a second process (c_client change) sets. Exit code 0 when all went as it should. */
#include <stdio.h>
#include <string.h>
#include <wchar.h>

#include "c_callback.h"

#define LONGEST_WAIT 20000 /* ms */

static const float cForeignAmount = 0.75f;

static int g_failures = 0;

static void Expect(int condition, const char* what) {
    printf("c_client: %s: %s\n", condition ? "ok" : "FAILED", what);
    fflush(stdout);
    if (!condition)
        ++g_failures;
}

static IVeltoKORA4API* CreateApi(void) {
    IVeltoKORA4API* pApi = NULL;
    HRESULT hr = CoCreateInstance(&CLSID_VeltoKORA4APITestCoclass, NULL, CLSCTX_INPROC_SERVER,
                                  &IID_IVeltoKORA4API, (void**)&pApi);
    Expect(SUCCEEDED(hr) && pApi, "the registered class creates an object");
    if (FAILED(hr))
        return NULL;
    Expect(IVeltoKORA4API_Initialize(pApi) == S_OK, "it initialises");
    return pApi;
}

/* What the second process does. */
static void Change(void) {
    IVeltoKORA4API* pApi = CreateApi();
    KORA4PatchValueUnion value;
    if (!pApi)
        return;
    memset(&value, 0, sizeof value);
    value.m_technology = eDialogEnhancer;
    value.m_values.m_enhancementSlider = cForeignAmount;
    Expect(IVeltoKORA4API_SetSimplePatchValue(pApi, &value) == S_OK, "changes the enhancer");
    Expect(IVeltoKORA4API_SetVeltoEnable(pApi, FALSE) == S_OK, "disables");
    Expect(IVeltoKORA4API_Release(pApi) == 0, "the second object goes");
}

static void UseProfiles(IVeltoKORA4API* pApi) {
    LONG profile = -1;
    Expect(IVeltoKORA4API_SetActiveProfile(pApi, KORA4_PROFILE_MUSIC) == S_OK,
           "the profile is switched");
    Expect(IVeltoKORA4API_GetActiveProfile(pApi, &profile) == S_OK &&
               profile == KORA4_PROFILE_MUSIC,
           "and is read back");
}

static void UseSlider(IVeltoKORA4API* pApi) {
    KORA4PatchValueUnion value;
    memset(&value, 0, sizeof value);
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 7;
    Expect(IVeltoKORA4API_SetSimplePatchValue(pApi, &value) == S_OK, "the leveler is set");
    value.m_values.m_volumeSlider = 99;
    Expect(IVeltoKORA4API_GetSimplePatchValue(pApi, &value) == S_OK &&
               value.m_values.m_volumeSlider == 7,
           "and is read back");
}

static void UseEqualizer(IVeltoKORA4API* pApi) {
    static const float gains[] = {-12.0f, -0.5f, 0.0f, 3.25f, 12.0f};
    const ULONG bands = ARRAYSIZE(gains);
    GraphicEQData eq;
    GraphicEQData read;
    memset(&eq, 0, sizeof eq);
    memset(&read, 0xFF, sizeof read);
    eq.m_bands = bands;
    for (ULONG i = 0; i < bands; ++i) {
        eq.m_freq[i] = 100.0f * (float)(i + 1);
        eq.m_gain[i] = gains[i];
    }
    Expect(IVeltoKORA4API_SetGraphicEQData(pApi, &eq) == S_OK, "the equalizer is set");
    Expect(IVeltoKORA4API_GetGraphicEQData(pApi, &read) == S_OK &&
               memcmp(&eq, &read, sizeof eq) == 0,
           "and is read back");
}

/* Starts this program once more, as the one who changes settings. */
static HANDLE StartSecondProcess(void) {
    STARTUPINFOW startup;
    PROCESS_INFORMATION process;
    wchar_t path[MAX_PATH];
    wchar_t command[MAX_PATH + 16];
    memset(&startup, 0, sizeof startup);
    startup.cb = sizeof startup;
    GetModuleFileNameW(NULL, path, MAX_PATH);
    swprintf(command, ARRAYSIZE(command), L"\"%ls\" change", path);
    if (!CreateProcessW(path, command, NULL, NULL, FALSE, 0, NULL, NULL, &startup, &process))
        return NULL;
    CloseHandle(process.hThread);
    return process.hProcess;
}

static int IsTold(const Callback* pCallback) {
    return pCallback->valueCalls != 0 && pCallback->enableCalls != 0;
}

/* Lets calls into this apartment until both changes were told. */
static void WaitUntilTold(const Callback* pCallback) {
    const ULONGLONG end = GetTickCount64() + LONGEST_WAIT;
    while (!IsTold(pCallback) && GetTickCount64() < end) {
        MSG message;
        MsgWaitForMultipleObjects(0, NULL, FALSE, 100, QS_ALLINPUT);
        while (PeekMessageW(&message, NULL, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

static void BeTold(Callback* pCallback) {
    DWORD exitCode = 1;
    HANDLE process = StartSecondProcess();
    Expect(process != NULL, "a second process starts");
    if (!process)
        return;
    WaitUntilTold(pCallback);
    Expect(WaitForSingleObject(process, LONGEST_WAIT) == WAIT_OBJECT_0 &&
               GetExitCodeProcess(process, &exitCode) && exitCode == 0,
           "it does its work");
    CloseHandle(process);
    Expect(pCallback->valueCalls == 1 && pCallback->value.m_technology == eDialogEnhancer &&
               pCallback->value.m_values.m_enhancementSlider == cForeignAmount,
           "its value is told");
    Expect(pCallback->enableCalls == 1 && pCallback->enable == FALSE, "its switch is told");
    Expect(pCallback->profileCalls == 0 && pCallback->eqCalls == 0 &&
               pCallback->tableCalls == 0 && pCallback->switchCalls == 0,
           "own changes are not");
}

static void DoMainJob(void) {
    Callback callback;
    IVeltoKORA4API* pApi = CreateApi();
    if (!pApi)
        return;
    Callback_Construct(&callback);
    Expect(IVeltoKORA4API_RegisterChangeNotifications(pApi, &callback.api) == S_OK,
           "a callback is registered");
    UseProfiles(pApi);
    UseSlider(pApi);
    UseEqualizer(pApi);
    BeTold(&callback);
    Expect(callback.references == 2, "the object holds the callback");
    Expect(
        IVeltoKORA4API_UnregisterChangeNotifications(pApi) == S_OK && callback.references == 1,
        "and lets it go");
    Expect(IVeltoKORA4API_Release(pApi) == 0, "the object goes");
}

int main(int argc, char** argv) {
    if (FAILED(CoInitializeEx(NULL, COINIT_APARTMENTTHREADED)))
        return 2;
    if (argc > 1 && strcmp(argv[1], "change") == 0)
        Change();
    else
        DoMainJob();
    CoUninitialize();
    return g_failures == 0 ? 0 : 1;
}

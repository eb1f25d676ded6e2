// SPDX-License-Identifier: MIT
// The API object.
#pragma once

#include <windows.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>

#include "api/callback_guard.h"
#include "api/initialize_guard.h"
#include "api/method_frame.h"
#include "monitor/reg_key_monitor.h"
#include "monitor/reg_key_monitor_client.h"
#include "platform/com_object.h"
#include "platform/non_copyable.h"
#include "platform/slim_lock.h"
#include "store/access/reg_prop_keys_access.h"
#include "store/clients/ui_keys_client.h"
#include "veltokora4api.h"

namespace kora4 {

// What a client creates: a thin front on the settings store, and the source of the client's
// change notifications. Create it as ComObject<CKORA4ASL>. Created, initialised, destroyed:
// there is no way back from initialised.
//
// Threads. It lives in the apartment that creates it. In a single-threaded apartment all
// calls come in on one thread; in the multithreaded one any number may come in at a time,
// notifications on the monitor's thread among them. Methods on the store need no lock of
// this object: the store's named mutex keeps them apart.
//
// Locks, in the order of taking; none is taken while the named mutex is held.
//   m_initializeGuard  one Initialize at a time. No lock: the others wait for its end.
//   m_callbackGuard    the registered callback. Recursive. Held while the client's callback
//                      methods run, which may call any method of this object.
//   m_readinessLock    the step from not initialised to initialised, and the notifications
//                      that arrive before it. The named mutex may be waited for inside.
class CKORA4ASL : public IVeltoKORA4API, public RegKeyMonitorClient, NonCopyable {
  public:
    CKORA4ASL();
    virtual ~CKORA4ASL() = default;

    // The destructor's first part, run while the reference counting of the wrapper still
    // works: a notification that is on its way takes and drops a reference. Releases the
    // callback and stops the monitor.
    void FinalRelease();

    // IVeltoKORA4API
    STDMETHODIMP GetVeltoKORA4Version(ULONG* kora4Version_3, ULONG* kora4Version_2,
                                      ULONG* kora4Version_1, ULONG* kora4Version_0) override;
    STDMETHODIMP Initialize() override;
    STDMETHODIMP RegisterChangeNotifications(IVeltoKORA4APICallback* pIAPICallback) override;
    STDMETHODIMP UnregisterChangeNotifications() override;
    STDMETHODIMP GetActiveProfile(LONG* pProfileID) override;
    STDMETHODIMP SetActiveProfile(LONG profileID) override;
    STDMETHODIMP RevertActiveProfile() override;
    STDMETHODIMP SetDemoProfileAndEnable(LONG demoProfileID, BOOL demoVeltoEnable) override;
    STDMETHODIMP RevertFromDemoMode() override;
    STDMETHODIMP ForceRevertFromDemoMode() override;
    STDMETHODIMP GetVisualizationSamplingPeriod(ULONG* pSamplingPeriod) override;
    STDMETHODIMP SetVisualizationSamplingPeriod(ULONG samplingPeriod) override;
    STDMETHODIMP GetVisualizationData(float* pGain, float* pExcitation) override;
    STDMETHODIMP GetVeltoProfileEditorCommand(LPWSTR* ppwVeltoProfileEditorCommand) override;
    STDMETHODIMP GetVeltoProfileSelectorCommand(
        LPWSTR* ppwVeltoProfileSelectorCommand) override;
    STDMETHODIMP GetVeltoDemoAppCommand(LPWSTR* ppwVeltoDemoAppCommand) override;
    STDMETHODIMP GetVeltoEnable(BOOL* pVeltoEnable) override;
    STDMETHODIMP SetVeltoEnable(BOOL VeltoEnable) override;
    STDMETHODIMP ToggleVeltoEnable(BOOL* pVeltoEnable) override;
    STDMETHODIMP GetProfileTable(LPWSTR* pwProfileNames) override;
    STDMETHODIMP SetCustomProfileName(LONG customProfileID,
                                      LPCWSTR pwCustomProfileName) override;
    STDMETHODIMP CreateCustomProfile(LONG customProfileID, LPCWSTR pwName) override;
    STDMETHODIMP DeleteCustomProfile(LONG customProfileID) override;
    STDMETHODIMP GetTechnologyMasterEnables(ULONG* pdwMasterEnables) override;
    STDMETHODIMP GetTechnologyOnElseOff(KORA4APITechnology technology,
                                        BOOL* pOnElseOff) override;
    STDMETHODIMP SetTechnologyOnElseOff(KORA4APITechnology technology, BOOL onElseOff) override;
    STDMETHODIMP GetSimplePatchValue(KORA4PatchValueUnion* pGetPatchValue) override;
    STDMETHODIMP SetSimplePatchValue(KORA4PatchValueUnion* pSetPatchValue) override;
    STDMETHODIMP SetGraphicEQData(GraphicEQData* pGraphicEQData) override;
    STDMETHODIMP GetGraphicEQData(GraphicEQData* pGraphicEQData) override;

    // RegKeyMonitorClient. Holds a reference to the object for its length: when a callback
    // drops the last one, the object goes at the end of this call, on this thread.
    HRESULT OnKeyChangeNotify() override;

  protected:
    // The interface pointer for `iid`, without a reference; null for an interface that the
    // object does not have.
    void* FindInterface(REFIID iid);

  private:
    // Brings the object up step by step; a later call goes on where this one failed.
    HRESULT BringUp();

    // Starts the monitor, after an earlier one that has ended by itself was cleared away.
    HRESULT StartMonitor();

    // Reads the process-wide trace word from the store; the current one stays if there is
    // none.
    void LoadTraceFlags();

    // The last step: catches up with notifications that came in meanwhile, then lets methods
    // in.
    HRESULT BecomeReady() EXCLUDES(m_readinessLock);

    // False before the last step; the notification is then remembered for it.
    bool IsReadyForNotification() EXCLUDES(m_readinessLock);

    // Makes the calls for `changes` to the callback, if it was registered before the analysis.
    HRESULT Notify(ChangeSet& changes);

    // Replaces the registered callback and counts that; null unregisters.
    void SetCallback(IVeltoKORA4APICallback* pICallback) REQUIRES(m_callbackGuard);

    // The common part of the three methods for companion applications.
    HRESULT GetCommand(const Method& method, CompanionCommand command, LPWSTR* ppwCommand);

    // Destroyed from the last to the first: the keys client goes before the key access that it
    // points to. The monitor has gone before all of them, in FinalRelease.
    std::atomic<bool> m_initialized{false};
    CallbackGuard m_callbackGuard;
    Microsoft::WRL::ComPtr<IVeltoKORA4APICallback> m_spIASLCallback GUARDED_BY(m_callbackGuard);
    Microsoft::WRL::ComPtr<ComObject<RegKeyMonitor>> m_pRegKeyMonitor;
    KORA4RegPropKeysAccess m_regPropKeysAccess;
    KORA4UIKeysClient m_uiKeysClient{&m_regPropKeysAccess};

    // How often m_spIASLCallback has changed, and how many analyses had begun at the last
    // change. It hears of what later ones find.
    std::uint32_t m_registration GUARDED_BY(m_callbackGuard) = 0;
    std::uint32_t m_registeredAfter GUARDED_BY(m_callbackGuard) = 0;
    InitializeGuard m_initializeGuard;
    SlimLock m_readinessLock ACQUIRED_AFTER(m_callbackGuard);
    bool m_notificationMissed GUARDED_BY(m_readinessLock) = false;
};

}  // namespace kora4

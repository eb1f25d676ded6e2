// SPDX-License-Identifier: MIT
// The KORA4 API for C++17, without a library to link but ole32: results that cannot be taken
// for values, standard types, a base class for callbacks. Optional: everything is done through
// kora4api.h, and both can be mixed.
//
//   kora4::ApartmentGuard apartment(kora4::ApartmentKind::eMultithreaded);
//   auto api = kora4::Api::Open();
//   if (!api)
//       return Complain(api.Text());
//   if (auto profile = api->GetActiveProfile())
//       Show(*profile);
//
// Nothing here needs exceptions. Functions throw nothing but what their comments say.
#ifndef KORA4_HPP
#define KORA4_HPP

#include <wrl/client.h>

#include <iterator>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "kora4/activation.hpp"
#include "kora4/callback.hpp"
#include "kora4/echo_guard.hpp"
#include "kora4/equalizer.hpp"
#include "kora4/lock_hold.hpp"
#include "kora4/result.hpp"
#include "kora4/values.hpp"
#include "kora4api.h"

namespace kora4 {
inline namespace v1 {

namespace detail {

// A string of the library's, to be freed by the client.
class TaskText {
  public:
    TaskText() noexcept = default;
    ~TaskText() { CoTaskMemFree(m_text); }
    TaskText(const TaskText&) = delete;
    TaskText& operator=(const TaskText&) = delete;

    LPWSTR* Out() noexcept { return &m_text; }
    std::optional<std::wstring> Copy() const {
        return m_text ? std::optional<std::wstring>(m_text) : std::nullopt;
    }

  private:
    LPWSTR m_text = nullptr;
};

// The callback whose guard an Api uses, if any.
class GuardSlot {
  public:
    GuardSlot() noexcept = default;
    GuardSlot(GuardSlot&& other) noexcept : m_callback(std::move(other.m_callback)) {}
    void Swap(GuardSlot& other) noexcept { m_callback.Swap(other.m_callback); }

    void Put(Callback* pCallback) noexcept {
        Microsoft::WRL::ComPtr<Callback> callback(pCallback);
        const LockHold hold(m_lock);
        m_callback.Swap(callback);
    }
    Microsoft::WRL::ComPtr<Callback> Get() const noexcept {
        const LockHold hold(m_lock);
        return m_callback;
    }

  private:
    mutable SRWLOCK m_lock = SRWLOCK_INIT;
    Microsoft::WRL::ComPtr<Callback> m_callback;
};

}  // namespace detail

// The API object, owned. Methods have the names of IVeltoKORA4API, where more about each is
// said; each is one call of the object, and its results are the object's, unless its comment
// says otherwise.
//
// Results that several share: APOERR_NOT_INITIALIZED before Initialize; E_INVALIDARG for a
// number or value outside its range; E_FAIL when the store refuses a write;
// KORA4_S_DEMO_MODE_ACTIVE when a demo profile keeps the call from changing anything. While a
// demo profile is active, setting a value or a switch returns S_OK and changes nothing.
//
// Threads: in a single-threaded apartment, its thread; in the multithreaded apartment, any of
// its threads, several at a time. Moving and destroying must not run beside another call. Every
// call may wait for other processes that use the store; a user interface makes its calls on a
// worker thread.
class Api {
  public:
    // ---- Life ---------------------------------------------------------------------------

    // The object of the registered library, not initialised. REGDB_E_CLASSNOTREG: the library
    // is not registered; CO_E_NOTINITIALIZED: this thread is in no apartment.
    static Result<Api> Create() noexcept {
        Microsoft::WRL::ComPtr<IVeltoKORA4API> api;
        const HRESULT hr = CoCreateInstance(__uuidof(VeltoKORA4APITestCoclass), nullptr,
                                            CLSCTX_INPROC_SERVER, __uuidof(IVeltoKORA4API),
                                            reinterpret_cast<void**>(api.GetAddressOf()));
        return Made(hr, std::move(api), detail::Module());
    }

    // The same from a file, whether the library is registered or not. `path` is absolute. The
    // file stays loaded while the Api lives, and at least as long as COM needs it. A Win32
    // error as HRESULT when it cannot be loaded. The settings need the keys that registering
    // creates: without them Initialize fails.
    static Result<Api> Create(const wchar_t* path) noexcept {
        detail::Module module(LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
        if (!module)
            return Result<Api>(kora4::Status(HRESULT_FROM_WIN32(GetLastError())));
        Microsoft::WRL::ComPtr<IVeltoKORA4API> api;
        const HRESULT hr = module.CreateApi(api.GetAddressOf());
        return Made(hr, std::move(api), std::move(module));
    }

    // Create and Initialize.
    static Result<Api> Open() noexcept { return Opened(Create()); }
    static Result<Api> Open(const wchar_t* path) noexcept { return Opened(Create(path)); }

    // A pointer from elsewhere, such as one that was carried here from another apartment.
    explicit Api(Microsoft::WRL::ComPtr<IVeltoKORA4API> api) noexcept : m_api(std::move(api)) {}

    // The last one releases the object: unregisters, stops watching and closes the store.
    ~Api() = default;
    // What was moved away has no object: it can only be assigned to or destroyed.
    Api(Api&&) noexcept = default;
    Api& operator=(Api&& other) noexcept {
        Api moved(std::move(other));
        m_module.Swap(moved.m_module);
        m_api.Swap(moved.m_api);
        m_guard.Swap(moved.m_guard);
        return *this;
    }

    // The object itself, for calls and for marshalling; the Api keeps its reference.
    IVeltoKORA4API* Get() const noexcept { return m_api.Get(); }

    // Opens the store and starts watching. Not needed after Open; S_OK and nothing done when it
    // has succeeded before. E_FAIL: the store's keys do not exist.
    Status Initialize() const noexcept { return Status(m_api->Initialize()); }

    // The version of the library. Needs no Initialize.
    Result<Version> GetVeltoKORA4Version() const noexcept {
        return Read<Version>([this](Version* pVersion) {
            ULONG(&numbers)[4] = pVersion->numbers;
            return m_api->GetVeltoKORA4Version(&numbers[0], &numbers[1], &numbers[2],
                                               &numbers[3]);
        });
    }

    // Tells the callback of what others change, in place of one that was registered before.
    // The object holds a reference. Read what is shown after this, not before.
    Status RegisterChangeNotifications(IVeltoKORA4APICallback* pCallback) noexcept {
        return Register(pCallback, nullptr);
    }

    // The same, and from now on SetSimplePatchValue and SetGraphicEQData end with S_OK and
    // without a call when the value is known to be stored, because the callback was told it or
    // this Api has set it. Two panels that set what they are told do not answer each other
    // for ever then.
    Status RegisterGuarded(Callback* pCallback) noexcept {
        return Register(pCallback, pCallback);
    }

    // Afterwards no handler runs on another thread and none will be called. Hold no lock that
    // a handler waits for. S_OK also when nothing is registered.
    Status UnregisterChangeNotifications() noexcept {
        m_guard.Put(nullptr);
        return Status(m_api->UnregisterChangeNotifications());
    }

    // ---- Profiles: KORA4_PROFILE_... ----------------------------------------------------

    // The number of the active profile.
    Result<LONG> GetActiveProfile() const noexcept {
        return Read<LONG>([this](LONG* p) { return m_api->GetActiveProfile(p); });
    }

    // Makes a preset or custom profile the active one. KORA4_S_NO_SUCH_CUSTOM_PROFILE.
    Status SetActiveProfile(LONG profile) noexcept {
        return Replaced(m_api->SetActiveProfile(profile));
    }

    // Gives the active preset profile its factory values. KORA4_S_NOT_A_PRESET_PROFILE.
    Status RevertActiveProfile() noexcept { return Replaced(m_api->RevertActiveProfile()); }

    // Enters the demo of a preset, or goes from one demo to another. `demoProfile`:
    // KORA4_PROFILE_DEMO_...; `isEnabled`: the master enable meanwhile.
    Status SetDemoProfileAndEnable(LONG demoProfile, bool isEnabled) noexcept {
        return Replaced(m_api->SetDemoProfileAndEnable(demoProfile, isEnabled ? TRUE : FALSE));
    }

    // Leaves the demo that this object entered. KORA4_S_DEMO_MODE_ACTIVE: it entered none;
    // KORA4_S_NOT_IN_DEMO_PROFILE: somebody else has ended it.
    Status RevertFromDemoMode() noexcept { return Replaced(m_api->RevertFromDemoMode()); }

    // Leaves the demo, whoever entered it; S_OK also when there is none.
    Status ForceRevertFromDemoMode() noexcept {
        return Replaced(m_api->ForceRevertFromDemoMode());
    }

    // The names of the custom profiles that exist. When one cannot be read, the failure and no
    // table. May throw std::bad_alloc.
    Result<ProfileTable> GetProfileTable() const {
        detail::TaskText texts[KORA4_PROFILE_TABLE_ENTRIES];
        LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
        const HRESULT hr = m_api->GetProfileTable(names);
        for (std::size_t i = 0; i < std::size(names); ++i)
            *texts[i].Out() = names[i];
        ProfileTable table;
        for (std::size_t i = 0; SUCCEEDED(hr) && i < table.size(); ++i)
            table[i] = texts[i].Copy();
        return Valued(hr, std::move(table));
    }

    // Renames a custom profile; E_FAIL when it does not exist. `name`: at most
    // KORA4_CUSTOM_NAME_MAX_LENGTH units, which is not checked.
    Status SetCustomProfileName(LONG profile, const std::wstring& name) noexcept {
        return Status(m_api->SetCustomProfileName(profile, name.c_str()));
    }

    // Copies the active profile's values to a custom profile that does not exist yet (E_FAIL).
    Status CreateCustomProfile(LONG profile, const std::wstring& name) noexcept {
        return Status(m_api->CreateCustomProfile(profile, name.c_str()));
    }

    // Deletes a custom profile. E_FAIL: it is active; S_FALSE: it does not exist.
    Status DeleteCustomProfile(LONG profile) noexcept {
        return Status(m_api->DeleteCustomProfile(profile));
    }

    // ---- Switches -----------------------------------------------------------------------
    // A Result<bool> in a condition says whether there is a value; `*result` is the value.

    // Whether audio processing is on: the master enable.
    Result<bool> GetVeltoEnable() const noexcept {
        return ReadBool([this](BOOL* p) { return m_api->GetVeltoEnable(p); });
    }
    // Switches all audio processing on or off.
    Status SetVeltoEnable(bool isEnabled) noexcept {
        return Status(m_api->SetVeltoEnable(isEnabled ? TRUE : FALSE));
    }
    // Switches the master enable over; the state after that.
    Result<bool> ToggleVeltoEnable() noexcept {
        return ReadBool([this](BOOL* p) { return m_api->ToggleVeltoEnable(p); });
    }

    // Whether a technology of the active profile is switched on.
    Result<bool> GetTechnologyOnElseOff(KORA4APITechnology technology) const noexcept {
        return ReadBool([&](BOOL* p) { return m_api->GetTechnologyOnElseOff(technology, p); });
    }
    // Switches a technology of the active profile on or off.
    Status SetTechnologyOnElseOff(KORA4APITechnology technology, bool isOn) noexcept {
        return Status(m_api->SetTechnologyOnElseOff(technology, isOn ? TRUE : FALSE));
    }

    // What the installed engine supports, as Initialize found it: KORA4_ENGINE_...; 0: nothing.
    Result<ULONG> GetTechnologyMasterEnables() const noexcept {
        return Read<ULONG>([this](ULONG* p) { return m_api->GetTechnologyMasterEnables(p); });
    }

    // ---- Values of the active profile ---------------------------------------------------

    // The value of any technology but eGraphicEQ (E_INVALIDARG). What is stored can be outside
    // the limits of what may be set.
    Result<Value> GetSimplePatchValue(KORA4APITechnology technology) const noexcept {
        KORA4PatchValueUnion value{};
        value.m_technology = technology;
        const HRESULT hr = m_api->GetSimplePatchValue(&value);
        return Valued(hr, Value(value));
    }
    // Sets the value of a technology. E_INVALIDARG: outside the limits, and nothing was
    // changed.
    Status SetSimplePatchValue(const Value& value) noexcept {
        return SetGuarded(value.Raw(), [this](KORA4PatchValueUnion* p) {
            return m_api->SetSimplePatchValue(p);
        });
    }

    // The volume leveler; KORA4_VOLUME_LEVELER_MOVIE_DEFAULT in Movie until it is set.
    Result<ULONG> GetVolumeLeveler() const noexcept { return Amount<ULONG>(eVolumeLeveler); }
    // KORA4_VOLUME_LEVELER_MIN to _MAX.
    Status SetVolumeLeveler(ULONG amount) noexcept {
        return SetSimplePatchValue(Value(eVolumeLeveler, amount));
    }

    // The curve of the intelligent equalizer.
    Result<Curve> GetIntelligentEq() const noexcept { return Amount<Curve>(eIntelligentEQ); }
    // Chooses the curve of the intelligent equalizer.
    Status SetIntelligentEq(Curve curve) noexcept {
        return SetSimplePatchValue(Value(eIntelligentEQ, static_cast<ULONG>(curve)));
    }

    // The dialog enhancer, a share.
    Result<float> GetDialogEnhancer() const noexcept { return Amount<float>(eDialogEnhancer); }
    // KORA4_DIALOG_ENHANCER_MIN to _MAX, stored with six decimals.
    Status SetDialogEnhancer(float amount) noexcept {
        return SetSimplePatchValue(Value(eDialogEnhancer, static_cast<double>(amount)));
    }

    // The headphone virtualizer.
    Result<float> GetHeadphoneVirtualizer() const noexcept {
        return Amount<float>(eVirtualizerHP);
    }
    // KORA4_VIRTUALIZER_MIN to _MAX, stored with six decimals.
    Status SetHeadphoneVirtualizer(float amount) noexcept {
        return SetSimplePatchValue(Value(eVirtualizerHP, static_cast<double>(amount)));
    }
    // The speaker virtualizer; KORA4_SPEAKER_VIRTUALIZER_DEFAULT until it is set.
    Result<float> GetSpeakerVirtualizer() const noexcept {
        return Amount<float>(eVirtualizerSpkr);
    }
    // KORA4_VIRTUALIZER_MIN to _MAX, stored with six decimals.
    Status SetSpeakerVirtualizer(float amount) noexcept {
        return SetSimplePatchValue(Value(eVirtualizerSpkr, static_cast<double>(amount)));
    }

    // The bands of the graphic equalizer that are in use. May throw std::bad_alloc.
    Result<Bands> GetGraphicEQData() const {
        GraphicEQData data;
        data.m_bands = 0;
        const HRESULT hr = m_api->GetGraphicEQData(&data);
        return Valued(hr, ToBands(data));
    }
    // Sets the bands of the graphic equalizer, KORA4_GRAPHIC_EQ_MAX_BANDS at most; others are
    // left out. Gains are moved into their limits and stored in steps of 1/256 dB, frequencies
    // in whole hertz.
    Status SetGraphicEQData(const Bands& bands) noexcept {
        return SetGuarded(ToGraphicEQ(bands),
                          [this](GraphicEQData* p) { return m_api->SetGraphicEQData(p); });
    }

    // ---- Levels and companion commands --------------------------------------------------

    // How often to read the levels, in milliseconds.
    Result<ULONG> GetVisualizationSamplingPeriod() const noexcept {
        return Read<ULONG>(
            [this](ULONG* p) { return m_api->GetVisualizationSamplingPeriod(p); });
    }
    // Any number of milliseconds may be stored, 0 included.
    Status SetVisualizationSamplingPeriod(ULONG milliseconds) noexcept {
        return Status(m_api->SetVisualizationSamplingPeriod(milliseconds));
    }

    // The present levels. Outcome::eAbsent: the engine has published nothing.
    Result<Levels> GetVisualizationData() const noexcept {
        return Read<Levels>([this](Levels* p) {
            return m_api->GetVisualizationData(p->gains.data(), p->excitations.data());
        });
    }

    // The command line of the profile editor, as Initialize found it; empty when none is
    // configured. May throw std::bad_alloc.
    Result<std::optional<std::wstring>> GetVeltoProfileEditorCommand() const {
        return Command(&IVeltoKORA4API::GetVeltoProfileEditorCommand);
    }
    // The same of the profile selector.
    Result<std::optional<std::wstring>> GetVeltoProfileSelectorCommand() const {
        return Command(&IVeltoKORA4API::GetVeltoProfileSelectorCommand);
    }
    // The same of the demo application.
    Result<std::optional<std::wstring>> GetVeltoDemoAppCommand() const {
        return Command(&IVeltoKORA4API::GetVeltoDemoAppCommand);
    }

  private:
    Api(Microsoft::WRL::ComPtr<IVeltoKORA4API> api, detail::Module module) noexcept
        : m_module(std::move(module)), m_api(std::move(api)) {}

    static Result<Api> Made(HRESULT hr, Microsoft::WRL::ComPtr<IVeltoKORA4API> api,
                            detail::Module module) noexcept {
        if (FAILED(hr))
            return Result<Api>(kora4::Status(hr));
        return Result<Api>(Api(std::move(api), std::move(module)));
    }

    static Result<Api> Opened(Result<Api> created) noexcept {
        if (!created)
            return created;
        const kora4::Status status = created->Initialize();
        return status ? std::move(created) : Result<Api>(status);
    }

    template <typename T>
    static Result<T> Valued(HRESULT hr, T value) noexcept {
        const kora4::Status status(hr);
        return status ? Result<T>(std::move(value), hr) : Result<T>(status);
    }

    template <typename T, typename Call>
    static Result<T> Read(Call call) noexcept {
        T value{};
        const HRESULT hr = call(&value);
        return Valued(hr, value);
    }

    template <typename Call>
    static Result<bool> ReadBool(Call call) noexcept {
        BOOL value = FALSE;
        const HRESULT hr = call(&value);
        return Valued(hr, value != FALSE);
    }

    template <typename T>
    Result<T> Amount(KORA4APITechnology technology) const noexcept {
        KORA4PatchValueUnion value{};
        value.m_technology = technology;
        const HRESULT hr = m_api->GetSimplePatchValue(&value);
        if constexpr (std::is_same_v<T, float>)
            return Valued(hr, value.m_values.m_enhancementSlider);
        else
            return Valued(hr, static_cast<T>(value.m_values.m_volumeSlider));
    }

    template <typename Method>
    Result<std::optional<std::wstring>> Command(Method method) const {
        detail::TaskText text;
        const HRESULT hr = (m_api.Get()->*method)(text.Out());
        return Valued(hr, text.Copy());
    }

    Status Register(IVeltoKORA4APICallback* pCallback, Callback* pGuarded) noexcept {
        // What a callback was told before it was registered may be long past.
        if (pGuarded)
            pGuarded->Guard().Forget();
        const Status status(m_api->RegisterChangeNotifications(pCallback));
        if (status)
            m_guard.Put(pGuarded);
        return status;
    }

    // After a call that may have replaced all values.
    Status Replaced(HRESULT hr) const noexcept {
        if (const Microsoft::WRL::ComPtr<Callback> guarded = m_guard.Get())
            guarded->Guard().Forget();
        return Status(hr);
    }

    template <typename Record, typename Set>
    Status SetGuarded(Record record, Set set) const noexcept {
        const Microsoft::WRL::ComPtr<Callback> guarded = m_guard.Get();
        return Status(guarded ? guarded->Guard().Set(record, [&] { return set(&record); })
                              : set(&record));
    }

    // The members go from the last to the first: the object before its code.
    detail::Module m_module;
    Microsoft::WRL::ComPtr<IVeltoKORA4API> m_api;
    detail::GuardSlot m_guard;
};

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_HPP

// SPDX-License-Identifier: MIT
// Loads the library, runs apartments, and records the calls of a callback as text.
#include "support/com_client.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "support/heap_check.h"

namespace kora4::test {

using Microsoft::WRL::ComPtr;

Apartment::Apartment(DWORD model) {
    CoInitializeEx(nullptr, model);
}

Apartment::~Apartment() {
    CoUninitialize();
}

bool PumpUntil(const std::function<bool()>& done, HANDLE hint, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!done()) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end)
            return false;
        // Without a hint the condition is looked at again after a while.
        const ULONGLONG left = end - now;
        const DWORD wait = static_cast<DWORD>(hint ? left : std::min<ULONGLONG>(left, 20));
        MsgWaitForMultipleObjectsEx(hint ? 1 : 0, hint ? &hint : nullptr, wait, QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
        MSG message;
        // Calls that cause each other never leave the queue empty.
        constexpr int cMostAtATime = 100;
        for (int i = 0; i < cMostAtATime && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
             ++i) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return true;
}

ApiLibrary::ApiLibrary() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring file(path);
    file.replace(file.find_last_of(L'\\') + 1, std::wstring::npos, L"QXA64T.dll");
    m_module = LoadLibraryW(file.c_str());
    if (m_module)
        CheckHeapOf(m_module);
}

// A pass that is on its way releases the object on its own thread.
ApiLibrary::~ApiLibrary() {
    if (m_module && PumpUntil([&] { return CanUnloadNow() == S_OK; }))
        FreeLibrary(m_module);
}

template <typename Function>
Function* ApiLibrary::Find(const char* name) const {
    return m_module ? reinterpret_cast<Function*>(
                          reinterpret_cast<void*>(GetProcAddress(m_module, name)))
                    : nullptr;
}

HRESULT ApiLibrary::GetClassObject(REFCLSID clsid, REFIID iid, void** ppv) const {
    using Get = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
    Get* const pGet = Find<Get>("DllGetClassObject");
    return pGet ? pGet(clsid, iid, ppv) : HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);
}

HRESULT ApiLibrary::CanUnloadNow() const {
    using Can = HRESULT STDAPICALLTYPE();
    Can* const pCan = Find<Can>("DllCanUnloadNow");
    return pCan ? pCan() : HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);
}

ComPtr<IVeltoKORA4API> ApiLibrary::Create() const {
    ComPtr<IClassFactory> spFactory;
    ComPtr<IVeltoKORA4API> spApi;
    if (SUCCEEDED(GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_PPV_ARGS(&spFactory))))
        spFactory->CreateInstance(nullptr, IID_PPV_ARGS(&spApi));
    return spApi;
}

CallbackRecorder::CallbackRecorder()
    : Counted(1), m_called(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

CallbackRecorder::~CallbackRecorder() {
    if (m_pDestroyed)
        *m_pDestroyed = true;
}

ComPtr<CallbackRecorder> CallbackRecorder::Create() {
    ComPtr<CallbackRecorder> spRecorder;
    *spRecorder.GetAddressOf() = new CallbackRecorder;
    return spRecorder;
}

void CallbackRecorder::React(const std::string& method, std::function<HRESULT()> reaction) {
    const std::lock_guard<std::mutex> hold(m_mutex);
    m_reactions[method] = std::move(reaction);
}

std::vector<std::string> CallbackRecorder::Log() const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_log;
}

void CallbackRecorder::ClearLog() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    m_log.clear();
}

bool CallbackRecorder::WaitForLines(std::size_t count, DWORD milliseconds) {
    return PumpUntil([&] { return Log().size() >= count; }, m_called.Get(), milliseconds);
}

bool CallbackRecorder::WaitForLine(const std::string& line, DWORD milliseconds) {
    return PumpUntil(
        [&] {
            const std::vector<std::string> log = Log();
            return std::find(log.begin(), log.end(), line) != log.end();
        },
        m_called.Get(), milliseconds);
}

HRESULT CallbackRecorder::Record(const std::string& method, const std::string& arguments) {
    std::function<HRESULT()> reaction;
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_callThread = GetCurrentThreadId();
        m_log.push_back(method + "(" + arguments + ")");
        const auto found = m_reactions.find(method);
        if (found != m_reactions.end())
            reaction = found->second;
    }
    SetEvent(m_called.Get());
    return reaction ? reaction() : S_OK;
}

namespace {

const char* TechnologyName(KORA4APITechnology technology) {
    switch (technology) {
        case eVolumeLeveler:
            return "eVolumeLeveler";
        case eGraphicEQ:
            return "eGraphicEQ";
        case eIntelligentEQ:
            return "eIntelligentEQ";
        case eDialogEnhancer:
            return "eDialogEnhancer";
        case eVirtualizerHP:
            return "eVirtualizerHP";
        case eVirtualizerSpkr:
            return "eVirtualizerSpkr";
        default:
            return "?";
    }
}

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string ValueText(const KORA4PatchValueUnion& value) {
    switch (value.m_technology) {
        case eVolumeLeveler:
        case eIntelligentEQ:
            return std::to_string(value.m_values.m_volumeSlider);
        default:
            return Number(static_cast<double>(value.m_values.m_enhancementSlider));
    }
}

}  // namespace

STDMETHODIMP CallbackRecorder::OnActiveProfileChange(LONG profileID) {
    return Record("OnActiveProfileChange", std::to_string(profileID));
}

STDMETHODIMP CallbackRecorder::OnEnableStateChange(BOOL onElseOff) {
    return Record("OnEnableStateChange", std::to_string(onElseOff));
}

STDMETHODIMP CallbackRecorder::OnCustomProfileTableChange() {
    return Record("OnCustomProfileTableChange", "");
}

STDMETHODIMP CallbackRecorder::OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                                           BOOL onElseOff) {
    return Record("OnTechnologyOnElseOffChange",
                  std::string(TechnologyName(technology)) + ", " + std::to_string(onElseOff));
}

STDMETHODIMP CallbackRecorder::OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) {
    return Record("OnSimplePatchValueChange",
                  std::string(TechnologyName(pPatchValue->m_technology)) + ", " +
                      ValueText(*pPatchValue));
}

STDMETHODIMP CallbackRecorder::OnGraphicEQChange(GraphicEQData* pGraphicData) {
    return Record("OnGraphicEQChange",
                  std::to_string(pGraphicData->m_bands) + " bands, first gain " +
                      Number(static_cast<double>(pGraphicData->m_gain[0])));
}

}  // namespace kora4::test

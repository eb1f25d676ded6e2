// SPDX-License-Identifier: MIT
// What sits at a seat: an API object with its callback.
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "model/seats.h"
#include "support/counted.h"

namespace kora4::test {

using Microsoft::WRL::ComPtr;

namespace {

constexpr LONG cUntouchedNumber = 0x5A5A5A5A;

}  // namespace

class Occupant::Recorder final : public Counted<IVeltoKORA4APICallback> {
  public:
    Recorder(Occupant& occupant, LONG number)
        : Counted(1),
          m_occupant(occupant),
          m_meeting(occupant.m_meeting),
          m_channel(m_meeting.State().channels[occupant.m_seat]),
          m_number(number) {}

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override {
        return Add(Told::Profile(profileID));
    }
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override {
        Told told = Told::Enable(false);
        told.number = onElseOff;
        return Add(told);
    }
    STDMETHODIMP OnCustomProfileTableChange() override { return Add(Told::Table()); }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override {
        Told told = Told::OnElseOff(technology, false);
        told.flag = onElseOff;
        return Add(told);
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override {
        return Add(
            Told::Value(pPatchValue->m_technology, pPatchValue->m_values.m_volumeSlider));
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override {
        return Add(Told::EQ(*pGraphicData));
    }

  private:
    ~Recorder() = default;

    // Calls of one object come one after the other.
    HRESULT Add(Told told) {
        told.clock = m_meeting.State().clock.load();
        told.recorder = m_number;
        const LONG count = m_channel.toldCount.load();
        if (count == cToldCapacity)
            Die("more calls of a callback than can be recorded");
        m_channel.told[count] = told;
        m_channel.toldCount = count + 1;
        m_occupant.React(count);
        SetEvent(m_meeting.ToldEvent());
        if (m_channel.slow)
            Sleep(1);
        return S_OK;
    }

    Occupant& m_occupant;
    Meeting& m_meeting;
    Channel& m_channel;
    const LONG m_number;
};

Reply Reply::Untouched() {
    Reply reply{};
    reply.number = cUntouchedNumber;
    return reply;
}

Occupant::Occupant(Meeting& meeting, std::size_t seat, const ApiLibrary& library)
    : m_meeting(meeting), m_seat(seat), m_library(library) {}

Occupant::~Occupant() {
    Close();
}

Reply Occupant::Act(const Command& command) {
    Reply reply = Reply::Untouched();
    reply.value = command.value;
    reply.hr = Call(command, &reply);
    return reply;
}

// Runs in the callback, on its thread.
void Occupant::React(LONG told) {
    Channel& channel = m_meeting.State().channels[m_seat];
    for (LONG i = channel.reactionsDone;
         i < channel.reactionCount && channel.reactions[i].atTold == told; ++i) {
        const Reaction& reaction = channel.reactions[i];
        Reply* pReply = &channel.reactionReplies[i];
        ++m_meeting.State().clock;
        if (reaction.change.count != 0)
            reaction.change.Perform();
        else if (reaction.fromOtherThread)
            ActFromOtherThread(reaction.command, pReply);
        else
            *pReply = Act(reaction.command);
        channel.reactionsDone = i + 1;
    }
}

void Occupant::ActFromOtherThread(const Command& command, Reply* pReply) {
    std::thread([&] {
        const Apartment apartment(COINIT_MULTITHREADED);
        *pReply = Act(command);
    }).join();
}

void Occupant::MakeRecorder() {
    m_spRecorder.Attach(new Recorder(*this, ++m_recorders));
}

HRESULT Occupant::Open() {
    Close();
    m_spApi = m_library.Create();
    if (!m_spApi)
        return E_FAIL;
    MakeRecorder();
    const HRESULT hr = m_spApi->Initialize();
    return FAILED(hr) ? hr : m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
}

void Occupant::Close() {
    m_spApi.Reset();
    m_spRecorder.Reset();
}

HRESULT Occupant::Call(const Command& command, Reply* pReply) {
    switch (command.action) {
        case Action::eOpen:
            return Open();
        case Action::eClose:
            Close();
            return S_OK;
        case Action::eRegister:
            return m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
        case Action::eRegisterOther:
            MakeRecorder();
            return m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
        case Action::eUnregister:
            return m_spApi->UnregisterChangeNotifications();
        case Action::eGetSamplingPeriod: {
            ULONG period = static_cast<ULONG>(cUntouchedNumber);
            const HRESULT hr = m_spApi->GetVisualizationSamplingPeriod(&period);
            pReply->number = static_cast<LONG>(period);
            return hr;
        }
        case Action::eSetSamplingPeriod:
            return m_spApi->SetVisualizationSamplingPeriod(static_cast<ULONG>(command.number));
        default:
            return command.action < Action::eGetTechnologyMasterEnables
                       ? CallProfiles(command, pReply)
                       : CallValues(command, pReply);
    }
}

HRESULT Occupant::CallProfiles(const Command& command, Reply* pReply) {
    BOOL flag = cUntouchedNumber;
    HRESULT hr = E_NOTIMPL;
    switch (command.action) {
        case Action::eGetActiveProfile:
            return m_spApi->GetActiveProfile(&pReply->number);
        case Action::eSetActiveProfile:
            return m_spApi->SetActiveProfile(command.number);
        case Action::eRevertActiveProfile:
            return m_spApi->RevertActiveProfile();
        case Action::eSetDemoProfileAndEnable:
            return m_spApi->SetDemoProfileAndEnable(command.number, command.flag);
        case Action::eRevertFromDemoMode:
            return m_spApi->RevertFromDemoMode();
        case Action::eForceRevertFromDemoMode:
            return m_spApi->ForceRevertFromDemoMode();
        case Action::eSetVeltoEnable:
            return m_spApi->SetVeltoEnable(command.flag);
        case Action::eGetVeltoEnable:
            hr = m_spApi->GetVeltoEnable(&flag);
            break;
        case Action::eToggleVeltoEnable:
            hr = m_spApi->ToggleVeltoEnable(&flag);
            break;
        case Action::eGetProfileTable:
            return ReadProfileTable(pReply);
        case Action::eSetCustomProfileName:
            return m_spApi->SetCustomProfileName(command.number, command.name);
        case Action::eCreateCustomProfile:
            return m_spApi->CreateCustomProfile(command.number, command.name);
        case Action::eDeleteCustomProfile:
            return m_spApi->DeleteCustomProfile(command.number);
        default:
            break;
    }
    pReply->number = flag;
    return hr;
}

HRESULT Occupant::CallValues(const Command& command, Reply* pReply) {
    const auto technology = static_cast<KORA4APITechnology>(command.number);
    switch (command.action) {
        case Action::eGetTechnologyMasterEnables: {
            ULONG mask = static_cast<ULONG>(cUntouchedNumber);
            const HRESULT hr = m_spApi->GetTechnologyMasterEnables(&mask);
            pReply->number = static_cast<LONG>(mask);
            return hr;
        }
        case Action::eGetTechnologyOnElseOff: {
            BOOL flag = cUntouchedNumber;
            const HRESULT hr = m_spApi->GetTechnologyOnElseOff(technology, &flag);
            pReply->number = flag;
            return hr;
        }
        case Action::eSetTechnologyOnElseOff:
            return m_spApi->SetTechnologyOnElseOff(technology, command.flag);
        case Action::eGetSimplePatchValue:
            return m_spApi->GetSimplePatchValue(&pReply->value);
        case Action::eSetSimplePatchValue:
            return m_spApi->SetSimplePatchValue(&pReply->value);
        case Action::eSetGraphicEQData:
            pReply->eq = command.eq;
            return m_spApi->SetGraphicEQData(&pReply->eq);
        case Action::eGetGraphicEQData:
            return m_spApi->GetGraphicEQData(&pReply->eq);
        default:
            return E_NOTIMPL;
    }
}

HRESULT Occupant::ReadProfileTable(Reply* pReply) {
    LPWSTR names[cProfiles] = {};
    const HRESULT hr = m_spApi->GetProfileTable(names);
    for (std::size_t i = 0; i < cProfiles; ++i) {
        pReply->named[i] = names[i] != nullptr;
        if (names[i])
            std::wcsncpy(pReply->names[i], names[i], cNameCapacity - 1);
        CoTaskMemFree(names[i]);
    }
    return hr;
}

}  // namespace kora4::test

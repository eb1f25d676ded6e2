// SPDX-License-Identifier: MIT
// The checks: nothing twice, nothing older, groups whole and in order, nothing of the client's
// own.
#include "multiprocess/burst_listener.h"

#include <iterator>

namespace kora4::test {
namespace {

using Hold = std::lock_guard<std::mutex>;

std::string Text(std::uint32_t number) {
    return std::to_string(number);
}

}  // namespace

HRESULT BurstListener::Complain(const std::string& what) {
    if (m_complaint.empty())
        m_complaint = "call " + std::to_string(m_shown.calls) + ": " + what;
    return S_OK;
}

// Of anything but a group, which is told without that in between.
void BurstListener::BeginCall() {
    ++m_shown.calls;
    if (m_groupAt != 0) {
        Complain("a group was told in part");
        m_groupAt = 0;
    }
}

void BurstListener::HasRead(std::uint32_t group) {
    const Hold hold(m_mutex);
    if (group < m_read)
        Complain("read the stamp " + Text(group) + " after " + Text(m_read));
    m_read = group;
}

void BurstListener::HasWritten(std::uint32_t shared) {
    const Hold hold(m_mutex);
    m_shown.shared = shared;
}

Shown BurstListener::Now() const {
    const Hold hold(m_mutex);
    return m_shown;
}

std::string BurstListener::Complaint() const {
    const Hold hold(m_mutex);
    return m_complaint;
}

STDMETHODIMP BurstListener::OnActiveProfileChange(LONG) {
    const Hold hold(m_mutex);
    BeginCall();
    return Complain("told a profile that nobody has changed");
}

STDMETHODIMP BurstListener::OnEnableStateChange(BOOL onElseOff) {
    const Hold hold(m_mutex);
    BeginCall();
    const bool before = std::exchange(m_shown.writers.enable, onElseOff != FALSE);
    return Check(before != m_shown.writers.enable, "told the same enable twice");
}

STDMETHODIMP BurstListener::OnCustomProfileTableChange() {
    const Hold hold(m_mutex);
    BeginCall();
    ++m_shown.tables;
    return S_OK;
}

STDMETHODIMP BurstListener::OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                                        BOOL onElseOff) {
    const Hold hold(m_mutex);
    BeginCall();
    if (technology != cGroup[0])
        return Complain("told the switch of technology " + std::to_string(technology) +
                        ", which only the client itself has changed");
    const bool before = std::exchange(m_shown.writers.groupSwitch, onElseOff != FALSE);
    return Check(before != m_shown.writers.groupSwitch, "told the same switch twice");
}

HRESULT BurstListener::HearGroup(KORA4APITechnology technology, std::uint32_t stamp) {
    if (technology != cGroup[m_groupAt])
        return Complain("a group in another order");
    if (m_groupAt == 0) {
        const std::uint32_t before = std::exchange(m_shown.writers.group, stamp);
        if (stamp <= before)
            return Complain("told the stamp " + Text(stamp) + " of a group after " +
                            Text(before));
        if (m_onOneThread && stamp < m_read)
            return Complain("told the stamp " + Text(stamp) + " of a group after " +
                            Text(m_read) + " was read");
    }
    m_groupAt = (m_groupAt + 1) % std::size(cGroup);
    return Check(stamp == m_shown.writers.group, "a group of several bursts");
}

STDMETHODIMP BurstListener::OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) {
    const Hold hold(m_mutex);
    const bool isSingle = pPatchValue->m_technology == cSingle;
    const bool isShared = pPatchValue->m_technology == cShared;
    // The shared one has its place in the midst of a group.
    if (isSingle)
        BeginCall();
    else
        ++m_shown.calls;
    if (isShared) {
        m_shown.shared = pPatchValue->m_values.m_volumeSlider;
        return S_OK;
    }
    if (!isSingle)
        return HearGroup(pPatchValue->m_technology,
                         static_cast<std::uint32_t>(pPatchValue->m_values.m_enhancementSlider));
    const std::uint32_t stamp = pPatchValue->m_values.m_volumeSlider;
    const std::uint32_t before = std::exchange(m_shown.writers.single, stamp);
    return Check(stamp > before,
                 "told the stamp " + Text(stamp) + " of a value after " + Text(before));
}

STDMETHODIMP BurstListener::OnGraphicEQChange(GraphicEQData*) {
    const Hold hold(m_mutex);
    BeginCall();
    return Complain("told an equalizer that only the client itself has changed");
}

}  // namespace kora4::test

// SPDX-License-Identifier: MIT
// A callback that checks each call against those before it, while a BurstWriter writes.
#ifndef KORA4_TESTS_MULTIPROCESS_BURST_LISTENER_H
#define KORA4_TESTS_MULTIPROCESS_BURST_LISTENER_H

#include <mutex>
#include <string>
#include <utility>

#include "multiprocess/burst_writer.h"
#include "support/counted.h"

namespace kora4::test {

// What a client shows of the writer's items, by what it was told last.
struct Shown {
    LastWritten writers;
    std::uint32_t shared = 0;
    unsigned tables = 0;
    unsigned calls = 0;
};

// Any thread may ask and call.
class BurstListener final : public Counted<IVeltoKORA4APICallback> {
  public:
    // `onOneThread`: the client's own calls and the callback's are made on one thread, one
    // after the other, so that what a call has read or written comes before what is told next.
    BurstListener(const LastWritten& first, bool onOneThread)
        : Counted(1), m_onOneThread(onOneThread) {
        m_shown.writers = first;
    }

    // What the client itself has done.
    void HasRead(std::uint32_t group);
    void HasWritten(std::uint32_t shared);

    Shown Now() const;
    // The first thing that was wrong; empty when nothing was.
    std::string Complaint() const;

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override;
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override;
    STDMETHODIMP OnCustomProfileTableChange() override;
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override;
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override;
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override;

  private:
    ~BurstListener() = default;

    HRESULT Complain(const std::string& what);
    HRESULT Check(bool holds, const std::string& what) { return holds ? S_OK : Complain(what); }
    HRESULT HearGroup(KORA4APITechnology technology, std::uint32_t stamp);
    void BeginCall();

    const bool m_onOneThread;
    mutable std::mutex m_mutex;
    Shown m_shown;
    std::uint32_t m_read = 0;
    std::size_t m_groupAt = 0;  // of the group, what must be told next
    std::string m_complaint;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_BURST_LISTENER_H

// SPDX-License-Identifier: MIT
// API objects in several threads and processes, led by one driver: each sits in a thread
// of its own apartment, does what the driver asks, one call at a time, and writes what its
// callback is told into memory that the driver sees. The callback can be given calls to
// make when it is told.
#ifndef KORA4_TESTS_MODEL_SEATS_H
#define KORA4_TESTS_MODEL_SEATS_H

#include <windows.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "model/command.h"
#include "model/reactions.h"
#include "model/shared_memory.h"
#include "platform/handles.h"
#include "support/com_client.h"

namespace kora4::test {

enum class ToldKind : std::uint32_t { eProfile, eEnable, eTable, eOnElseOff, eValue, eEQ };

// One call of the callback. `number` is the profile, the enable or the technology.
struct Told {
    ToldKind kind;
    LONG number;
    BOOL flag;
    ULONG value;  // the union's bits
    GraphicEQData eq;
    LONG clock;     // the shared clock when the call came
    LONG recorder;  // which callback of the seat it came to, the first is 1

    static Told Profile(LONG profile) { return {ToldKind::eProfile, profile, 0, 0, {}, 0, 0}; }
    static Told Enable(bool enable) { return {ToldKind::eEnable, enable, 0, 0, {}, 0, 0}; }
    static Told Table() { return {ToldKind::eTable, 0, 0, 0, {}, 0, 0}; }
    static Told OnElseOff(LONG technology, bool on) {
        return {ToldKind::eOnElseOff, technology, on, 0, {}, 0, 0};
    }
    static Told Value(LONG technology, ULONG bits) {
        return {ToldKind::eValue, technology, 0, bits, {}, 0, 0};
    }
    static Told EQ(const GraphicEQData& eq) { return {ToldKind::eEQ, 0, 0, 0, eq, 0, 0}; }

    bool Says(const Told& other) const;  // clock and recorder apart
    std::string Text() const;
};

inline constexpr std::size_t cSeats = 3;
inline constexpr LONG cToldCapacity = 4096;

// The memory through which the driver and one seat speak.
struct Channel {
    Command command;
    Reply reply;
    std::atomic<LONG> toldCount;
    Told told[cToldCapacity];

    // What the callback does, in its order. Written by the driver while nothing is told.
    LONG reactionCount;
    Reaction reactions[cMaxReactions];
    Reply reactionReplies[cMaxReactions];
    std::atomic<LONG> reactionsDone;

    // The callback takes its time, so that calls of other threads come in between.
    std::atomic<bool> slow;

    // A single-threaded apartment that is always pumped turns calls away meanwhile, and
    // counts them.
    std::atomic<bool> busy;
    std::atomic<LONG> turnedAway;
};

// All of the shared memory.
struct SharedState {
    // Moves before each call or change that the driver makes or has planned.
    std::atomic<LONG> clock;
    Channel channels[cSeats];
};

// The memory and the events that driver and seats share, by a name that the driver chooses.
class Meeting {
  public:
    // `name` distinguishes the meeting; the driver makes it before a seat enters.
    explicit Meeting(const std::wstring& name);
    const std::wstring& Name() const { return m_name; }
    SharedState& State() { return *m_state; }
    HANDLE Asked(std::size_t seat) const { return m_asked[seat].Get(); }
    HANDLE Answered(std::size_t seat) const { return m_answered[seat].Get(); }
    // Set whenever a callback has been told something.
    HANDLE ToldEvent() const { return m_told.Get(); }

  private:
    std::wstring m_name;
    SharedMemory<SharedState> m_state;
    UniqueHandle m_asked[cSeats];
    UniqueHandle m_answered[cSeats];
    UniqueHandle m_told;
};

// The object of one seat. Used on the thread of its apartment only.
class Occupant {
  public:
    Occupant(Meeting& meeting, std::size_t seat, const ApiLibrary& library);
    ~Occupant();
    Occupant(const Occupant&) = delete;
    Occupant& operator=(const Occupant&) = delete;

    Reply Act(const Command& command);

  private:
    class Recorder;

    void React(LONG told);
    void ActFromOtherThread(const Command& command, Reply* pReply);
    void MakeRecorder();

    HRESULT Open();
    void Close();
    HRESULT Call(const Command& command, Reply* pReply);
    HRESULT CallProfiles(const Command& command, Reply* pReply);
    HRESULT CallValues(const Command& command, Reply* pReply);
    HRESULT ReadProfileTable(Reply* pReply);

    Meeting& m_meeting;
    const std::size_t m_seat;
    const ApiLibrary& m_library;
    Microsoft::WRL::ComPtr<IVeltoKORA4API> m_spApi;
    Microsoft::WRL::ComPtr<Recorder> m_spRecorder;
    LONG m_recorders = 0;  // made so far
};

// The driver's side of a seat.
class Seat {
  public:
    // In the calling thread, which is the driver's: its calls come while it pumps.
    Seat(Meeting& meeting, std::size_t seat, const ApiLibrary& library);
    // In a thread of the multithreaded apartment.
    static std::unique_ptr<Seat> InThread(Meeting& meeting, std::size_t seat);
    // In a child process, in a single-threaded apartment that is always pumped.
    static std::unique_ptr<Seat> InProcess(Meeting& meeting, std::size_t seat);
    ~Seat();
    Seat(const Seat&) = delete;
    Seat& operator=(const Seat&) = delete;

    // Ends the program when no answer comes.
    Reply Ask(const Command& command);

    // What has been told since the last Forget.
    LONG ToldCount() const;
    const Told& ToldAt(LONG i) const;
    void Forget();

  private:
    Seat(Meeting& meeting, std::size_t seat) : m_meeting(meeting), m_seat(seat) {}

    Meeting& m_meeting;
    const std::size_t m_seat;
    std::unique_ptr<Occupant> m_pOccupant;
    std::thread m_thread;
    UniqueHandle m_process;
};

// When the program was started as a child: serves its seat and gives the exit code; else -1.
int ServeSeatIfAsked(int argc, char** argv);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_SEATS_H

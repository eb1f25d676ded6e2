// SPDX-License-Identifier: MIT
// Threads and processes that serve a driver through shared memory, with and without a message
// filter.
#include "model/seats.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "support/raw_store.h"

namespace kora4::test {

namespace {

constexpr DWORD cAnswerWait = 60000;  // milliseconds
constexpr char cSeatArgument[] = "--seat=";
constexpr LONG cQuit = -1;  // as the number of an eClose

UniqueHandle NamedEvent(const std::wstring& name) {
    return UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, name.c_str()));
}

DWORD WaitAndPump(HANDLE event, HANDLE end, bool pump) {
    const HANDLE handles[] = {event, end};
    for (;;) {
        const DWORD woken = pump ? MsgWaitForMultipleObjectsEx(2, handles, INFINITE,
                                                               QS_ALLINPUT, MWMO_INPUTAVAILABLE)
                                 : WaitForMultipleObjects(2, handles, FALSE, INFINITE);
        if (woken != WAIT_OBJECT_0 + 2)
            return woken;
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

// An owner that is busy as long as its channel says so.
class BusyFilter final : public IMessageFilter {
  public:
    explicit BusyFilter(Channel& channel) : m_channel(channel) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        *ppv = nullptr;
        if (iid != __uuidof(IUnknown) && iid != __uuidof(IMessageFilter))
            return E_NOINTERFACE;
        *ppv = static_cast<IMessageFilter*>(this);
        return S_OK;
    }
    // Lives in the scope in which it is registered.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        if (!m_channel.busy)
            return SERVERCALL_ISHANDLED;
        ++m_channel.turnedAway;
        // Windows knows SERVERCALL_RETRYLATER too; Wine 8 lets such a call in.
        return SERVERCALL_REJECTED;
    }
    STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD, DWORD) override {
        return static_cast<DWORD>(-1);
    }
    STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
        return PENDINGMSG_WAITDEFPROCESS;
    }

  private:
    Channel& m_channel;
};

// A single-threaded apartment has the filter for the length of a scope.
class FilterScope {
  public:
    FilterScope(DWORD apartment, Channel& channel)
        : m_filter(channel), m_used(apartment == COINIT_APARTMENTTHREADED) {
        if (m_used && CoRegisterMessageFilter(&m_filter, nullptr) != S_OK)
            Die("a message filter cannot be registered");
    }
    ~FilterScope() {
        if (m_used)
            CoRegisterMessageFilter(nullptr, nullptr);
    }
    FilterScope(const FilterScope&) = delete;
    FilterScope& operator=(const FilterScope&) = delete;

  private:
    BusyFilter m_filter;
    const bool m_used;
};

// Does what is asked at one seat until it is to quit, or `end` is signalled.
void Serve(Meeting& meeting, std::size_t seat, DWORD apartment, HANDLE end) {
    const Apartment inApartment(apartment);
    Channel& channel = meeting.State().channels[seat];
    const FilterScope filter(apartment, channel);
    const ApiLibrary library;
    Occupant occupant(meeting, seat, library);
    for (bool quit = false; !quit;) {
        if (WaitAndPump(meeting.Asked(seat), end, apartment == COINIT_APARTMENTTHREADED) !=
            WAIT_OBJECT_0)
            return;
        const Command command = channel.command;
        quit = command.action == Action::eClose && command.number == cQuit;
        channel.reply = occupant.Act(command);
        SetEvent(meeting.Answered(seat));
    }
}

}  // namespace

void RawChange::Perform() const {
    const RawTransaction transaction;
    for (LONG i = 0; i < count; ++i) {
        const RawWrite& write = writes[i];
        const wchar_t* const key = write.dynamic ? cDynamic : cStatic;
        if (write.isText)
            RawStore::SetText(key, write.name, write.text);
        else
            RawStore::SetNumber(key, write.name, write.number);
    }
}

Meeting::Meeting(const std::wstring& name)
    : m_name(name), m_state(name), m_told(NamedEvent(name + L"-told")) {
    for (std::size_t i = 0; i < cSeats; ++i) {
        m_asked[i] = NamedEvent(name + L"-asked-" + std::to_wstring(i));
        m_answered[i] = NamedEvent(name + L"-answered-" + std::to_wstring(i));
    }
}

Seat::Seat(Meeting& meeting, std::size_t seat, const ApiLibrary& library)
    : m_meeting(meeting),
      m_seat(seat),
      m_pOccupant(std::make_unique<Occupant>(meeting, seat, library)) {}

std::unique_ptr<Seat> Seat::InThread(Meeting& meeting, std::size_t seat) {
    std::unique_ptr<Seat> pSeat(new Seat(meeting, seat));
    pSeat->m_thread = std::thread([&meeting, seat] {
        const UniqueHandle never(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        Serve(meeting, seat, COINIT_MULTITHREADED, never.Get());
    });
    return pSeat;
}

std::unique_ptr<Seat> Seat::InProcess(Meeting& meeting, std::size_t seat) {
    std::unique_ptr<Seat> pSeat(new Seat(meeting, seat));
    pSeat->m_process =
        StartChild(L"--seat=" + std::to_wstring(seat) + L"," +
                   std::to_wstring(GetCurrentProcessId()) + L"," + meeting.Name());
    return pSeat;
}

Seat::~Seat() {
    Command quit{};
    quit.action = Action::eClose;
    quit.number = cQuit;
    Ask(quit);
    if (m_thread.joinable())
        m_thread.join();
    if (m_process && WaitForSingleObject(m_process.Get(), cAnswerWait) != WAIT_OBJECT_0)
        Die("a child process does not end");
}

Reply Seat::Ask(const Command& command) {
    if (m_pOccupant)
        return m_pOccupant->Act(command);
    Channel& channel = m_meeting.State().channels[m_seat];
    channel.command = command;
    SetEvent(m_meeting.Asked(m_seat));
    const HANDLE handles[] = {m_meeting.Answered(m_seat), m_process.Get()};
    if (WaitForMultipleObjects(m_process ? 2 : 1, handles, FALSE, cAnswerWait) != WAIT_OBJECT_0)
        Die("seat " + std::to_string(m_seat) + " does not answer to " + Text(command));
    return channel.reply;
}

LONG Seat::ToldCount() const {
    return m_meeting.State().channels[m_seat].toldCount.load();
}

const Told& Seat::ToldAt(LONG i) const {
    return m_meeting.State().channels[m_seat].told[i];
}

void Seat::Forget() {
    Channel& channel = m_meeting.State().channels[m_seat];
    channel.toldCount = 0;
    channel.reactionCount = 0;
    channel.reactionsDone = 0;
}

int ServeSeatIfAsked(int argc, char** argv) {
    const std::size_t length = std::strlen(cSeatArgument);
    if (argc < 2 || std::strncmp(argv[1], cSeatArgument, length) != 0)
        return -1;
    char* rest = nullptr;
    const std::size_t seat = std::strtoul(argv[1] + length, &rest, 10);
    const DWORD driver = std::strtoul(rest + 1, &rest, 10);
    const std::string name = rest + 1;
    const UniqueHandle driverProcess(OpenProcess(SYNCHRONIZE, FALSE, driver));
    Meeting meeting(std::wstring(name.begin(), name.end()));
    Serve(meeting, seat, COINIT_APARTMENTTHREADED, driverProcess.Get());
    return 0;
}

}  // namespace kora4::test

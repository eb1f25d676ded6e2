// SPDX-License-Identifier: MIT
// What the tests of random calls against the model have in common.
#include "model/arena.h"

#include <algorithm>
#include <cstdlib>

namespace kora4::test {

Arena::Arena(const std::wstring& name)
    : m_meeting(L"kora4-" + name + L"-" + std::to_wstring(GetCurrentProcessId())) {}

void Arena::Enter() {
    for (const auto& [address, value] : m_model.Stored())
        m_storedValues.Write(address, value);
    if (!m_library.IsLoaded())
        Die("QXA64T.dll cannot be loaded");
    m_seats[0] = std::make_unique<Seat>(m_meeting, 0, m_library);
    m_seats[1] = Seat::InThread(m_meeting, 1);
    m_seats[2] = Seat::InProcess(m_meeting, 2);
    Command open{};
    open.action = Action::eOpen;
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        if (const HRESULT hr = m_seats[seat]->Ask(open).hr; hr != S_OK)
            Die("an object cannot be initialised: " + std::to_string(hr));
        m_starts[seat] = {{Baseline(m_model.Look()), false, 0}};
    }
}

void Arena::Leave() {
    for (auto& pSeat : m_seats)
        pSeat.reset();
}

std::vector<Told> Arena::ToldTo(std::size_t seat) const {
    std::vector<Told> told;
    const LONG count = m_seats[seat]->ToldCount();
    for (LONG i = 0; i < count; ++i)
        told.push_back(m_seats[seat]->ToldAt(i));
    return told;
}

std::array<bool, cSeats> Arena::AwaitAll(const std::function<bool(std::size_t)>& done) {
    std::array<bool, cSeats> isDone{};
    std::array<LONG, cSeats> looked;
    looked.fill(-1);
    PumpUntil(
        [&] {
            for (std::size_t seat = 0; seat < cSeats; ++seat) {
                const LONG count = m_seats[seat]->ToldCount();
                if (!isDone[seat] && count != looked[seat]) {
                    looked[seat] = count;
                    isDone[seat] = done(seat);
                }
            }
            return std::find(isDone.begin(), isDone.end(), false) == isDone.end();
        },
        m_meeting.ToldEvent());
    return isDone;
}

ModelArguments ArgumentsOf(int argc, char** argv, unsigned defaultCount, const char* usage) {
    const unsigned long count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : defaultCount;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1;
    if (count == 0)
        Die(usage);
    return {static_cast<unsigned>(count), static_cast<std::uint32_t>(seed)};
}

}  // namespace kora4::test

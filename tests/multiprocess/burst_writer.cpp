// SPDX-License-Identifier: MIT
// The bursts: changes of several values at once, of one value many times, and pauses.
#include "multiprocess/burst_writer.h"

#include <windows.h>

#include <iostream>
#include <random>
#include <string>

#include "multiprocess/api_commands.h"

namespace kora4::test {
namespace {

class BurstWriter {
  public:
    void Write(const BurstOrder& order) {
        m_random.seed(order.seed);
        for (unsigned i = 0; i < order.bursts; ++i) {
            Burst();
            Pause();
        }
        Raw("table");
    }

    const LastWritten& Last() const { return m_last; }

  private:
    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random()) % bound; }

    template <typename... Numbers>
    void Raw(const std::string& what, Numbers... numbers) {
        std::string command = what;
        ((command += " " + std::to_string(numbers)), ...);
        if (!m_writer.Run(command))
            std::exit(3);
    }

    void Burst() {
        for (unsigned writes = 1 + Below(6); writes > 0; --writes) {
            switch (Below(4)) {
                case 0:
                    Group();
                    break;
                case 1:
                    Raw("value", int{cShared}, 0, Below(cSharedBound));
                    break;
                default:
                    Raw("value", int{cSingle}, 0, ++m_last.single);
                    break;
            }
        }
    }

    // Everybody sees all of it or nothing.
    void Group() {
        Raw("begin");
        ++m_last.group;
        for (const KORA4APITechnology technology : cGroup)
            Raw("value", int{technology}, 0, m_last.group);
        if (Below(3) == 0) {
            m_last.enable = !m_last.enable;
            Raw("enable", int{m_last.enable});
        }
        if (Below(3) == 0) {
            m_last.groupSwitch = !m_last.groupSwitch;
            Raw("flag", int{cGroup[0]}, 0, int{m_last.groupSwitch});
        }
        if (Below(8) == 0)
            Raw("table");
        Raw("end");
    }

    void Pause() {
        switch (Below(6)) {
            case 0:
                Sleep(1 + Below(4));
                break;
            case 1:
                Sleep(0);
                break;
            default:
                break;
        }
    }

    std::mt19937 m_random;
    RawWriter m_writer;
    LastWritten m_last;
};

}  // namespace

std::istream& operator>>(std::istream& stream, LastWritten& last) {
    return stream >> last.group >> last.single >> last.enable >> last.groupSwitch;
}

int RunBurstWriter() {
    BurstWriter writer;
    BurstOrder order{};
    while (std::cin >> order.bursts >> order.seed) {
        writer.Write(order);
        const LastWritten& last = writer.Last();
        std::cout << last.group << ' ' << last.single << ' ' << last.enable << ' '
                  << last.groupSwitch << std::endl;
    }
    return 0;
}

}  // namespace kora4::test

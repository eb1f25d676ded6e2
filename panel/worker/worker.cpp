// SPDX-License-Identifier: MIT
// The worker: connects, does what it finds in its inbox, reads the levels, connects again.
#include "panel/worker/worker.h"

#include <algorithm>
#include <utility>

#include "panel/worker/equalizer_file.h"

namespace panel {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Between two attempts to connect.
constexpr milliseconds cRetry{2000};
// Between two looks at the levels, whatever the store says; and when nobody publishes any.
constexpr milliseconds cShortestPeriod{20};
constexpr milliseconds cLongestPeriod{5000};
constexpr milliseconds cSilentPeriod{500};
// How often the period itself is read.
constexpr milliseconds cPeriodRead{1000};

void Send(HWND window, Report report) {
    auto pReport = std::make_unique<Report>(std::move(report));
    if (PostMessageW(window, cReportMessage, 0, reinterpret_cast<LPARAM>(pReport.get())))
        static_cast<void>(pReport.release());
}

// Everything on the worker's thread.
class Loop {
  public:
    Loop(HWND window, Inbox& inbox) : m_window(window), m_inbox(inbox) {}

    void Run() {
        while (!m_isEnd) {
            if (!m_link && Clock::now() >= m_nextTry)
                Connect();
            const Work work = m_inbox.Take(NextTime());
            m_isEnd = work.isEnd;
            if (!m_isEnd && m_link && work.announced != Announced{})
                Follow(work.announced);
            if (!m_isEnd && work.command)
                Do(*work.command);
            if (!m_isEnd && m_link && m_inbox.ShowsLevels() && Clock::now() >= m_nextLevels)
                ReadLevels();
            m_inbox.Done();
        }
    }

  private:
    std::optional<Inbox::Time> NextTime() const {
        if (!m_link)
            return m_nextTry;
        return m_inbox.ShowsLevels() ? std::optional(m_nextLevels) : std::nullopt;
    }

    void Connect() {
        m_inbox.Begin();
        HRESULT code = S_OK;
        m_link = ApiLink::Open(m_inbox, code);
        m_nextTry = Clock::now() + cRetry;
        m_nextPeriodRead = {};
        m_lastLevels.reset();
        Report report;
        report.connection = Connection{code, 0};
        if (m_link) {
            report.connection->engineMask =
                m_link->Api().GetTechnologyMasterEnables().ValueOr(0);
            report.settings = m_link->Current();
            report.isNoted = false;
        }
        Send(m_window, std::move(report));
        m_inbox.Done();
    }

    // The store is not there any more.
    void Lose() {
        m_link.reset();
        m_nextTry = Clock::now() + cRetry;
        Report report;
        report.connection = Connection{E_FAIL, 0};
        Send(m_window, std::move(report));
    }

    void Follow(const Announced& announced) {
        if (!m_link->Read(announced))
            return Lose();
        Report report;
        report.settings = m_link->Current();
        Send(m_window, std::move(report));
    }

    void Do(const Command& command) {
        Report report;
        report.origin = Origin::eOwn;
        report.isNoted = command.action != Action::eUndo;
        report.gesture = command.gesture;
        report.answer = Answer{command.action,  command.items,   S_OK, {}, command.text,
                               command.profile, command.fallback};
        if (command.action == Action::eTryAgain) {
            // An object holds the keys that it has opened: only a new one sees a store that was
            // made again.
            m_link.reset();
            m_nextTry = Clock::now();
            return;
        }
        if (!m_link)
            report.answer->code = E_FAIL;
        else
            report.answer->code = Call(command, report.answer->detail);
        if (m_link)
            report.settings = m_link->Current();
        Send(m_window, std::move(report));
    }

    HRESULT Call(const Command& command, std::string& detail) {
        switch (command.action) {
            case Action::eSet:
            case Action::eUndo:
            case Action::eCompare:
                return Set(command.items);
            case Action::eCreate:
                return Set({Name(command, true), Use(command.profile)});
            case Action::eRename:
                return Set({Name(command, true)});
            case Action::eDelete:
                return Delete(command);
            case Action::eRevert: {
                const HRESULT code = m_link->Api().RevertActiveProfile().Code();
                m_link->ReadAll();
                return code;
            }
            case Action::eLeaveDemo:
                return m_link->LeaveDemo();
            case Action::eImport:
                return Import(command.text, detail);
            case Action::eExport: {
                FileResult result = ExportEqualizer(command.text, m_link->Current().bands);
                detail = std::move(result.problem);
                return result.code;
            }
            case Action::eTryAgain:
                break;
        }
        return S_OK;
    }

    HRESULT Set(const Items& items) {
        HRESULT code = S_OK;
        for (const Item& item : items) {
            code = m_link->Set(item);
            if (code != S_OK)
                break;
        }
        return code;
    }

    static Item Name(const Command& command, bool hasName) {
        Item item;
        item.subject = Subject::eName;
        item.index = static_cast<std::size_t>(command.profile);
        if (hasName)
            item.name = command.text;
        return item;
    }
    static Item Use(long profile) {
        Item item;
        item.number = static_cast<double>(profile);
        return item;
    }

    HRESULT Delete(const Command& command) {
        Items items;
        if (m_link->Current().profile == command.profile)
            items.push_back(Use(command.fallback));
        items.push_back(Name(command, false));
        return Set(items);
    }

    HRESULT Import(const std::wstring& path, std::string& detail) {
        Item item = Get(m_link->Current(), Subject::eBands);
        FileResult result = ImportEqualizer(path, item.bands);
        detail = std::move(result.problem);
        return result.code == S_OK ? m_link->Set(item) : result.code;
    }

    void ReadLevels() {
        if (Clock::now() >= m_nextPeriodRead) {
            const auto period = m_link->Api().GetVisualizationSamplingPeriod();
            m_period = std::clamp(milliseconds(period.ValueOr(KORA4_SAMPLING_PERIOD_DEFAULT)),
                                  cShortestPeriod, cLongestPeriod);
            m_nextPeriodRead = Clock::now() + cPeriodRead;
        }
        const auto levels = m_link->Api().GetVisualizationData();
        LevelsRead read{levels.Code(), {}, {}};
        if (levels) {
            read.gains = levels->gains;
            read.excitations = levels->excitations;
        }
        m_nextLevels = Clock::now() + (levels ? m_period : std::max(m_period, cSilentPeriod));
        // What has not changed needs no drawing.
        if (m_lastLevels == read)
            return;
        m_lastLevels = read;
        Report report;
        report.levels = read;
        Send(m_window, std::move(report));
    }

    const HWND m_window;
    Inbox& m_inbox;
    std::unique_ptr<ApiLink> m_link;
    Inbox::Time m_nextTry{};
    Inbox::Time m_nextLevels{};
    Inbox::Time m_nextPeriodRead{};
    milliseconds m_period{KORA4_SAMPLING_PERIOD_DEFAULT};
    std::optional<LevelsRead> m_lastLevels;
    bool m_isEnd = false;
};

}  // namespace

Worker::Worker(HWND window)
    : m_inbox(std::make_shared<Inbox>(window)),
      m_hasEnded(std::make_shared<std::atomic<bool>>(false)) {
    m_thread = std::thread([window, inbox = m_inbox, hasEnded = m_hasEnded] {
        {
            const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eMultithreaded);
            Loop(window, *inbox).Run();
        }
        *hasEnded = true;
    });
}

Worker::~Worker() {
    constexpr int cTries = 100;
    constexpr DWORD cTry = 10;
    m_inbox->End();
    for (int i = 0; i < cTries && !*m_hasEnded; ++i)
        Sleep(cTry);
    if (*m_hasEnded)
        m_thread.join();
    else
        m_thread.detach();
}

}  // namespace panel

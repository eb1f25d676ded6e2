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
    // The window deletes it. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
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
            if (!m_isEnd && m_link && work.announced != Announced{} && !Follow(work.announced))
                Lose();
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
        report.connection = Connection{code};
        if (m_link)
            m_timeline.Opened(m_link->Current());
        Tell(std::move(report));
        m_inbox.Done();
    }

    // The store is not there any more.
    void Lose() {
        m_link.reset();
        m_nextTry = Clock::now() + cRetry;
        Report report;
        report.connection = Connection{E_FAIL};
        Tell(std::move(report));
    }

    void Tell(Report report) {
        if (m_link) {
            report.settings = m_timeline.Now();
            report.past = m_timeline.Shown();
        }
        Send(m_window, std::move(report));
    }

    // Reads what others may have changed. False: the store is not there any more.
    bool Follow(const Announced& announced) {
        if (!m_link->Read(announced))
            return false;
        if (m_link->Current() != m_timeline.Now()) {
            m_timeline.Became(m_link->Current(), Origin::eForeign, 0, GetTickCount64());
            Tell({});
        }
        return true;
    }

    // What the command is about.
    static Announced Around(const Command& command) {
        Announced around;
        around.isAll = command.action != Action::eSet;
        for (const Item& item : command.items) {
            around.isTable = around.isTable || item.subject == Subject::eName;
            around.isEnable = around.isEnable || item.subject == Subject::eEnable;
            around.isBands = around.isBands || item.subject == Subject::eBands ||
                             item.subject == Subject::eBand;
            if (item.subject == Subject::eSwitch)
                around.switches[item.index] = true;
            if (item.subject == Subject::eValue)
                around.values[item.index] = true;
        }
        return around;
    }

    void Do(const Command& command) {
        Report report;
        report.answer = Answer{command, S_OK, {}};
        if (command.action == Action::eTryAgain) {
            // An object holds the keys that it has opened: only a new one sees a store that was
            // made again.
            m_link.reset();
            m_nextTry = Clock::now();
            return;
        }
        if (!m_link) {
            report.answer->code = E_FAIL;
            return Tell(std::move(report));
        }
        // While it waited, others may have changed the same, and what differs afterwards must
        // be its doing alone. Whether the store is still there the call itself says.
        static_cast<void>(Follow(Around(command)));
        report.answer->code = Call(command, report.answer->detail);
        if (command.action == Action::eUndo)
            m_timeline.WentBack(m_link->Current());
        else
            m_timeline.Became(m_link->Current(), Origin::eOwn, command.gesture,
                              GetTickCount64());
        Tell(std::move(report));
    }

    HRESULT Call(const Command& command, std::string& detail) {
        switch (command.action) {
            case Action::eSet:
                return Set(command.items, command.profile);
            case Action::eUndo:
                return Undo(command);
            case Action::eCompare:
                return Compare(command);
            case Action::eCreate:
                return m_link->Create(command.text);
            case Action::eRename:
                return m_link->Set(Name(command, true));
            case Action::eDelete:
                return Delete(command);
            case Action::eRevert:
                return Revert(command);
            case Action::eLeaveDemo:
                return m_link->LeaveDemo();
            case Action::eImport:
            case Action::eExport:
                return Transfer(command, detail);
            case Action::eTryAgain:
                break;
        }
        return S_OK;
    }

    // One after the other; what belongs to a profile only while that one is active.
    HRESULT Set(const Items& items, long profile) {
        for (const Item& item : items) {
            HRESULT code = BelongsToProfile(item.subject) ? CheckProfile(profile) : S_OK;
            if (code == S_OK)
                code = item.subject == Subject::eBand ? SetBands(items) : m_link->Set(item);
            if (code != S_OK)
                return code;
            if (item.subject == Subject::eProfile)
                profile = static_cast<long>(item.number);
        }
        return S_OK;
    }

    // All that are among the items at once, with the first of them.
    HRESULT SetBands(const Items& items) {
        Item item = Get(m_link->Current(), Subject::eBands);
        std::optional<kora4::Bands> bands = Together(items, item.bands);
        if (!bands)
            return cOtherPlace;
        if (*bands == item.bands)
            return S_OK;
        item.bands = *std::move(bands);
        return m_link->Set(item);
    }

    static HRESULT Elsewhere(long profile) {
        return IsDemo(profile) ? KORA4_S_DEMO_MODE_ACTIVE : cOtherPlace;
    }

    // Asks the store itself: what others have announced may not have come yet. When it gives no
    // answer, the call that follows says why.
    HRESULT CheckProfile(long profile) {
        const long active = m_link->Api().GetActiveProfile().ValueOr(profile);
        return active == profile ? S_OK : Elsewhere(active);
    }

    HRESULT Undo(const Command& command) {
        if (!m_timeline.IsMeant(command.profile))
            return Elsewhere(m_timeline.Now().profile);
        const History::Undo undo = m_timeline.TakeBack(command.origin);
        switch (undo.verdict) {
            case History::Verdict::eNothing:
                return cUndoNothing;
            case History::Verdict::eOvertaken:
                return cUndoOvertaken;
            case History::Verdict::eImpossible:
                return cUndoImpossible;
            case History::Verdict::eItems:
                break;
        }
        const HRESULT code = Set(undo.items, m_timeline.Now().profile);
        if (code != S_OK)
            m_timeline.Restore();
        return code;
    }

    HRESULT Compare(const Command& command) {
        if (!m_timeline.IsMeant(command.profile))
            return Elsewhere(m_timeline.Now().profile);
        const Settings left = m_timeline.Now();
        // A copy: on the way, its profile may go.
        const std::optional<Settings> other = m_timeline.Compared().Other();
        if (!other) {
            const bool isLost = m_timeline.Compared().IsLost();
            m_timeline.Exchange(left);
            return isLost ? cCompareLost : cCompareNew;
        }
        const HRESULT code = GoTo(*other);
        if (code == S_OK)
            m_timeline.Exchange(left);
        return code;
    }

    // The profile first: what is set in it then is a change of its own, because only when it is
    // active is it known what that overwrites. What is refused halfway is taken back as far as
    // it can be: the state in use is still the one that was to be left.
    HRESULT GoTo(const Settings& state) {
        const long left = m_link->Current().profile;
        const bool isOther = state.profile != left;
        if (isOther)
            if (const HRESULT code = m_link->Set(Use(state.profile)); code != S_OK)
                return code;
        const Settings there = m_link->Current();
        const HRESULT code = Set(Steps(there, state), state.profile);
        if (FAILED(code)) {
            Items back = Steps(m_link->Current(), there);
            if (isOther)
                back.push_back(Use(left));
            if (Set(back, there.profile) == S_OK)
                return code;
        }
        if (isOther)
            m_timeline.Became(there, Origin::eOwn, 0, GetTickCount64());
        return code;
    }

    HRESULT Revert(const Command& command) {
        if (const HRESULT code = CheckProfile(command.profile); code != S_OK)
            return code;
        const HRESULT code = m_link->Api().RevertActiveProfile().Code();
        m_link->ReadAll();
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
        return Set(items, command.profile);
    }

    HRESULT Transfer(const Command& command, std::string& detail) {
        if (const HRESULT code = CheckProfile(command.profile); code != S_OK)
            return code;
        const bool isImport = command.action == Action::eImport;
        Item item = Get(m_link->Current(), Subject::eBands);
        m_inbox.Pause();
        FileResult result = isImport ? ImportEqualizer(command.text, item.bands)
                                     : ExportEqualizer(command.text, item.bands);
        m_inbox.Begin();
        detail = std::move(result.problem);
        return isImport && result.code == S_OK ? Set({item}, command.profile) : result.code;
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
    Timeline m_timeline;
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

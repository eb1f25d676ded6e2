// SPDX-License-Identifier: MIT
// kora4ctl levels: what the engine measures, live.
#include <algorithm>
#include <optional>
#include <utility>

#include "base/results.h"
#include "base/utc_time.h"
#include "kora4ctl/access/held_store.h"
#include "kora4ctl/command_line/run_limits.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/levels_picture.h"
#include "kora4ctl/terminal/terminal_screen.h"
#include "kora4ctl/verbs.h"
#include "process/api_session.h"

namespace kora4::tools {

namespace {

struct Options {
    RunLimits limits;
    double fps = 0;  // 0: as the sampling period says
};

// Bounds of a sampling period from the store, which may be any number, in seconds.
constexpr double cShortestPeriod = 0.01;
constexpr double cLongestPeriod = 5;

// Levels that stay the same for so long, and for so many looks, stand still.
constexpr ULONGLONG cStillMilliseconds = 1000;
constexpr unsigned cStillLooks = 3;

// A terminal may change its size at any time, in seconds between two looks at it.
constexpr double cResizePeriod = 0.2;

constexpr char cNoLevels[] = "no levels: no engine has published any (start kora4sim)";

constexpr char cFooter[] =
    "On a terminal, bars for all bands, redrawn in place: gain from 0 dB, and\n"
    "excitation next to it, in dB. Otherwise, and with --json, one line for each\n"
    "frame that differs from the previous one; with --json, an object with 'time',\n"
    "'frequencies', 'gains', 'excitations', 'still' and 'error': the lists are null\n"
    "while there are no levels, a level is null when it is infinite or not a number,\n"
    "and 'error' says why existing levels cannot be read. Levels that do not change\n"
    "for a second are reported: nothing plays, or the engine has stopped. With\n"
    "--json, a line with 'still' true says so. --count counts frames that differ from\n"
    "the previous one. Ends on Ctrl-C, when the output is closed, and as the options\n"
    "say.\n";

// What one look at the levels has shown.
struct Look {
    std::optional<Levels> levels;
    std::string error;  // there are levels that cannot be read

    bool IsSameAs(const Look& other) const {
        if (levels.has_value() != other.levels.has_value() || error != other.error)
            return false;
        return !levels || AreSame(*levels, *other.levels);
    }
    // In place of a picture.
    std::string Message() const { return error.empty() ? cNoLevels : error; }
};

// Of the general meanings of E_FAIL, those that reading levels can have.
std::string WhyUnreadable(HRESULT hr) {
    return hr == E_FAIL ? "what is stored is not valid, or the store's keys are gone"
                        : InWords(hr);
}

Look TakeLook(const Api& api) {
    const Result<Levels> levels = api.GetVisualizationData();
    Look look;
    if (levels)
        look.levels = *levels;
    else if (levels.HasFailed())
        look.error = "the levels cannot be read: " + WhyUnreadable(levels.Code());
    return look;
}

class Display {
  public:
    explicit Display(Output& output) : m_output(output) {
        if (!output.json)
            m_screen.emplace(output);
    }

    // Pictures that differ from the one before.
    unsigned Count() const { return m_count; }

    void Show(const Look& look) {
        const bool isNew = !m_last || !look.IsSameAs(*m_last);
        m_last = look;
        m_looks = isNew ? 1 : m_looks + 1;
        if (isNew) {
            m_since = GetTickCount64();
            m_count += look.levels.has_value();
        }
        const bool wasStill = std::exchange(
            m_isStill, look.levels && m_looks > cStillLooks && SameFor() >= cStillMilliseconds);
        if (IsDrawn())
            Draw();
        else if (isNew || (m_isStill && !wasStill))
            Print(isNew);
    }

    bool IsDrawn() const { return m_screen && m_screen->IsUsable(); }
    // The last look once more: the terminal may have another size.
    void Draw() {
        if (m_last->levels)
            m_screen->Show(DrawLevels(*m_last->levels, m_isStill ? Stillness() : std::string(),
                                      m_screen->Width(), m_screen->Height()));
        else
            m_screen->Show({{{Style::eWarning, m_last->Message()}}});
    }

  private:
    void Print(bool isNew) {
        if (m_output.json)
            m_output.PrintJsonLine(Document());
        else if (isNew && m_last->levels)
            m_output.Print(UtcTime::Now().Clock() + "  " + LevelsLine(*m_last->levels));
        else
            m_output.Complain(isNew ? m_last->Message() : Stillness());
    }

    ULONGLONG SameFor() const { return GetTickCount64() - m_since; }
    std::string Stillness() const {
        return "unchanged for " + std::to_string(SameFor() / 1000) +
               " s: nothing plays, or the engine has stopped";
    }

    Json Document() const {
        Json document = {{"time", UtcTime::Now().Iso()}};
        document.update(LevelsDocument(m_last->levels));
        document["still"] = m_isStill;
        document["error"] = OrNull(m_last->error);
        return document;
    }

    Output& m_output;
    std::optional<TerminalScreen> m_screen;
    std::optional<Look> m_last;
    ULONGLONG m_since = 0;  // when it was first seen, in milliseconds of uptime
    unsigned m_looks = 0;   // that have seen it
    bool m_isStill = false;
    unsigned m_count = 0;
};

// Until the next look. A terminal is drawn on again meanwhile.
Wake WaitForNextLook(const Context& context, const Deadline& deadline, Display& display) {
    const auto wait = [&context](const Deadline& until) {
        return WaitWithMessages(context.interrupt.Event(), until, [] { return false; });
    };
    while (display.IsDrawn()) {
        const Deadline redraw(cResizePeriod);
        if (redraw.Left() >= deadline.Left())
            break;
        if (wait(redraw) == Wake::eInterrupted)
            return Wake::eInterrupted;
        display.Draw();
    }
    return wait(deadline);
}

// The sampling period may be another one each time.
double SecondsToNextLook(const Options& options, const Api& api) {
    if (options.fps > 0)
        return 1 / options.fps;
    const ULONG milliseconds =
        api.GetVisualizationSamplingPeriod().ValueOr(KORA4_SAMPLING_PERIOD_DEFAULT);
    return std::clamp(milliseconds / 1000.0, cShortestPeriod, cLongestPeriod);
}

ExitCode ShowLevels(const Context& context, const Options& options) {
    WaitForStore(context);
    ApiSession api;
    Display display(context.output);
    const Deadline end = options.limits.Start();
    while (!context.output.IsBroken()) {
        const Deadline next(SecondsToNextLook(options, *api));
        display.Show(TakeLook(*api));
        if (options.limits.IsReached(display.Count()))
            break;
        const Deadline& first = next.Left() < end.Left() ? next : end;
        if (WaitForNextLook(context, first, display) == Wake::eInterrupted)
            break;
        if (end.IsOver())
            return options.limits.OnTimeout(display.Count());
    }
    return ExitCode::eDone;
}

}  // namespace

void AddLevels(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "levels", "show the engine's levels live", ShowLevels);
    verb.add_option("--fps", options.fps,
                    "how often to read per second; default: once per sampling period")
        ->transform(Within(0.1, 100.0))
        ->type_name("N");
    options.limits.AddTo(verb, "frames");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// kora4ctl levels: what the engine measures, live.
#include <algorithm>
#include <optional>

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

constexpr char cNoLevels[] = "no levels: no engine has published any (start kora4sim)";

constexpr char cFooter[] =
    "On a terminal, bars for all bands, redrawn in place: gain, and excitation next to it,\n"
    "in dB. Otherwise, and with --json, one line for each frame that differs from the\n"
    "previous one; with --json, an object with 'time', 'gains', 'excitations' and 'error': "
    "the\n"
    "lists are null while there are no levels, and 'error' says why existing levels cannot be\n"
    "read. --count counts frames that differ from the previous one. Ends on Ctrl-C, when the\n"
    "output is closed, and as the options say.\n";

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

Look TakeLook(const Api& api) {
    const Result<Levels> levels = api.GetVisualizationData();
    Look look;
    if (levels)
        look.levels = *levels;
    else if (levels.HasFailed())
        look.error = "the levels cannot be read: " + InWords(levels.Code());
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
        if (isNew && look.levels)
            ++m_count;
        if (m_screen && m_screen->IsUsable())
            Draw(look);
        else if (isNew && m_output.json)
            m_output.PrintJsonLine(Document(look));
        else if (isNew && look.levels)
            m_output.Print(UtcTime::Now().Clock() + "  " + LevelsLine(*look.levels));
        else if (isNew)
            m_output.Complain(look.Message());
    }

  private:
    // Also when nothing is new: the terminal may have another size.
    void Draw(const Look& look) {
        if (look.levels)
            m_screen->Show(DrawLevels(*look.levels, m_screen->Width(), m_screen->Height()));
        else
            m_screen->Show({{{Style::eWarning, look.Message()}}});
    }

    static Json Document(const Look& look) {
        Json document = {{"time", UtcTime::Now().Iso()}};
        if (look.levels)
            document.update(LevelsDocument(*look.levels));
        else
            document.update({{"gains", nullptr}, {"excitations", nullptr}});
        document["error"] = OrNull(look.error);
        return document;
    }

    Output& m_output;
    std::optional<TerminalScreen> m_screen;
    std::optional<Look> m_last;
    unsigned m_count = 0;
};

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
        const Wake wake =
            WaitWithMessages(context.interrupt.Event(), next.Left() < end.Left() ? next : end,
                             [] { return false; });
        if (wake == Wake::eInterrupted)
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
        ->check(Within(0.1, 100.0))
        ->type_name("N");
    options.limits.AddTo(verb, "frames");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

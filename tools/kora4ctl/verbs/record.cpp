// SPDX-License-Identifier: MIT
// kora4ctl record: how settings change, into a file.
#include "base/failure.h"
#include "base/results.h"
#include "base/shown_text.h"
#include "base/text.h"
#include "kora4ctl/access/held_store.h"
#include "kora4ctl/command_line/run_limits.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/notifications/notification_listener.h"
#include "kora4ctl/recording/recording.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "process/api_session.h"
#include "process/files.h"
#include "registry/registry_store.h"
#include "settings/document.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string file;
    RunLimits limits;
};

constexpr char cFooter[] =
    "The first line has the settings; then there is a line for each notification, with its\n"
    "offset in milliseconds and whatever else changed; the last line has the settings at the\n"
    "end. Each line is on disk before the next one comes. Ctrl-C ends the recording; if the\n"
    "program is killed, the recording has no end and 'kora4ctl replay' does not accept it.\n";

// Lines into a file or to standard output.
class Lines {
  public:
    Lines(const std::string& path, Output& output) : m_path(path), m_output(output) {
        if (IsStandardOutput())
            return;
        m_file = OpenPath(path, GENERIC_WRITE, CREATE_ALWAYS, FILE_SHARE_READ);
        if (!m_file)
            throw CannotBe("created", path, GetLastError());
    }

    void Add(const Json& line) {
        if (IsStandardOutput()) {
            m_output.PrintJsonLine(line);
            return;
        }
        const std::string text =
            ShownLines(line.dump(-1, ' ', false, Json::error_handler_t::replace)) + "\n";
        DWORD written = 0;
        if (!WriteFile(m_file.Get(), text.data(), static_cast<DWORD>(text.size()), &written,
                       nullptr) ||
            written != text.size())
            throw CannotBe("written", m_path, GetLastError());
    }

    bool IsStandardOutput() const { return m_path == "-"; }
    bool IsBroken() const { return IsStandardOutput() && m_output.IsBroken(); }

  private:
    const std::string m_path;
    Output& m_output;
    UniqueHandle m_file;
};

// The settings of the user, as they are stored now.
class Snapshots {
  public:
    Snapshots() : m_store(OpenStore(OpenMode::eRead)) {}

    // Ctrl-C does not interrupt it: the last one is taken after that.
    Json Take() const {
        const StoreLock lock(cLockPatience);
        return Dump(*m_store, Scope::eUser, InDemo::eStored);
    }

  private:
    const std::unique_ptr<StoreAccess> m_store;
};

// What stands for profile and enable in a snapshot that may be later than what was told:
// they come when they are told, so that a replay enters and leaves demos as it was done.
void KeepUntilTold(const char* name, const Json& before, const std::vector<Notification>& told,
                   Json& now) {
    Json value = MemberOf(before, "general", name);
    for (const Notification& notification : told) {
        if (notification.name == name)
            value = notification.value;
    }
    if (value.is_null())
        now["general"].erase(name);
    else
        now["general"][name] = value;
}

class Recorder {
  public:
    Recorder(const Context& context, const Options& options)
        : m_limits(options.limits),
          m_lines(options.file, context.output),
          m_listener(*m_api, context.interrupt.Event()),
          m_begin(GetTickCount64()),
          m_last(m_snapshots.Take()) {
        m_lines.Add({{"event", "start"},
                     {"format", cRecordingFormat},
                     {"version", cRecordingVersion},
                     {"time", Moment::Now().Iso()},
                     {"settings", m_last}});
    }

    bool IsToStandardOutput() const { return m_lines.IsStandardOutput(); }
    unsigned Count() const { return m_count; }

    // Whether it ended as asked, or before.
    Wake Run() {
        const Deadline deadline = m_limits.Start();
        for (std::vector<Notification> told; !m_lines.IsBroken();) {
            const Wake wake = m_listener.Wait(deadline, told);
            if (!told.empty())
                AddGroup(told);
            if (m_limits.IsReached(m_count))
                return Wake::eDone;
            if (wake != Wake::eDone)
                return wake;
        }
        return Wake::eDone;
    }

    void End() {
        const Json now = m_snapshots.Take();
        const Json changes = ChangesBetween(m_last, now);
        if (!changes.empty())
            m_lines.Add({{"event", "changes"}, {"offset", Offset()}, {"changes", changes}});
        m_lines.Add({{"event", "end"}, {"offset", Offset()}, {"settings", now}});
    }

  private:
    void AddGroup(std::vector<Notification>& told) {
        Json now = m_snapshots.Take();
        for (const char* name : {"profile", "enable"})
            KeepUntilTold(name, m_last, told, now);
        for (const Notification& notification : told) {
            Json line = {{"event", notification.event},
                         {"name", notification.name},
                         {"value", notification.value},
                         {"offset", Offset(notification.tick)}};
            ++m_count;
            const bool isLast = &notification == &told.back() || m_limits.IsReached(m_count);
            if (isLast)
                line["changes"] = ChangesBetween(m_last, now);
            m_lines.Add(line);
            if (isLast)
                break;
        }
        m_last = std::move(now);
    }

    // Never before that of the line above.
    ULONGLONG Offset(ULONGLONG tick = GetTickCount64()) {
        return m_offset = std::max(m_offset, tick - std::min(tick, m_begin));
    }

    const RunLimits m_limits;
    ApiSession m_api;
    Lines m_lines;
    NotificationListener m_listener;
    const Snapshots m_snapshots;
    const ULONGLONG m_begin;
    Json m_last;
    ULONGLONG m_offset = 0;
    unsigned m_count = 0;
};

ExitCode Record(const Context& context, const Options& options) {
    WaitForStore(context);
    Recorder recorder(context, options);
    context.output.Say("Recording; press Ctrl-C to stop.");
    const Wake wake = recorder.Run();
    recorder.End();
    const ExitCode code =
        wake == Wake::eTimedOut ? options.limits.OnTimeout(recorder.Count()) : ExitCode::eDone;
    if (recorder.IsToStandardOutput())
        return code;
    if (context.output.json)
        context.output.PrintJson({{"file", options.file}, {"notifications", recorder.Count()}});
    else
        context.output.Say("Recorded " + CountOf(recorder.Count(), "notification") + " in '" +
                           options.file + "'.");
    return code;
}

}  // namespace

void AddRecord(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "record", "record how settings change", Record);
    verb.add_option("FILE", options.file, "the output file, or - for standard output")
        ->required();
    options.limits.AddTo(verb, "notifications");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

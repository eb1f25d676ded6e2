// SPDX-License-Identifier: MIT
// kora4ctl replay: a recording, made again.
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/notifications/message_wait.h"
#include "kora4ctl/recording/recording.h"
#include "kora4ctl/recording/replayer.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "settings/backup.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string file;
    double speed = 1;
    bool noStart = false;
};

constexpr char cFooter[] =
    "The whole file is checked before anything is changed. Then the settings at the start of\n"
    "the recording are restored (unless --no-start), and each change is made at its recorded\n"
    "time, divided by the speed. At the end, the settings are compared with those at the end\n"
    "of the recording; differences are printed and the exit code is 1.\n"
    "A backup is kept before anything changes; see 'kora4ctl undo'.\n"
    "Ctrl-C stops after the current change.\n";

// Waits for a group's moment. Failure when Ctrl-C comes first.
void WaitForMoment(const Context& context, const Options& options, ULONGLONG begin,
                   const RecordedGroup& group) {
    const double offset =
        options.speed > 0 ? static_cast<double>(group.offset) / 1000 / options.speed : 0;
    const double passed = static_cast<double>(GetTickCount64() - begin) / 1000;
    const Wake wake = WaitWithMessages(context.interrupt.Event(), Deadline(offset - passed),
                                       [] { return false; });
    if (wake == Wake::eInterrupted)
        throw Failure(ExitCode::eFailed,
                      "Interrupted; the rest of the recording was not replayed.",
                      "The settings are those of " + std::to_string(group.offset) +
                          " ms into the recording.");
}

// Keeps a backup. The user's settings from before, to be compared with at the end.
Plan KeepBefore(const Context& context) {
    const HeldStore store(context, OpenMode::eRead);
    Backups().Keep("replay", *store, store.lock);
    return CheckDocument(Dump(*store, Scope::eUser, InDemo::eStored));
}

ExitCode Tell(Output& output, const Recording& recording, const ChangeCounts& counts,
              const std::vector<Difference>& differences) {
    const bool isSame = differences.empty();
    if (output.json) {
        output.PrintJson({{"notifications", recording.Events()},
                          {"same", isSame},
                          {"differences", DocumentOf(differences)},
                          {"written", counts.written},
                          {"deleted", counts.deleted}});
    } else {
        PrintDifferences(output, differences);
        const bool isAnyChanged = counts.written + counts.deleted != 0;
        output.Say("Values changed: " + counts.InWords() +
                   (isAnyChanged ? ". To undo it: kora4ctl undo 1" : "."));
        output.Say(isSame ? "The settings match the end of the recording."
                          : CountOf(differences.size(), "value") +
                                " differ from the end of the recording (stored -> recorded).");
    }
    return isSame ? ExitCode::eDone : ExitCode::eFailed;
}

ExitCode Replay(const Context& context, const Options& options) {
    const Recording recording = ParseFile(options.file, [&context](const std::string& text) {
        return ReadRecording(text, [&context] { EndIfInterrupted(context); });
    });
    const Plan before = KeepBefore(context);
    Replayer replayer(context);
    if (!options.noStart)
        replayer.Restore(recording.start);
    const ULONGLONG begin = GetTickCount64();
    for (const RecordedGroup& group : recording.groups) {
        WaitForMoment(context, options, begin, group);
        replayer.Make(group);
    }
    std::vector<Difference> changes = replayer.DifferencesFrom(before);
    // Seen from before: what is stored now was written then.
    for (Difference& change : changes)
        std::swap(change.stored, change.wanted);
    return Tell(context.output, recording, ChangeCounts(changes),
                replayer.DifferencesFrom(CheckDocument(recording.end)));
}

}  // namespace

void AddReplay(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "replay", "replay a recording", Replay);
    verb.add_option("FILE", options.file, "a file of 'record', or - for standard input")
        ->required();
    verb.add_option("--speed", options.speed,
                    "how many times as fast as recorded (default 1); 0 is as fast as possible")
        ->transform(Within(0.0, 1e6))
        ->type_name("X");
    verb.add_flag("--no-start", options.noStart,
                  "start from the current settings, not the recorded ones");
    verb.footer(cFooter);
}

}  // namespace kora4::tools

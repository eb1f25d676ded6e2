// SPDX-License-Identifier: MIT
// kora4ctl trace: what the library traces, and the log files that it writes.
#include <cstdio>
#include <memory>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/messages/trace_categories.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/explain/trace_log.h"
#include "kora4ctl/explain/trace_word.h"
#include "kora4ctl/verbs.h"
#include "process/win32_failure.h"
#include "registry/registry_store.h"
#include "registry/store_lock.h"

namespace kora4::tools {

namespace {

constexpr char cTakesEffect[] =
    "It takes effect when a client calls Initialize the next time; start the program again.";

struct OnOptions {
    std::vector<std::string> categories;
    bool files = false;
};

struct ShowOptions {
    bool follow = false;
    unsigned lines = 10;
    std::string module;
};

Json DocumentOf(const TraceWord& word) {
    return {{"flags", Hex(word.Flags())},
            {"categories", word.CategoryNames()},
            {"logFiles", word.WritesFiles()},
            {"silent", word.IsSilent()},
            {"unknown", word.UnknownBits() ? Json(Hex(word.UnknownBits())) : Json(nullptr)}};
}

void Store(const Context& context, TraceWord word) {
    const auto store = OpenStore(OpenMode::eReadWrite);
    const StoreLock lock(cLockPatience, context.interrupt.Event());
    WriteTraceWord(*store, word);
}

void TellStored(const Context& context, const TraceWord& word) {
    if (context.output.json) {
        context.output.PrintJson(DocumentOf(word));
        return;
    }
    context.output.Print(Hex(word.Flags()) + "  " + word.InWords());
    context.output.Say(cTakesEffect);
}

// The library writes into an existing folder and never creates it.
void MakeLogFolder(Output& output) {
    if (HasLogFolder())
        return;
    if (!CreateDirectoryW(Widen(LogFolder()).c_str(), nullptr))
        throw Win32Failure(GetLastError(), "The folder " + LogFolder() + " cannot be made",
                           "Make it as an administrator; without it no log file is written.");
    output.Say("Made the folder " + LogFolder() + ".");
}

ExitCode On(const Context& context, const OnOptions& options) {
    TraceWord word =
        options.categories.empty() ? TraceWord::Usual() : TraceWord::Of(options.categories);
    if (options.files)
        word.WriteFiles();
    if (word.WritesFiles())
        MakeLogFolder(context.output);
    Store(context, word);
    TellStored(context, word);
    return ExitCode::eDone;
}

ExitCode Off(const Context& context, bool silent) {
    const TraceWord word = silent ? TraceWord::Silent() : TraceWord();
    Store(context, word);
    TellStored(context, word);
    return ExitCode::eDone;
}

// ---- show -------------------------------------------------------------------------------

// The tag as it is written, whatever its case.
std::string TagOf(const std::string& module) {
    if (module.empty())
        return module;
    std::vector<std::string> tags;
    for (const contract::TraceTag& known : contract::cTraceTags) {
        if (Lower(known.tag) == Lower(module))
            return known.tag;
        tags.emplace_back(known.tag);
    }
    throw Failure(
        ExitCode::eBadInput,
        "No module of the library is called '" + module + "'. " + Suggestion(module, tags),
        "More: kora4ctl trace show --help");
}

std::string TimeOf(const SYSTEMTIME& time) {
    char text[32];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute, time.wSecond);
    return text;
}

Json DocumentOf(const std::string& line) {
    const std::optional<TraceLine> parsed = ParseTraceLine(line);
    if (!parsed)
        return {{"module", nullptr}, {"line", nullptr}, {"function", nullptr}, {"text", line}};
    return {{"module", parsed->module},
            {"line", parsed->line},
            {"function", parsed->function},
            {"text", parsed->text}};
}

// Problems are highlighted; entry and exit lines are dimmed.
std::string Painted(const Output& output, const std::string& line) {
    const std::optional<TraceLine> parsed = ParseTraceLine(line);
    if (!parsed)
        return line;
    const std::string head = line.substr(0, line.size() - parsed->text.size());
    const bool isTrouble = parsed->text.starts_with("****") ||
                           parsed->text.find("KALASSERT failed") != std::string::npos;
    const bool isEdge = parsed->text.starts_with(">>") || parsed->text.starts_with("<<");
    return output.Paint(Style::eDim, head) + output.Paint(isTrouble ? Style::eBad
                                                          : isEdge  ? Style::eDim
                                                                    : Style::ePlain,
                                                          parsed->text);
}

void KeepLast(std::vector<std::string>& lines, unsigned count) {
    if (lines.size() > count)
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
}

void PrintLines(Output& output, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        if (output.json)
            output.PrintJsonLine(DocumentOf(line));
        else
            output.Print(Painted(output, line));
    }
}

TraceWord StoredWord(const Context& context) {
    const auto store = OpenStore(OpenMode::eRead);
    const StoreLock lock(cLockPatience, context.interrupt.Event());
    return ReadTraceWord(*store);
}

ExitCode ShowOnce(const Context& context, const ShowOptions& options, const std::string& path) {
    Output& output = context.output;
    const TraceWord word = StoredWord(context);
    LogReader reader(path);
    std::vector<std::string> lines = reader.NewLines();
    KeepLast(lines, options.lines);
    const std::vector<LogFile> files = LogFiles();
    if (output.json) {
        Json document = DocumentOf(word);
        document["folder"] = HasLogFolder() ? Json(LogFolder()) : Json(nullptr);
        document["files"] = Json::array();
        for (const LogFile& file : files)
            document["files"].push_back({{"name", file.name},
                                         {"bytes", file.bytes},
                                         {"changed", TimeOf(file.changed)}});
        document["lines"] = Json::array();
        for (const std::string& line : lines)
            document["lines"].push_back(DocumentOf(line));
        output.PrintJson(document);
        return ExitCode::eDone;
    }
    output.Table({}, {{"trace word", Hex(word.Flags()) + "  " + word.InWords()},
                      {"log files", word.WritesFiles() ? "on" : "off"},
                      {"folder", HasLogFolder() ? LogFolder() : LogFolder() + " (not there)"}});
    if (!files.empty()) {
        std::vector<std::vector<std::string>> rows;
        for (const LogFile& file : files)
            rows.push_back({file.name, TimeOf(file.changed), std::to_string(file.bytes)});
        output.Print();
        output.Table({"file", "changed", "bytes"}, rows);
    }
    if (!lines.empty()) {
        output.Print();
        output.Print(output.Paint(Style::eDim, path));
        PrintLines(output, lines);
    }
    return ExitCode::eDone;
}

// How often the log is looked at; short enough to read along, long enough to cost nothing.
constexpr DWORD cLookPeriod = 200;  // milliseconds

ExitCode Follow(const Context& context, const ShowOptions& options, const std::string& path) {
    Output& output = context.output;
    LogReader reader(path);
    std::vector<std::string> lines = reader.NewLines();
    KeepLast(lines, options.lines);
    output.Say(reader.IsThere() ? "Following " + path + " until Ctrl-C."
                                : "Waiting for " + path + " until Ctrl-C.");
    PrintLines(output, lines);
    while (!output.IsBroken() && !context.interrupt.WaitFor(cLookPeriod)) {
        lines = reader.NewLines();
        if (reader.BeganAnew())
            output.Say("The file begins anew.");
        PrintLines(output, lines);
    }
    return ExitCode::eDone;
}

ExitCode Show(const Context& context, const ShowOptions& options) {
    const std::string path = LogPath(TagOf(options.module));
    return options.follow ? Follow(context, options, path) : ShowOnce(context, options, path);
}

// ---- The command line -------------------------------------------------------------------

std::string CategoryHelp() {
    std::string text = "Categories:\n";
    for (const contract::TraceBits& category : contract::cTraceCategories)
        text += "  " + Padded(category.name, 22) + category.lines + "\n";
    text += "  " + Padded(cAllCategories, 22) + "everything but log-files\n";
    return text;
}

std::string ModuleHelp() {
    std::string text = "Modules:\n";
    for (const contract::TraceTag& known : contract::cTraceTags)
        text += "  " + Padded(known.tag, 22) + known.writer + "\n";
    return text;
}

void AddOn(CLI::App& verb, Context& context) {
    const auto options = std::make_shared<OnOptions>();
    CLI::App* on = verb.add_subcommand("on", "trace these categories, and no others");
    on->add_option(
          "CATEGORY", options->categories,
          "which lines; without one: " + Join(TraceWord::Usual().CategoryNames(), ", "))
        ->type_name("CATEGORY");
    on->add_flag("--files", options->files,
                 "write log files too; makes their folder, " + LogFolder());
    on->footer(CategoryHelp() + "\n" + cTakesEffect +
               "\nEach line costs a call of the debugger's output, with --files two files "
               "are\nopened and closed for it as well.\n");
    OnRun(*on, context, [&context, options] { return On(context, *options); });
}

void AddOff(CLI::App& verb, Context& context) {
    const auto silent = std::make_shared<bool>(false);
    CLI::App* off = verb.add_subcommand("off", "back to messages only, and no log files");
    off->add_flag("--silent", *silent, "not even messages: the master switch off");
    off->footer(std::string(cTakesEffect) + "\n");
    OnRun(*off, context, [&context, silent] { return Off(context, *silent); });
}

void AddShow(CLI::App& verb, Context& context) {
    const auto options = std::make_shared<ShowOptions>();
    CLI::App* show = verb.add_subcommand("show", "what is traced, the log files, their lines");
    show->add_flag("--follow,-f", options->follow,
                   "print lines as they are written, until Ctrl-C");
    show->add_option("--lines,-n", options->lines, "how many of the last lines to begin with")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->check(CLI::Range(0u, 1000000u));
    show->add_option("--module", options->module, "the log of one module instead of the shared")
        ->type_name("MODULE");
    show->footer(ModuleHelp());
    OnRun(*show, context, [&context, options] { return Show(context, *options); });
}

}  // namespace

void AddTrace(Context& context) {
    CLI::App* verb =
        context.root.add_subcommand("trace", "what the library writes about what it does");
    verb->require_subcommand(1);
    AddOn(*verb, context);
    AddOff(*verb, context);
    AddShow(*verb, context);
}

}  // namespace kora4::tools

// SPDX-License-Identifier: MIT
// kora4ctl trace: what the library traces, and the log files that it writes.
#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/messages/trace_categories.h"
#include "contract/messages/trace_writers.h"
#include "kora4ctl/access/held_store.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/explain/explain_values.h"
#include "kora4ctl/explain/trace_log.h"
#include "kora4ctl/explain/trace_word.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "process/win32_failure.h"

namespace kora4::tools {

namespace {

constexpr char cTakesEffect[] =
    "Takes effect when a client next calls Initialize; restart the program.";

using Rows = std::vector<std::vector<std::string>>;

struct OnOptions {
    std::vector<std::string> categories;
    bool files = false;
};

struct OffOptions {
    bool silent = false;
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
            {"unknown", word.UnknownBits() ? Json(Hex(word.UnknownBits())) : Json()}};
}

void Store(const Context& context, TraceWord word) {
    WriteTraceWord(*HeldStore(context, OpenMode::eReadWrite), word);
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
        throw Win32Failure(
            GetLastError(), "The folder '" + LogFolder() + "' cannot be created",
            "Create it as an administrator; without it, no log files are written.");
    output.Say("Created the folder '" + LogFolder() + "'.");
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

ExitCode Off(const Context& context, const OffOptions& options) {
    const TraceWord word = options.silent ? TraceWord::Silent() : TraceWord();
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
    throw BadInput("The library has no module '" + module + "'. " + Suggestion(module, tags),
                   "For the list: kora4ctl trace show --help");
}

Json DocumentOf(const std::string& line) {
    const auto parsed = ParseTraceLine(line);
    if (!parsed)
        return {{"module", nullptr}, {"line", nullptr}, {"function", nullptr}, {"text", line}};
    return {{"module", parsed->tag},
            {"line", NumberIn(parsed->line, 10).value_or(0)},
            {"function", parsed->function},
            {"text", parsed->message}};
}

// Problems are highlighted; entry and exit lines are dimmed.
std::string Painted(const Output& output, const std::string& line) {
    const auto parsed = ParseTraceLine(line);
    if (!parsed)
        return line;
    const std::string head = line.substr(0, line.size() - parsed->message.size());
    const bool isTrouble = parsed->message.starts_with("****") ||
                           parsed->message.find("KALASSERT failed") != std::string::npos;
    const bool isEdge = parsed->message.starts_with(">>") || parsed->message.starts_with("<<");
    return output.Paint(Style::eDim, head) + output.Paint(isTrouble ? Style::eBad
                                                          : isEdge  ? Style::eDim
                                                                    : Style::ePlain,
                                                          parsed->message);
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

ExitCode ShowOnce(const Context& context, const ShowOptions& options, const std::string& path) {
    Output& output = context.output;
    const TraceWord word = ReadTraceWord(*HeldStore(context, OpenMode::eRead));
    LogReader reader(path);
    std::vector<std::string> lines = reader.NewLines();
    KeepLast(lines, options.lines);
    const std::vector<LogFile> files = LogFiles();
    if (output.json) {
        Json document = DocumentOf(word);
        document["folder"] = HasLogFolder() ? Json(LogFolder()) : Json(nullptr);
        document["files"] = Json::array();
        for (const LogFile& file : files)
            document["files"].push_back(
                {{"name", file.name}, {"bytes", file.bytes}, {"changed", file.changed}});
        document["lines"] = Json::array();
        for (const std::string& line : lines)
            document["lines"].push_back(DocumentOf(line));
        output.PrintJson(document);
        return ExitCode::eDone;
    }
    output.Table(
        {}, {{"trace word", Hex(word.Flags()) + "  " + word.InWords()},
             {"log files", word.WritesFiles() ? "on" : "off"},
             {"folder", HasLogFolder() ? LogFolder() : LogFolder() + " (does not exist)"}});
    if (!files.empty()) {
        Rows rows;
        for (const LogFile& file : files)
            rows.push_back({file.name, file.changed, std::to_string(file.bytes)});
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
            output.Say("The file was replaced; starting over.");
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
    Rows rows;
    for (const contract::TraceBits& category : contract::cTraceCategories)
        rows.push_back({category.name, category.lines});
    rows.push_back({cAllCategories, "everything but log-files"});
    return "Categories:\n" + Aligned(rows);
}

std::string ModuleHelp() {
    Rows rows;
    for (const contract::TraceTag& known : contract::cTraceTags)
        rows.push_back({known.tag, known.writer});
    return "Modules:\n" + Aligned(rows);
}

void AddOn(CLI::App& trace, Context& context) {
    const auto [on, options] = AddVerb(trace, context, "on", "trace only these categories", On);
    on.add_option("CATEGORY", options.categories,
                  "which lines; by default: " + Join(TraceWord::Usual().CategoryNames(), ", "))
        ->type_name("CATEGORY");
    on.add_flag("--files", options.files,
                "also write log files; creates their folder, " + LogFolder());
    on.footer(
        CategoryHelp() + "\n" + cTakesEffect +
        "\nEach line costs a call to the debugger's output; with --files, two files are also\n"
        "opened and closed for it.\n");
}

void AddOff(CLI::App& trace, Context& context) {
    const auto [off, options] =
        AddVerb(trace, context, "off", "trace messages only, without log files", Off);
    off.add_flag("--silent", options.silent, "turn the master switch off: not even messages");
    off.footer(std::string(cTakesEffect) + "\n");
}

void AddShow(CLI::App& trace, Context& context) {
    const auto [show, options] =
        AddVerb(trace, context, "show", "show what is traced, and the log files", Show);
    show.add_flag("--follow,-f", options.follow,
                  "print lines as they are written, until Ctrl-C");
    show.add_option("--lines,-n", options.lines, "how many of the last lines to show first")
        ->type_name("N")
        ->capture_default_str()
        ->transform(Within(0u, 1000000u));
    show.add_option("--module", options.module,
                    "the log of this module instead of the shared one")
        ->type_name("MODULE");
    show.footer(ModuleHelp());
}

}  // namespace

void AddTrace(Context& context) {
    CLI::App& trace = AddGroup(context, "trace", "control and read the library's trace");
    AddOn(trace, context);
    AddOff(trace, context);
    AddShow(trace, context);
}

}  // namespace kora4::tools

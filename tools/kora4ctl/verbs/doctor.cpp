// SPDX-License-Identifier: MIT
// kora4ctl doctor: what is wrong on this machine, and how to repair it.
#include "kora4ctl/doctor/doctor.h"

#include "base/text.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Options {
    bool dryRun = false;
    bool deep = false;
    double wait = 3;  // seconds
};

// How many checks ran, and how many findings of each severity there were.
struct Tally {
    std::size_t checks = 0;
    std::size_t ok = 0;
    std::size_t counts[3] = {};  // by severity

    std::size_t Notes() const { return counts[0]; }
    std::size_t Warnings() const { return counts[1]; }
    std::size_t Errors() const { return counts[2]; }
};

constexpr std::size_t cSeverityWidth = 9;
constexpr std::size_t cNameWidth = 17;

Style StyleOf(Severity severity) {
    constexpr Style cStyles[] = {Style::eStrong, Style::eWarning, Style::eBad};
    return cStyles[static_cast<std::size_t>(severity)];
}

std::string Head(const Output& output, Style style, const char* word, const char* name) {
    return Padded(output.Paint(style, word), cSeverityWidth) + Padded(name, cNameWidth);
}

void Print(Output& output, const DoctorCheck& check, const CheckResult& result) {
    if (result.findings.empty())
        PrintBeside(output, Head(output, Style::eGood, "ok", check.name), result.summary);
    for (const Observation& one : result.findings) {
        PrintBeside(output,
                    Head(output, StyleOf(one.severity), SeverityName(one.severity), check.name),
                    one.what);
        if (!one.next.empty())
            PrintBeside(output, std::string(cSeverityWidth + cNameWidth, ' '),
                        "-> " + one.next);
    }
}

void Append(Json& findings, const DoctorCheck& check, const CheckResult& result) {
    if (result.findings.empty())
        findings.push_back({{"check", check.name},
                            {"severity", "ok"},
                            {"what", result.summary},
                            {"next", ""}});
    for (const Observation& one : result.findings) {
        findings.push_back({{"check", check.name}});
        findings.back().update(DocumentOf(one));
    }
}

std::string Summary(const Tally& tally) {
    std::vector<std::string> parts;
    if (tally.Errors())
        parts.push_back(CountOf(tally.Errors(), "error"));
    if (tally.Warnings())
        parts.push_back(CountOf(tally.Warnings(), "warning"));
    if (parts.empty())
        parts.emplace_back("No problems");
    if (tally.Notes())
        parts.push_back(CountOf(tally.Notes(), "note"));
    return Join(parts, ", ") + ".";
}

Json Document(const Json& findings, const Tally& tally) {
    return {{"findings", findings},
            {"summary",
             {{"checks", tally.checks},
              {"ok", tally.ok},
              {"notes", tally.Notes()},
              {"warnings", tally.Warnings()},
              {"errors", tally.Errors()}}}};
}

Tally RunAll(Examination& examination, Json& findings) {
    Output& output = examination.context.output;
    Tally tally;
    for (const DoctorCheck& check : DoctorChecks()) {
        if (examination.context.interrupt.IsRequested())
            break;
        const std::optional<CheckResult> result = RunCheck(check, examination);
        if (!result)
            continue;
        ++tally.checks;
        tally.ok += result->findings.empty();
        for (const Observation& one : result->findings)
            ++tally.counts[static_cast<std::size_t>(one.severity)];
        if (output.json)
            Append(findings, check, *result);
        else
            Print(output, check, *result);
    }
    return tally;
}

ExitCode Doctor(const Context& context, const Options& options) {
    Output& output = context.output;
    Examination examination{context};
    examination.isDryRun = options.dryRun;
    examination.isDeep = options.deep;
    examination.patience = static_cast<DWORD>(options.wait * 1000);
    Json findings = Json::array();
    const Tally tally = RunAll(examination, findings);
    if (output.json) {
        output.PrintJson(Document(findings, tally));
    } else {
        output.Print();
        output.Print(output.Paint(Style::eStrong, Summary(tally)));
    }
    ExitCode code = tally.Errors() + tally.Warnings() ? ExitCode::eFindings : ExitCode::eDone;
    if (context.interrupt.IsRequested()) {
        output.Complain("Interrupted: some checks were not run.");
        code = ExitCode::eFailed;
    }
    // A thread that hangs in the library would also hang the ordinary end of the process.
    if (examination.hasHungThread)
        TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    return code;
}

std::string Footer() {
    std::vector<std::vector<std::string>> rows;
    for (const DoctorCheck& check : DoctorChecks())
        rows.push_back({check.name, check.summary});
    return "Checks:\n" + Aligned(rows) +
           "\nAn interrupted load is undone, or finished if only its announcement was "
           "missing;\n"
           "with --dry-run it is only reported.\n"
           "--deep makes every client read one value again and changes no setting.\n"
           "\nThe exit code is 0 if nothing is worse than a note, and 7 otherwise.\n";
}

}  // namespace

void AddDoctor(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "doctor",
                "find what is wrong on this machine, and how to repair it", Doctor);
    CLI::Option* const dryRun = verb.add_flag("--dry-run", options.dryRun, "change nothing");
    verb.add_flag("--deep", options.deep, "also check that notifications arrive")
        ->excludes(dryRun);
    verb.add_option("--wait", options.wait,
                    "how long to wait for the mutex and the library, in seconds")
        ->type_name("S")
        ->capture_default_str()
        ->transform(Within(0.1, 60.0));
    verb.footer(Footer());
}

}  // namespace kora4::tools

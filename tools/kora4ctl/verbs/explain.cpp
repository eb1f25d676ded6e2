// SPDX-License-Identifier: MIT
// kora4ctl explain: a result or a line of the trace in words.
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "base/text.h"
#include "kora4ctl/explain/explain_text.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

constexpr char cStandardInput[] = "-";

void PrintParts(Output& output, const Explanation& explanation) {
    constexpr std::size_t cLeastText = 30;
    const std::vector<ExplainedPart> parts = Parts(explanation);
    std::size_t headings = 0;
    for (const ExplainedPart& part : parts)
        headings = std::max(headings, Columns(part.heading));
    // A pipe gets each part in one line.
    const std::size_t left = headings + 2;
    const std::size_t columns = !output.IsTerminal()                 ? std::string::npos
                                : output.Width() > left + cLeastText ? output.Width() - left - 1
                                                                     : cLeastText;
    for (const ExplainedPart& part : parts) {
        std::string heading = output.Paint(Style::eDim, Padded(part.heading, left));
        for (const std::string& line : Wrapped(part.text, columns)) {
            output.Print(heading + line);
            heading = std::string(left, ' ');
        }
    }
}

bool Tell(Output& output, const std::string& text, bool isOneOfMany) {
    const Explanation explanation = Explain(text);
    if (output.json && isOneOfMany)
        output.PrintJsonLine(DocumentOf(explanation));
    else if (output.json)
        output.PrintJson(DocumentOf(explanation));
    else
        PrintParts(output, explanation);
    return explanation.isKnown;
}

// Line by line, so that the log of a running program can be explained, too.
bool TellAllOfStandardInput(Context& context) {
    bool areKnown = true;
    bool isFirst = true;
    for (std::string line; !context.interrupt.IsRequested() && !context.output.IsBroken() &&
                           std::getline(std::cin, line);) {
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        if (!isFirst && !context.output.json)
            context.output.Print();
        isFirst = false;
        areKnown = Tell(context.output, line, true) && areKnown;
    }
    return areKnown;
}

ExitCode Run(Context& context, const std::vector<std::string>& words) {
    const std::string text = Join(words, " ");
    const bool areKnown = text == cStandardInput ? TellAllOfStandardInput(context)
                                                 : Tell(context.output, text, false);
    return areKnown ? ExitCode::eDone : ExitCode::eBadInput;
}

}  // namespace

void AddExplain(Context& context) {
    CLI::App& verb = *context.root.add_subcommand(
        "explain", "say in words what a result or a line of the trace means");
    const auto pWords = std::make_shared<std::vector<std::string>>();
    verb.add_option("text", *pWords,
                    "a result (0x80004005, 40200h, -2147024809, E_INVALIDARG), a line of the "
                    "trace or its message, or - for the lines of standard input")
        ->required();
    verb.footer("Exit code 5: there is something that nobody knows; what comes near is shown.");
    OnRun(verb, context, [&context, pWords] { return Run(context, *pWords); });
}

}  // namespace kora4::tools

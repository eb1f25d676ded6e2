// SPDX-License-Identifier: MIT
// kora4ctl explain: a result or a line of the trace in words.
#include <string>
#include <vector>

#include "base/text.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/explain/explain_text.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "process/files.h"

namespace kora4::tools {

namespace {

constexpr char cStandardInput[] = "-";

void PrintParts(Output& output, const Explanation& explanation) {
    const std::vector<ExplainedPart> parts = Parts(explanation);
    std::size_t headings = 0;
    for (const ExplainedPart& part : parts)
        headings = std::max(headings, Columns(part.heading));
    for (const ExplainedPart& part : parts)
        PrintBeside(output, output.Paint(Style::eDim, Padded(part.heading, headings + 2)),
                    part.text);
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
bool TellAllOfStandardInput(const Context& context) {
    bool areKnown = true;
    bool isFirst = true;
    InputLines lines;
    for (std::string line;
         !context.interrupt.IsRequested() && !context.output.IsBroken() && lines.Next(line);) {
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        if (!isFirst && !context.output.json)
            context.output.Print();
        isFirst = false;
        areKnown = Tell(context.output, line, true) && areKnown;
    }
    return areKnown;
}

using Words = std::vector<std::string>;

ExitCode Run(const Context& context, const Words& words) {
    const std::string text = Join(words, " ");
    const bool areKnown = text == cStandardInput ? TellAllOfStandardInput(context)
                                                 : Tell(context.output, text, false);
    return areKnown ? ExitCode::eDone : ExitCode::eBadInput;
}

}  // namespace

void AddExplain(Context& context) {
    const auto [verb, words] =
        AddVerb(context.root, context, "explain", "explain a result or a trace line", Run);
    verb.add_option("TEXT", words,
                    "a result (0x80004005, 40200h, -2147024809, E_INVALIDARG), a trace line "
                    "or its message, or - for the lines of standard input")
        ->required();
    verb.footer("Exit code 5: an input is unknown; the nearest known ones are shown.");
}

}  // namespace kora4::tools

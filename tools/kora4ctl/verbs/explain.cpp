// SPDX-License-Identifier: MIT
// kora4ctl explain: a result or a line of the trace in words.
#include <algorithm>
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

// Line by line, so that the log of a running program can be explained, too.
bool TellAllOfStandardInput(const Context& context) {
    bool areKnown = true;
    bool isFirst = true;
    InputLines lines;
    for (std::string line;
         !context.interrupt.IsRequested() && !context.output.IsBroken() && lines.Next(line);) {
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        const Explanation explanation = Explain(line);
        areKnown = areKnown && explanation.isKnown;
        if (context.output.json) {
            context.output.PrintJsonLine(DocumentOf(explanation));
            continue;
        }
        if (!isFirst)
            context.output.Print();
        isFirst = false;
        PrintParts(context.output, explanation);
    }
    return areKnown;
}

using Words = std::vector<std::string>;

// The words of a line of the trace need no quotation marks. A result at the beginning, which no
// line has, or blanks in an argument say that there are several.
Words InputsOf(const Words& words) {
    const bool areSeveral = Explain(words.front()).kind == Explanation::Kind::eResult ||
                            std::ranges::any_of(words, [](const std::string& word) {
                                return word.find(' ') != std::string::npos;
                            });
    return areSeveral ? words : Words{Join(words, " ")};
}

bool TellAll(Output& output, const Words& inputs) {
    Json documents = Json::array();
    bool areKnown = true;
    for (const std::string& input : inputs) {
        const Explanation explanation = Explain(input);
        areKnown = areKnown && explanation.isKnown;
        documents.push_back(DocumentOf(explanation));
        if (output.json)
            continue;
        if (documents.size() > 1)
            output.Print();
        PrintParts(output, explanation);
    }
    if (output.json)
        output.PrintJson(inputs.size() == 1 ? documents.front() : documents);
    return areKnown;
}

ExitCode Run(const Context& context, const Words& words) {
    const bool areKnown = words == Words{cStandardInput}
                              ? TellAllOfStandardInput(context)
                              : TellAll(context.output, InputsOf(words));
    return areKnown ? ExitCode::eDone : ExitCode::eBadInput;
}

}  // namespace

void AddExplain(Context& context) {
    const auto [verb, words] =
        AddVerb(context.root, context, "explain", "explain results or a trace line", Run);
    verb.add_option("TEXT", words,
                    "results (0x80004005, 40200h, -2147024809, E_INVALIDARG), a trace line or "
                    "its message, or - for the lines of standard input")
        ->required();
    verb.footer("Exit code 5: an input is unknown; the nearest known ones are shown.");
}

}  // namespace kora4::tools

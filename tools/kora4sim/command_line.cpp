// SPDX-License-Identifier: MIT
// The options of kora4sim, their checks, and the two things that it does: list its scenes, run
// an engine.
#include "kora4sim/command_line.h"

#include <windows.h>

#include <cmath>
#include <limits>
#include <memory>

#include "base/failure.h"
#include "base/text.h"
#include "kora4sim/engine/engine.h"
#include "kora4sim/scene/scene.h"
#include "platform/handles.h"
#include "process/completion/shell_scripts.h"
#include "process/program.h"
#include "registry/registry_store.h"

namespace kora4::tools::sim {

namespace {

constexpr char cSummary[] =
    "Stands in for the KORA4 audio engine: publishes levels, applies the settings that are\n"
    "announced in the store, reports what it sees, and simulates faults on demand.";

constexpr char cExitCodes[] =
    "Exit codes: 0 done, 1 failed (also after the fault die), 2 bad command line,\n"
    "4 no keys of the store: the library is not registered, 5 bad scene, fault or number.\n";

constexpr std::size_t cNameColumns = 26;

constexpr std::uint64_t cMostSeed = std::numeric_limits<std::uint64_t>::max();

// What the command line says, before it is checked.
struct Choices {
    std::string scene = cDefaultScene;
    bool list = false;
    std::string shell;  // whose completion is asked for
    std::string seconds;
    std::string seed;
    std::string period;
    std::string records;
    bool noPublish = false;
    std::vector<std::string> faults;
    EngineOptions engine;  // what needs no check
};

// The faults and their kinds, at the end of --help.
std::string FaultHelp() {
    std::string help = "Faults:\n";
    for (const FaultDef& def : Faults()) {
        const std::string range = def.most > 0 ? " (" + RangeOf(def) + ")" : std::string();
        help += "  " + Padded(std::string(def.name) + def.shape, cNameColumns) + def.meaning +
                range + "\n";
        for (const FaultArgument& argument : ArgumentsOf(def.kind))
            help += "    " + Padded(argument.name, cNameColumns - 2) + argument.meaning + "\n";
    }
    return help;
}

// The number that an option was given; none without the option. Failure with eBadInput for what
// is no number in the range.
template <typename Number>
std::optional<Number> NumberOf(const CLI::App& root, const std::string& option,
                               const std::string& text, Number least, Number most,
                               const std::string& range) {
    if (root.count(option) == 0)
        return {};
    const std::optional<Number> number = ReadNumber<Number>(text);
    if (!number || !(*number >= least && *number <= most))
        throw BadInput("Invalid value '" + text + "' for " + option + ": expected " + range +
                       ".");
    return number;
}

EngineOptions CheckedOptions(const Choices& choices, const CLI::App& root) {
    EngineOptions options = choices.engine;
    const auto seconds = NumberOf<double>(root, "--for", choices.seconds, 0, cLongestRun,
                                          Range(0, cLongestRun) + " seconds");
    if (seconds)
        options.runMilliseconds = static_cast<std::uint64_t>(std::llround(*seconds * 1000));
    options.period = NumberOf<std::uint32_t>(
        root, "--period", choices.period, cShortestPeriod, cLongestPeriod,
        Range(cShortestPeriod, cLongestPeriod) + " milliseconds");
    options.seed = NumberOf<std::uint64_t>(root, "--seed", choices.seed, 0, cMostSeed,
                                           "0 to " + std::to_string(cMostSeed))
                       .value_or(options.seed);
    options.publishes = !choices.noPublish;
    for (const std::string& fault : choices.faults)
        options.faults.push_back(ParseFault(fault));
    return options;
}

// As many processing objects as asked for: the scene's own, the last one repeated.
void TakeRecords(const Choices& choices, const CLI::App& root, Scene& scene) {
    const auto records =
        NumberOf<std::size_t>(root, "--records", choices.records, 0, cMostRecords,
                              Range(0, cMostRecords) + " processing objects");
    const RecordShape last = scene.records.empty() ? RecordShape() : scene.records.back();
    scene.records.resize(records.value_or(scene.records.size()), last);
}

ExitCode ListScenes(Output& output) {
    const SceneFolder folder;
    Json document = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const std::string& name : folder.Names()) {
        const Scene scene = folder.Load(name);
        const std::string mask = Hex(scene.mask, 4);
        rows.push_back({name, mask, scene.description});
        document.push_back(
            {{"name", name}, {"mask", mask}, {"description", scene.description}});
    }
    if (output.json)
        output.PrintJson(document);
    else
        output.Table({"SCENE", "ENGINE", "DESCRIPTION"}, rows);
    return ExitCode::eDone;
}

// For as long as the handle is open. The engine has no such sign: it is this program's own.
UniqueHandle TellThatItRuns(Output& output) {
    UniqueHandle sign(CreateEventW(nullptr, TRUE, FALSE, L"Global\\KORA4Sim"));
    const DWORD error = GetLastError();
    // Another user's is refused.
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED)
        output.Complain(
            "kora4sim: Another kora4sim is running, and both write the engine mask "
            "and the levels. End one of them.");
    return sign;
}

// Faults are offered with each of their kinds.
Vocabulary KnownWords() {
    WordList faults{"faults", {}};
    for (const FaultDef& def : Faults()) {
        if (def.shape[0] != '=')
            faults.words.emplace_back(def.name);
        for (const FaultArgument& argument : ArgumentsOf(def.kind))
            faults.words.push_back(std::string(def.name) + "=" + argument.name);
    }
    return {{{nullptr, "SCENE", "scenes"},
             {nullptr, "--fault", "faults"},
             {nullptr, "--completion", "shells"}},
            {{"scenes", SceneFolder().Names()}, std::move(faults), {"shells", ShellNames()}},
            {}};
}

ExitCode PrintCompletion(const Choices& choices, Context& context) {
    context.output.Write(ShellScript(
        choices.shell, CompletionOf(context.root, "kora4sim --completion", KnownWords())));
    return ExitCode::eDone;
}

ExitCode RunEngine(const Choices& choices, Context& context) {
    EngineOptions options = CheckedOptions(choices, context.root);
    Scene scene = SceneFolder().Load(choices.scene);
    TakeRecords(choices, context.root, scene);
    const std::unique_ptr<StoreAccess> store = OpenStore(OpenMode::eReadWrite);
    const UniqueHandle running = TellThatItRuns(context.output);
    Reporter reporter(context.output);
    return Engine(scene, std::move(options), *store, reporter, context.interrupt).Run();
}

void AddOptions(Context& context) {
    CLI::App& root = context.root;
    const auto choices = std::make_shared<Choices>();
    root.add_option(
        "SCENE", choices->scene,
        "the name of a scene (see --list), or the path of a scene file; default music");
    root.add_flag("--list", choices->list, "list the scenes and exit");
    root.add_option(
            "--for", choices->seconds,
            "end after this many seconds, " + Range(0, cLongestRun) + "; without it, at Ctrl-C")
        ->type_name("S");
    root.add_option("--seed", choices->seed,
                    "seed of the random numbers, 0 to 2^64-1; default 1. The same seed, scene "
                    "and length publish the same values")
        ->type_name("N");
    root.add_option("--period", choices->period,
                    "publish one frame every MS milliseconds, " +
                        Range(cShortestPeriod, cLongestPeriod) + ", regardless of the store")
        ->type_name("MS");
    root.add_option("--records", choices->records,
                    "publish this many processing objects, " + Range(0, cMostRecords) +
                        ", instead of the scene's")
        ->type_name("N");
    root.add_flag("--no-publish", choices->noPublish,
                  "follow the store, but publish no levels");
    root.add_option("--fault", choices->faults,
                    "simulate a fault (see below), at once or S seconds after the start, " +
                        Range(0, cLongestRun) + "; may be repeated")
        ->type_name("NAME[=ARG][@S]")
        ->allow_extra_args(false);
    root.add_flag("--write-defaults", choices->engine.writesDefaults,
                  "first write the built-in values of all profiles into the store");
    root.add_flag(
        "--clean", choices->engine.removesLevels,
        "remove the levels from the store at the end; otherwise the last ones remain");
    root.add_option("--completion", choices->shell,
                    "print a script that completes the command line in a shell: bash, fish, "
                    "powershell or zsh")
        ->type_name("SHELL");
    root.footer(FaultHelp() + "\n" + cExitCodes);
    OnRun(root, context, [choices, &context] {
        return context.root.count("--completion") ? PrintCompletion(*choices, context)
               : choices->list                    ? ListScenes(context.output)
                                                  : RunEngine(*choices, context);
    });
}

}  // namespace

int RunKora4Sim(const std::vector<std::string>& arguments) {
    return RunProgram("kora4sim", cSummary, arguments, AddOptions);
}

}  // namespace kora4::tools::sim

// SPDX-License-Identifier: MIT
// Scene files, checked member by member with the tables of their manual.
#include "kora4sim/scene/scene.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/failure.h"
#include "fuzz/fault_oracle.h"
#include "fuzz/frame.h"
#include "fuzz/json_oracle.h"

namespace kora4::fuzz {

namespace {

using Kind = Node::Kind;
using tools::sim::Scene;
using tools::sim::Spectrum;
using tools::sim::SpectrumKind;

double NumberIn(const Node& node, double least, double most) {
    const double number = node.Number();
    Demand(number >= least && number <= most);
    return number;
}

std::uint32_t MaskOf(const Node& node) {
    if (node.Is(Kind::eNumber)) {
        Demand(node.Whole().has_value());
        return *node.Whole();
    }
    std::string digits = node.Text();
    Demand(digits.starts_with("0x") || digits.starts_with("0X"));
    digits.erase(0, 2);
    Demand(!digits.empty() &&
           digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    Demand(digits.size() <= 8);
    return static_cast<std::uint32_t>(std::strtoull(digits.c_str(), nullptr, 16));
}

void ReadEngine(const Node& engine, Scene& scene) {
    engine.CheckMembers({"mask"}, {"commands"});
    scene.mask = MaskOf(engine.At("mask"));
    if (!engine.Has("commands"))
        return;
    engine.At("commands").CheckMembers({}, {"profile-editor", "profile-selector", "demo-app"});
    scene.commands.emplace();
    for (const auto& [name, command] : engine.At("commands").members) {
        Demand(Utf16Length(command.Text()) <= 2047 &&
               command.text.find('\0') == std::string::npos);
        (*scene.commands)[name] = command.text;
    }
}

void ReadSpectrum(const Node& node, Spectrum& spectrum) {
    Demand(node.Is(Kind::eObject));
    const std::string kind = node.At("kind").Text();
    std::vector<std::string> needed = {"kind"};
    std::vector<std::string> optional;
    if (kind == "music" || kind == "speech") {
        spectrum.kind = kind == "music" ? SpectrumKind::eMusic : SpectrumKind::eSpeech;
        needed.push_back("levels");
        optional = {"swing", "rate", "noise"};
        if (kind == "speech")
            optional.push_back("pauses");
    } else if (kind == "sweep") {
        spectrum.kind = SpectrumKind::eSweep;
        optional = {"seconds", "peak", "floor", "width"};
    } else {
        Demand(kind == "silence");
    }
    node.CheckMembers(needed, optional);
    const auto take = [&node](const char* name, double least, double most, double& number) {
        if (node.Has(name))
            number = NumberIn(node.At(name), least, most);
    };
    take("swing", 0, 60, spectrum.swing);
    take("rate", 0.01, 50, spectrum.rate);
    take("noise", 0, 60, spectrum.noise);
    take("pauses", 0, 1, spectrum.pauses);
    take("seconds", 0.1, 3600, spectrum.seconds);
    take("peak", -144, 0, spectrum.peak);
    take("floor", -144, 0, spectrum.floor);
    take("width", 0.01, 1, spectrum.width);
    if (needed.size() == 1)
        return;
    for (const Node& level : node.At("levels").Elements())
        spectrum.levels.push_back(NumberIn(level, -144, 0));
    Demand(!spectrum.levels.empty() && spectrum.levels.size() <= 128);
}

FaultSeen ReadFault(const Node& node) {
    node.CheckMembers({"at", "fault"}, {"argument"});
    FaultSeen fault{node.At("fault").Text(), "", 0, 0};
    fault.at =
        static_cast<std::uint64_t>(std::llround(NumberIn(node.At("at"), 0, 86400) * 1000));
    bool isNumber = false;
    if (node.Has("argument")) {
        const Node& argument = node.At("argument");
        isNumber = argument.Is(Kind::eNumber);
        Demand(isNumber || argument.Is(Kind::eText));
        fault.argument = argument.text;
        if (isNumber)
            fault.number = argument.Number();
    }
    if (!isNumber)
        fault.number = NumberOfFault(fault.name, fault.argument);
    else
        CheckNumberOfFault(fault.name, fault.number);
    return fault;
}

struct Expected {
    Scene scene;
    std::vector<FaultSeen> faults;
};

Expected Read(const Node& node) {
    node.CheckMembers({"format", "version", "engine", "records", "spectrum"},
                      {"description", "follow-settings", "timeline"});
    Demand(node.At("format").IsText("kora4sim-scene") && node.At("version").Number() == 1);
    Expected expected;
    Scene& scene = expected.scene;
    if (node.Has("description"))
        scene.description = node.At("description").Text();
    ReadEngine(node.At("engine"), scene);
    for (const Node& record : node.At("records").Elements()) {
        record.CheckMembers({"bands"}, {"offset"});
        const double bands = NumberIn(record.At("bands"), 0, 64);
        Demand(bands == std::floor(bands));
        scene.records.push_back(
            {static_cast<unsigned>(bands),
             record.Has("offset") ? NumberIn(record.At("offset"), -100, 20) : 0.0});
    }
    Demand(scene.records.size() <= 64);
    ReadSpectrum(node.At("spectrum"), scene.spectrum);
    if (node.Has("follow-settings")) {
        Demand(node.At("follow-settings").Is(Kind::eSwitch));
        scene.followsSettings = node.At("follow-settings").isOn;
    }
    if (node.Has("timeline"))
        for (const Node& fault : node.At("timeline").Elements())
            expected.faults.push_back(ReadFault(fault));
    Demand(expected.faults.size() <= 1000);
    std::stable_sort(expected.faults.begin(), expected.faults.end(),
                     [](const FaultSeen& a, const FaultSeen& b) { return a.at < b.at; });
    return expected;
}

// Numbers in a row, so that one comparison does for all.
std::string NumbersOf(const Scene& scene) {
    const Spectrum& s = scene.spectrum;
    std::vector<double> numbers = {static_cast<double>(scene.mask),
                                   static_cast<double>(scene.followsSettings),
                                   static_cast<double>(s.kind),
                                   s.swing,
                                   s.rate,
                                   s.noise,
                                   s.pauses,
                                   s.seconds,
                                   s.peak,
                                   s.floor,
                                   s.width};
    for (const auto& record : scene.records) {
        numbers.push_back(record.bands);
        numbers.push_back(record.offset);
    }
    numbers.push_back(4711);
    numbers.insert(numbers.end(), s.levels.begin(), s.levels.end());
    return Shown(numbers);
}

}  // namespace

void Check(std::string_view input) {
    std::optional<Expected> expected;
    try {
        expected = Read(ReadJson(input));
    } catch (const Refused&) {
    }
    const std::vector<char> exact(input.begin(), input.end());
    std::optional<Scene> seen;
    std::string problem;
    try {
        seen = tools::sim::ReadScene({exact.data(), exact.size()}, "fuzz.json");
    } catch (const tools::Failure& failure) {
        problem = failure.what();
        ExpectSame("the complaint names the file", true, problem.starts_with("fuzz.json: "));
    }
    if (expected.has_value() != seen.has_value())
        Differ("the scene is accepted", expected ? "yes" : "no",
               seen ? "yes" : "no: " + problem);
    if (!seen)
        return;
    const Scene& scene = expected->scene;
    ExpectSame("name", std::string("fuzz"), seen->name);
    ExpectSame("description", scene.description, seen->description);
    ExpectSame("commands", true, scene.commands == seen->commands);
    ExpectSame("numbers", NumbersOf(scene), NumbersOf(*seen));
    ExpectSameFaults(expected->faults, seen->timeline);
}

}  // namespace kora4::fuzz

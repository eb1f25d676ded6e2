// SPDX-License-Identifier: MIT
// kora4ctl eq: the graphic equalizer as a table and a curve, set by band, flattened, and
// exchanged with other equalizer tools.
#include <algorithm>
#include <cmath>
#include <limits>

#include "base/failure.h"
#include "base/text.h"
#include "contract/patch_limits.h"
#include "contract/patch_records.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/equalizer/bands_picture.h"
#include "kora4ctl/equalizer/equalizer_access.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "process/files.h"

namespace kora4::tools {

namespace {

std::string SetHelp() {
    return "Forms:\n"
           "  eq set 3 2 1 0 -1 ...      a gain for each band, in their order\n"
           "  eq set 1000=3 4k=-2.5      the stored band nearest to each frequency\n"
           "  eq set 1k+=1 4k-=0.5       steps from the present gain, within the range\n"
           "  eq set --band 3 -2.5       one band, counted from 1\n"
           "Gains are in dB, from " +
           GainRange() + ", and are stored in steps of 1/" +
           std::to_string(KORA4_GRAPHIC_EQ_STEPS_PER_DB) + " dB.\n";
}

std::string ImportHelp() {
    return "GraphicEQ texts: GraphicEQ: 20 -1.5; 25 0; ... with\n"
           "ascending frequencies in Hz, gains in dB, decimal points, and comments from # to\n"
           "the end of the line. Its curve is applied at the stored bands' frequencies: "
           "linear\n"
           "in dB over the logarithm of the frequency, and constant beyond the first and the\n"
           "last frequency of the file. With --bands file, the bands get the frequencies of\n"
           "the file (at most " +
           std::to_string(cMaxArrayElements) + ").\n" +
           "\nParametricEQ texts: Filter 1: ON PK Fc 105 Hz Gain -3.4 dB Q 0.70, and LS or HS\n"
           "for shelves. Each stored band gets what all filters together do to its frequency,\n"
           "limited to the range; the result says how well that fits between the bands.\n"
           "\nA line such as 'Preamp: -6.2 dB' before either is added to every gain.\n";
}

struct EqOptions {
    ProfileOption profile;
    std::vector<std::string> values;
    std::optional<unsigned> band;
    std::string file;
    std::string bands = "stored";
    bool isClipped = false;
    bool isStored = false;

    Limits StoredLimits() const { return isStored ? Limits::eStore : Limits::eApi; }
};

std::string NameOfBand(const Bands& bands, std::size_t index) {
    return "Band " + std::to_string(index + 1) + " (" + Decimal(bands[index].frequency) +
           " Hz)";
}

// The library would limit gains silently.
Bands Limited(Bands bands, const EqOptions& options, Output& output) {
    for (std::size_t i = 0; i < bands.size(); ++i) {
        float& gain = bands[i].gain;
        if (IsAllowedGain(gain) || (options.isStored && !options.isClipped))
            continue;
        const std::string what = NameOfBand(bands, i) + ": " + Decimal(gain) +
                                 " dB is outside " + GainRange() + " dB";
        if (!options.isClipped)
            throw BadInput(what + ".", "Use --clip to take the nearest allowed gain.");
        gain = std::clamp(gain, cGraphicEQGainMin, cGraphicEQGainMax);
        output.Say(what + "; it becomes " + Decimal(gain) + ".");
    }
    return bands;
}

Json DocumentOf(const Equalizer& equalizer) {
    Json bands = Json::array();
    for (std::size_t i = 0; i < equalizer.bands.size(); ++i) {
        const Band& band = equalizer.bands[i];
        bands.push_back({{"band", i + 1},
                         {"frequency", band.frequency},
                         {"gain", band.gain},
                         {"inRange", IsAllowedGain(band.gain)}});
    }
    return {{"profile", ProfileName(equalizer.profile)},
            {"on", equalizer.isOn},
            {"bands", bands},
            {"problems", FrequencyProblems(equalizer.bands)}};
}

// ---- show -------------------------------------------------------------------------------

void PrintPicture(const Equalizer& equalizer, Output& output) {
    const std::size_t width = output.Width() - 1;
    // The table below needs a line for each band; the picture takes what else there is.
    const unsigned rows = output.Height() >= 40 ? 6 : 4;
    for (const std::string& line : CurveGrid(equalizer.bands, width, rows))
        output.Print(line);
}

std::vector<std::string> RowOfBand(const Bands& bands, std::size_t index) {
    const Band& band = bands[index];
    std::string note = FrequencyProblem(bands, index).empty() ? "" : "! bad frequency";
    if (!IsAllowedGain(band.gain))
        note += note.empty() ? "! out of range" : ", out of range";
    return {std::to_string(index + 1), Decimal(band.frequency) + " Hz",
            SignedGain(band.gain) + " dB", note};
}

ExitCode Show(const Context& context, const EqOptions& options) {
    SettingAccess access(context);
    const Equalizer equalizer = ReadEqualizer(access, options.profile.Get(context));
    Output& output = context.output;
    if (output.json) {
        output.PrintJson(DocumentOf(equalizer));
        return ExitCode::eDone;
    }
    output.Print("graphic equalizer of " + ProfileName(equalizer.profile) + ", " +
                 (equalizer.isOn ? "on" : "off"));
    if (equalizer.bands.empty()) {
        output.Print("no bands are stored");
        return ExitCode::eDone;
    }
    PrintPicture(equalizer, output);
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < equalizer.bands.size(); ++i)
        rows.push_back(RowOfBand(equalizer.bands, i));
    output.Table({"band", "frequency", "gain", ""}, rows);
    for (const std::string& problem : FrequencyProblems(equalizer.bands))
        output.Say(problem);
    return ExitCode::eDone;
}

// ---- What changes the bands -------------------------------------------------------------

// Writes the new bands, reads what became of them and tells the difference.
ExitCode Apply(const Context& context, const EqOptions& options, SettingAccess& access,
               const Equalizer& before, const Bands& wanted,
               const Json& more = Json::object()) {
    Output& output = context.output;
    if (!options.isStored)
        CheckFrequencies(wanted);
    WriteEqualizer(access, options.profile.Get(context), Limited(wanted, options, output),
                   options.StoredLimits());
    const Equalizer now = ReadEqualizer(access, options.profile.Get(context));
    if (output.json) {
        Json document = DocumentOf(now);
        document.update(more);
        output.PrintJson(document);
        return ExitCode::eDone;
    }
    for (std::size_t i = 0; i < now.bands.size(); ++i) {
        const bool isSameBand =
            i < before.bands.size() && before.bands[i].frequency == now.bands[i].frequency;
        if (isSameBand && SignedGain(before.bands[i].gain) == SignedGain(now.bands[i].gain))
            continue;
        output.Print(Decimal(now.bands[i].frequency) +
                     " Hz: " + (isSameBand ? SignedGain(before.bands[i].gain) + " -> " : "") +
                     SignedGain(now.bands[i].gain) + " dB");
    }
    if (now.bands == before.bands)
        output.Say("No change: " + ProfileName(now.profile) + " already has these bands.");
    if (!now.isOn)
        output.Say("The graphic equalizer of " + ProfileName(now.profile) +
                   " is off. Switch it on: kora4ctl set graphic-eq on --profile " +
                   ProfileName(now.profile));
    return ExitCode::eDone;
}

// "3", "-2.5"; "+=1" and "-=1" from the present gain, as far as the range goes.
float GainOf(std::string_view text, float present) {
    const bool isStep = text.starts_with("+=") || text.starts_with("-=");
    float gain = 0;
    if (!ParseDecimal(text.substr(isStep ? 2 : 0), gain))
        throw BadInput("'" + std::string(text) + "' is not a gain: expected a number of dB.",
                       "For the forms, see 'kora4ctl eq set --help'.");
    if (isStep)
        gain = std::clamp(text[0] == '+' ? present + gain : present - gain, cGraphicEQGainMin,
                          cGraphicEQGainMax);
    return StorableGain(static_cast<double>(gain));
}

// "1000", "1k"; none unless it is above 0 Hz.
std::optional<float> FrequencyOf(std::string_view text) {
    const bool isKilo = text.ends_with('k') || text.ends_with('K');
    float frequency = 0;
    if (!ParseDecimal(text.substr(0, text.size() - isKilo), frequency) || !(frequency > 0))
        return {};
    return isKilo ? frequency * 1000 : frequency;
}

std::size_t NearestBand(const Bands& bands, float frequency) {
    const auto distance = [frequency](const Band& band) {
        return band.frequency > 0
                   ? std::abs(std::log2(static_cast<double>(band.frequency / frequency)))
                   : HUGE_VAL;
    };
    const auto nearest = std::min_element(
        bands.begin(), bands.end(),
        [&](const Band& a, const Band& b) { return distance(a) < distance(b); });
    if (nearest == bands.end() || !(nearest->frequency > 0))
        throw BadInput("No band has a frequency above 0 Hz.",
                       "Set bands by number with --band, or import new ones with 'kora4ctl eq "
                       "import --bands file'.");
    return static_cast<std::size_t>(nearest - bands.begin());
}

Bands SetByFrequency(Bands bands, const std::vector<std::string>& values, Output& output) {
    std::vector<bool> isSet(bands.size());
    for (const std::string& value : values) {
        const std::size_t sign = value.find('=');
        const bool isStep = sign != std::string::npos && sign > 0 &&
                            (value[sign - 1] == '+' || value[sign - 1] == '-');
        const std::size_t end = isStep ? sign - 1 : sign;
        const std::optional<float> frequency =
            FrequencyOf(std::string_view(value).substr(0, end));
        if (sign == std::string::npos || !frequency)
            throw BadInput("'" + value + "' is not FREQUENCY=GAIN, such as 1000=3.");
        const std::size_t band = NearestBand(bands, *frequency);
        if (isSet[band])
            throw BadInput(NameOfBand(bands, band) +
                           " is nearest to two of the given "
                           "frequencies; nothing was changed.");
        isSet[band] = true;
        if (bands[band].frequency != *frequency)
            output.Say("The band nearest to " + Decimal(*frequency) + " Hz is at " +
                       Decimal(bands[band].frequency) + " Hz.");
        float& gain = bands[band].gain;
        gain = GainOf(std::string_view(value).substr(isStep ? end : sign + 1), gain);
    }
    return bands;
}

Bands SetOneBand(Bands bands, unsigned band, const std::vector<std::string>& values) {
    if (values.size() != 1)
        throw Failure(ExitCode::eUsage, "--band takes exactly one gain.");
    if (band < 1 || band > bands.size())
        throw BadInput("There is no band " + std::to_string(band) + "; the bands are 1 to " +
                       std::to_string(bands.size()) + ".");
    bands[band - 1].gain = GainOf(values.front(), bands[band - 1].gain);
    return bands;
}

Bands SetAllBands(Bands bands, const std::vector<std::string>& values) {
    CheckCount(bands.size(), values.size(), "gains",
               "To set single bands, use 'kora4ctl eq set 1000=3' or 'kora4ctl eq set --band "
               "3 -2.5'.");
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i].gain = GainOf(values[i], bands[i].gain);
    return bands;
}

ExitCode Set(const Context& context, const EqOptions& options) {
    SettingAccess access(context);
    const StoreLock lock = access.Hold();
    const Equalizer before = ReadEqualizer(access, options.profile.Get(context));
    const bool isByFrequency =
        std::any_of(options.values.begin(), options.values.end(),
                    [](const std::string& v) { return v.find('=') != std::string::npos; });
    const Bands wanted = options.band ? SetOneBand(before.bands, *options.band, options.values)
                         : isByFrequency
                             ? SetByFrequency(before.bands, options.values, context.output)
                             : SetAllBands(before.bands, options.values);
    return Apply(context, options, access, before, wanted);
}

ExitCode Flat(const Context& context, const EqOptions& options) {
    SettingAccess access(context);
    const StoreLock lock = access.Hold();
    const Equalizer before = ReadEqualizer(access, options.profile.Get(context));
    Bands wanted = before.bands;
    for (Band& band : wanted)
        band.gain = 0;
    return Apply(context, options, access, before, wanted);
}

// ---- Files ------------------------------------------------------------------------------

void DemandBands(const Bands& bands, const std::string& wish) {
    const std::vector<std::string> problems = FrequencyProblems(bands);
    if (!problems.empty())
        throw BadInput(Join(problems, " ") + " " + wish,
                       "Store valid bands with 'kora4ctl eq import --bands file FILE'.");
    if (bands.empty())
        throw BadInput("No bands are stored. " + wish,
                       "Store some with 'kora4ctl eq import --bands file FILE'.");
}

// The bands of a file as the store can hold them: whole hertz.
Bands BandsOfFile(const Bands& curve, Output& output) {
    Bands bands = curve;
    for (Band& band : bands) {
        const float stored = std::trunc(band.frequency);
        if (stored >= 1 && stored != band.frequency) {
            output.Say(Decimal(band.frequency) + " Hz is stored as " + Decimal(stored) +
                       " Hz: frequencies are whole numbers.");
            band.frequency = stored;
        }
        band.gain = StorableGain(static_cast<double>(band.gain));
    }
    if (const std::vector<std::string> problems = FrequencyProblems(bands); !problems.empty())
        throw BadInput(Join(problems, " ") + " Nothing was changed.",
                       "Without '--bands file', the curve is applied to the stored bands.");
    return bands;
}

// With the preamp, for which the equalizer has no place of its own.
Bands CurveOf(const EqualizerText& text, Output& output) {
    Bands curve = text.curve;
    if (!text.preamp)
        return curve;
    for (Band& band : curve)
        band.gain += *text.preamp;
    output.Say("The preamp of " + Decimal(*text.preamp) + " dB is added to each gain.");
    return curve;
}

ExitCode ApplyFilters(const Context& context, EqOptions options, SettingAccess& access,
                      const Equalizer& before, const EqualizerText& text) {
    const Fit fit = FitTo(text, before.bands);
    const auto error = static_cast<float>(std::round(fit.largestError * 10) / 10);
    const auto place = static_cast<float>(std::round(fit.errorAt));
    context.output.Say(
        CountOf(text.filters.size(), "filter") +
        (text.preamp ? " and the preamp of " + Decimal(*text.preamp) + " dB" : "") +
        " at the frequencies of " + CountOf(before.bands.size(), "band") +
        "; between them the bands differ from the filters by at most " + Decimal(error) +
        " dB" + (error > 0 ? ", at " + Decimal(place) + " Hz." : "."));
    options.isClipped = true;
    return Apply(context, options, access, before, fit.bands,
                 {{"fit",
                   {{"filters", text.filters.size()},
                    {"preamp", OrNull(text.preamp)},
                    {"largestError", error},
                    {"at", place}}}});
}

ExitCode Import(const Context& context, const EqOptions& options) {
    if (options.bands != "stored" && options.bands != "file")
        throw Failure(ExitCode::eUsage, "'" + options.bands +
                                            "' is not valid for --bands: use 'stored' or "
                                            "'file'.");
    const EqualizerText text =
        EqualizerOfFile(ReadWholeFile(options.file), NameOfInput(options.file));
    const bool isFile = options.bands == "file";
    if (isFile && text.hasFilters)
        throw BadInput("A ParametricEQ text has filters and no bands.",
                       "Without '--bands file', they are applied to the stored bands.");
    SettingAccess access(context);
    const StoreLock lock = access.Hold();
    const Equalizer before = ReadEqualizer(access, options.profile.Get(context));
    Output& output = context.output;
    const Json fitted = {{"fit", nullptr}};
    if (isFile)
        return Apply(context, options, access, before,
                     BandsOfFile(CurveOf(text, output), output), fitted);
    DemandBands(before.bands, "A curve cannot be applied to them.");
    if (text.hasFilters)
        return ApplyFilters(context, options, access, before, text);
    return Apply(context, options, access, before,
                 Resample(CurveOf(text, output), before.bands), fitted);
}

ExitCode Export(const Context& context, const EqOptions& options) {
    SettingAccess access(context);
    const Equalizer equalizer = ReadEqualizer(access, options.profile.Get(context));
    DemandBands(equalizer.bands, "Equalizer tools could not read them.");
    const std::string text = FormatGraphicEq(Limited(equalizer.bands, options, context.output));
    if (!IsStream(options.file)) {
        WriteWholeFile(options.file, text + "\n");
        if (!context.output.json)
            context.output.Say(std::to_string(equalizer.bands.size()) + " bands of " +
                               ProfileName(equalizer.profile) + " were written to '" +
                               options.file + "'.");
    }
    if (context.output.json) {
        context.output.PrintJson(DocumentOf(equalizer));
    } else if (IsStream(options.file)) {
        context.output.Print(text);
    }
    return ExitCode::eDone;
}

void AddClip(CLI::App& verb, EqOptions& options) {
    verb.add_flag("--clip", options.isClipped,
                  "limit gains to " + GainRange() + " dB instead of rejecting them");
}

void AddStored(CLI::App& verb, EqOptions& options) {
    verb.add_flag("--stored", options.isStored,
                  "write to the store, bypassing the library and its limits");
}

}  // namespace

void AddEq(Context& context) {
    CLI::App& eq = AddGroup(context, "eq", "show and change the graphic equalizer");
    const auto add = [&](const char* name, const char* summary, auto run) {
        const auto verb = AddVerb(eq, context, name, summary, run);
        verb.options.profile.AddTo(verb.app);
        return verb;
    };
    add("show", "show the bands as a table and a curve", Show);

    const auto [set, gains] = add("set", "change gains", Set);
    set.add_option("GAINS", gains.values, "gains in dB, or FREQUENCY=GAIN")->required();
    set.add_option("--band", gains.band, "one band, counted from 1")
        ->transform(Within(0u, std::numeric_limits<unsigned>::max()).description(""))
        ->type_name("N");
    AddClip(set, gains);
    AddStored(set, gains);
    set.footer(SetHelp());

    const auto [flat, zeros] = add("flat", "set all gains to 0 dB", Flat);
    AddStored(flat, zeros);

    const auto [import, curve] =
        add("import", "import a GraphicEQ or ParametricEQ text", Import);
    import.add_option("FILE", curve.file, "a file, or - for standard input")->required();
    import.add_option("--bands", curve.bands, "which frequencies to keep: stored or file")
        ->type_name("WHICH");
    AddClip(import, curve);
    AddStored(import, curve);
    import.footer(ImportHelp());

    const auto [out, text] = add("export", "export the bands as a GraphicEQ text", Export);
    out.add_option("FILE", text.file, "a file; standard output if omitted or -");
    AddClip(out, text);
}

}  // namespace kora4::tools

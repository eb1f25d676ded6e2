// SPDX-License-Identifier: MIT
// kora4ctl eq.
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>

#include "settings/schema.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

constexpr char cShape[] =
    R"({"profile": "string", "on": "boolean",
        "bands": [{"band": "integer", "frequency": "number", "gain": "number",
                   "inRange": "boolean"}],
        "problems": ["string"]})";

constexpr tools::Technology cGraphicEq{tools::Family::ePreset, eStandardEQTech};

class CtlEq : public CtlTest {
  protected:
    void TearDown() override {
        std::remove(cFile);
        CtlTest::TearDown();
    }

    std::vector<float> Gains() {
        GraphicEQData eq = {};
        EXPECT_EQ(S_OK, Client().GetGraphicEQData(&eq));
        return {eq.m_gain, eq.m_gain + eq.m_bands};
    }
    std::vector<float> Frequencies() {
        GraphicEQData eq = {};
        EXPECT_EQ(S_OK, Client().GetGraphicEQData(&eq));
        return {eq.m_freq, eq.m_freq + eq.m_bands};
    }
    static void StoreArray(std::uint32_t pid, const wchar_t* text) {
        const tools::SchemaValue value = tools::FieldValue(cGraphicEq, 0, pid);
        WriteStoredText(value.keySet, value.key, text);
    }
    static std::string Content() {
        std::ifstream file(cFile, std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        return content.str();
    }
    static void Write(const std::string& content) {
        std::ofstream(cFile, std::ios::binary) << content;
    }

    static constexpr char cFile[] = "ctl_eq_test.txt";
};

TEST_F(CtlEq, ShowHasBandsAndACurve) {
    Done({"eq", "set", "6", "-6", "0", "0", "0", "0", "0", "0", "0", "12"});
    const Json shown = DoneJson({"eq", "show"});
    EXPECT_TRUE(HasShape(shown, cShape));
    ASSERT_EQ(10u, shown["bands"].size());
    EXPECT_EQ(32, shown["bands"][0]["frequency"]);
    EXPECT_EQ(-6, shown["bands"][1]["gain"]);
    const std::string text = Done({"eq", "show"});
    for (const char* const part : {"graphic equalizer of movie, on", "16000 Hz", "+12.0 dB",
                                   "-6.0 dB", "+12 ", "\xE2\x96\x88"})
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\n" << text;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        EXPECT_GE(80u, tools::ToUtf16(line).size()) << line;
}

TEST_F(CtlEq, SetTakesAGainForEachBand) {
    EXPECT_EQ(
        "32 Hz: 0.0 -> +3.0 dB\n64 Hz: 0.0 -> +2.0 dB\n125 Hz: 0.0 -> +1.0 dB\n"
        "500 Hz: 0.0 -> -1.0 dB\n1000 Hz: 0.0 -> -2.0 dB\n2000 Hz: 0.0 -> -3.0 dB\n"
        "4000 Hz: 0.0 -> -4.5 dB\n",
        Done({"eq", "set", "3", "2", "1", "0", "-1", "-2", "-3", "-4.5", "0", "0"}));
    EXPECT_EQ((std::vector<float>{3, 2, 1, 0, -1, -2, -3, -4.5, 0, 0}), Gains());
    RefusedUnchanged({"eq", "set", "1", "2"}, cBadInput, "Expected 10 gains, got 2.");
}

TEST_F(CtlEq, SetTakesFrequenciesAndFindsTheNearestBand) {
    EXPECT_EQ("1000 Hz: 0.0 -> +3.0 dB\n4000 Hz: 0.0 -> -2.0 dB\n",
              Done({"eq", "set", "1000=3", "3900=-2"}));
    RefusedUnchanged({"eq", "set", "1000=3", "1001=2"}, cBadInput, "two");
    RefusedUnchanged({"eq", "set", "1000=3", "2"}, cBadInput, "FREQUENCY=GAIN");
    RefusedUnchanged({"eq", "set", "-5=3"}, cBadInput, "FREQUENCY=GAIN");
    RefusedUnchanged({"eq", "set", "1000=x"}, cBadInput, "not a gain");
}

TEST_F(CtlEq, SetTakesKilohertzAndSteps) {
    EXPECT_EQ("1000 Hz: 0.0 -> +1.0 dB\n", Done({"eq", "set", "1k=+1"}));
    EXPECT_EQ("1000 Hz: +1.0 -> +2.5 dB\n4000 Hz: 0.0 -> -0.5 dB\n",
              Done({"eq", "set", "1k+=1.5", "3.9K-=0.5"}));
    EXPECT_EQ("1000 Hz: +2.5 -> -12.0 dB\n", Done({"eq", "set", "1000-=99"}));
    EXPECT_EQ("32 Hz: 0.0 -> +2.0 dB\n", Done({"eq", "set", "--band", "1", "+=2"}));
    for (const char* const bad : {"k=1", "1kk=1", "1k+1", "+=1", "1k+=", "1k+=x", "1k==1"})
        RefusedUnchanged({"eq", "set", "32=1", bad}, cBadInput, "");
}

TEST_F(CtlEq, SaysWhenTheEqualizerIsOff) {
    EXPECT_EQ("", RunCtl({"eq", "set", "1k=1"}).err);
    Done({"set", "graphic-eq", "off"});
    constexpr char cOff[] = "kora4ctl set graphic-eq on --profile movie";
    for (const Words& arguments : {Words{"eq", "set", "1k=2"}, {"eq", "import", "-"}}) {
        const ToolResult result = RunCtl(arguments, "GraphicEQ: 20 1");
        EXPECT_NE(std::string::npos, result.err.find(cOff)) << result;
    }
    Done({"set", "graphic-eq", "on", "--profile", "movie"});
    EXPECT_EQ("", RunCtl({"eq", "set", "1k=3"}).err);
}

TEST_F(CtlEq, SetTakesOneBandByNumber) {
    EXPECT_EQ("125 Hz: 0.0 -> -2.5 dB\n", Done({"eq", "set", "--band", "3", "-2.5"}));
    EXPECT_EQ("16000 Hz: 0.0 -> +1.0 dB\n", Done({"eq", "set", "--band", "010", "1"}));
    RefusedUnchanged({"eq", "set", "--band", "0x3", "1"}, cUsage, "'0x3' for --band");
    RefusedUnchanged({"eq", "set", "--band", "11", "1"}, cBadInput, "1 to 10");
    RefusedUnchanged({"eq", "set", "--band", "0", "1"}, cBadInput, "1 to 10");
    RefusedUnchanged({"eq", "set", "--band", "1", "1", "2"}, cUsage, "one gain");
}

TEST_F(CtlEq, GainsOutsideTheLimitsAreRefusedUnlessClipped) {
    RefusedUnchanged({"eq", "set", "1000=12.5"}, cBadInput, "-12 to +12 dB");
    const ToolResult result = RunCtl({"eq", "set", "1000=12.5", "--clip"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("becomes 12")) << result;
    EXPECT_EQ(12.0f, Gains()[5]);
}

TEST_F(CtlEq, FlatMakesAllGainsZero) {
    Done({"eq", "set", "1000=3", "32=-3"});
    Done({"eq", "flat"});
    EXPECT_EQ(std::vector<float>(10, 0.0f), Gains());
}

TEST_F(CtlEq, AnotherProfileHasItsOwn) {
    EXPECT_EQ("1000 Hz: 0.0 -> +3.0 dB\n", Done({"eq", "set", "1000=3", "--profile", "games"}));
    EXPECT_EQ(std::vector<float>(10, 0.0f), Gains());
    EXPECT_EQ(3, DoneJson({"eq", "show", "--profile", "games"})["bands"][5]["gain"]);
    ASSERT_EQ(S_OK, Client().SetActiveProfile(2));
    EXPECT_EQ(3.0f, Gains()[5]);
}

TEST_F(CtlEq, OtherClientsAreTold) {
    const auto recorder = CallbackRecorder::Create();
    ASSERT_EQ(S_OK, Client().RegisterChangeNotifications(recorder.Get()));
    Done({"eq", "set", "32=5"});
    EXPECT_TRUE(recorder->WaitForLine("OnGraphicEQChange(10 bands, first gain 5)"));
}

TEST_F(CtlEq, InADemoNothingIsSet) {
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    RefusedUnchanged({"eq", "set", "1000=3"}, cRefused, "demo-movie");
    RefusedUnchanged({"eq", "flat"}, cRefused, "force-leave");
}

TEST_F(CtlEq, FactoryValuesChangeWithStoredOnly) {
    for (const Words& arguments :
         {Words{"eq", "set", "1000=3"}, Words{"eq", "flat"}, Words{"eq", "import", "-"}}) {
        Words named = arguments;
        named.insert(named.end(), {"--profile", "demo-movie"});
        RefusedUnchanged(named, cRefused, "demo-movie holds the factory values of movie.",
                         "GraphicEQ: 500 -6");
    }
    EXPECT_EQ("1000 Hz: 0.0 -> +3.0 dB\n",
              Done({"eq", "set", "1000=3", "--profile", "demo-movie", "--stored"}));
    EXPECT_EQ(3, DoneJson({"eq", "show", "--profile", "240"})["bands"][5]["gain"]);
}

TEST_F(CtlEq, StoredGoesPastTheLimits) {
    EXPECT_EQ("1000 Hz: 0.0 -> +13.0 dB\n", Done({"eq", "set", "1000=13", "--stored"}));
    EXPECT_EQ(13.0f, Gains()[5]);
    EXPECT_EQ("1000 Hz: +13.0 -> +12.0 dB\n",
              Done({"eq", "set", "1000=14", "--stored", "--clip"}));
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    RefusedUnchanged({"eq", "set", "1000=3", "--stored"}, cRefused, "demo-movie");
}

TEST_F(CtlEq, ImportTakesTheCurveAtTheStoredBands) {
    // An octave down half way is the mean of the ends; beyond them the curve is constant.
    Done({"eq", "import", "-"}, "# made by hand\r\n\r\ngraphiceq: 500 -6; 2000 6; # loud\n");
    const std::vector<float> gains = Gains();
    EXPECT_EQ((std::vector<float>{-6, -6, -6, -6, -6, 0, 6, 6, 6, 6}), gains);
    EXPECT_EQ(1000.0f, Frequencies()[5]);
}

TEST_F(CtlEq, ImportTakesTheFrequenciesOfTheFileWhenAsked) {
    Write("GraphicEQ: 25 1; 40 -2.5; 63 3; 20000 -12\n");
    EXPECT_EQ("25 Hz: +1.0 dB\n40 Hz: -2.5 dB\n63 Hz: +3.0 dB\n20000 Hz: -12.0 dB\n",
              Done({"eq", "import", "--bands", "file", cFile}));
    EXPECT_EQ((std::vector<float>{25, 40, 63, 20000}), Frequencies());
    EXPECT_EQ((std::vector<float>{1, -2.5, 3, -12}), Gains());
}

TEST_F(CtlEq, ImportAppliesFiltersAtTheStoredBands) {
    const Words import = {"eq", "import", "-"};
    constexpr char cFilters[] =
        "Preamp: -2 dB\nFilter 1: ON PK Fc 1000 Hz Gain 6 dB Q 1\n"
        "Filter 2: ON LSC Fc 200 Hz Gain -20 dB Q 0.7\nFilter 3: OFF PK Fc 9 Hz Gain 1 dB Q 1";
    const ToolResult result = RunCtl(import, cFilters);
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_NE(
        std::string::npos,
        result.err.find("2 filters and the preamp of -2 dB at the frequencies of 10 bands"))
        << result;
    EXPECT_NE(std::string::npos, result.err.find("Band 1 (32 Hz): -2")) << result;
    EXPECT_NE(std::string::npos, result.err.find("it becomes -12.")) << result;
    const std::vector<float> gains = Gains();
    EXPECT_EQ(-12.0f, gains[0]);
    EXPECT_NEAR(3.9, static_cast<double>(gains[5]), 0.2);
    EXPECT_NEAR(-2, static_cast<double>(gains[9]), 0.1);
    const Json document = DoneJson(import, cFilters);
    EXPECT_TRUE(HasShape(document["fit"], R"({"filters": "integer", "preamp": "number|null",
                                              "largestError": "number", "at": "number"})"));
    EXPECT_EQ(2, document["fit"]["filters"]);
    EXPECT_LT(1, document["fit"]["largestError"]);
    RefusedUnchanged({"eq", "import", "-", "--bands", "file"}, cBadInput,
                     "filters and no bands", cFilters);
    EXPECT_EQ(nullptr, DoneJson(import, "GraphicEQ: 20 1")["fit"]);
}

TEST_F(CtlEq, ImportAddsThePreampToACurve) {
    const ToolResult result =
        RunCtl({"eq", "import", "-"}, "Preamp: -2.5 dB\nGraphicEQ: 20 1; 20000 1");
    EXPECT_NE(std::string::npos, result.err.find("preamp of -2.5 dB")) << result;
    EXPECT_EQ(std::vector<float>(10, -1.5f), Gains());
}

TEST_F(CtlEq, ImportSaysWhatItCannotTakeAndWhere) {
    const struct {
        const char* text;
        const char* complaint;
    } cases[] = {
        {"", "the file is empty"},
        {"# only\n", "the file is empty"},
        {"Preamp: -6 dB\n", "line 1: nothing follows the preamp"},
        {"Preamp: loud\n", "line 1: expected a preamp"},
        {"Filter 1: ON PK Fc 100 Hz Gain 3 dB\n", "line 1: a filter needs a Q"},
        {"\n\nGraphicEQ:\n", "no bands"},
        {"GraphicEQ: 20 1; 30\n", "expected a gain"},
        {"GraphicEQ: 20 1,5; 30 2\n", "use a decimal point"},
        {"GraphicEQ: 20 1;\n30 x", "line 2: 'x' is not a gain"},
        {"GraphicEQ: 20 1 30 2", "instead of ';'"},
        {"GraphicEQ: 20 1;; 30 2", "expected a frequency"},
        {"GraphicEQ: 30 1; 20 2", "not above 30"},
        {"GraphicEQ: 30 1; 30 2", "not above 30"},
        {"GraphicEQ: 0 1", "not above 0 Hz"},
        {"GraphicEQ: -20 1", "not above 0 Hz"},
        {"GraphicEQ: 20 nan", "'nan' is not a gain"},
        {"GraphicEQ: 20 inf", "'inf' is not a gain"},
        {"GraphicEQ: 20 1; 30 13", "outside -12 to +12"},
        {"GraphicEQ: 20 1\nGraphicEQ: 30 1", "line 2"},
    };
    for (const auto& one : cases)
        RefusedUnchanged({"eq", "import", "-"}, cBadInput, one.complaint, one.text);
    RefusedUnchanged({"eq", "import", "no-such-file.txt"}, cBadInput, "no-such-file.txt");
    RefusedUnchanged({"eq", "import"}, cUsage, "FILE");
    RefusedUnchanged({"eq", "import", "-", "--bands", "mine"}, cUsage, "'stored' or 'file'");
}

TEST_F(CtlEq, BandsOfAFileMustFitTheStore) {
    std::string many = "GraphicEQ: ";
    for (int i = 1; i <= 41; ++i)
        many += std::to_string(i * 100) + " 0;";
    const Words import = {"eq", "import", "-", "--bands", "file"};
    RefusedUnchanged(import, cBadInput, "Expected at most 40 bands, got 41.", many);
    Done({"eq", "import", "-"}, many);
    RefusedUnchanged(import, cBadInput, "Band 1 is at 32768 Hz; frequencies range",
                     "GraphicEQ: 32768 0");
    RefusedUnchanged(import, cBadInput, "Band 1 is at 0.5 Hz", "GraphicEQ: 0.5 0");
    RefusedUnchanged(import, cBadInput, "not above the previous band",
                     "GraphicEQ: 20.1 0; 20.9 1");
    const ToolResult result = RunCtl(import, "GraphicEQ: 62.5 3");
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("62 Hz")) << result;
}

TEST_F(CtlEq, ExportAndImportAreTheIdentity) {
    Done({"eq", "import", "-", "--bands", "file"},
         "GraphicEQ: 21 -1.5; 333 0.00390625; 1000 11.99609375; 32767 -12");
    const std::vector<float> gains = Gains();
    const std::vector<float> frequencies = Frequencies();
    const std::string text = Done({"eq", "export"});
    EXPECT_EQ("GraphicEQ: 21 -1.5; 333 0.00390625; 1000 11.996094; 32767 -12\n", text);
    Done({"eq", "flat"});
    Done({"eq", "import", "-"}, text);
    EXPECT_EQ(gains, Gains());
    EXPECT_EQ(frequencies, Frequencies());
}

TEST_F(CtlEq, ExportWritesAFile) {
    const ToolResult result = RunCtl({"eq", "export", cFile});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.out);
    EXPECT_EQ(
        "GraphicEQ: 32 0; 64 0; 125 0; 250 0; 500 0; 1000 0; 2000 0; 4000 0; 8000 0; "
        "16000 0\n",
        Content());
    Refused({"eq", "export", "no-such-folder\\file.txt"}, cFailed, "no-such-folder");
    EXPECT_TRUE(HasShape(DoneJson({"eq", "export"}), cShape));
}

TEST_F(CtlEq, ExportPrintsNothingThatImportRefuses) {
    StoreArray(4, L"0100,000a,0d00,f300,0000,0000,0000,0000,0000,0000,0000,0000");
    RefusedUnchanged({"eq", "export"}, cBadInput, "Band 1 (32 Hz): 13 dB is outside");
    RefusedUnchanged({"eq", "export", cFile}, cBadInput, "--clip");
    EXPECT_EQ("", Content());
    const std::string text = Done({"eq", "export", "--clip"});
    EXPECT_EQ(0u, text.find("GraphicEQ: 32 12; 64 -12; 125 0;")) << text;
    Done({"eq", "import", "-"}, text);
    Done({"eq", "import", "-", "--bands", "file"}, text);
}

TEST_F(CtlEq, BadStoredFrequenciesAreToldAndCanBeReplaced) {
    StoreArray(3, L"0001,0003,03e8,8000,0064");
    StoreArray(4, L"0100,0003,0000,0100,1400");
    const Json shown = DoneJson({"eq", "show"});
    EXPECT_EQ(1u, shown["problems"].size()) << shown.dump();
    EXPECT_EQ(false, shown["bands"][2]["inRange"]);
    EXPECT_NE(std::string::npos, Done({"eq", "show"}).find("! bad frequency"));
    RefusedUnchanged({"eq", "export"}, cBadInput, "Band 2 is at -32768 Hz");
    RefusedUnchanged({"eq", "import", "-"}, cBadInput, "--bands file", "GraphicEQ: 20 1");
    RefusedUnchanged({"eq", "set", "900=3", "--clip"}, cBadInput, "Band 2 is at -32768 Hz");
    RefusedUnchanged({"eq", "flat"}, cBadInput, "--bands file");
    StoreArray(3, L"0001,0003,0010,0020,0064");
    // The third gain is stored past the limits, and the library would limit it.
    RefusedUnchanged({"eq", "set", "16=3"}, cBadInput, "Band 3 (100 Hz): 20 dB");
    Done({"eq", "set", "16=3", "--clip"});
    EXPECT_EQ((std::vector<float>{3, 1, 12}), Gains());
    Done({"eq", "import", "-", "--bands", "file"}, "GraphicEQ: 20 1");
    EXPECT_EQ(std::vector<float>{20}, Frequencies());
}

// What each of them writes depends on what it has read.
TEST_F(CtlEq, ManyAtATimeLoseNoChange) {
    Done({"set", "volume-leveler", "0"});
    std::vector<std::unique_ptr<RunningTool>> tools;
    for (int i = 1; i <= 5; ++i) {
        tools.push_back(std::make_unique<RunningTool>(
            "kora4ctl", Words{"eq", "set", "--band", std::to_string(i), "1"}));
        tools.push_back(
            std::make_unique<RunningTool>("kora4ctl", Words{"set", "volume-leveler", "+1"}));
    }
    for (const auto& tool : tools)
        EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    EXPECT_EQ((std::vector<float>{1, 1, 1, 1, 1, 0, 0, 0, 0, 0}), Gains());
    EXPECT_EQ("5\n", Done({"get", "volume-leveler"}));
}

TEST_F(CtlEq, NoBandsAreNoCurve) {
    StoreArray(3, L"0001,0000");
    EXPECT_NE(std::string::npos, Done({"eq", "show"}).find("no bands are stored"));
    RefusedUnchanged({"eq", "export"}, cBadInput, "No bands");
    RefusedUnchanged({"eq", "set", "1000=1"}, cBadInput, "No band");
}

TEST_F(CtlEq, NothingWorksWithoutTheLibrary) {
    Unregister();
    for (const Words& arguments :
         {Words{"eq", "show"}, {"eq", "flat"}, {"eq", "set", "1000=1"}, {"eq", "export"}})
        Refused(arguments, cNotReady, "kora4ctl register");
    Refused({"eq"}, cUsage, "show");
}

}  // namespace
}  // namespace kora4::test

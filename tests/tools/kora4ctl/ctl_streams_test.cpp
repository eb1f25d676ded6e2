// SPDX-License-Identifier: MIT
// Where verbs read from and print to: "-" is the stream, and texts come in any encoding that
// programs write.
#include <filesystem>

#include "base/text.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

class CtlStreams : public CtlTest {};

// The forms of a text that programs and shells write.
std::vector<std::string> FormsOf(const std::string& text) {
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const wchar_t unit : tools::Widen(text)) {
        little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    }
    return {text, "\xEF\xBB\xBF" + text, little, big};
}

TEST_F(CtlStreams, ADashIsTheStreamForEveryVerbThatTakesAFile) {
    const std::string document = Done({"dump"});
    EXPECT_EQ(document, Done({"dump", "-"}));
    EXPECT_EQ(document, Done({"dump", "-", "--json"}));
    EXPECT_EQ(Done({"eq", "export"}), Done({"eq", "export", "-"}));
    EXPECT_EQ(cDone, RunCtl({"diff", "-"}, document).exitCode);
    EXPECT_NE("", Done({"record", "-", "--timeout", "0"}));
    Refused({"lint", "--fix", "--backup", "-"}, cBadInput, "--backup requires a file");
    EXPECT_FALSE(std::filesystem::exists(L"-"));
}

TEST_F(CtlStreams, EveryVerbReadsEachEncoding) {
    const std::string document = Done({"dump"});
    const std::string recording = Done({"record", "-", "--timeout", "0"});
    for (const std::string& form : FormsOf(document))
        EXPECT_EQ(cDone, RunCtl({"diff", "-"}, form).exitCode);
    for (const std::string& form : FormsOf("GraphicEQ: 20 0; 20000 0\n"))
        EXPECT_EQ(cDone, RunCtl({"eq", "import", "-"}, form).exitCode);
    for (const std::string& form : FormsOf(recording))
        EXPECT_EQ(cDone, RunCtl({"replay", "-"}, form).exitCode);
    for (const std::string& form : FormsOf("E_FAIL\r\nS_OK\r\n"))
        EXPECT_EQ(cDone, RunCtl({"explain", "-"}, form).exitCode);
}

}  // namespace
}  // namespace kora4::test

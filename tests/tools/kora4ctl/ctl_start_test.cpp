// SPDX-License-Identifier: MIT
// What `kora4ctl get` costs beside a program that does nothing but the calls it needs.
#include <algorithm>
#include <cstdio>

#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

constexpr int cRuns = 20;
constexpr double cAllowed = 1.3;

class CtlStart : public CtlTest {};

double Milliseconds(const std::string& program, const Words& arguments) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER begin;
    LARGE_INTEGER end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&begin);
    const ToolResult result = RunTool(program, arguments);
    QueryPerformanceCounter(&end);
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(Words{"on"}, result.Lines()) << result;
    return static_cast<double>(end.QuadPart - begin.QuadPart) * 1000 /
           static_cast<double>(frequency.QuadPart);
}

double MedianOf(std::vector<double>& times) {
    std::sort(times.begin(), times.end());
    return (times[times.size() / 2 - 1] + times[times.size() / 2]) / 2;
}

// Interleaved, so that what else the machine does burdens both.
double MeasuredRatio() {
    std::vector<double> bare;
    std::vector<double> tool;
    for (int run = 0; run < cRuns; ++run) {
        bare.push_back(Milliseconds("kora4_test_bare_get", {}));
        tool.push_back(Milliseconds("kora4ctl", {"get", "enable"}));
    }
    const double ofBare = MedianOf(bare);
    const double ofTool = MedianOf(tool);
    std::printf("median of %d: bare program %.1f ms, kora4ctl get %.1f ms, ratio %.3f\n", cRuns,
                ofBare, ofTool, ofTool / ofBare);
    return ofTool / ofBare;
}

TEST_F(CtlStart, GetStartsAlmostAsFastAsABareProgram) {
    // Both have been read from the disk.
    Milliseconds("kora4_test_bare_get", {});
    Milliseconds("kora4ctl", {"get", "enable"});
    double ratio = MeasuredRatio();
    if (ratio > cAllowed)
        ratio = MeasuredRatio();
    EXPECT_GE(cAllowed, ratio);
}

}  // namespace
}  // namespace kora4::test

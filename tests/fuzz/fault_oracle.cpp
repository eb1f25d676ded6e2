// SPDX-License-Identifier: MIT
// Each fault with its kinds or its range.
#include "fuzz/fault_oracle.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "fuzz/frame.h"
#include "fuzz/json_oracle.h"

namespace kora4::fuzz {

namespace {

struct FaultRow {
    const char* name;
    bool needsArgument;
    std::vector<std::string> kinds;
    double least = 0;
    double most = 0;
};

const FaultRow& RowOf(const std::string& name) {
    static const std::vector<FaultRow> rows = {
        {"stop", false, {}},
        {"garbage",
         true,
         {"empty", "short-head", "random", "text", "dword", "nan", "infinite", "huge",
          "truncated"}},
        {"counts",
         true,
         {"records-more", "records-fewer", "records-none", "records-max", "bands-more",
          "bands-max", "bands-none", "bands-41"}},
        {"die", false, {"half-way"}},
        {"hold", true, {}, 0.001, 600},
        {"burst", true, {}, 1, 100000},
        {"wrong-types", false, {"type", "malformed", "oversized", "unterminated", "mixed"}},
        {"profile-garbage", false, {"number", "type", "short", "name"}},
        {"resume", false, {}},
    };
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const FaultRow& one) { return name == one.name; });
    Demand(row != rows.end());
    return *row;
}

}  // namespace

double NumberOf(const std::string& text) {
    Demand(text.find_first_not_of("0123456789.eE+-") == std::string::npos);
    Demand(!text.empty() && text[0] != '+');
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    Demand(*end == '\0');
    return number;
}

double NumberOfFault(const std::string& name, const std::string& argument) {
    const FaultRow& row = RowOf(name);
    if (argument.empty()) {
        Demand(!row.needsArgument);
        return 0;
    }
    if (row.most > 0) {
        const double number = NumberOf(argument);
        CheckNumberOfFault(name, number);
        return number;
    }
    Demand(std::count(row.kinds.begin(), row.kinds.end(), argument) == 1);
    return 0;
}

void CheckNumberOfFault(const std::string& name, double number) {
    const FaultRow& row = RowOf(name);
    Demand(row.most > 0 && number >= row.least && number <= row.most);
    Demand(name == "hold" || number == std::floor(number));
}

void ExpectSameFaults(const std::vector<FaultSeen>& expected,
                      const std::vector<tools::sim::Fault>& seen) {
    ExpectSame("faults", expected.size(), seen.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const std::string name = tools::sim::DefOf(seen[i].kind).name;
        ExpectSame("fault", expected[i].name, name);
        ExpectSame("moment of a fault", expected[i].at, seen[i].atMilliseconds);
        if (seen[i].number != 0 || expected[i].number != 0)
            ExpectSame("number of a fault", Shown(expected[i].number), Shown(seen[i].number));
        else
            ExpectSame("kind of a fault", expected[i].argument, seen[i].argument);
    }
}

}  // namespace kora4::fuzz

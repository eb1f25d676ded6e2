// SPDX-License-Identifier: MIT
// Collects figures by group and name, and writes them as JSON.
#include "windows/results.h"

#include <filesystem>
#include <fstream>

#include "windows/place.h"

namespace kora4::bench {

void Results::Compare(const std::string& group, const std::string& name, const Samples& call,
                      const Samples& bare) {
    m_rows.push_back({{"group", group},
                      {"name", name},
                      {"unit", "us"},
                      {"samples", call.Count()},
                      {"call", call.Median()},
                      {"call99", call.Percentile99()},
                      {"bare", bare.Median()},
                      {"bare99", bare.Percentile99()}});
}

void Results::Compare(const std::string& group, const std::string& name,
                      const std::string& unit, double call, double bare) {
    m_rows.push_back(
        {{"group", group}, {"name", name}, {"unit", unit}, {"call", call}, {"bare", bare}});
}

void Results::Value(const std::string& group, const std::string& name, const std::string& unit,
                    double value) {
    m_rows.push_back({{"group", group}, {"name", name}, {"unit", unit}, {"value", value}});
}

void Results::WriteTo(const std::wstring& path) const {
    std::ofstream file(std::filesystem::path(path), std::ios::binary);
    file << nlohmann::json{{"rows", m_rows}}.dump(1) << '\n';
    if (!file.flush())
        Fail("the results cannot be written");
}

}  // namespace kora4::bench

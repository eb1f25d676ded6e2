// SPDX-License-Identifier: MIT
// The figures of one run, as scripts/bench.sh reads them.
#ifndef KORA4_BENCH_RESULTS_H
#define KORA4_BENCH_RESULTS_H

#include <nlohmann/json.hpp>
#include <string>

#include "windows/timing.h"

namespace kora4::bench {

// How much is measured: all of it, or just enough to see that everything works.
struct Extent {
    bool smoke = false;

    std::size_t Of(std::size_t full, std::size_t ofSmoke) const {
        return smoke ? ofSmoke : full;
    }
};

class Results {
  public:
    // A call beside its bare equivalent, in microseconds.
    void Compare(const std::string& group, const std::string& name, const Samples& call,
                 const Samples& bare);
    // The same of two figures of any unit.
    void Compare(const std::string& group, const std::string& name, const std::string& unit,
                 double call, double bare);
    void Value(const std::string& group, const std::string& name, const std::string& unit,
               double value);

    void WriteTo(const std::wstring& path) const;

  private:
    nlohmann::json m_rows = nlohmann::json::array();
};

}  // namespace kora4::bench

#endif  // KORA4_BENCH_RESULTS_H

#pragma once
// The inputs a fuzz target once crashed or hung on, kept under fuzz/regressions/<target>/ so
// the tests replay them.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvanta::testing {

struct FuzzRegression {
    std::string name;                 // file path, for traces
    std::vector<std::uint8_t> bytes;
};

// Every recorded input of `target` ("fuzz_usdc", ...); empty when none are recorded.
std::vector<FuzzRegression> fuzzRegressions(const std::string& target);

} // namespace orvanta::testing

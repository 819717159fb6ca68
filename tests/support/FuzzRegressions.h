#pragma once
// The inputs a fuzz target once crashed or hung on, kept under fuzz/regressions/<target>/ so
// the tests replay them.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace orvanta::testing {

struct FuzzRegression {
    std::string name;                 // file path, for traces
    std::vector<std::uint8_t> bytes;
};

// Every recorded input of `target` ("fuzz_usdc", ...); empty when none are recorded.
inline std::vector<FuzzRegression> fuzzRegressions(const std::string& target) {
    const auto folder = std::filesystem::path(ORVANTA_SOURCE_DIR) / "fuzz" / "regressions" / target;
    std::vector<FuzzRegression> inputs;
    if (!std::filesystem::is_directory(folder)) return inputs;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream in(entry.path(), std::ios::binary);
        inputs.push_back({entry.path().string(), {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()}});
    }
    return inputs;
}

} // namespace orvanta::testing

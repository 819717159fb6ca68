#include "support/FuzzRegressions.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace orvanta::testing {

std::vector<FuzzRegression> fuzzRegressions(const std::string& target) {
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

#include "support/Corpus.h"

#include <cstdlib>

namespace orvanta::testing {

std::optional<std::filesystem::path> corpusDirectory() {
    if (const char* env = std::getenv("ORVANTA_CORPUS"); env && *env && std::filesystem::is_directory(env))
        return std::filesystem::path(env);
    const auto beside = std::filesystem::path(ORVANTA_SOURCE_DIR) / ".." / "shared" / "corpus";
    if (std::filesystem::is_directory(beside)) return beside;
    return std::nullopt;
}

} // namespace orvanta::testing

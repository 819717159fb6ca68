#pragma once
// Locates the shared corpus of real model files: $ORVANTA_CORPUS, else ../shared/corpus
// beside the source tree. Tests that need it skip when it is absent.

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace orvanta::testing {

inline std::optional<std::filesystem::path> corpusDirectory() {
    if (const char* env = std::getenv("ORVANTA_CORPUS"); env && *env && std::filesystem::is_directory(env))
        return std::filesystem::path(env);
    const auto beside = std::filesystem::path(ORVANTA_SOURCE_DIR) / ".." / "shared" / "corpus";
    if (std::filesystem::is_directory(beside)) return beside;
    return std::nullopt;
}

} // namespace orvanta::testing

// Skips the current test when the corpus, or `relative` inside it, is absent; otherwise
// declares `var` as the full path.
#define ORVANTA_CORPUS_FILE(var, relative)                                                   \
    const auto var##_dir = ::orvanta::testing::corpusDirectory();                           \
    if (!var##_dir || !std::filesystem::exists(*var##_dir / (relative)))                    \
        GTEST_SKIP() << "corpus file absent: " << (relative);                               \
    const std::filesystem::path var = *var##_dir / (relative)

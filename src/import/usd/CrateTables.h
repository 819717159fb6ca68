#pragma once
// The shared tables of one crate file that values refer to by index: its version, tokens,
// strings (each a token index) and paths. Lookups are bounds-checked.
// Thread: filled by one reader, then read-only.

#include "import/usd/CrateFormatError.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta::import::usd {

struct CrateTables {
    static constexpr std::uint32_t version(unsigned major, unsigned minor, unsigned patch) {
        return (major << 16) | (minor << 8) | patch;
    }

    std::uint32_t fileVersion = 0;    // version(major, minor, patch) of the file
    std::vector<std::string> tokens;
    std::vector<std::uint32_t> strings;  // the token index of each string
    std::vector<std::string> paths;      // by path index; empty where the file encodes no path

    const std::string& token(std::uint64_t index) const {
        if (index >= tokens.size()) throw CrateFormatError("token index " + std::to_string(index) + " out of range");
        return tokens[index];
    }
    const std::string& string(std::uint64_t index) const {
        if (index >= strings.size()) throw CrateFormatError("string index " + std::to_string(index) + " out of range");
        return token(strings[index]);
    }
    const std::string& path(std::uint64_t index) const {
        if (index >= paths.size() || paths[index].empty()) {
            throw CrateFormatError("path index " + std::to_string(index) + " names no path");
        }
        return paths[index];
    }
};

} // namespace orvanta::import::usd

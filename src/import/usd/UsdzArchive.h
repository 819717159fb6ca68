#pragma once
// A USDZ package: a zip archive whose entries are normally stored uncompressed and 64-byte
// aligned, so layers and textures are read in place from the package bytes. The first entry
// is the package's default layer.
//
// The archive is found by walking the local file headers from byte 0 and cross-checked
// against the central directory, which must list the same entries with the same sizes; a
// package cut short or with a damaged directory is rejected. Deflated entries
// (method 8) are inflated once into buffers the archive keeps alive; unaligned entries are
// read as they are. Zip64 and encrypted entries are refused.
// Thread: a value type; a const archive may be read from any thread.

#include "core/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta::import::usd {

struct UsdzEntry {
    std::string path;                    // as stored in the archive, '/' separators
    std::span<const std::uint8_t> data;  // stored bytes, or inflated bytes kept alive by the archive
};

class UsdzArchive {
public:
    // Reads the archive in `bytes`. `owner` keeps `bytes` alive (the FileBytes, or the outer
    // archive's owner() for a package nested in a package); the archive holds it for as long
    // as the archive or any copy of owner() lives. Fails with unrecognisedFormat for bytes
    // that are no zip archive, malformedData for a broken or truncated one or one whose first
    // entry is no USD layer, unsupportedFeature for Zip64, encryption or unknown compression,
    // limitExceeded when inflating would exceed the kit's memory budget.
    // Thread: any.
    static core::Result<UsdzArchive> open(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner);

    // The entries in archive order, directories left out; entries()[0] is the default layer.
    // Thread: any.
    const std::vector<UsdzEntry>& entries() const { return entries_; }

    // The entry stored under `path` (backslashes and a leading "./" or "/" are normalised
    // away on both sides), or nullptr. Thread: any.
    const UsdzEntry* find(const std::string& path) const;

    // Resolves an asset path written in the layer stored at `fromEntry` to a stored entry path:
    // relative to that layer's folder (a leading '/' means the package root), with "./",
    // "../", backslashes and spaces handled. nullopt when the result would leave the package
    // or names no file. Does not check that the entry exists. Thread: any.
    static std::optional<std::string> resolve(const std::string& fromEntry, const std::string& assetPath);

    // Keeps every entry's bytes alive: the owner given to open(), together with any inflated
    // entries. Pass it as the owner when opening a nested package in place. Thread: any.
    std::shared_ptr<const void> owner() const { return owner_; }

private:
    std::vector<UsdzEntry> entries_;
    std::unordered_map<std::string, std::size_t> index_;
    std::shared_ptr<const void> owner_;
};

} // namespace orvanta::import::usd

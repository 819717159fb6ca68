#pragma once
// Writes zip archives the way USDZ packages are laid out: stored entries whose data start on
// 64-byte boundaries, padded in a 0x1986 extra field, in the order added. Entries may also be
// deflated, and tests use the remaining knobs to write archives that lie.
// Thread: one writer per thread.

#include <QIODevice>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanta::exporter {

class ZipWriter {
public:
    using Bytes = std::vector<std::uint8_t>;

    struct Entry {
        std::string name;
        std::string content;
        bool deflate = false;
        bool align = true;
        bool descriptor = false;             // sizes after the data, 0 in the local header
        std::uint32_t declaredSize = 0;      // when not 0, replaces the uncompressed size
        std::uint32_t declaredStoredSize = 0;  // when not 0, replaces the compressed size
        std::uint16_t method = 0xffff;       // when set, replaces the method
        std::uint16_t flags = 0;
        // When not empty, the entry's bytes instead of `content`, owned by the caller, who
        // keeps them alive until the archive is written.
        std::span<const std::uint8_t> view = {};
    };

    ZipWriter& add(Entry e);
    ZipWriter& add(std::string name, std::string content);
    // A stored, aligned entry of bytes the caller keeps alive until the archive is written.
    ZipWriter& add(std::string name, std::span<const std::uint8_t> view);

    // The archive; its end record counts `centralEntriesToDrop` fewer entries than it holds.
    Bytes build(std::size_t centralEntriesToDrop = 0) const;
    // Writes the archive to `out` without holding it in memory; false when a write fails.
    bool write(QIODevice& out) const;

private:
    std::vector<Entry> entries_;
};

} // namespace orvanta::exporter

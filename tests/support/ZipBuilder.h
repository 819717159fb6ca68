#pragma once
// Writes zip archives the way USDZ packagers do (stored entries whose data start on 64-byte
// boundaries, padded in a 0x1986 extra field), with knobs to break them.

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta::testing {

class ZipBuilder {
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
    };

    ZipBuilder& add(Entry e);
    ZipBuilder& add(std::string name, std::string content);

    // The archive; its end record counts `centralEntriesToDrop` fewer entries than it holds.
    Bytes build(std::size_t centralEntriesToDrop = 0) const;

private:
    std::vector<Entry> entries_;
};

} // namespace orvanta::testing

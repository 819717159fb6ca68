#include "support/ZipBuilder.h"

#include <zlib.h>

namespace orvanta::testing {

namespace {

using Bytes = ZipBuilder::Bytes;

void put16(Bytes& out, std::uint32_t v) { out.push_back(v & 0xff); out.push_back((v >> 8) & 0xff); }
void put32(Bytes& out, std::uint32_t v) { put16(out, v & 0xffff); put16(out, v >> 16); }
void putText(Bytes& out, const std::string& s) { out.insert(out.end(), s.begin(), s.end()); }

std::string deflated(const std::string& text) {
    z_stream s{};
    deflateInit2(&s, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&s, text.size()), '\0');
    s.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    s.avail_in = static_cast<uInt>(text.size());
    s.next_out = reinterpret_cast<Bytef*>(out.data());
    s.avail_out = static_cast<uInt>(out.size());
    deflate(&s, Z_FINISH);
    out.resize(s.total_out);
    deflateEnd(&s);
    return out;
}

} // namespace

ZipBuilder& ZipBuilder::add(Entry e) {
    entries_.push_back(std::move(e));
    return *this;
}

ZipBuilder& ZipBuilder::add(std::string name, std::string content) {
    return add({.name = std::move(name), .content = std::move(content)});
}

Bytes ZipBuilder::build(std::size_t centralEntriesToDrop) const {
    Bytes out, central;
    for (const Entry& e : entries_) {
        const std::string packed = e.deflate ? deflated(e.content) : std::string();
        const std::string& data = e.deflate ? packed : e.content;
        const auto crc = static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(e.content.data()), static_cast<uInt>(e.content.size())));
        const std::uint32_t size = e.declaredSize ? e.declaredSize : static_cast<std::uint32_t>(e.content.size());
        const std::uint32_t storedSize = e.declaredStoredSize ? e.declaredStoredSize : static_cast<std::uint32_t>(data.size());
        const std::uint16_t method = e.method != 0xffff ? e.method : (e.deflate ? 8 : 0);
        const std::uint16_t flags = static_cast<std::uint16_t>(e.flags | (e.descriptor ? 8 : 0));
        const auto offset = static_cast<std::uint32_t>(out.size());
        std::size_t extra = 0;
        if (e.align) {  // padding in a 0x1986 extra field so the data starts on 64 bytes
            const std::size_t start = out.size() + 30 + e.name.size();
            extra = (64 - (start + 4) % 64) % 64 + 4;
        }
        put32(out, 0x04034b50); put16(out, 20); put16(out, flags); put16(out, method);
        put32(out, 0); put32(out, e.descriptor ? 0 : crc);
        put32(out, e.descriptor ? 0 : storedSize);
        put32(out, e.descriptor ? 0 : size);
        put16(out, static_cast<std::uint32_t>(e.name.size())); put16(out, static_cast<std::uint32_t>(extra));
        putText(out, e.name);
        if (extra) { put16(out, 0x1986); put16(out, static_cast<std::uint32_t>(extra - 4)); out.resize(out.size() + extra - 4, 0); }
        putText(out, data);
        if (e.descriptor) { put32(out, 0x08074b50); put32(out, crc); put32(out, storedSize); put32(out, size); }

        put32(central, 0x02014b50); put16(central, 20); put16(central, 20); put16(central, flags);
        put16(central, method); put32(central, 0); put32(central, crc);
        put32(central, storedSize); put32(central, size);
        put16(central, static_cast<std::uint32_t>(e.name.size())); put16(central, 0); put16(central, 0);
        put16(central, 0); put16(central, 0); put32(central, 0); put32(central, offset);
        putText(central, e.name);
    }
    const auto directoryOffset = static_cast<std::uint32_t>(out.size());
    out.insert(out.end(), central.begin(), central.end());
    const auto count = static_cast<std::uint32_t>(entries_.size() - centralEntriesToDrop);
    put32(out, 0x06054b50); put16(out, 0); put16(out, 0); put16(out, count); put16(out, count);
    put32(out, static_cast<std::uint32_t>(central.size())); put32(out, directoryOffset); put16(out, 0);
    return out;
}

} // namespace orvanta::testing

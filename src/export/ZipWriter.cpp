#include "export/ZipWriter.h"

#include <zlib.h>

namespace orvanta::exporter {

namespace {

using Bytes = ZipWriter::Bytes;

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

ZipWriter& ZipWriter::add(Entry e) {
    entries_.push_back(std::move(e));
    return *this;
}

ZipWriter& ZipWriter::add(std::string name, std::string content) {
    return add({.name = std::move(name), .content = std::move(content)});
}

ZipWriter& ZipWriter::add(std::string name, std::span<const std::uint8_t> view) {
    Entry entry;
    entry.name = std::move(name);
    entry.view = view;
    return add(std::move(entry));
}

namespace {

// Lays the archive out through `sink(const void*, std::size_t)`; headers are collected in
// small buffers, entry data goes out as it is.
template <class Sink>
void layOut(const std::vector<ZipWriter::Entry>& entries, std::size_t centralEntriesToDrop, Sink&& sink) {
    Bytes central, header;
    std::uint64_t written = 0;
    const auto flush = [&](const void* data, std::size_t size) {
        sink(data, size);
        written += size;
    };
    for (const ZipWriter::Entry& e : entries) {
        const std::span<const std::uint8_t> raw = !e.view.empty() ? e.view
            : std::span(reinterpret_cast<const std::uint8_t*>(e.content.data()), e.content.size());
        const std::string packed = e.deflate ? deflated(std::string(raw.begin(), raw.end())) : std::string();
        const std::span<const std::uint8_t> data =
            e.deflate ? std::span(reinterpret_cast<const std::uint8_t*>(packed.data()), packed.size()) : raw;
        const auto crc = static_cast<std::uint32_t>(crc32_z(0, raw.data(), raw.size()));
        const std::uint32_t size = e.declaredSize ? e.declaredSize : static_cast<std::uint32_t>(raw.size());
        const std::uint32_t storedSize = e.declaredStoredSize ? e.declaredStoredSize : static_cast<std::uint32_t>(data.size());
        const std::uint16_t method = e.method != 0xffff ? e.method : (e.deflate ? 8 : 0);
        const std::uint16_t flags = static_cast<std::uint16_t>(e.flags | (e.descriptor ? 8 : 0));
        const auto offset = static_cast<std::uint32_t>(written);
        std::size_t extra = 0;
        if (e.align) {  // padding in a 0x1986 extra field so the data starts on 64 bytes
            const std::size_t start = written + 30 + e.name.size();
            extra = (64 - (start + 4) % 64) % 64 + 4;
        }
        header.clear();
        put32(header, 0x04034b50); put16(header, 20); put16(header, flags); put16(header, method);
        put32(header, 0); put32(header, e.descriptor ? 0 : crc);
        put32(header, e.descriptor ? 0 : storedSize);
        put32(header, e.descriptor ? 0 : size);
        put16(header, static_cast<std::uint32_t>(e.name.size())); put16(header, static_cast<std::uint32_t>(extra));
        putText(header, e.name);
        if (extra) { put16(header, 0x1986); put16(header, static_cast<std::uint32_t>(extra - 4)); header.resize(header.size() + extra - 4, 0); }
        flush(header.data(), header.size());
        flush(data.data(), data.size());
        if (e.descriptor) {
            header.clear();
            put32(header, 0x08074b50); put32(header, crc); put32(header, storedSize); put32(header, size);
            flush(header.data(), header.size());
        }

        put32(central, 0x02014b50); put16(central, 20); put16(central, 20); put16(central, flags);
        put16(central, method); put32(central, 0); put32(central, crc);
        put32(central, storedSize); put32(central, size);
        put16(central, static_cast<std::uint32_t>(e.name.size())); put16(central, 0); put16(central, 0);
        put16(central, 0); put16(central, 0); put32(central, 0); put32(central, offset);
        putText(central, e.name);
    }
    const auto directoryOffset = static_cast<std::uint32_t>(written);
    const auto directorySize = static_cast<std::uint32_t>(central.size());
    const auto count = static_cast<std::uint32_t>(entries.size() - centralEntriesToDrop);
    put32(central, 0x06054b50); put16(central, 0); put16(central, 0); put16(central, count); put16(central, count);
    put32(central, directorySize); put32(central, directoryOffset); put16(central, 0);
    flush(central.data(), central.size());
}

} // namespace

Bytes ZipWriter::build(std::size_t centralEntriesToDrop) const {
    Bytes out;
    layOut(entries_, centralEntriesToDrop, [&](const void* data, std::size_t size) {
        const auto* p = static_cast<const std::uint8_t*>(data);
        out.insert(out.end(), p, p + size);
    });
    return out;
}

bool ZipWriter::write(QIODevice& out) const {
    bool ok = true;
    layOut(entries_, 0, [&](const void* data, std::size_t size) {
        if (ok) ok = out.write(static_cast<const char*>(data), static_cast<qint64>(size)) == static_cast<qint64>(size);
    });
    return ok;
}

} // namespace orvanta::exporter

#pragma once
// Bodies as a server puts them on the wire: gzip-compressed, or in chunks.

#include <QByteArray>
#include <zlib.h>

#include <stdexcept>

namespace orvanta::testing {

// `plain` as one gzip member.
inline QByteArray gzip(const QByteArray& plain) {
    z_stream stream{};
    // 15 window bits plus 16: a gzip header and trailer around the deflate data.
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("deflateInit2 failed");
    QByteArray out(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(plain.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.constData()));
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = deflate(&stream, Z_FINISH);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw std::runtime_error("deflate did not finish");
    out.truncate(static_cast<qsizetype>(stream.total_out));
    return out;
}

// `body` in chunks of at most 4 KiB, then the closing zero-length chunk.
inline QByteArray chunked(const QByteArray& body) {
    QByteArray out;
    for (qsizetype offset = 0; offset < body.size(); offset += 4096) {
        const QByteArray piece = body.mid(offset, 4096);
        out += QByteArray::number(piece.size(), 16) + "\r\n" + piece + "\r\n";
    }
    return out + "0\r\n\r\n";
}

} // namespace orvanta::testing

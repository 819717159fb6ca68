#pragma once
// Bodies as a server puts them on the wire: gzip-compressed, or in chunks.

#include <QByteArray>

namespace orvanta::testing {

// `plain` as one gzip member.
QByteArray gzip(const QByteArray& plain);
// `body` in chunks of at most 4 KiB; without the closing zero-length chunk when
// `withLastChunk` is false.
QByteArray chunked(const QByteArray& body, bool withLastChunk = true);

} // namespace orvanta::testing

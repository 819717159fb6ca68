#pragma once
// Undoes a body's Content-Encoding as its bytes arrive: identity, gzip or deflate (zlib).
// The HTTP stack is asked not to decode bodies itself, because it cannot tell a compressed
// stream that was cut short from a whole one; this decoder can.
// Thread: one thread at a time.

#include <QByteArray>

#include <functional>
#include <memory>

struct z_stream_s;

namespace orvanta::net {

class ContentDecoder {
public:
    // Receives each piece of decoded bytes; returns false to stop decoding.
    using Output = std::function<bool(const char* data, qint64 size)>;

    // `contentEncoding` is the answer's header value (empty for none).
    ContentDecoder(const QByteArray& contentEncoding, Output output);
    ~ContentDecoder();
    ContentDecoder(const ContentDecoder&) = delete;
    ContentDecoder& operator=(const ContentDecoder&) = delete;

    // False when the encoding is unknown or the bytes are not valid for it (see error()),
    // or when the output asked to stop.
    bool feed(const char* data, qint64 size);
    // True when the body ended where its encoding says it ends (a compressed stream that
    // stops before its end is incomplete).
    bool finish();
    // Why decoding failed, in plain words; empty while it has not.
    const QByteArray& error() const { return error_; }

private:
    enum class Mode { identity, inflate, unsupported };
    Mode mode_;
    Output output_;
    std::unique_ptr<z_stream_s> stream_;
    bool streamEnded_ = false;
    QByteArray buffer_;
    QByteArray error_;
};

} // namespace orvanta::net

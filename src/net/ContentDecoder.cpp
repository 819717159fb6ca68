#include "net/ContentDecoder.h"

#include <zlib.h>

namespace orvanta::net {

namespace {
constexpr qsizetype outputSize = 256 * 1024;
}

ContentDecoder::ContentDecoder(const QByteArray& contentEncoding, Output output)
    : mode_(Mode::unsupported), output_(std::move(output)) {
    const QByteArray encoding = contentEncoding.trimmed().toLower();
    if (encoding.isEmpty() || encoding == "identity") {
        mode_ = Mode::identity;
        return;
    }
    if (encoding != "gzip" && encoding != "x-gzip" && encoding != "deflate") {
        error_ = "unsupported content encoding \"" + encoding + "\"";
        return;
    }
    stream_ = std::make_unique<z_stream_s>();
    // 32 added to the window bits: read a gzip or a zlib header, whichever comes.
    if (inflateInit2(stream_.get(), 15 + 32) != Z_OK) {
        stream_.reset();
        error_ = "the decompressor could not start";
        return;
    }
    mode_ = Mode::inflate;
    buffer_.resize(outputSize);
}

ContentDecoder::~ContentDecoder() {
    if (stream_) inflateEnd(stream_.get());
}

bool ContentDecoder::feed(const char* data, qint64 size) {
    if (mode_ == Mode::identity) return output_(data, size);
    if (mode_ == Mode::unsupported) return false;
    stream_->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    stream_->avail_in = static_cast<uInt>(size);
    while (stream_->avail_in > 0) {
        if (streamEnded_) {
            // Another gzip member follows the one that ended.
            if (inflateReset(stream_.get()) != Z_OK) break;
            streamEnded_ = false;
        }
        stream_->next_out = reinterpret_cast<Bytef*>(buffer_.data());
        stream_->avail_out = static_cast<uInt>(buffer_.size());
        const int result = inflate(stream_.get(), Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END) {
            error_ = QByteArray("the compressed body is damaged: ") + (stream_->msg ? stream_->msg : "no detail");
            return false;
        }
        streamEnded_ = result == Z_STREAM_END;
        const qint64 produced = buffer_.size() - static_cast<qint64>(stream_->avail_out);
        if (produced > 0 && !output_(buffer_.constData(), produced)) return false;
    }
    return true;
}

bool ContentDecoder::finish() {
    if (mode_ == Mode::identity) return true;
    if (mode_ == Mode::unsupported) return false;
    if (!streamEnded_) error_ = "the compressed body ends before its end";
    return streamEnded_;
}

} // namespace orvanta::net

#pragma once
// A bounds-checked little-endian read position inside a span of bytes. Every read that would
// run past the end throws CrateFormatError, so callers never touch memory outside the file.
// Reads copy with memcpy, so nothing needs to be aligned.
// Thread: used by one reader on one thread.

#include "import/usd/CrateFormatError.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>

namespace orvanta::import::usd {

class CrateCursor {
public:
    using Bytes = std::span<const std::uint8_t>;

    explicit CrateCursor(Bytes bytes, std::uint64_t at = 0) : bytes_(bytes) { seek(at); }

    std::size_t tell() const { return at_; }
    std::size_t remaining() const { return bytes_.size() - at_; }
    Bytes bytes() const { return bytes_; }

    // Moves to `offset`, which may be the end but not past it.
    void seek(std::uint64_t offset) {
        if (offset > bytes_.size()) {
            throw CrateFormatError("offset " + std::to_string(offset) + " lies outside the " +
                                   std::to_string(bytes_.size()) + " bytes available");
        }
        at_ = static_cast<std::size_t>(offset);
    }

    // Moves by `delta` from `origin`, the way crate files store relative jumps.
    void jump(std::size_t origin, std::int64_t delta) {
        if (delta < 0 && static_cast<std::uint64_t>(-(delta + 1)) + 1 > origin) {
            throw CrateFormatError("a relative offset points before the start of the data");
        }
        seek(delta < 0 ? origin - (static_cast<std::uint64_t>(-(delta + 1)) + 1)
                       : origin + static_cast<std::uint64_t>(delta));
    }

    template <class T> T read() {
        static_assert(std::is_trivially_copyable_v<T>);
        require(sizeof(T));
        T value;
        std::memcpy(&value, bytes_.data() + at_, sizeof(T));
        at_ += sizeof(T);
        return value;
    }

    // The next `count` bytes, without copying.
    Bytes take(std::uint64_t count) {
        require(count);
        const Bytes out = bytes_.subspan(at_, static_cast<std::size_t>(count));
        at_ += static_cast<std::size_t>(count);
        return out;
    }

    // Throws unless `count` elements of `elementSize` bytes fit in what is left.
    void requireElements(std::uint64_t count, std::uint64_t elementSize) const {
        if (elementSize != 0 && count > remaining() / elementSize) {
            throw CrateFormatError(std::to_string(count) + " elements of " + std::to_string(elementSize) +
                                   " bytes do not fit in the " + std::to_string(remaining()) + " bytes left");
        }
    }

private:
    void require(std::uint64_t count) const {
        if (count > remaining()) {
            throw CrateFormatError("truncated: " + std::to_string(count) + " bytes needed at offset " +
                                   std::to_string(at_) + ", " + std::to_string(remaining()) + " left");
        }
    }

    Bytes bytes_;
    std::size_t at_ = 0;
};

} // namespace orvanta::import::usd

#pragma once
// A whole file mapped read-only into memory. The mapping lives as long as the object, so
// spans into bytes() stay valid for as long as a shared_ptr to it is held; USDZ entries and
// crate arrays are read straight from the mapping without copying.
// Thread: immutable after open(); any thread may read bytes() concurrently.

#include "core/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace orvanta::import::usd {

class MappedFile {
    struct Key { explicit Key() = default; };  // only open() constructs mappings

public:
    // Maps `path` read-only. An empty file opens with empty bytes(). Fails with
    // ImportErrorCode::unreadableFile when the file cannot be opened, sized or mapped.
    // Thread: any.
    static core::Result<std::shared_ptr<const MappedFile>> open(const std::string& path);

    MappedFile(Key, const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    // The file's bytes. Thread: any.
    std::span<const std::uint8_t> bytes() const { return {data_, size_}; }

private:
    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace orvanta::import::usd

#pragma once
// A whole model file's bytes, read once into memory of the reader's own (the heap for a small
// file, a private mapping for a large one).
// The bytes live as long as the object, so spans into bytes() stay valid for as long as a
// shared_ptr to it is held; USDZ entries and crate arrays are read from them without copying,
// and the glTF layout check and the scene import library read the same bytes.
//
// The file is read, not mapped: a mapping of the file itself would raise SIGBUS in whichever
// thread touched a page that another writer had truncated away. A file that shrinks or grows
// while it is being read fails to open instead; one rewritten in place at the same size is
// read as whatever bytes were there, which the parsers then judge like any other input.
// The copy costs about as much as the mapping it replaces (docs/PERFORMANCE.md): a large
// file's pages are made in one call before the read fills them, huge pages where the system
// offers them, instead of one page fault per 4 KiB.
// Thread: immutable after open(); any thread may read bytes() concurrently.

#include "core/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace orvanta::import {

class FileBytes {
    struct Key { explicit Key() = default; };  // only open() constructs these

public:
    // Reads `path`. An empty file opens with empty bytes(). Fails with
    // ImportErrorCode::unreadableFile when the file cannot be opened, sized or read, is no
    // regular file, or changes its size while it is read.
    // Thread: any.
    static core::Result<std::shared_ptr<const FileBytes>> open(const std::string& path);

    FileBytes(Key, void* mapping, std::size_t mappingSize, const std::uint8_t* data, std::size_t size)
        : mapping_(mapping), mappingSize_(mappingSize), data_(data), size_(size) {}
    FileBytes(Key, std::unique_ptr<std::uint8_t[]> heap, std::size_t size)
        : heap_(std::move(heap)), data_(heap_.get()), size_(size) {}
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    // The file's bytes. Thread: any.
    std::span<const std::uint8_t> bytes() const { return {data_, size_}; }

private:
    std::unique_ptr<std::uint8_t[]> heap_; // a small file's bytes
    void* mapping_ = nullptr;              // or a large one's private mapping
    std::size_t mappingSize_ = 0;
    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace orvanta::import

#include "import/FileBytes.h"

#include "import/ImportError.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta::import {

namespace {

constexpr std::size_t kHugePage = std::size_t(2) << 20;

// Closes a file descriptor when it leaves scope.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() { if (fd_ >= 0) ::close(fd_); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

// Anonymous memory unmapped when it leaves scope unless released.
class Mapping {
public:
    explicit Mapping(std::size_t size)
        : size_(size), address_(::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
    ~Mapping() { if (valid()) ::munmap(address_, size_); }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    bool valid() const { return address_ != MAP_FAILED; }
    std::uint8_t* bytes() const { return static_cast<std::uint8_t*>(address_); }
    std::size_t size() const { return size_; }
    void* release() { return std::exchange(address_, MAP_FAILED); }

private:
    std::size_t size_;
    void* address_;
};

core::Error unreadable(const std::string& path, const char* what) {
    return importError(ImportErrorCode::unreadableFile,
                       "Cannot " + std::string(what) + " " + path + ": " + std::strerror(errno));
}

core::Error changed(const std::string& path) {
    return importError(ImportErrorCode::unreadableFile, "Cannot read " + path + ": the file changed while it was read");
}

// Reads the whole of `fd` into `data`, which has room for `size` bytes and one more: a byte
// read past `size` tells a file that grew, fewer than `size` one that shrank.
std::optional<core::Error> readWhole(int fd, std::uint8_t* data, std::size_t size, const std::string& path) {
    std::size_t read = 0;
    while (read <= size) {
        const ssize_t got = ::read(fd, data + read, size + 1 - read);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return unreadable(path, "read");
        if (got == 0) break;
        read += static_cast<std::size_t>(got);
    }
    if (read != size) return changed(path);
    return std::nullopt;
}

} // namespace

core::Result<std::shared_ptr<const FileBytes>> FileBytes::open(const std::string& path) {
    const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0) return unreadable(path, "open");

    struct stat info {};
    if (::fstat(fd.get(), &info) != 0) return unreadable(path, "stat");
    if (!S_ISREG(info.st_mode)) {
        return importError(ImportErrorCode::unreadableFile, "Cannot read " + path + ": not a regular file");
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    if (size == 0) return std::make_shared<const FileBytes>(Key{}, nullptr, 0, nullptr, 0);

    // Small files go to the heap, whose memory the allocator hands on from one read to the
    // next: a mapping of their own cost two system calls and a fault per page each time,
    // which doubled the import of a 100 KB package.
    if (size < kHugePage) {
        auto heap = std::make_unique_for_overwrite<std::uint8_t[]>(size + 1);
        if (auto error = readWhole(fd.get(), heap.get(), size, path)) return std::move(*error);
        return std::make_shared<const FileBytes>(Key{}, std::move(heap), size);
    }
    // Large files start on a huge-page boundary inside a slightly larger mapping, so the
    // system can back them with huge pages.
    Mapping mapping(size + 1 + kHugePage);
    if (!mapping.valid()) return unreadable(path, "allocate memory to read");
    auto* data = reinterpret_cast<std::uint8_t*>((reinterpret_cast<std::uintptr_t>(mapping.bytes()) + kHugePage - 1) &
                                                 ~(kHugePage - 1));
    ::madvise(data, size, MADV_HUGEPAGE); // advice only: without huge pages the read still works
    // The pages are made in one call rather than one fault at a time as the read fills them.
    ::madvise(data, size, MADV_POPULATE_WRITE);
    if (auto error = readWhole(fd.get(), data, size, path)) return std::move(*error);
    const std::size_t mappingSize = mapping.size();
    return std::make_shared<const FileBytes>(Key{}, mapping.release(), mappingSize, data, size);
}

FileBytes::~FileBytes() {
    if (mapping_ != nullptr) ::munmap(mapping_, mappingSize_);
}

} // namespace orvanta::import

#include "import/usd/MappedFile.h"

#include "import/ImportError.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta::import::usd {

namespace {

// Closes a file descriptor when it leaves scope; the mapping outlives the descriptor.
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

core::Error unreadable(const std::string& path, const char* what) {
    return importError(ImportErrorCode::unreadableFile,
                       "Cannot " + std::string(what) + " " + path + ": " + std::strerror(errno));
}

} // namespace

core::Result<std::shared_ptr<const MappedFile>> MappedFile::open(const std::string& path) {
    const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0) return unreadable(path, "open");

    struct stat info {};
    if (::fstat(fd.get(), &info) != 0) return unreadable(path, "stat");
    if (!S_ISREG(info.st_mode)) {
        return importError(ImportErrorCode::unreadableFile, "Cannot map " + path + ": not a regular file");
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    if (size == 0) return std::make_shared<const MappedFile>(Key{}, nullptr, 0);

    void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd.get(), 0);
    if (mapping == MAP_FAILED) return unreadable(path, "map");
    return std::make_shared<const MappedFile>(Key{}, static_cast<const std::uint8_t*>(mapping), size);
}

MappedFile::~MappedFile() {
    if (data_ != nullptr) ::munmap(const_cast<std::uint8_t*>(data_), size_);
}

} // namespace orvanta::import::usd

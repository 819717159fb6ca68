#include "core/TemporaryDirectory.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta::core {

namespace {

constexpr const char* errorDomain = "TemporaryDirectoryError";

Error refused(int code, const std::string& message) { return Error(errorDomain, code, message); }

// Closes a descriptor when it goes out of scope.
struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

Result<Url> namedByEnvironment(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return refused(errno, "The temporary directory " + path + " named by TMPDIR is unusable: " + std::strerror(errno));
    if (!S_ISDIR(info.st_mode))
        return refused(ENOTDIR, "The temporary directory " + path + " named by TMPDIR is not a directory");
    if (::access(path.c_str(), W_OK | X_OK) != 0)
        return refused(errno, "The temporary directory " + path + " named by TMPDIR is not writable: " + std::strerror(errno));
    return Url::fileUrl(path);
}

} // namespace

Result<Url> TemporaryDirectory::url() {
    const char* named = std::getenv("TMPDIR");
    if (named && *named) {
        const auto shared = namedByEnvironment(named);
        if (!shared) return shared;
        return privateDirectoryUnder(named);
    }
    return privateDirectoryUnder(P_tmpdir);
}

Result<int> TemporaryDirectory::clear() {
    const auto folder = url();
    if (!folder) return folder.error();
    namespace fs = std::filesystem;
    std::error_code error;
    int removed = 0;
    for (fs::directory_iterator entry(folder->path(), error), end; !error && entry != end; entry.increment(error)) {
        // remove_all takes a link itself away, not what it points at.
        fs::remove_all(entry->path(), error);
        if (error)
            return refused(error.value(), "Could not remove " + entry->path().string() + ": " + error.message());
        ++removed;
    }
    if (error) return refused(error.value(), "Could not list " + folder->path() + ": " + error.message());
    return removed;
}

Result<Url> TemporaryDirectory::privateDirectoryUnder(const std::string& shared) {
    const std::string path = shared + "/OrvantaARFoodSDK-" + std::to_string(::geteuid());
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        return refused(errno, "Could not make the temporary directory " + path + ": " + std::strerror(errno));
    // Whatever is at the path now (made just now, or planted before) is checked through one
    // descriptor that was opened without following a link.
    const Descriptor directory{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
    if (directory.fd < 0)
        return refused(errno, "The temporary directory " + path + " is not a plain directory: " + std::strerror(errno));
    struct stat info {};
    if (::fstat(directory.fd, &info) != 0)
        return refused(errno, "Could not check the temporary directory " + path + ": " + std::strerror(errno));
    if (info.st_uid != ::geteuid())
        return refused(EPERM, "The temporary directory " + path + " belongs to another user (uid " +
                                  std::to_string(info.st_uid) + ")");
    if ((info.st_mode & 077) != 0) {
        char mode[8];
        std::snprintf(mode, sizeof mode, "%03o", static_cast<unsigned>(info.st_mode & 0777));
        return refused(EPERM, "The temporary directory " + path + " is open to other users (mode " + mode + ")");
    }
    return Url::fileUrl(path);
}

} // namespace orvanta::core

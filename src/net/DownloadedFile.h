#pragma once
// The body of one completed GET, written to a hidden temporary file, and the status line's
// code (the caller decides whether to look at it). The file is deleted with the last copy
// of this value unless the receiver keeps it (after moving it into place).
// Thread: a value type; the file may be used from any one thread at a time.

#include <QTemporaryFile>

#include <memory>
#include <string>

namespace orvanta::net {

struct DownloadedFile {
    std::shared_ptr<QTemporaryFile> file;
    int statusCode = 0;
    qint64 size = 0;

    std::string path() const { return file->fileName().toStdString(); }
    // The file stays on disk after this value is gone (call once it has been renamed).
    void keep() const { file->setAutoRemove(false); }
};

} // namespace orvanta::net

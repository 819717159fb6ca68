#pragma once
// Writes pictures as PNG files: under a free name in a folder (never replacing a file that is
// there, even one that appears while we write), or at a path the user chose (replacing it
// whole, never leaving it half-written). Encoding a large picture takes a while, so the
// writes are meant for the background queue; inBackground() runs one there and reports on
// the main queue. Failures are Errors of the "PngFileError" domain.
// Thread: createUnique and replace on any thread; inBackground on the main thread.

#include "core/Result.h"

#include <QImage>
#include <QString>

#include <functional>

namespace orvanta::ui {

class PngFile {
public:
    enum ErrorCode { emptyImage = 1, folderUnusable = 2, writeFailed = 3 };
    using Done = std::function<void(core::Result<QString>)>;

    // Writes `image` into `folder` (made when missing) as "<baseName>.png", or, when that name
    // is taken, "<baseName> 2.png", "<baseName> 3.png", ...; returns the path written.
    static core::Result<QString> createUnique(const QImage& image, const QString& folder, const QString& baseName);
    // Writes `image` to `path`, replacing what is there once the whole file is written.
    static core::Result<QString> replace(const QImage& image, const QString& path);

    // Runs `write` on the background queue and hands its outcome to `done` (when set) on
    // the main queue.
    static void inBackground(std::function<core::Result<QString>()> write, Done done);
};

} // namespace orvanta::ui

#include "ui/PngFile.h"

#include "core/Dispatch.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace orvanta::ui {

namespace {

using core::Error;
using core::Result;

Error failure(PngFile::ErrorCode code, const QString& message) {
    return Error("PngFileError", code, message.toStdString());
}

// PNG needs at least one pixel; a null picture has none.
std::optional<Error> unencodable(const QImage& image) {
    if (image.isNull()) return failure(PngFile::emptyImage, QStringLiteral("An empty picture cannot be written as PNG."));
    return std::nullopt;
}

Error writeError(const QString& path, const QString& reason) {
    return failure(PngFile::writeFailed, QStringLiteral("Could not write %1: %2").arg(path, reason));
}

} // namespace

Result<QString> PngFile::createUnique(const QImage& image, const QString& folder, const QString& baseName) {
    if (auto error = unencodable(image)) return *error;
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir())
        return failure(folderUnusable, QStringLiteral("The folder %1 cannot be made or used.").arg(folder));
    const QDir dir(folder);
    for (int number = 1;; ++number) {
        const QString name = number == 1 ? baseName : QStringLiteral("%1 %2").arg(baseName).arg(number);
        const QString path = dir.filePath(name + QStringLiteral(".png"));
        QFile file(path);
        // NewOnly creates the file or fails: a picture that is already there is never opened.
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            if (QFileInfo::exists(path)) continue;
            return writeError(path, file.errorString());
        }
        if (!image.save(&file, "PNG") || !file.flush()) {
            const QString reason = file.errorString();
            file.remove();
            return writeError(path, reason);
        }
        return path;
    }
}

Result<QString> PngFile::replace(const QImage& image, const QString& path) {
    if (auto error = unencodable(image)) return *error;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return writeError(path, file.errorString());
    if (!image.save(&file, "PNG")) {
        file.cancelWriting();
        return writeError(path, file.errorString());
    }
    if (!file.commit()) return writeError(path, file.errorString());
    return path;
}

void PngFile::inBackground(std::function<Result<QString>()> write, Done done) {
    core::Dispatch::background()->async([write = std::move(write), done = std::move(done)] {
        Result<QString> outcome = write();
        if (done) core::Dispatch::main()->async([done, outcome] { done(outcome); });
    });
}

} // namespace orvanta::ui

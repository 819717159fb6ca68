#include "ui/PhotoAlbum.h"

#include <QDateTime>
#include <QStandardPaths>

namespace orvanta::ui {

void PhotoAlbum::writeImage(QImage image, PngFile::Done done) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    const QString name = QDateTime::currentDateTime().toString(QStringLiteral("'Photo' yyyy-MM-dd 'at' HH.mm.ss"));
    PngFile::inBackground([image = std::move(image), folder, name] { return PngFile::createUnique(image, folder, name); },
                          std::move(done));
}

} // namespace orvanta::ui

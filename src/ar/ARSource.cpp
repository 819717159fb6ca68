#include <OrvantaARFoodSDK/ARSource.h>

#include "arsession/camera/TableCard.h"

#include <string_view>

namespace orvanta {

// A host's default card is the one the tools print and the tracker assumes.
static_assert(std::string_view(ARSource::defaultTableCard) == std::string_view(arsession::camera::TableCard::defaultText));

ARSource ARSource::simulated() { return ARSource(Kind::simulated); }

ARSource ARSource::camera(QByteArray deviceId) {
    ARSource source(Kind::camera);
    source.deviceId_ = std::move(deviceId);
    return source;
}

ARSource ARSource::videoFile(QString path) {
    ARSource source(Kind::videoFile);
    source.path_ = std::move(path);
    return source;
}

ARSource ARSource::pictureFolder(QString path, double framesPerSecond) {
    ARSource source(Kind::pictureFolder);
    source.path_ = std::move(path);
    source.framesPerSecond_ = framesPerSecond;
    return source;
}

ARSource ARSource::withTableCard(QString card) const {
    ARSource copy = *this;
    copy.tableCard_ = std::move(card);
    return copy;
}

ARSource ARSource::withCalibration(QString path) const {
    ARSource copy = *this;
    copy.calibrationFile_ = std::move(path);
    return copy;
}

ARSource ARSource::withTableSize(QSizeF size) const {
    ARSource copy = *this;
    copy.tableSize_ = size;
    return copy;
}

} // namespace orvanta

#include "ar/ARSourceSetting.h"

#include "arsession/camera/CameraBackend.h"
#include "arsession/camera/LiveCameraSource.h"
#include "arsession/camera/PictureFolderSource.h"
#include "arsession/camera/VideoFileSource.h"

#include <QFileInfo>

namespace orvanta {

namespace {

using namespace arsession::camera;

// The current choice with what was read from it.
struct Chosen {
    ARSource source = ARSource::simulated();
    std::optional<TableCard> card;
    std::optional<CameraCalibration> calibration;
};

Chosen& chosen() {
    static Chosen current;
    return current;
}

core::Error sourceError(const std::string& message) { return core::Error(ARSourceSetting::errorDomain, 1, message); }

} // namespace

core::Result<ARSource> ARSourceSetting::choose(const ARSource& source) {
    Chosen next{source, std::nullopt, std::nullopt};
    if (source.kind() != ARSource::Kind::simulated) {
        auto card = TableCard::parse(source.tableCard().toStdString());
        if (!card) return sourceError("table card: " + card.error().localizedDescription());
        next.card = std::move(card).value();
        if (!source.calibrationFile().isEmpty()) {
            auto calibration = CameraCalibration::load(source.calibrationFile());
            if (!calibration) return sourceError("calibration: " + calibration.error().localizedDescription());
            next.calibration = std::move(calibration).value();
        }
        if (!source.tableSize().isValid() || source.tableSize().isEmpty())
            return sourceError("table size: must be positive");
    }
    if (source.kind() == ARSource::Kind::videoFile && !QFileInfo(source.path()).isFile())
        return sourceError("video file: " + source.path().toStdString() + " does not exist");
    if (source.kind() == ARSource::Kind::pictureFolder) {
        if (!(source.framesPerSecond() > 0.0)) return sourceError("picture folder: the frame rate must be positive");
        auto folder = PictureFolderSource::open(source.path(), source.framesPerSecond());
        if (!folder) return sourceError("picture folder: " + folder.error().localizedDescription());
    }
    chosen() = std::move(next);
    return source;
}

ARSource ARSourceSetting::current() { return chosen().source; }

std::unique_ptr<arsession::SessionBackend> ARSourceSetting::makeBackend() {
    const Chosen& now = chosen();
    std::unique_ptr<FrameSource> frames;
    switch (now.source.kind()) {
    case ARSource::Kind::simulated: return nullptr;
    case ARSource::Kind::camera: frames = std::make_unique<LiveCameraSource>(now.source.deviceId()); break;
    case ARSource::Kind::videoFile: frames = std::make_unique<VideoFileSource>(now.source.path()); break;
    case ARSource::Kind::pictureFolder: {
        // Opened again for each view: a folder emptied since it was chosen gives no pictures.
        auto folder = PictureFolderSource::open(now.source.path(), now.source.framesPerSecond());
        frames = folder ? std::unique_ptr<FrameSource>(std::move(folder).value())
                        : std::make_unique<PictureFolderSource>(QStringList{}, now.source.framesPerSecond());
        break;
    }
    }
    CameraBackend::Settings settings;
    settings.tableSize = now.source.tableSize();
    return std::make_unique<CameraBackend>(std::move(frames), *now.card, now.calibration, settings);
}

} // namespace orvanta

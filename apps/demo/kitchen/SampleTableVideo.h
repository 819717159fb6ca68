#pragma once
// The sample camera video: the kit's default table card lying on a wooden table, filmed by a
// hand-held camera that circles it slowly (a little over a quarter turn and back, drifting
// closer and further) and looks down on it steeply twice, ending where it began so that it
// loops without a jump. The frames are drawn by the camera layer's CardTableScene through the
// lens the kit assumes without a calibration file, so the dish stands on the card without
// one; they are written as Motion JPEG in AVI by OpenCV's preferred writer (FFmpeg's on
// Debian), which Qt Multimedia's GStreamer player reads. Like the dishes, the file is made on
// first use and its name carries the generator's version.
// Thread: any; processes may make the video in one folder at the same time (each writes a file
// of its own and renames it into place), threads of one process may not.

#include "core/Result.h"

#include <QMatrix4x4>
#include <QSize>
#include <QString>

namespace orvanta::demo {

class SampleTableVideo {
public:
    // Raise whenever the camera path, the look or the encoding changes what the file holds.
    static constexpr int generatorVersion = 2;
    static constexpr int framesPerSecond = 15;
    static constexpr int frameCount = 10 * framesPerSecond; // one lap of the path; it loops seamlessly
    static constexpr QSize frameSize{640, 480};

    // Where the video lives under `folder`.
    static QString path(const QString& folder);
    // Writes the video into `folder` (made if needed) unless it is there. Returns its path.
    static core::Result<QString> ensure(const QString& folder);

    // The camera's pose (camera to world, the card's frame) at frame `index`.
    static QMatrix4x4 cameraPose(int index);
};

} // namespace orvanta::demo

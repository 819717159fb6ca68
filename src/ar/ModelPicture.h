#pragma once
// Draws one model file as the kit shows it and returns the picture: by default as the 3D
// viewer shows it (its own framing), or placed on the simulated table as a guest sees it
// after placement. It makes its own window, waits until the model and its textures are on
// screen, and grabs the frame. orvanta-render and the sample restaurant's menu pictures
// both draw through it.
// Thread: main thread of a QGuiApplication whose main queue is its event loop; needs OpenGL.

#include "core/Result.h"

#include <QImage>
#include <QString>
#include <QSize>

#include <string>

namespace orvanta {

class ModelPicture {
public:
    struct Options {
        QSize size{1024, 768};
        bool ar = false;           // on the simulated table instead of in the 3D viewer
        float turnDegrees = 0.0f;  // turn about the vertical axis first
        // With `ar`: a photo whose table card the dish stands on, drawn over the photo (aspect-
        // filled into `size`); the camera's calibration file (empty: a default lens) and the
        // card's text (ARSource.h).
        QString cameraPhoto;
        QString calibrationFile;
        QString tableCard;
    };

    // What the default lens is, for a warning when no calibration is given.
    static QString defaultLensDescription();

    // The picture, or a "ModelPictureError" whose message says why there is none (no OpenGL,
    // the model does not import or has no triangles, it did not appear within 30 s, the
    // window was not captured).
    static core::Result<QImage> render(const std::string& modelPath, const Options& options);
};

} // namespace orvanta

#pragma once
// The user's photo album on a desktop: the Pictures folder. Each picture becomes a new PNG
// file there named after the moment it was taken; an earlier picture is never overwritten.
// Thread: main thread.

#include "ui/PngFile.h"

namespace orvanta::ui {

class PhotoAlbum {
public:
    // Writes `image` as a PNG into the user's Pictures folder (made when missing) off the main
    // thread; `done`, when set, receives the path written or the Error on the main thread. An
    // empty image cannot be a PNG: that is reported as an Error. Main thread.
    static void writeImage(QImage image, PngFile::Done done = {});
};

} // namespace orvanta::ui

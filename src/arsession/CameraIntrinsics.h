#pragma once
// The pinhole part of a real lens: focal lengths and principal point in pixels of the camera
// image. Pixel coordinates follow OpenCV's convention: (0, 0) is the centre of the image's
// top-left pixel, x to the right, y down. All zero (invalid) when there is no camera image.
// Thread: a value type, usable on any thread.

namespace orvanta::arsession {

struct CameraIntrinsics {
    float fx = 0.0f, fy = 0.0f; // focal lengths, pixels
    float cx = 0.0f, cy = 0.0f; // principal point, pixels

    bool isValid() const { return fx > 0.0f && fy > 0.0f; }

    friend bool operator==(const CameraIntrinsics&, const CameraIntrinsics&) = default;
};

} // namespace orvanta::arsession

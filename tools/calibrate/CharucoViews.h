#pragma once
// Views of a ChArUco card collected for a camera calibration: the board's corners found in
// each picture, then OpenCV's ChArUco calibration over all of them, written as the FileStorage
// YAML the kit's CameraCalibration reads.
// Thread: one thread at a time.

#include "arsession/camera/CameraCalibration.h"
#include "arsession/camera/TableCard.h"
#include "core/Result.h"

#include <opencv2/aruco/charuco.hpp>

#include <optional>
#include <string>
#include <vector>

namespace orvanta::calibrate {

class CharucoViews {
public:
    // A calibration is refused with fewer views, or with a larger reprojection error (pixels).
    static constexpr int minimumViews = 5;
    static constexpr double largestReprojectionError = 1.5;
    static constexpr const char* errorDomain = "CalibrationError";

    struct Detection {
        std::vector<cv::Point2f> corners;
        std::vector<int> ids;
    };
    struct Outcome {
        arsession::camera::CameraCalibration lens;
        double reprojectionError = 0.0; // RMS over every corner of every view, pixels
        int views = 0;
    };

    // `card` must be a ChArUco board.
    explicit CharucoViews(const arsession::camera::TableCard& card);

    // The board's corners in a grey picture; none when too little of the board is seen.
    std::optional<Detection> detect(const cv::Mat& grey) const;
    // Keeps a view of a picture of `size` (the same size for every view).
    void add(Detection detection, cv::Size size);
    int count() const { return int(views_.size()); }
    const std::vector<Detection>& views() const { return views_; }

    // The lens from every view kept. Errors (code 1) say why the views do not give a lens
    // and what to do.
    core::Result<Outcome> calibrate() const;

    // Writes `outcome` as OpenCV FileStorage YAML; false when the file cannot be written.
    static bool save(const Outcome& outcome, const arsession::camera::TableCard& card, const std::string& path);

    const cv::Ptr<cv::aruco::CharucoBoard>& board() const { return board_; }

private:
    cv::Ptr<cv::aruco::CharucoBoard> board_;
    cv::Ptr<cv::aruco::DetectorParameters> parameters_;
    std::vector<Detection> views_;
    cv::Size size_;
};

} // namespace orvanta::calibrate

#pragma once
// Calibration from a live camera: shows the camera picture with the board's corners drawn on
// it, keeps a view each time the card is seen from a new enough angle or place in the
// picture, says how many more views it wants, and calibrates by itself once it has them.
// Thread: the GUI thread; pictures arrive from the camera on any thread.

#include "arsession/camera/FrameSink.h"
#include "arsession/camera/LiveCameraSource.h"
#include "calibrate/CharucoViews.h"

#include <QLabel>

#include <functional>
#include <vector>

namespace orvanta::calibrate {

class LiveCalibration final : public arsession::camera::FrameSink {
public:
    static constexpr int wantedViews = 15;

    // `finished` is told the exit status once the calibration is written or fails.
    LiveCalibration(const arsession::camera::TableCard& card, QByteArray deviceId, std::string output,
                    std::function<void(int)> finished);
    ~LiveCalibration() override;

    void start();

    // Draws what the window shows over a 3-channel `picture`: the card's corners found in it
    // (`detection`, if any) and how many more views are wanted once `viewsTaken` are taken.
    static void drawScreen(cv::Mat& picture, const CharucoViews::Detection* detection, int viewsTaken);

    void takeFrame(const QImage& picture, double seconds) override;
    void sourceFailed(const core::Error& error) override;

private:
    struct Pose {
        cv::Vec3d normal;  // the card's normal in the camera's frame
        cv::Point2f centre; // the seen corners' centre, in picture widths
    };
    void show(QImage picture);
    bool isNew(const Pose& pose) const;
    void finish();

    arsession::camera::TableCard card_;
    CharucoViews views_;
    std::string output_;
    std::function<void(int)> finished_;
    arsession::camera::LiveCameraSource source_;
    std::vector<Pose> taken_;
    QLabel window_;
    bool done_ = false;
};

} // namespace orvanta::calibrate

#include "calibrate/LiveCalibration.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include <QMetaObject>
#include <QPixmap>

#include <cmath>
#include <cstdio>

namespace orvanta::calibrate {

using arsession::camera::CameraCalibration;

namespace {

// A view is new when the card is turned this much from every view taken, or seen this far
// (a fraction of the picture's width) from where it was.
constexpr double newAngleDegrees = 10.0;
constexpr double newPlace = 0.2;

} // namespace

LiveCalibration::LiveCalibration(const arsession::camera::TableCard& card, QByteArray deviceId, std::string output,
                                 std::function<void(int)> finished)
    : card_(card), views_(card), output_(std::move(output)), finished_(std::move(finished)),
      source_(std::move(deviceId)) {
    window_.setWindowTitle("orvanta-calibrate");
    window_.setMinimumSize(640, 480);
    window_.setAlignment(Qt::AlignCenter);
    window_.setText("Waiting for the camera…");
}

LiveCalibration::~LiveCalibration() { source_.stop(); }

void LiveCalibration::start() {
    window_.show();
    std::printf("Show the card to the camera from different angles; %d views are wanted.\n", wantedViews);
    std::fflush(stdout);
    source_.start(*this);
}

void LiveCalibration::takeFrame(const QImage& picture, double) {
    QImage copy = picture.convertToFormat(QImage::Format_RGB888);
    QMetaObject::invokeMethod(&window_, [this, copy] { show(copy); }, Qt::QueuedConnection);
}

void LiveCalibration::sourceFailed(const core::Error& error) {
    const std::string message = error.localizedDescription();
    QMetaObject::invokeMethod(&window_, [this, message] {
        if (done_) return;
        done_ = true;
        std::fprintf(stderr,
                     "orvanta-calibrate: %s. Connect a camera, or calibrate from photos (--photos DIR) or a video "
                     "(--video FILE) of the card.\n",
                     message.c_str());
        finished_(1);
    }, Qt::QueuedConnection);
}

bool LiveCalibration::isNew(const Pose& pose) const {
    const double cosine = std::cos(newAngleDegrees * M_PI / 180.0);
    for (const Pose& taken : taken_) {
        const bool turned = pose.normal.dot(taken.normal) < cosine;
        const bool moved = cv::norm(pose.centre - taken.centre) > newPlace;
        if (!turned && !moved) return false;
    }
    return true;
}

void LiveCalibration::show(QImage picture) {
    if (done_) return;
    cv::Mat rgb(picture.height(), picture.width(), CV_8UC3, picture.bits(),
                std::size_t(picture.bytesPerLine()));
    cv::Mat grey;
    cv::cvtColor(rgb, grey, cv::COLOR_RGB2GRAY);
    const cv::Size size(picture.width(), picture.height());
    const auto detection = views_.detect(grey);
    if (detection) {
        // The card's pose through a typical lens tells the angle it is seen from.
        const CameraCalibration lens = CameraCalibration::defaultLens(QSize(size.width, size.height));
        const cv::Mat matrix = (cv::Mat_<double>(3, 3) << lens.intrinsics.fx, 0, lens.intrinsics.cx, 0,
                                lens.intrinsics.fy, lens.intrinsics.cy, 0, 0, 1);
        cv::Vec3d rotation, translation;
        if (cv::aruco::estimatePoseCharucoBoard(detection->corners, detection->ids, views_.board(), matrix, cv::Mat(),
                                                rotation, translation)) {
            cv::Matx33d turn;
            cv::Rodrigues(rotation, turn);
            cv::Point2f centre;
            for (const cv::Point2f& corner : detection->corners)
                centre += corner / float(detection->corners.size() * std::size_t(size.width));
            const Pose pose{turn * cv::Vec3d(0, 0, 1), centre};
            if (isNew(pose)) {
                taken_.push_back(pose);
                views_.add(*detection, size);
            }
        }
    }
    drawScreen(rgb, detection ? &*detection : nullptr, views_.count());
    window_.setPixmap(QPixmap::fromImage(picture));
    if (views_.count() >= wantedViews) finish();
}

void LiveCalibration::drawScreen(cv::Mat& picture, const CharucoViews::Detection* detection, int viewsTaken) {
    if (detection)
        cv::aruco::drawDetectedCornersCharuco(picture, detection->corners, detection->ids, cv::Scalar(0, 220, 0));
    const int more = wantedViews - viewsTaken;
    // OpenCV's line fonts draw ASCII only.
    const QString status = more > 0 ? QString("%1 more view%2 wanted: turn the card or move the camera")
                                          .arg(more)
                                          .arg(more == 1 ? "" : "s")
                                    : QString("Calibrating...");
    cv::putText(picture, status.toStdString(), cv::Point(16, 32), cv::FONT_HERSHEY_SIMPLEX, 0.8,
                cv::Scalar(255, 255, 255), 3);
    cv::putText(picture, status.toStdString(), cv::Point(16, 32), cv::FONT_HERSHEY_SIMPLEX, 0.8, cv::Scalar(0, 0, 0), 1);
}

void LiveCalibration::finish() {
    done_ = true;
    source_.stop();
    const auto outcome = views_.calibrate();
    if (!outcome) {
        std::fprintf(stderr, "orvanta-calibrate: %s\n", outcome.error().localizedDescription().c_str());
        finished_(1);
        return;
    }
    if (!CharucoViews::save(outcome.value(), card_, output_)) {
        std::fprintf(stderr, "orvanta-calibrate: cannot write %s\n", output_.c_str());
        finished_(1);
        return;
    }
    std::printf("Calibrated from %d views, reprojection error %.2f px; written to %s\n", outcome->views,
                outcome->reprojectionError, output_.c_str());
    finished_(0);
}

} // namespace orvanta::calibrate

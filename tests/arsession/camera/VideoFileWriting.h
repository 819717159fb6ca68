#pragma once
// Writes pictures of one size to an MJPEG AVI file, as a camera's recording would be.

#include <QImage>
#include <QString>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#include <gtest/gtest.h>

#include <vector>

namespace orvanta::arsession::camera {

inline void writeVideo(const QString& path, const std::vector<QImage>& pictures, double framesPerSecond) {
    const QSize size = pictures.front().size();
    cv::VideoWriter writer(path.toStdString(), cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), framesPerSecond,
                           cv::Size(size.width(), size.height()));
    ASSERT_TRUE(writer.isOpened());
    for (QImage picture : pictures) {
        picture = picture.convertToFormat(QImage::Format_RGB32);
        cv::Mat bgr;
        cv::cvtColor(cv::Mat(size.height(), size.width(), CV_8UC4, picture.bits(), std::size_t(picture.bytesPerLine())), bgr,
                     cv::COLOR_BGRA2BGR);
        writer.write(bgr);
    }
}

} // namespace orvanta::arsession::camera

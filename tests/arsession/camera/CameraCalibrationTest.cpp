// Calibration files in OpenCV's YAML, the default lens, and scaling to another picture size.
#include "arsession/camera/CameraCalibration.h"
#include "support/TestModels.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace orvanta::arsession::camera {
namespace {

constexpr const char* laptopYaml = R"(%YAML:1.0
---
image_width: 1280
image_height: 720
camera_matrix: !!opencv-matrix {rows: 3, cols: 3, dt: d, data: [912.5, 0., 641.25, 0., 910.75, 352.5, 0., 0., 1.]}
distortion_coefficients: !!opencv-matrix {rows: 1, cols: 5, dt: d, data: [0.11, -0.23, 0.001, -0.002, 0.09]}
)";

struct YamlFile {
    QTemporaryDir dir;
    QString path = dir.filePath("lens.yml");
    explicit YamlFile(const QByteArray& text) { orvanta::testing::TestModels::write(path.toStdString(), text); }
};

TEST(CameraCalibrationTest, ReadsOpenCvYamlAndScalesToOtherPictureSizes) {
    const YamlFile file(laptopYaml);
    const auto lens = CameraCalibration::load(file.path);
    ASSERT_TRUE(lens) << lens.error().localizedDescription();
    EXPECT_EQ(lens->intrinsics, (CameraIntrinsics{912.5f, 910.75f, 641.25f, 352.5f}));
    EXPECT_EQ(lens->distortion, (std::array<double, 5>{0.11, -0.23, 0.001, -0.002, 0.09}));
    EXPECT_EQ(lens->imageSize, QSize(1280, 720));

    // Half the resolution: the picture's corners and centre stay where they were.
    const CameraCalibration half = lens->scaledTo(QSize(640, 360));
    EXPECT_EQ(half.intrinsics, (CameraIntrinsics{456.25f, 455.375f, 320.375f, 176.0f}));
    EXPECT_EQ(half.distortion, lens->distortion);
    EXPECT_EQ(half.scaledTo(QSize(1280, 720)), lens.value());

    // The default lens: 70° across the diagonal, centred, undistorted.
    const CameraCalibration typical = CameraCalibration::defaultLens(QSize(1280, 720));
    EXPECT_NEAR(2.0 * std::atan(std::hypot(640.0, 360.0) / typical.intrinsics.fx) * 180.0 / M_PI, 70.0, 1e-3);
    EXPECT_EQ(typical.intrinsics.cx, 639.5f);
    EXPECT_EQ(typical.distortion, (std::array<double, 5>{}));
}

TEST(CameraCalibrationTest, BadFilesNameTheProblem) {
    QByteArray noMatrix = laptopYaml;
    noMatrix.replace("camera_matrix", "camera_matrices");
    QByteArray sixCoefficients = laptopYaml;
    sixCoefficients.replace("cols: 5", "cols: 6").replace("0.09]", "0.09, 0.1]");
    QByteArray noWidth = laptopYaml;
    noWidth.replace("image_width: 1280", "");
    const std::pair<QByteArray, const char*> cases[] = {
        {noMatrix, "camera_matrix must be a 3x3 matrix"},
        {sixCoefficients, "distortion_coefficients must hold 4 or 5 numbers"},
        {noWidth, "image_width and image_height must be positive"},
    };
    for (const auto& [text, problem] : cases) {
        const YamlFile file(text);
        const auto lens = CameraCalibration::load(file.path);
        ASSERT_FALSE(lens) << problem;
        EXPECT_EQ(lens.error().code(), 2);
        EXPECT_EQ(lens.error().localizedDescription(), "Calibration file " + file.path.toStdString() + ": " + problem);
    }
    const auto missing = CameraCalibration::load("/nonexistent/lens.yml");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().localizedDescription(), "Calibration file /nonexistent/lens.yml cannot be read");
}

} // namespace
} // namespace orvanta::arsession::camera

// The card's pose in synthetic camera pictures with known truth: every card kind, steep and
// face-on views, an off-centre distorted lens, noise, blur and uneven light.
#include "arsession/camera/CardLocator.h"
#include "support/SyntheticCameraFrames.h"

#include <QtMath>
#include <gtest/gtest.h>

namespace orvanta::arsession::camera {
namespace {

using orvanta::testing::SyntheticCameraFrames;

// Pixel of the world origin (the card's centre) through `cameraTransform` and the pinhole lens.
QPointF cardCentrePixel(const QMatrix4x4& cameraTransform, const CameraIntrinsics& lens) {
    const QVector3D local = cameraTransform.inverted().map(QVector3D());
    return QPointF(lens.cx + lens.fx * local.x() / -local.z(), lens.cy - lens.fy * local.y() / -local.z());
}

double rotationErrorDegrees(const QMatrix4x4& a, const QMatrix4x4& b) {
    double trace = 0.0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) trace += double(a(j, i)) * double(b(j, i));
    return qRadiansToDegrees(std::acos(std::clamp((trace - 1.0) * 0.5, -1.0, 1.0)));
}

TEST(CardLocatorTest, RecoversTheTruePoseOfEveryCardKind) {
    struct Case {
        const char* card;
        QSize size;
        float distance, elevation, azimuth;
        QVector3D target; // where the camera looks: the card is off centre when not the origin
    };
    const Case cases[] = {
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(640, 480), 0.55f, 60.0f, 0.0f, {}},
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(640, 480), 0.42f, 35.0f, 35.0f, {0.05f, 0, 0.03f}},
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(1280, 720), 0.7f, 25.0f, -140.0f, {-0.04f, 0, 0.0f}},
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(1280, 720), 0.5f, 88.0f, 10.0f, {}},
        {"charuco:8x5:0.03:0.022:DICT_4X4_50", QSize(640, 480), 0.5f, 45.0f, 80.0f, {}},
        {"aruco:DICT_4X4_50:7:0.1", QSize(640, 480), 0.45f, 50.0f, 20.0f, {}},
        {"aruco:DICT_APRILTAG_36h11:3:0.08", QSize(1280, 720), 0.5f, 35.0f, -60.0f, {0.03f, 0, 0.02f}},
        {"qr:0.08", QSize(640, 480), 0.35f, 60.0f, 15.0f, {}},
        {"qr:0.08", QSize(1280, 720), 0.45f, 40.0f, -30.0f, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.card << " " << c.size.width() << "x" << c.size.height() << " at "
                                          << c.elevation << "° " << c.azimuth << "°");
        const TableCard card = TableCard::parse(c.card).value();
        const SyntheticCameraFrames frames(card, SyntheticCameraFrames::lookingAt(c.distance, c.elevation, c.azimuth, c.target),
                                           SyntheticCameraFrames::testLens(c.size));
        CardLocator locator(card, frames.lens());
        const auto sighting = locator.locate(frames.frame(1));
        ASSERT_TRUE(sighting);
        const QPointF truth = cardCentrePixel(frames.cameraTransform(), frames.lens().intrinsics);
        const QPointF found = cardCentrePixel(sighting->cameraTransform, frames.lens().intrinsics);
        EXPECT_LT(std::hypot(found.x() - truth.x(), found.y() - truth.y()), 1.5);
        EXPECT_LT(rotationErrorDegrees(sighting->cameraTransform, frames.cameraTransform()), 1.0);
    }
}

TEST(CardLocatorTest, APictureWithoutTheCardFindsNothing) {
    const TableCard card = TableCard::parse(TableCard::defaultText).value();
    const SyntheticCameraFrames empty(card, SyntheticCameraFrames::lookingAt(0.6f, 50.0f, 0.0f),
                                      SyntheticCameraFrames::testLens(QSize(640, 480)), {.showCard = false});
    const auto camera = CardLocator::locateInPicture(empty.frame(1), card, empty.lens());
    ASSERT_FALSE(camera);
    EXPECT_EQ(camera.error().localizedDescription(), "no table card found");
    // Another card's code is not this card.
    const SyntheticCameraFrames otherMarker(TableCard::parse("aruco:DICT_4X4_50:8:0.1").value(),
                                            SyntheticCameraFrames::lookingAt(0.5f, 50.0f, 0.0f),
                                            SyntheticCameraFrames::testLens(QSize(640, 480)));
    EXPECT_FALSE(CardLocator::locateInPicture(otherMarker.frame(1), TableCard::parse("aruco:DICT_4X4_50:7:0.1").value(),
                                              otherMarker.lens()));
    // The printed default board read as a board of another shape, in the same dictionary.
    const SyntheticCameraFrames board(card, SyntheticCameraFrames::lookingAt(0.5f, 55.0f, 20.0f),
                                      SyntheticCameraFrames::testLens(QSize(1280, 720)));
    for (const char* wrong : {"charuco:7x5:0.03:0.022:DICT_6X6_250", "charuco:4x6:0.03:0.022:DICT_6X6_250",
                              "charuco:5x5:0.03:0.022:DICT_6X6_250"}) {
        SCOPED_TRACE(wrong);
        EXPECT_FALSE(CardLocator::locateInPicture(board.frame(1), TableCard::parse(wrong).value(), board.lens()));
    }
}

} // namespace
} // namespace orvanta::arsession::camera

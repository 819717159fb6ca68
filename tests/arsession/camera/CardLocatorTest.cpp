// The card's pose in synthetic camera pictures with known truth: every card kind, steep and
// face-on views, an off-centre distorted lens, noise, blur and uneven light; and the card texts.
#include "arsession/camera/CardLocator.h"
#include "arsession/camera/TableCard.h"
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
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(640, 480), 0.42f, 35.0f, 35.0f, {0.05f, 0, 0.03f}},
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(1280, 720), 0.7f, 25.0f, -140.0f, {-0.04f, 0, 0.0f}},
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", QSize(1280, 720), 0.5f, 88.0f, 10.0f, {}},
        {"charuco:8x5:0.03:0.022:DICT_4X4_50", QSize(640, 480), 0.5f, 45.0f, 80.0f, {}},
        {"aruco:DICT_4X4_50:7:0.1", QSize(640, 480), 0.45f, 50.0f, 20.0f, {}},
        {"aruco:DICT_APRILTAG_36h11:3:0.08", QSize(1280, 720), 0.5f, 35.0f, -60.0f, {0.03f, 0, 0.02f}},
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

// Card texts: every kind reads and writes back; bad texts name the field at fault.
TEST(TableCardTest, EveryKindReadsAndWritesBack) {
    struct Case {
        const char* text;
        TableCard::Kind kind;
        QSizeF size;
    };
    const Case cases[] = {
        {"charuco:5x7:0.04:0.02:DICT_6X6_250", TableCard::Kind::charuco, QSizeF(0.2, 0.28)},
        {"charuco:8x5:0.03:0.022:DICT_4X4_50", TableCard::Kind::charuco, QSizeF(0.24, 0.15)},
        {"aruco:DICT_APRILTAG_36h11:17:0.08", TableCard::Kind::aruco, QSizeF(0.08, 0.08)},
        {"qr:0.06", TableCard::Kind::qr, QSizeF(0.06, 0.06)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const auto card = TableCard::parse(c.text);
        ASSERT_TRUE(card) << card.error().localizedDescription();
        EXPECT_EQ(card->kind, c.kind);
        EXPECT_NEAR(card->size().width(), c.size.width(), 1e-6);
        EXPECT_NEAR(card->size().height(), c.size.height(), 1e-6);
        EXPECT_EQ(card->text(), c.text);
    }
}

TEST(TableCardTest, BadTextsNameTheField) {
    const std::string expected = "expected charuco:COLSxROWS:SQUARE_M:MARKER_M:DICT, aruco:DICT:ID:SIDE_M or qr:SIDE_M";
    const std::string squares = "COLSxROWS must be two whole numbers of squares, at least 2x2, not ";
    const std::string metres = " must be a positive number of metres, not ";
    // Each message follows "Table card \"TEXT\": ".
    const std::pair<std::string, std::string> cases[] = {
        {"", expected},
        {"charuco:5x7:0.04:0.02", expected},
        {"charuco:5by7:0.04:0.02:DICT_6X6_250", squares + "\"5by7\""},
        {"charuco:1x7:0.04:0.02:DICT_6X6_250", squares + "\"1x7\""},
        {"charuco:5x7:-0.04:0.02:DICT_6X6_250", "SQUARE_M" + metres + "\"-0.04\""},
        {"charuco:5x7:0.04:0:DICT_6X6_250", "MARKER_M" + metres + "\"0\""},
        {"charuco:5x7:0.04:0.05:DICT_6X6_250", "MARKER_M must be smaller than SQUARE_M"},
        {"charuco:5x7:0.04:0.02:DICT_6X6_999", "DICT \"DICT_6X6_999\" is not one of OpenCV's predefined dictionaries"},
        {"charuco:20x20:0.01:0.005:DICT_4X4_50", "DICT DICT_4X4_50 has too few markers for a 20x20 board"},
        {"aruco:DICT_4X4_50:50:0.05", "ID \"50\" is not a marker of DICT_4X4_50"},
        {"aruco:DICT_4X4_50:3:big", "SIDE_M" + metres + "\"big\""},
        {"qr:0.05m", "SIDE_M" + metres + "\"0.05m\""},
    };
    for (const auto& [text, message] : cases) {
        const auto card = TableCard::parse(text);
        ASSERT_FALSE(card) << text;
        EXPECT_EQ(card.error().domain(), TableCard::errorDomain);
        EXPECT_EQ(card.error().localizedDescription(), "Table card \"" + text + "\": " + message);
    }
}

} // namespace
} // namespace orvanta::arsession::camera

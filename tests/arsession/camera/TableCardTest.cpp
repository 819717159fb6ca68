// Card texts: every kind reads and writes back; bad texts name the field at fault.
#include "arsession/camera/TableCard.h"

#include <gtest/gtest.h>

namespace orvanta::arsession::camera {
namespace {

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
    EXPECT_EQ(TableCard::parse(TableCard::defaultText)->dictionary, 10); // OpenCV's DICT_6X6_250
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

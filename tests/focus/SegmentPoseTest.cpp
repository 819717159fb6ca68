#include "focus/SegmentPose.h"

#include <gtest/gtest.h>

using namespace orvanta::focus;

TEST(SegmentPose, OpenBarsAreShortAtTheirCornersAndCloseBackExactly) {
    for (const auto& [corner, alignment] : kClassicSegmentLayout) {
        const SegmentPose start{cornerPosition(corner, alignment), closedScale(alignment)};
        const SegmentPose open = opened(start, corner, alignment);
        EXPECT_NE(open, start);
        EXPECT_EQ(closed(open, corner, alignment), start);
    }
    // An open bar is short and still ends at its corner.
    const SegmentPose start{cornerPosition(Corner::topLeft, Alignment::horizontal), closedScale(Alignment::horizontal)};
    EXPECT_EQ(start.scale, QVector3D(0.5f, 1.0f, 0.018f));
    const SegmentPose open = opened(start, Corner::topLeft, Alignment::horizontal);
    EXPECT_FLOAT_EQ(open.scale.x(), 0.2f);
    EXPECT_FLOAT_EQ(open.position.x(), -0.4f); // spans −0.5 … −0.3
    EXPECT_FLOAT_EQ(open.position.z(), -0.5f);
    EXPECT_EQ(openDirection(Corner::bottomRight, Alignment::vertical), Direction::down);
}

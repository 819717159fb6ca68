#include "focus/SegmentPose.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

using namespace orvanta::focus;

TEST(SegmentPose, OpenDirectionsPointOutwardFromEachEdge) {
    EXPECT_EQ(openDirection(Corner::topLeft, Alignment::horizontal), Direction::left);
    EXPECT_EQ(openDirection(Corner::topLeft, Alignment::vertical), Direction::up);
    EXPECT_EQ(openDirection(Corner::topRight, Alignment::horizontal), Direction::right);
    EXPECT_EQ(openDirection(Corner::topRight, Alignment::vertical), Direction::up);
    EXPECT_EQ(openDirection(Corner::bottomRight, Alignment::horizontal), Direction::right);
    EXPECT_EQ(openDirection(Corner::bottomRight, Alignment::vertical), Direction::down);
    EXPECT_EQ(openDirection(Corner::bottomLeft, Alignment::horizontal), Direction::left);
    EXPECT_EQ(openDirection(Corner::bottomLeft, Alignment::vertical), Direction::down);
    EXPECT_EQ(reversed(Direction::up), Direction::down);
    EXPECT_EQ(reversed(Direction::left), Direction::right);
    EXPECT_EQ(reversed(reversed(Direction::right)), Direction::right);
}

TEST(SegmentPose, OpenThenCloseReturnsEveryBarExactly) {
    for (const auto& [corner, alignment] : kClassicSegmentLayout) {
        const SegmentPose start{cornerPosition(corner, alignment), closedScale(alignment)};
        const SegmentPose open = opened(start, corner, alignment);
        EXPECT_NE(open, start);
        EXPECT_EQ(closed(open, corner, alignment), start);
        // Closing a closed bar leaves it where it is.
        EXPECT_EQ(closed(start, corner, alignment), start);
    }
}

TEST(SegmentPose, OpenBarIsShortAndStillEndsAtItsCorner) {
    const SegmentPose start{cornerPosition(Corner::topLeft, Alignment::horizontal), closedScale(Alignment::horizontal)};
    EXPECT_EQ(start.scale, QVector3D(0.5f, 1.0f, 0.018f));
    const SegmentPose open = opened(start, Corner::topLeft, Alignment::horizontal);
    EXPECT_FLOAT_EQ(open.scale.x(), 0.2f);
    EXPECT_FLOAT_EQ(open.position.x(), -0.4f); // spans −0.5 … −0.3
    EXPECT_FLOAT_EQ(open.position.z(), -0.5f);
    // Opening twice moves a further 0.15 outward: the owner tracks the open state.
    EXPECT_FLOAT_EQ(opened(open, Corner::topLeft, Alignment::horizontal).position.x(), -0.55f);

    const SegmentPose vertical = opened({cornerPosition(Corner::bottomRight, Alignment::vertical),
                                         closedScale(Alignment::vertical)},
                                        Corner::bottomRight, Alignment::vertical);
    EXPECT_EQ(vertical.scale, QVector3D(0.018f, 1.0f, 0.2f));
    EXPECT_FLOAT_EQ(vertical.position.z(), 0.4f);
}

TEST(SegmentPose, ClosedBarsCoverTheWholeOutlineOnce) {
    std::set<std::tuple<float, float, float>> positions;
    for (const auto& [corner, alignment] : kClassicSegmentLayout) {
        const QVector3D p = cornerPosition(corner, alignment);
        positions.insert({p.x(), p.y(), p.z()});
        // Each closed bar runs from its corner to the middle of its edge.
        const float along = alignment == Alignment::horizontal ? p.x() : p.z();
        const float across = alignment == Alignment::horizontal ? p.z() : p.x();
        EXPECT_FLOAT_EQ(std::abs(along), 0.25f);
        EXPECT_FLOAT_EQ(std::abs(across), 0.5f);
    }
    EXPECT_EQ(positions.size(), 8u);
}

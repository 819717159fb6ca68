#include "focus/PositionHistory.h"

#include <gtest/gtest.h>

using orvanta::focus::PositionHistory;

TEST(PositionHistory, MeanOfWhatIsHeldBeforeTenAndOfTheLastTenAfter) {
    PositionHistory two;
    two.record({1, 0, 0});
    two.record({3, 2, 0});
    EXPECT_EQ(two.mean(), QVector3D(2, 1, 0));

    PositionHistory eleven;
    for (int i = 0; i < 11; ++i) eleven.record({float(i), float(2 * i), -1.0f});
    EXPECT_EQ(eleven.count(), 10u);
    // Hits 1..10: the first hit (0) is no longer part of the mean.
    EXPECT_EQ(eleven.mean(), QVector3D(5.5f, 11.0f, -1.0f));

    // Wrapping round the ring more than once keeps exactly the last ten.
    for (int i = 0; i < 25; ++i) eleven.record({float(100 + i), 0, 0});
    EXPECT_EQ(eleven.mean(), QVector3D(119.5f, 0, 0));
}

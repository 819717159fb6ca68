// The focus square's maths: scale and yaw, the alignment animation, the alignment vote, the
// position history, rigid transforms and the classic square's bars.
#include "focus/FocusMath.h"
#include "focus/AlignmentHistory.h"
#include "focus/Matrix4x4Extensions.h"
#include "focus/PositionHistory.h"
#include "focus/SegmentPose.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

using namespace orvanta::focus;

namespace {
constexpr float kPi = std::numbers::pi_v<float>;
}

TEST(FocusMath, ScaleFollowsDistanceAndYawIsNormalizedNearTheReference) {
    EXPECT_FLOAT_EQ(scaleForDistance(0.35f), 0.5f);
    EXPECT_FLOAT_EQ(scaleForDistance(0.7f), 1.0f);
    EXPECT_FLOAT_EQ(scaleForDistance(std::nextafter(0.7f, 0.0f)), 1.0f);
    EXPECT_FLOAT_EQ(scaleForDistance(2.0f), 1.325f);

    EXPECT_FLOAT_EQ(normalize(0.5f, 0.0f), 0.5f); // within π/4: untouched
    EXPECT_FLOAT_EQ(normalize(1.0f, 0.0f), 1.0f - kPi / 2);
    EXPECT_NEAR(normalize(3.0f * kPi + 0.1f, 0.0f), 0.1f, 1e-5f); // several quarter turns
    EXPECT_LE(std::abs(normalize(-10.0f, 2.0f) - 2.0f), kPi / 4);
}

TEST(FocusMath, AlignmentTurnsTheShortWayUpsideDownIsFlippedAndYawIsAboutWorldUp) {
    const QQuaternion start;
    const QQuaternion target = QQuaternion::fromAxisAndAngle(0, 1, 0, 90.0f);
    float axisX, axisY, axisZ, degrees;
    alignmentAnimationStep(start, target).getAxisAndAngle(&axisX, &axisY, &axisZ, &degrees);
    EXPECT_NEAR(degrees, 13.5f, 1e-3f);
    EXPECT_NEAR(axisY, 1.0f, 1e-5f);
    // −q is the same rotation: the step still turns the short way.
    const QQuaternion shortStep = alignmentAnimationStep(start, -QQuaternion::fromAxisAndAngle(0, 1, 0, 10.0f));
    EXPECT_NEAR(std::abs(QQuaternion::dotProduct(shortStep, QQuaternion::fromAxisAndAngle(0, 1, 0, 1.5f))), 1.0f, 1e-6f);

    EXPECT_FALSE(shouldContinueAlignAnim(target, -target));
    QQuaternion current = start;
    int frames = 0;
    while (shouldContinueAlignAnim(current, target)) {
        current = alignmentAnimationStep(current, target);
        ASSERT_LT(++frames, 100);
    }
    EXPECT_GT(frames, 5);

    const QQuaternion ceiling = QQuaternion::fromAxisAndAngle(1, 0, 0, 180.0f) *
                                QQuaternion::fromAxisAndAngle(0, 1, 0, 30.0f);
    ASSERT_TRUE(isUpsideDown(ceiling));
    EXPECT_NEAR(halfTurnFlipped(ceiling).rotatedVector(QVector3D(0, 1, 0)).y(), 1.0f, 1e-5f);
    // up·y = cos 155° ≈ −0.906 is past −0.9; cos 150° is not.
    EXPECT_TRUE(isUpsideDown(QQuaternion::fromAxisAndAngle(1, 0, 0, 155.0f)));
    EXPECT_FALSE(isUpsideDown(QQuaternion::fromAxisAndAngle(1, 0, 0, 150.0f)));

    EXPECT_NEAR(yaw(QQuaternion::fromAxisAndAngle(0, 1, 0, -45.0f) * QQuaternion::fromAxisAndAngle(1, 0, 0, -20.0f)),
                -kPi / 4, 1e-5f);
    EXPECT_FLOAT_EQ(yaw(QQuaternion::fromAxisAndAngle(1, 0, 0, 90.0f)), 0.0f); // looking up
}

// A vote on the last of 20 samples: vertical needs more than half, horizontal more than
// three quarters; a shorter history votes over what it holds, quotients truncated.
TEST(AlignmentHistory, VoteOnTheLastSampleAgainstTheHeldHistory) {
    using Alignment = AlignmentHistory::PlaneAlignment;
    constexpr Alignment H = Alignment::horizontal, V = Alignment::vertical;
    const struct {
        const char* name;
        std::vector<std::pair<Alignment, int>> runs;
        bool accepted;
    } cases[] = {
        {"first horizontal sample", {{H, 1}}, true},
        {"first vertical sample", {{V, 1}}, true},
        {"1 vertical of 20", {{H, 20}, {V, 1}}, false},
        {"10 vertical of 20", {{H, 20}, {V, 10}}, false},
        {"11 vertical of 20", {{H, 20}, {V, 11}}, true},
        {"15 horizontal of 20", {{V, 20}, {H, 15}}, false},
        {"16 horizontal of 20", {{V, 20}, {H, 16}}, true},
        {"3 horizontal of 4", {{H, 1}, {V, 1}, {H, 2}}, false},
        {"4 horizontal of 5", {{H, 1}, {V, 1}, {H, 3}}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AlignmentHistory history;
        bool accepted = false;
        for (const auto& [alignment, n] : c.runs)
            for (int i = 0; i < n; ++i) accepted = history.record(alignment);
        EXPECT_EQ(accepted, c.accepted);
        EXPECT_LE(history.count(), 20u);
    }
}

TEST(Matrix4x4Extensions, TranslationAndOrientationOfARigidTransform) {
    QMatrix4x4 m;
    const QQuaternion rotation = QQuaternion::fromAxisAndAngle(QVector3D(1, 2, 3).normalized(), 40.0f);
    m.translate(1, -2, 3);
    m.rotate(rotation);
    m.scale(2.0f, 0.5f, 3.0f);
    EXPECT_EQ(translation(m), QVector3D(1, -2, 3));
    EXPECT_NEAR(std::abs(QQuaternion::dotProduct(orientation(m), rotation)), 1.0f, 1e-5f);

    setTranslation(m, QVector3D(4, 5, 6));
    EXPECT_EQ(translation(m), QVector3D(4, 5, 6));
    EXPECT_NEAR(std::abs(QQuaternion::dotProduct(orientation(m), rotation)), 1.0f, 1e-5f);

    QMatrix4x4 degenerate;
    degenerate.scale(0.0f);
    EXPECT_EQ(orientation(degenerate), QQuaternion());
}

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

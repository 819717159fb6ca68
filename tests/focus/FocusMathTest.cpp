#include "focus/FocusMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace orvanta::focus;

namespace {
constexpr float kPi = std::numbers::pi_v<float>;
}

TEST(FocusMath, ScaleFollowsDistanceContinuouslyAtSeventyCentimetres) {
    EXPECT_FLOAT_EQ(scaleForDistance(0.35f), 0.5f);
    EXPECT_FLOAT_EQ(scaleForDistance(0.7f), 1.0f);
    EXPECT_FLOAT_EQ(scaleForDistance(std::nextafter(0.7f, 0.0f)), 1.0f);
    EXPECT_FLOAT_EQ(scaleForDistance(2.0f), 1.325f);
    EXPECT_FLOAT_EQ(scaleForDistance(0.0f), 0.0f);
}

TEST(FocusMath, NormalizeBringsYawWithinAnEighthTurnOfTheReference) {
    EXPECT_FLOAT_EQ(normalize(0.5f, 0.0f), 0.5f); // within π/4: untouched
    EXPECT_FLOAT_EQ(normalize(1.0f, 0.0f), 1.0f - kPi / 2);
    EXPECT_FLOAT_EQ(normalize(-1.0f, 0.0f), -1.0f + kPi / 2);
    // Far away: shifted by as many quarter turns as needed.
    const float far = normalize(3.0f * kPi + 0.1f, 0.0f);
    EXPECT_NEAR(far, 0.1f, 1e-5f);
    EXPECT_LE(std::abs(normalize(-10.0f, 2.0f) - 2.0f), kPi / 4);
}

TEST(FocusMath, AlignmentAnimationCoversFifteenPercentPerFrameAndStopsAtThreshold) {
    const QQuaternion start;
    const QQuaternion target = QQuaternion::fromAxisAndAngle(0, 1, 0, 90.0f);
    const QQuaternion step = alignmentAnimationStep(start, target);
    float axisX, axisY, axisZ, degrees;
    step.getAxisAndAngle(&axisX, &axisY, &axisZ, &degrees);
    EXPECT_NEAR(degrees, 13.5f, 1e-3f);
    EXPECT_NEAR(axisY, 1.0f, 1e-5f);

    // Equal rotations (and the same rotation written as −q) need no turn.
    EXPECT_FALSE(shouldContinueAlignAnim(target, target));
    EXPECT_FALSE(shouldContinueAlignAnim(target, -target));
    EXPECT_TRUE(shouldContinueAlignAnim(start, target));

    // The turn converges and ends by itself.
    QQuaternion current = start;
    int frames = 0;
    while (shouldContinueAlignAnim(current, target)) {
        current = alignmentAnimationStep(current, target);
        ASSERT_LT(++frames, 100);
    }
    EXPECT_GT(frames, 5);
}

TEST(FocusMath, SlerpTakesTheShortestPath) {
    const QQuaternion target = QQuaternion::fromAxisAndAngle(0, 1, 0, 10.0f);
    const QQuaternion step = alignmentAnimationStep(QQuaternion(), -target);
    EXPECT_NEAR(std::abs(QQuaternion::dotProduct(step, QQuaternion::fromAxisAndAngle(0, 1, 0, 1.5f))), 1.0f, 1e-6f);
}

TEST(FocusMath, HalfTurnFlipTurnsAnUpsideDownFrameUpright) {
    const QQuaternion ceiling = QQuaternion::fromAxisAndAngle(1, 0, 0, 180.0f) *
                                QQuaternion::fromAxisAndAngle(0, 1, 0, 30.0f);
    EXPECT_TRUE(isUpsideDown(ceiling));
    const QQuaternion flipped = halfTurnFlipped(ceiling);
    EXPECT_FALSE(isUpsideDown(flipped));
    EXPECT_NEAR(flipped.rotatedVector(QVector3D(0, 1, 0)).y(), 1.0f, 1e-5f);
    // A tilted floor (up·y = cos 30° > −0.9) and a wall are not upside down.
    EXPECT_FALSE(isUpsideDown(QQuaternion::fromAxisAndAngle(1, 0, 0, 30.0f)));
    EXPECT_FALSE(isUpsideDown(QQuaternion::fromAxisAndAngle(1, 0, 0, 90.0f)));
    // Just past the threshold: up·y = cos 155° ≈ −0.906.
    EXPECT_TRUE(isUpsideDown(QQuaternion::fromAxisAndAngle(1, 0, 0, 155.0f)));
    EXPECT_FALSE(isUpsideDown(QQuaternion::fromAxisAndAngle(1, 0, 0, 150.0f)));
}

TEST(FocusMath, YawIsTheTurnAboutWorldUp) {
    EXPECT_FLOAT_EQ(yaw(QQuaternion()), 0.0f);
    EXPECT_NEAR(yaw(QQuaternion::fromAxisAndAngle(0, 1, 0, 90.0f)), kPi / 2, 1e-5f);
    EXPECT_NEAR(yaw(QQuaternion::fromAxisAndAngle(0, 1, 0, -45.0f) *
                    QQuaternion::fromAxisAndAngle(1, 0, 0, -20.0f)),
                -kPi / 4, 1e-5f);
    EXPECT_FLOAT_EQ(yaw(QQuaternion::fromAxisAndAngle(1, 0, 0, 90.0f)), 0.0f); // looking up
}

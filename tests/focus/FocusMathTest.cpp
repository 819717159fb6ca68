#include "focus/FocusMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

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

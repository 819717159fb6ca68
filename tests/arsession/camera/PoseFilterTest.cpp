// Pose smoothing: a moving camera is followed closely, a shaking still one is calmed, and a
// rotation across the quaternion sign flip is not taken the long way round.
#include "arsession/camera/PoseFilter.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

namespace orvanta::arsession::camera {
namespace {

QMatrix4x4 pose(QVector3D position, float yawDegrees) {
    QMatrix4x4 m;
    m.translate(position);
    m.rotate(yawDegrees, 0, 1, 0);
    return m;
}

float yawOf(const QMatrix4x4& m) { return qRadiansToDegrees(std::atan2(-m(2, 0), m(0, 0))); }

TEST(PoseFilterTest, FollowsMotionClosely) {
    struct Case {
        const char* motion;
        QVector3D velocity; // m/s
        float yawRate;      // °/s
        float startYaw;
    };
    const Case cases[] = {
        {"sliding", {0.2f, 0.0f, -0.1f}, 0.0f, 0.0f},
        {"turning", {}, 40.0f, 0.0f},
        {"turning through 180°", {}, 60.0f, 150.0f}, // the quaternion's sign flips on the way
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.motion);
        PoseFilter filter;
        QMatrix4x4 out;
        for (int i = 0; i <= 30; ++i) {
            const double t = i / 30.0;
            out = filter.filter(pose(c.velocity * float(t), c.startYaw + c.yawRate * float(t)), t);
        }
        EXPECT_LT((out.column(3).toVector3D() - c.velocity).length(), 0.006f);
        const float yawError = std::remainder(yawOf(out) - (c.startYaw + c.yawRate), 360.0f);
        EXPECT_LT(std::abs(yawError), 1.5f);
    }
}

TEST(PoseFilterTest, CalmsAStillCameraThatShakes) {
    PoseFilter filter;
    QRandomGenerator random(3);
    double rawSquares = 0.0, filteredSquares = 0.0;
    for (int i = 0; i < 200; ++i) {
        const QVector3D shake(float(random.bounded(2.0) - 1.0) * 0.001f, float(random.bounded(2.0) - 1.0) * 0.001f, 0.0f);
        const QMatrix4x4 out = filter.filter(pose(QVector3D(0, 0.4f, 0.5f) + shake, 10.0f), i / 30.0);
        if (i < 30) continue; // settling
        rawSquares += shake.lengthSquared();
        filteredSquares += (out.column(3).toVector3D() - QVector3D(0, 0.4f, 0.5f)).lengthSquared();
    }
    EXPECT_LT(filteredSquares, rawSquares * 0.16); // under 40 % of the jitter (RMS)
}

} // namespace
} // namespace orvanta::arsession::camera

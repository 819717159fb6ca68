#include "focus/Matrix4x4Extensions.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace orvanta::focus;

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

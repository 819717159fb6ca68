// The camera's projection maths: the simulated world's centred field of view, and a real
// lens whose picture is aspect-filled into views of other shapes.
#include "arsession/ARCamera.h"

#include <QtMath>
#include <gtest/gtest.h>

namespace orvanta::arsession {
namespace {

// A camera at (0.1, 1.2, 0.4) turned 30° about y and tilted 40° down.
ARCamera posedCamera() {
    ARCamera camera;
    camera.transform.translate(0.1f, 1.2f, 0.4f);
    camera.transform.rotate(30.0f, 0, 1, 0);
    camera.transform.rotate(-40.0f, 1, 0, 0);
    return camera;
}

// A 1280×720 lens with its principal point well off centre.
ARCamera realLens() {
    ARCamera camera = posedCamera();
    camera.intrinsics = {1000.0f, 1010.0f, 660.0f, 340.0f};
    camera.imageResolution = QSize(1280, 720);
    return camera;
}

QPointF ndcToView(const QVector4D& clip, QSizeF view) {
    return QPointF((clip.x() / clip.w() + 1.0) * 0.5 * view.width(), (1.0 - clip.y() / clip.w()) * 0.5 * view.height());
}

void expectNear(QPointF a, QPointF b, double tolerance) {
    EXPECT_NEAR(a.x(), b.x(), tolerance);
    EXPECT_NEAR(a.y(), b.y(), tolerance);
}

TEST(ARCameraTest, WithoutAnImageTheViewShowsTheFieldOfViewCentred) {
    const ARCamera camera = posedCamera();
    const QSizeF view(800, 600);
    QMatrix4x4 perspective;
    perspective.perspective(60.0f, 800.0f / 600.0f, 0.001f, 1000.0f);
    const QMatrix4x4 projection = camera.projectionMatrix(view);
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(projection.constData()[i], perspective.constData()[i], 1e-4f) << i;

    const Ray centre = camera.ray(QPointF(400, 300), view);
    EXPECT_NEAR((centre.direction - camera.forward()).length(), 0.0f, 1e-6f);
    // The top edge of the view is half the field of view above the centre.
    const Ray top = camera.ray(QPointF(400, 0), view);
    EXPECT_NEAR(qRadiansToDegrees(std::acos(QVector3D::dotProduct(top.direction, camera.forward()))), 30.0, 1e-3);
    EXPECT_EQ(camera.visibleImageRect(view), QRectF(0, 0, 800, 600));
}

TEST(ARCameraTest, ARealLensProjectsThroughTheAspectFillOfItsPicture) {
    const ARCamera camera = realLens();
    // A point 2 m ahead of the camera, 0.3 m right and 0.1 m up.
    const QVector3D world = camera.transform.map(QVector3D(0.3f, 0.1f, -2.0f));
    // Where the picture shows it, in OpenCV pixel coordinates.
    const QPointF pixel(660.0 + 1000.0 * 0.3 / 2.0, 340.0 - 1010.0 * 0.1 / 2.0);

    // Each view and the part of the picture it shows, in corner-based image coordinates.
    const std::pair<QSizeF, QRectF> cases[] = {
        {QSizeF(1280, 720), QRectF(0, 0, 1280, 720)},    // same shape, same size
        {QSizeF(640, 360), QRectF(0, 0, 1280, 720)},     // same shape, half size
        {QSizeF(720, 720), QRectF(280, 0, 720, 720)},    // square: the sides are cropped
        {QSizeF(1280, 400), QRectF(0, 160, 1280, 400)},  // wider: top and bottom are cropped
        {QSizeF(600, 1000), QRectF(424, 0, 432, 720)},   // portrait
    };
    for (const auto& [view, shown] : cases) {
        SCOPED_TRACE(::testing::Message() << view.width() << "x" << view.height());
        const QRectF visible = camera.visibleImageRect(view);
        expectNear(visible.topLeft(), shown.topLeft(), 0.5);
        expectNear(visible.bottomRight(), shown.bottomRight(), 0.5);

        // The view point is the picture's pixel seen through the visible rectangle (a pixel
        // centre lies half a pixel inside the picture's corner).
        const double scale = view.width() / visible.width();
        const QPointF expected((pixel.x() + 0.5 - visible.x()) * scale, (pixel.y() + 0.5 - visible.y()) * scale);
        const auto projected = camera.projectPoint(world, view);
        ASSERT_TRUE(projected);
        expectNear(*projected, expected, 1e-3);
        expectNear(ndcToView(camera.projectionMatrix(view).map(QVector4D(camera.transform.inverted().map(world), 1)), view),
                   expected, 1e-3);
        const Ray ray = camera.ray(expected, view);
        EXPECT_NEAR((ray.direction - (world - camera.position()).normalized()).length(), 0.0f, 1e-5f);
    }
    // Points behind the camera do not project, with or without a lens.
    for (const ARCamera& behind : {posedCamera(), realLens()})
        EXPECT_FALSE(behind.projectPoint(behind.transform.map(QVector3D(0, 0, 1)), QSizeF(640, 480)));
}

} // namespace
} // namespace orvanta::arsession

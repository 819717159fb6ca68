// A camera session on synthetic pictures: tracking states as the card comes and goes, the
// table's plane and ray casts, smoothing of a still camera, dropped pictures, and a failing
// camera as an interruption; and the pose filter on its own.
#include "../SessionTestSupport.h"
#include "arsession/camera/CameraBackend.h"
#include "arsession/camera/LiveCameraSource.h"
#include "arsession/camera/PoseFilter.h"
#include "support/SyntheticCameraFrames.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

namespace orvanta::arsession::camera {
namespace {

using orvanta::testing::SyntheticCameraFrames;

// Pictures pushed by the test, straight to the tracker.
class PushedSource final : public FrameSource {
public:
    void start(FrameSink& sink) override { sink_ = &sink; }
    void stop() override { sink_ = nullptr; }
    void push(const QImage& picture) { sink_->takeFrame(picture, seconds_ += 1.0 / 30); }
    void fail() { sink_->sourceFailed(core::Error("FrameSourceError", 3, "Camera failed: unplugged")); }

private:
    FrameSink* sink_ = nullptr;
    double seconds_ = 0.0;
};

const TableCard card = TableCard::parse(TableCard::defaultText).value();

struct CameraSession : testing::ClockedSession {
    explicit CameraSession(std::unique_ptr<FrameSource> source)
        : CameraSession(std::make_unique<CameraBackend>(std::move(source), card, lens)) {}
    explicit CameraSession(std::unique_ptr<CameraBackend>&& made) : CameraSession(made.get(), std::move(made)) {}
    CameraSession(CameraBackend* made, std::unique_ptr<CameraBackend>&& owned) : ClockedSession(std::move(owned)), backend(made) {
        session->run(horizontalPlanes());
    }
    // One picture through the tracker, then one clock step that picks up its result.
    void show(PushedSource& source, const QImage& picture) {
        source.push(picture);
        backend->tracker().waitUntilIdle();
        clock->advance(ARSession::defaultFrameInterval);
    }

    static inline const CameraCalibration lens = SyntheticCameraFrames::testLens(QSize(640, 480));
    CameraBackend* backend;
};

const QMatrix4x4 truePose = SyntheticCameraFrames::lookingAt(0.55f, 55.0f, 20.0f, QVector3D(0.02f, 0, -0.03f));

const SyntheticCameraFrames& pictures(bool cardShown = true) {
    static const SyntheticCameraFrames in(card, truePose, CameraSession::lens), out(card, truePose, CameraSession::lens, {.showCard = false});
    return cardShown ? in : out;
}

// Pixel of the card's centre as the frame's camera sees it.
QPointF cardCentre(const ARCamera& camera) {
    return *camera.projectPoint(QVector3D(), QSizeF(camera.imageResolution)) - QPointF(0.5, 0.5);
}

TEST(CameraBackendTest, TrackingFollowsTheCardAndTheTableStays) {
    auto pushed = std::make_unique<PushedSource>();
    PushedSource& source = *pushed;
    CameraSession s(std::move(pushed));
    EXPECT_EQ(s.session->currentFrame(), nullptr); // not available before the first picture

    s.show(source, pictures(false).frame(1));
    EXPECT_EQ(s.session->currentFrame()->camera.trackingState,
              TrackingState::limited(TrackingState::Reason::initializing));
    EXPECT_TRUE(s.session->currentFrame()->anchors.empty());

    for (unsigned i = 2; i < 5; ++i) s.show(source, pictures().frame(i));
    const ARFrame found = *s.session->currentFrame();
    EXPECT_TRUE(found.camera.trackingState.isNormal());
    EXPECT_EQ(found.camera.intrinsics, CameraSession::lens.intrinsics);
    ASSERT_TRUE(found.capturedImage);
    EXPECT_EQ(found.capturedImage->size(), QSize(640, 480));
    const QPointF truth = cardCentre(ARCamera{.transform = truePose, .intrinsics = CameraSession::lens.intrinsics,
                                              .imageResolution = QSize(640, 480)});
    const QPointF seen = cardCentre(found.camera);
    EXPECT_LT(std::hypot(seen.x() - truth.x(), seen.y() - truth.y()), 1.5);
    ASSERT_EQ(found.anchors.size(), 1u);
    EXPECT_EQ(found.anchors[0].extent, QVector3D(0.6f, 0.0f, 0.6f)); // a small card's table is table-sized
    EXPECT_EQ(found.anchors[0].classification, ARPlaneAnchor::Classification::table);

    // The view's centre ray lands on the table plane, on the anchor and on the estimate.
    const Ray centre = found.camera.ray(QPointF(320, 240), QSizeF(640, 480));
    for (auto target : {ARRaycastQuery::Target::existingPlaneGeometry, ARRaycastQuery::Target::estimatedPlane}) {
        const auto hits = s.session->raycast(ARRaycastQuery(centre.origin, centre.direction, target,
                                                            ARRaycastQuery::TargetAlignment::horizontal));
        ASSERT_EQ(hits.size(), 1u);
        EXPECT_NEAR(hits[0].worldTransform.column(3).y(), 0.0f, 1e-5f);
    }

    // Lost for a few pictures: limited, with the last pose and the table kept; found again: normal.
    for (unsigned i = 5; i < 8; ++i) s.show(source, pictures(false).frame(i));
    const ARFrame lost = *s.session->currentFrame();
    EXPECT_EQ(lost.camera.trackingState, TrackingState::limited(TrackingState::Reason::insufficientFeatures));
    EXPECT_EQ(lost.camera.transform, found.camera.transform);
    EXPECT_EQ(lost.anchors, found.anchors);
    s.show(source, pictures().frame(8));
    EXPECT_TRUE(s.session->currentFrame()->camera.trackingState.isNormal());

    EXPECT_EQ(s.delegate->events, (std::vector<std::string>{"tracking limited(initializing)", "tracking normal", "add table",
                                                            "tracking limited(insufficientFeatures)", "tracking normal"}));
}

TEST(CameraBackendTest, AFailingCameraInterruptsTheSession) {
    // No camera on this machine (or a camera id that does not exist): an interruption, no frames.
    CameraSession missing(std::make_unique<LiveCameraSource>("no-such-camera"));
    missing.clock->advance(0.1);
    EXPECT_EQ(missing.delegate->events, std::vector<std::string>{"interrupted"});
    EXPECT_EQ(missing.session->currentFrame(), nullptr);

    // A camera that fails after the card was found; pictures again end the interruption.
    auto pushed = std::make_unique<PushedSource>();
    PushedSource& source = *pushed;
    CameraSession s(std::move(pushed));
    s.show(source, pictures().frame(1));
    source.fail();
    s.clock->advance(0.1);
    s.show(source, pictures(false).frame(2));
    EXPECT_EQ(s.session->currentFrame()->camera.trackingState, TrackingState::limited(TrackingState::Reason::relocalizing));
    s.show(source, pictures().frame(3));
    EXPECT_EQ(s.delegate->events,
              (std::vector<std::string>{"tracking normal", "add table", "interrupted", "interruption ended",
                                        "tracking limited(relocalizing)", "tracking normal"}));
}

TEST(CameraBackendTest, AStillNoisyCameraGivesAStillPoseAndTheNewestPictureWins) {
    FrameTracker tracker(card, CameraSession::lens);
    FrameTracker::Result result;
    std::vector<QPointF> centres;
    for (unsigned i = 0; i < 60; ++i) {
        tracker.takeFrame(pictures().frame(100 + i), i / 30.0);
        tracker.waitUntilIdle();
        ASSERT_TRUE(tracker.latest(result));
        ASSERT_TRUE(result.found);
        centres.push_back(cardCentre(ARCamera{.transform = result.cameraTransform, .intrinsics = result.lens.intrinsics,
                                              .imageResolution = result.lens.imageSize}));
    }
    QPointF mean;
    for (const QPointF& c : centres) mean += c / double(centres.size());
    double squares = 0.0;
    for (const QPointF& c : centres) squares += QPointF::dotProduct(c - mean, c - mean);
    EXPECT_LT(std::sqrt(squares / double(centres.size())), 0.5);

    // Pictures handed over faster than they are tracked: each is tracked or counted as dropped.
    for (unsigned i = 0; i < 10; ++i) tracker.takeFrame(pictures().frame(200 + i), 2.0 + i / 30.0);
    tracker.waitUntilIdle();
    ASSERT_TRUE(tracker.latest(result));
    EXPECT_EQ(result.sequence - 60 + tracker.droppedFrames(), 10u); // how many are dropped depends on the worker's pace
}

// Pose smoothing: a moving camera is followed closely, a shaking still one is calmed, and a
// rotation across the quaternion sign flip is not taken the long way round.
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

#include "render/ARViewItem.h"

#include "reality/Transform.h"
#include "render/CameraPictureFeed.h"
#include "render/CoachingOverlayItem.h"
#include "render/ItemSnapshotRenderer.h"
#include "render/SimulatedRoomFeed.h"
#include "render/Viewport.h"

#include <QtQuick3D/private/qquick3dcustomcamera_p.h>
#include <QtQuick3D/private/qquick3dsceneenvironment_p.h>
#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta::render {

namespace {
constexpr float kNearPlane = 0.01f; // metres
constexpr float kFarPlane = 60.0f;
const QColor kClearColor(38, 36, 34);
} // namespace

ARViewItem::ARViewItem(QQuickItem* parent)
    : QQuickItem(parent), picture_(new QQuickItem(this)), background_(new QQuickItem(picture_)),
      camera_(new QQuick3DCustomCamera()), world_(new QQuick3DNode()), coaching_(new CoachingOverlayItem(this)) {
    viewport_ = Viewport::make(picture_, kClearColor, camera_).view;
    setFlag(ItemHasContents, false);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
    setClip(true);

    world_->setParentItem(viewport_->scene());

    background_->setZ(-1);
    coaching_->setZ(1);
    coaching_->setVisible(false);

    resources_ = std::make_unique<RenderResources>(world_);
    bridge_ = std::make_unique<EntitySceneBridge>(*resources_, world_);
    attachFeed(std::make_unique<SimulatedRoomFeed>());
}

ARViewItem::~ARViewItem() {
    frames_.cancel();
    // The view leaves the window now and is deleted on a later turn of the event loop, after
    // the window has taken it out of its scene graph: deleting a 3D view while the window
    // renders it on its own thread can crash that thread.
    viewport_->setParentItem(nullptr);
    viewport_->setParent(nullptr);
    viewport_->deleteLater();
    // A view that outlives this item takes no snapshots of it.
    if (view_) view_->setSnapshotRenderer(nullptr);
    // Nodes and resources go before the scene they live in.
    bridge_.reset();
    feed_.reset();
    resources_.reset();
}

void ARViewItem::setARView(std::shared_ptr<reality::ARView> view) {
    frames_.cancel();
    view_ = std::move(view);
    if (!view_) {
        bridge_ = std::make_unique<EntitySceneBridge>(*resources_, world_);
        return;
    }
    view_->setFrameSize(size());
    view_->setSnapshotRenderer(std::make_shared<ItemSnapshotRenderer>(picture_, viewport_));
    frames_ = view_->session()->observeFrames([this](const arsession::ARFrame&) { syncFrame(); });
    syncFrame();
}

void ARViewItem::setCoachingOverlay(std::shared_ptr<arsession::ARCoachingOverlayView> overlay) {
    overlay_ = std::move(overlay);
    coaching_->setVisible(overlay_ && overlay_->isActive());
}

void ARViewItem::setCameraFeed(std::unique_ptr<CameraFeed> feed) {
    feedChosen_ = true;
    attachFeed(std::move(feed));
}

void ARViewItem::attachFeed(std::unique_ptr<CameraFeed> feed) {
    // The old feed's nodes go with it; the bridge keeps the entity nodes.
    feed_ = std::move(feed);
    if (feed_) feed_->attach(*resources_, world_, background_);
}

void ARViewItem::project(const arsession::ARCamera& camera) {
    if (width() <= 0 || height() <= 0) return;
    camera_->setProjection(camera.projectionMatrix(size(), kNearPlane, kFarPlane));
}

void ARViewItem::syncFrame() {
    if (!view_) return;
    bridge_->sync(view_->scene());
    if (const arsession::ARFrame* frame = view_->session()->currentFrame()) {
        if (!feedChosen_) {
            feedChosen_ = true;
            if (frame->capturedImage) attachFeed(std::make_unique<CameraPictureFeed>());
        }
        const reality::Transform pose = reality::Transform::fromMatrix(frame->camera.transform);
        camera_->setPosition(pose.translation);
        camera_->setRotation(pose.rotation);
        project(frame->camera);
        if (feed_) feed_->update(*frame);
    }
    const bool coaching = overlay_ && overlay_->isActive();
    if (coaching_->isVisible() != coaching) coaching_->setVisible(coaching);
    emit frameSynced();
}

void ARViewItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    for (QQuickItem* layer :
         {picture_, background_, static_cast<QQuickItem*>(viewport_), static_cast<QQuickItem*>(coaching_)})
        layer->setSize(newGeometry.size());
    if (!view_) return;
    view_->setFrameSize(newGeometry.size());
    if (const arsession::ARFrame* frame = view_->session()->currentFrame()) {
        project(frame->camera);
        if (feed_) feed_->update(*frame);
    }
}

void ARViewItem::forward(reality::TouchEvent::Phase phase, std::vector<QPointF> points) {
    if (view_) view_->handleTouches(reality::TouchEvent{phase, std::move(points)});
}

void ARViewItem::mousePressEvent(QMouseEvent* event) {
    forward(reality::TouchEvent::Phase::began, {event->position()});
    event->accept();
}

void ARViewItem::mouseMoveEvent(QMouseEvent* event) {
    forward(reality::TouchEvent::Phase::moved, {event->position()});
    event->accept();
}

void ARViewItem::mouseReleaseEvent(QMouseEvent* event) {
    forward(reality::TouchEvent::Phase::ended, {});
    event->accept();
}

void ARViewItem::touchEvent(QTouchEvent* event) {
    // A finger that lands starts the gestures anew with every finger down; one that lifts
    // ends them, listing the fingers left.
    using Phase = reality::TouchEvent::Phase;
    Phase phase = Phase::moved;
    std::vector<QPointF> points;
    for (const QEventPoint& point : event->points()) {
        if (point.state() == QEventPoint::Pressed) phase = Phase::began;
        if (point.state() == QEventPoint::Released) {
            if (phase != Phase::began) phase = Phase::ended;
        } else {
            points.push_back(point.position());
        }
    }
    if (event->type() == QEvent::TouchCancel) phase = Phase::cancelled;
    forward(phase, std::move(points));
    event->accept();
}

} // namespace orvanta::render

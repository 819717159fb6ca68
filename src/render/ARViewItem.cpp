#include "render/ARViewItem.h"

#include "reality/Transform.h"
#include "render/CoachingOverlayItem.h"
#include "render/ItemSnapshotRenderer.h"
#include "render/SimulatedRoomFeed.h"
#include "render/Viewport.h"

#include <QtMath>
#include <QtQuick3D/private/qquick3dperspectivecamera_p.h>
#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta::render {

namespace {
constexpr float kNearPlane = 0.01f; // metres
constexpr float kFarPlane = 60.0f;
} // namespace

ARViewItem::ARViewItem(QQuickItem* parent)
    : QQuickItem(parent), picture_(new QQuickItem(this)), background_(new QQuickItem(picture_)),
      world_(new QQuick3DNode()), coaching_(new CoachingOverlayItem(this)) {
    const Viewport viewport = Viewport::make(picture_, QColor(38, 36, 34));
    viewport_ = viewport.view;
    camera_ = viewport.camera;
    setFlag(ItemHasContents, false);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
    setClip(true);

    camera_->setClipNear(kNearPlane);
    camera_->setClipFar(kFarPlane);
    world_->setParentItem(viewport_->scene());

    background_->setZ(-1);
    coaching_->setZ(1);
    coaching_->setVisible(false);

    resources_ = std::make_unique<RenderResources>(world_);
    bridge_ = std::make_unique<EntitySceneBridge>(*resources_, world_);
    setCameraFeed(std::make_unique<SimulatedRoomFeed>());
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
    // The old feed's nodes go with it; the bridge keeps the entity nodes.
    feed_ = std::move(feed);
    if (feed_) feed_->attach(*resources_, world_, background_);
}

void ARViewItem::syncFrame() {
    if (!view_) return;
    bridge_->sync(view_->scene());
    if (const arsession::ARFrame* frame = view_->session()->currentFrame()) {
        const reality::Transform pose = reality::Transform::fromMatrix(frame->camera.transform);
        camera_->setPosition(pose.translation);
        camera_->setRotation(pose.rotation);
        camera_->setFieldOfView(qRadiansToDegrees(frame->camera.verticalFieldOfView));
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
    if (view_) view_->setFrameSize(newGeometry.size());
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

#include "render/SceneViewItem.h"

#include "render/Viewport.h"

#include <QtMath>
#include <QtQuick/private/qquickrectangle_p.h>
#include <QtQuick3D/private/qquick3ddirectionallight_p.h>
#include <QtQuick3D/private/qquick3dperspectivecamera_p.h>
#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta::render {

namespace {
// Radians of orbit per point dragged, and zoom per wheel notch.
constexpr float kOrbitPerPoint = 0.01f;
constexpr float kZoomPerNotch = 1.15f;
} // namespace

SceneViewItem::SceneViewItem(QQuickItem* parent)
    : QQuickItem(parent), light_(new QQuick3DDirectionalLight()), root_(new QQuick3DNode()) {
    // The platform's plain default background: a light neutral grey.
    const Viewport viewport = Viewport::make(this, QColor(242, 242, 242));
    viewport_ = viewport.view;
    camera_ = viewport.camera;
    background_ = viewport.background;
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton | Qt::MiddleButton);
    setAcceptTouchEvents(true);
    setClip(true);

    // The default light shines from the camera, slightly from above, with an ambient share
    // so that faces turned away stay readable.
    light_->setParentItem(camera_);
    light_->setEulerRotation(QVector3D(-10.0f, 0.0f, 0.0f));
    light_->setBrightness(1.0f);
    light_->setAmbientColor(QColor(80, 80, 80));
    light_->setVisible(false);
    root_->setParentItem(viewport_->scene());

    resources_ = std::make_unique<RenderResources>(root_);
    bridge_ = std::make_unique<SceneGraphBridge>(*resources_, root_);
}

void SceneViewItem::setBackgroundColor(const QColor& color) { background_->setColor(color); }

void SceneViewItem::setContentVisible(bool visible) { root_->setVisible(visible); }

SceneViewItem::~SceneViewItem() {
    if (view_) view_->setDisplayHandler(nullptr);
    // The view leaves the window now and is deleted on a later turn of the event loop, after
    // the window has taken it out of its scene graph: deleting a 3D view while the window
    // renders it on its own thread can crash that thread.
    viewport_->setParentItem(nullptr);
    viewport_->setParent(nullptr);
    viewport_->deleteLater();
    bridge_.reset();
    resources_.reset();
}

void SceneViewItem::setSceneView(std::shared_ptr<scenegraph::SceneView> view) {
    if (view_) view_->setDisplayHandler(nullptr);
    view_ = std::move(view);
    framedContents_.clear();
    if (view_) {
        view_->setFrameSize(size());
        view_->setDisplayHandler([this] { polish(); });
    }
    sync();
}

void SceneViewItem::updatePolish() { sync(); }

void SceneViewItem::sync() {
    static const std::shared_ptr<scenegraph::SceneNode> nothing = scenegraph::SceneNode::make();
    const std::shared_ptr<scenegraph::Scene> scene = view_ ? view_->scene() : nullptr;
    bridge_->sync(scene ? *scene->rootNode : *nothing);
    light_->setVisible(view_ && view_->autoenablesDefaultLighting());
    placeCamera();
    emit synced();
}

bool SceneViewItem::contentsChanged() {
    static const std::vector<std::shared_ptr<scenegraph::SceneNode>> none;
    const auto& scene = view_->scene();
    const auto& children = scene ? scene->rootNode->childNodes() : none;
    bool changed = children.size() != framedContents_.size();
    for (std::size_t i = 0; !changed && i < children.size(); ++i) changed = children[i].get() != framedContents_[i];
    if (changed) {
        framedContents_.clear();
        for (const auto& child : children) framedContents_.push_back(child.get());
    }
    return changed;
}

void SceneViewItem::placeCamera() {
    if (!view_) return;
    if (const auto node = view_->pointOfView()) {
        const scenegraph::SceneCamera& lens = *node->camera();
        const QMatrix4x4 pose = node->worldTransform();
        camera_->setPosition(pose.column(3).toVector3D());
        camera_->setRotation(QQuaternion::fromRotationMatrix(pose.normalMatrix()));
        camera_->setFieldOfView(lens.fieldOfViewDegrees);
        camera_->setClipNear(lens.zNear);
        camera_->setClipFar(lens.zFar);
        return;
    }
    scenegraph::OrbitCameraControl& control = view_->defaultPointOfView();
    if (contentsChanged()) {
        const auto& scene = view_->scene();
        const float aspect = height() > 0 ? float(width() / height()) : 1.0f;
        control.frame(scene ? scene->rootNode->boundingBox() : import::Bounds{}, aspect);
    }
    camera_->setPosition(control.position());
    camera_->setRotation(control.rotation());
    camera_->setFieldOfView(qRadiansToDegrees(scenegraph::OrbitCameraControl::kFieldOfView));
    camera_->setClipNear(control.nearPlane());
    camera_->setClipFar(control.farPlane());
}

void SceneViewItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    viewport_->setSize(newGeometry.size());
    if (view_) view_->setFrameSize(newGeometry.size());
    if (newGeometry.size() != oldGeometry.size()) {
        framedContents_.clear(); // frame again for the new shape
        polish();
    }
}

void SceneViewItem::mousePressEvent(QMouseEvent* event) {
    if (!controlling()) return event->ignore();
    lastPoint_ = event->position();
    panning_ = event->button() != Qt::LeftButton || (event->modifiers() & Qt::ShiftModifier);
    event->accept();
}

void SceneViewItem::mouseMoveEvent(QMouseEvent* event) {
    if (!controlling()) return event->ignore();
    const QPointF delta = event->position() - lastPoint_;
    lastPoint_ = event->position();
    auto& control = view_->defaultPointOfView();
    if (panning_) {
        const float h = float(std::max<qreal>(height(), 1.0));
        control.pan(float(-delta.x()) / h, float(delta.y()) / h);
    } else {
        control.orbit(float(-delta.x()) * kOrbitPerPoint, float(-delta.y()) * kOrbitPerPoint);
    }
    placeCamera();
    event->accept();
}

void SceneViewItem::mouseReleaseEvent(QMouseEvent* event) { event->setAccepted(controlling()); }

void SceneViewItem::wheelEvent(QWheelEvent* event) {
    if (!controlling()) return event->ignore();
    const float notches = float(event->angleDelta().y()) / 120.0f;
    view_->defaultPointOfView().zoom(std::pow(kZoomPerNotch, notches));
    placeCamera();
    event->accept();
}

void SceneViewItem::touchEvent(QTouchEvent* event) {
    if (!controlling()) return event->ignore();
    const auto& points = event->points();
    auto& control = view_->defaultPointOfView();
    if (points.size() == 1) {
        const QPointF p = points.front().position();
        if (event->type() != QEvent::TouchBegin) {
            const QPointF delta = p - lastPoint_;
            control.orbit(float(-delta.x()) * kOrbitPerPoint, float(-delta.y()) * kOrbitPerPoint);
        }
        lastPoint_ = p;
        lastPinch_ = 0.0;
    } else if (points.size() >= 2) {
        const QPointF a = points[0].position(), b = points[1].position();
        const QPointF mid = (a + b) / 2.0;
        const qreal spread = QLineF(a, b).length();
        if (lastPinch_ > 0.0 && spread > 0.0) {
            control.zoom(float(spread / lastPinch_));
            const float h = float(std::max<qreal>(height(), 1.0));
            control.pan(float(-(mid - lastPoint_).x()) / h, float((mid - lastPoint_).y()) / h);
        }
        lastPinch_ = spread;
        lastPoint_ = mid;
    }
    placeCamera();
    event->accept();
}

} // namespace orvanta::render

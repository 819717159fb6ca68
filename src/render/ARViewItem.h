#pragma once
// Shows an AR view: the camera picture (from its CameraFeed) behind the view's entity scene,
// both drawn with the session camera's pose and projection (ARCamera::projectionMatrix, which
// honours a real lens's principal point and the aspect-fill crop of its picture), so content
// stays fixed on the table while the camera moves; the coaching overlay on top while it is
// active. Touches and mouse drags on the item go to the view's gestures. Its snapshots hold
// the camera picture and the 3D view only: neither the coaching overlay nor anything a layout
// stacks above the item.
//
// The feed is the simulated room until one is set or the first session frame brings a camera
// picture, which replaces it with the picture itself (CameraPictureFeed).
//
// Every session frame brings the Quick 3D scene in line with the entity scene (see
// EntitySceneBridge): nothing is rebuilt per frame.
// Thread: main thread.

#include "arsession/ARCoachingOverlayView.h"
#include "core/Cancellable.h"
#include "reality/ARView.h"
#include "render/CameraFeed.h"
#include "render/EntitySceneBridge.h"

#include <QQuickItem>

#include <memory>

class QQuick3DViewport;
class QQuick3DCustomCamera;

namespace orvanta::render {

class CoachingOverlayItem;

class ARViewItem : public QQuickItem {
    Q_OBJECT
    // Whether every texture of the shown content has been decoded and handed to Quick 3D (for
    // hosts and tests that wait for the finished picture).
    Q_PROPERTY(bool texturesReady READ texturesReady)

public:
    explicit ARViewItem(QQuickItem* parent = nullptr);
    ~ARViewItem() override;

    // Shows `view` (null shows nothing) and installs this item as its snapshot renderer. The
    // view takes this item's size as its frame size.
    void setARView(std::shared_ptr<reality::ARView> view);
    const std::shared_ptr<reality::ARView>& arView() const { return view_; }
    // The overlay to draw while it is active; null draws none.
    void setCoachingOverlay(std::shared_ptr<arsession::ARCoachingOverlayView> overlay);
    // Replaces the camera picture, for good (the first frame no longer chooses one).
    void setCameraFeed(std::unique_ptr<CameraFeed> feed);

    QQuick3DViewport* viewport() const { return viewport_; }
    const EntitySceneBridge& bridge() const { return *bridge_; }
    TextureCache& textures() { return resources_->textures(); }
    bool texturesReady() const { return resources_->textures().pendingDecodes() == 0; }

signals:
    // After the Quick 3D scene has taken a session frame.
    void frameSynced();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void touchEvent(QTouchEvent* event) override;

private:
    void syncFrame();
    void attachFeed(std::unique_ptr<CameraFeed> feed);
    void project(const arsession::ARCamera& camera);
    void forward(reality::TouchEvent::Phase phase, std::vector<QPointF> points);

    // What snapshots show: the camera picture and, in front of it, the 3D view.
    QQuickItem* picture_;
    QQuickItem* background_;
    QQuick3DViewport* viewport_ = nullptr;
    QQuick3DCustomCamera* camera_;
    QQuick3DNode* world_;
    CoachingOverlayItem* coaching_;
    std::unique_ptr<RenderResources> resources_;
    std::unique_ptr<EntitySceneBridge> bridge_;
    std::unique_ptr<CameraFeed> feed_;
    bool feedChosen_ = false; // a feed was set, or the first frame has been seen
    std::shared_ptr<reality::ARView> view_;
    std::shared_ptr<arsession::ARCoachingOverlayView> overlay_;
    core::Cancellable frames_;
};

} // namespace orvanta::render

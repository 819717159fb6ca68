#pragma once
// Shows the 3D viewer's SceneView: its scene mirrored in Quick 3D (see SceneGraphBridge), on
// the plain light background, seen through the scene's camera node or else through the
// view's own point of view, which frames the scene's contents whenever they change. With
// camera control on, a drag orbits (right button or Shift: pans), the wheel zooms, one finger
// orbits and two fingers pinch to zoom and move to pan. A default light rides with the
// camera while the view asks for one (the kit's scenes carry no lights).
// Thread: main thread.

#include "render/SceneGraphBridge.h"
#include "scenegraph/SceneView.h"

#include <QColor>
#include <QQuickItem>

#include <memory>
#include <vector>

class QQuick3DViewport;
class QQuickRectangle;
class QQuick3DPerspectiveCamera;
class QQuick3DDirectionalLight;

namespace orvanta::render {

class SceneViewItem : public QQuickItem {
    Q_OBJECT
    // Whether every texture of the shown content has been decoded and handed to Quick 3D (for
    // hosts and tests that wait for the finished picture).
    Q_PROPERTY(bool texturesReady READ texturesReady)

public:
    explicit SceneViewItem(QQuickItem* parent = nullptr);
    ~SceneViewItem() override;

    // Shows `view` (null shows nothing); the view takes this item's size as its frame size.
    void setSceneView(std::shared_ptr<scenegraph::SceneView> view);
    const std::shared_ptr<scenegraph::SceneView>& sceneView() const { return view_; }

    QQuick3DViewport* viewport() const { return viewport_; }
    // The colour the view is drawn on (a light neutral grey unless set).
    void setBackgroundColor(const QColor& color);
    // Shows or hides the model; the background stays.
    void setContentVisible(bool visible);
    const SceneGraphBridge& bridge() const { return *bridge_; }
    TextureCache& textures() { return resources_->textures(); }
    bool texturesReady() const { return resources_->textures().pendingDecodes() == 0; }
    // Brings the Quick 3D scene in line with the view's scene now.
    void sync();

signals:
    void synced();

protected:
    void updatePolish() override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void touchEvent(QTouchEvent* event) override;

private:
    bool contentsChanged();
    void placeCamera();
    bool controlling() const { return view_ && view_->allowsCameraControl(); }

    QQuick3DViewport* viewport_ = nullptr;
    QQuickRectangle* background_ = nullptr;
    QQuick3DPerspectiveCamera* camera_ = nullptr;
    QQuick3DDirectionalLight* light_;
    QQuick3DNode* root_;
    std::unique_ptr<RenderResources> resources_;
    std::unique_ptr<SceneGraphBridge> bridge_;
    std::shared_ptr<scenegraph::SceneView> view_;
    std::vector<const scenegraph::SceneNode*> framedContents_;
    QPointF lastPoint_;
    bool panning_ = false;
    qreal lastPinch_ = 0.0;
};

} // namespace orvanta::render

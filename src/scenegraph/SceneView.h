#pragma once
// The 3D viewer's view: it shows a scene, lets the user orbit, zoom and pan when camera
// control is on, and adds a default light while the scene has none when asked to. It looks
// through the first camera node of its scene; a scene without one is seen from the view's
// own point of view, which frames the scene's contents (see OrbitCameraControl).
// Whoever changes the scene calls setNeedsDisplay(), which tells the renderer to draw it
// again. Plain C++: the renderer item draws it.
// Thread: main thread.

#include "scenegraph/OrbitCameraControl.h"
#include "scenegraph/Scene.h"

#include <QSizeF>

#include <functional>
#include <memory>

namespace orvanta::scenegraph {

class SceneView {
public:
    explicit SceneView(QSizeF frameSize = {}) : frameSize_(frameSize) {}

    QSizeF frameSize() const { return frameSize_; }
    void setFrameSize(QSizeF size) { frameSize_ = size; }
    bool allowsCameraControl() const { return allowsCameraControl_; }
    void setAllowsCameraControl(bool allows) { allowsCameraControl_ = allows; }
    bool autoenablesDefaultLighting() const { return autoenablesDefaultLighting_; }
    void setAutoenablesDefaultLighting(bool enables) { autoenablesDefaultLighting_ = enables; }

    // The displayed scene; none shows nothing.
    const std::shared_ptr<Scene>& scene() const { return scene_; }
    void setScene(std::shared_ptr<Scene> scene) {
        scene_ = std::move(scene);
        setNeedsDisplay();
    }

    // The first node carrying a camera, depth first; none when the scene has no camera node.
    std::shared_ptr<SceneNode> pointOfView() const;
    OrbitCameraControl& defaultPointOfView() { return defaultPointOfView_; }
    const OrbitCameraControl& defaultPointOfView() const { return defaultPointOfView_; }

    // Asks the renderer (see setDisplayHandler) to bring the screen in line with the scene.
    void setNeedsDisplay() const {
        if (display_) display_();
    }
    void setDisplayHandler(std::function<void()> handler) { display_ = std::move(handler); }

private:
    QSizeF frameSize_;
    bool allowsCameraControl_ = false;
    bool autoenablesDefaultLighting_ = false;
    std::shared_ptr<Scene> scene_;
    OrbitCameraControl defaultPointOfView_;
    std::function<void()> display_;
};

} // namespace orvanta::scenegraph

#pragma once
// The 3D mode's viewer: shows the dish's scene node in a SceneView that the user can orbit,
// zoom and pan, lit automatically, at half size. It adapts the dish screen's state (two
// bindings) to the view: makeUIView() builds the view once, updateUIView() runs whenever a
// binding changes.
//
// updateUIView with a model prints "Updating model: <node>", empties the scene (its camera
// node too), sets the node's scale to 0.5 (replacing the old scale), and on the next turn of
// the main queue prints "Adding model to scene", adds the node to the scene and sets
// `isModelLoaded` to true; without a model it prints "No model to display." and changes
// nothing. Once the camera node is gone the view frames the scene from its own point of view.
// Thread: main thread.

#include "core/Binding.h"
#include "scenegraph/SceneView.h"

#include <memory>

namespace orvanta {

class Reality3DView {
public:
    using SceneNodePtr = std::shared_ptr<scenegraph::SceneNode>;

    Reality3DView(Binding<SceneNodePtr> model, Binding<bool> isModelLoaded)
        : model(std::move(model)), isModelLoaded(std::move(isModelLoaded)) {}

    Binding<SceneNodePtr> model;
    Binding<bool> isModelLoaded;

    // A view with camera control and default lighting, showing a new scene that holds one
    // camera node at (0, 20, 20) tilted down by π/4 about x.
    std::shared_ptr<scenegraph::SceneView> makeUIView() const;
    void updateUIView(const std::shared_ptr<scenegraph::SceneView>& view) const;

private:
    // Takes every node out of the scene's root. A node taken out leaves the scene with its
    // subtree, so nothing inside it is visited or taken apart.
    static void clearExistingObjects(scenegraph::SceneView& view);
};

} // namespace orvanta

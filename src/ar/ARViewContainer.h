#pragma once
// The bridge between the dish screen and the AR view. makeUIView creates one ARView, starts a
// world-tracking session that looks for horizontal planes, lays the coaching overlay over it
// and puts a classic focus square into its scene; updateUIView hangs the screen's loaded
// model on a horizontal plane of at least 0.2 m × 0.2 m at half size and makes it movable by
// touch. Its Coordinator (ARViewContainerCoordinator.h) hears the session and the overlay.
//
// The container is a value: it holds four bindings into the screen's state, and copies share
// them. The screen calls makeCoordinator() and makeUIView() once when the AR view is first
// shown, and updateUIView() whenever the state the container reads (the model) changes.
// Writes to the bindings from these calls are deferred by one turn of the main queue, as the
// screen must not see its state change while it lays out.
// Thread: every method on the main thread.

#include "core/Binding.h"
#include "ar/TrackingStateEnum.h"
#include "arsession/ARWorldTrackingConfiguration.h"
#include "arsession/SessionBackend.h"
#include "reality/ARView.h"
#include "reality/ModelEntity.h"

#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

class ARViewContainer {
public:
    class Coordinator;
    // What the screen hands to makeUIView and updateUIView.
    struct Context {
        std::shared_ptr<Coordinator> coordinator;
    };
    // Makes the tracking backend of a new view; none (the default) gives the one of the
    // process's AR source (ARSourceSetting: the simulated world unless the host chose another).
    using BackendFactory = std::function<std::unique_ptr<arsession::SessionBackend>()>;

    ARViewContainer(Binding<std::shared_ptr<reality::ModelEntity>> modelEntity, Binding<bool> isModelLoaded,
                    Binding<std::shared_ptr<reality::ARView>> arView,
                    Binding<std::optional<TrackingStateEnum>> trackingState, BackendFactory makeBackend = nullptr);

    // The loaded dish model to place; null while nothing is loaded.
    Binding<std::shared_ptr<reality::ModelEntity>> modelEntity;
    // Set to true once the model stands in the scene.
    Binding<bool> isModelLoaded;
    // Receives the view made by makeUIView (so the screen can pause it and take snapshots).
    Binding<std::shared_ptr<reality::ARView>> arView;
    // Receives the camera's tracking quality; none until first reported.
    Binding<std::optional<TrackingStateEnum>> trackingState;

    // A coordinator holding a copy of this container.
    std::shared_ptr<Coordinator> makeCoordinator() const;
    // Makes and returns the AR view: the `arView` binding is filled on the next main-queue
    // turn; the focus square goes into `context.coordinator`; the coaching overlay and the
    // session delegate are the coordinator; the session runs with horizontal plane detection.
    std::shared_ptr<reality::ARView> makeUIView(const Context& context) const;
    // With a model set: prints "updateARSession", clears the scene's anchors at once, and on
    // the next main-queue turn anchors the model on a horizontal plane (scale 0.5 on the
    // anchor), gives it collision shapes and all gestures, and sets `isModelLoaded`. A later
    // call supersedes a placement that has not run yet, so one anchor stands. Without a
    // model it does nothing.
    void updateUIView(const std::shared_ptr<reality::ARView>& uiView, const Context& context) const;

private:
    static void clearExistingAnchors(reality::ARView& arView);
    // World tracking that detects horizontal planes only, nothing else changed.
    static arsession::ARWorldTrackingConfiguration horizontalPlaneTracking();

    BackendFactory makeBackend_;
};

} // namespace orvanta

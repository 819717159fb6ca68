#include "ar/ARViewContainer.h"

#include "ar/ARSourceSetting.h"
#include "ar/ARViewContainerCoordinator.h"
#include "ar/ARViewCoaching.h"
#include "core/Dispatch.h"
#include "core/Log.h"
#include "focus/FocusIndicator.h"
#include "reality/AnchorEntity.h"
#include "reality/EntityGestures.h"

#include <cassert>

namespace orvanta {

ARViewContainer::ARViewContainer(Binding<std::shared_ptr<reality::ModelEntity>> modelEntity,
                                 Binding<bool> isModelLoaded, Binding<std::shared_ptr<reality::ARView>> arView,
                                 Binding<std::optional<TrackingStateEnum>> trackingState, BackendFactory makeBackend)
    : modelEntity(std::move(modelEntity)), isModelLoaded(std::move(isModelLoaded)), arView(std::move(arView)),
      trackingState(std::move(trackingState)), makeBackend_(std::move(makeBackend)) {}

std::shared_ptr<ARViewContainer::Coordinator> ARViewContainer::makeCoordinator() const {
    return std::make_shared<Coordinator>(*this);
}

std::shared_ptr<reality::ARView> ARViewContainer::makeUIView(const Context& context) const {
    assert(context.coordinator);
    auto view = std::make_shared<reality::ARView>(QSizeF(), makeBackend_ ? makeBackend_() : ARSourceSetting::makeBackend());
    core::Dispatch::main()->async([binding = arView, view] { binding.set(view); });

    context.coordinator->focusIndicator = focus::FocusIndicator::make(view, focus::FocusIndicatorComponent::classic());

    context.coordinator->coachingOverlay = addCoaching(*view, context.coordinator);
    view->session()->setDelegate(context.coordinator);
    view->session()->run(horizontalPlaneTracking(), arsession::ARSession::noOptions);
    return view;
}

void ARViewContainer::updateUIView(const std::shared_ptr<reality::ARView>& uiView, const Context& context) const {
    assert(uiView && context.coordinator);
    std::shared_ptr<reality::ModelEntity> model = modelEntity.get();
    if (!model) return;
    core::Log::print("updateARSession");
    clearExistingAnchors(*uiView);

    const std::uint64_t request = ++context.coordinator->placementRequest_;
    std::weak_ptr<Coordinator> coordinator = context.coordinator;
    core::Dispatch::main()->async([model, uiView, coordinator, request, loaded = isModelLoaded] {
        const auto owner = coordinator.lock();
        if (!owner || owner->placementRequest_ != request) return;
        auto anchor = std::make_shared<reality::AnchorEntity>(reality::AnchoringComponent::plane(
            arsession::ARPlaneAnchor::Alignment::horizontal, reality::AnchoringComponent::Classification::any(),
            QVector2D(0.2f, 0.2f)));
        anchor->setScale(QVector3D(1.0f, 1.0f, 1.0f) * QVector3D(0.5f, 0.5f, 0.5f));
        anchor->addChild(model);
        uiView->scene().anchors().append(anchor);
        model->generateCollisionShapes(true);
        uiView->installGestures(reality::EntityGestures::all, model);
        loaded.set(true);
    });
}

arsession::ARWorldTrackingConfiguration ARViewContainer::horizontalPlaneTracking() {
    arsession::ARWorldTrackingConfiguration configuration;
    configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
    return configuration;
}

void ARViewContainer::clearExistingAnchors(reality::ARView& arView) {
    arView.scene().anchors().removeAll();
}

} // namespace orvanta

#pragma once
// Helpers of the session tests: a delegate that writes what it hears as lines, and a
// session on its own manual clock with the delegate queue on that clock.

#include "arsession/ARCamera.h"
#include "arsession/ARSession.h"
#include "arsession/ARSessionDelegate.h"
#include "arsession/SimulatedWorld.h"
#include "core/Error.h"
#include "core/ManualScheduler.h"

#include <memory>
#include <string>
#include <vector>

namespace orvanta::arsession::testing {

class RecordingDelegate : public ARSessionDelegate {
public:
    std::vector<std::string> events;
    int frames = 0;

    void sessionDidUpdateFrame(ARSession&, const ARFrame&) override { ++frames; }
    void sessionDidAddAnchors(ARSession&, const std::vector<ARPlaneAnchor>& a) override { list("add", a); }
    void sessionDidRemoveAnchors(ARSession&, const std::vector<ARPlaneAnchor>& a) override { list("remove", a); }
    void sessionCameraDidChangeTrackingState(ARSession&, const ARCamera& camera) override {
        events.push_back("tracking " + camera.trackingState.description());
    }
    void sessionDidFailWithError(ARSession&, const core::Error& error) override {
        events.push_back("failed " + error.domain() + " " + std::to_string(error.code()) + " " +
                         error.localizedDescription());
    }
    void sessionWasInterrupted(ARSession&) override { events.push_back("interrupted"); }
    void sessionInterruptionEnded(ARSession&) override { events.push_back("interruption ended"); }

private:
    void list(const std::string& verb, const std::vector<ARPlaneAnchor>& anchors) {
        for (const auto& a : anchors) events.push_back(verb + " " + std::string(ARPlaneAnchor::name(a.classification)));
    }
};

// A session on its own manual clock, the simulated room unless given another backend.
struct ClockedSession {
    explicit ClockedSession(SimulatedWorld::Script script = {})
        : ClockedSession(std::make_unique<SimulatedWorld>(std::move(script), SimulatedWorld::defaultRoom())) {}
    explicit ClockedSession(std::unique_ptr<SessionBackend> backend)
        : session(std::make_shared<ARSession>(std::move(backend), clock)) {
        session->setDelegate(delegate);
        session->setDelegateQueue(clock);
    }

    static ARWorldTrackingConfiguration horizontalPlanes() {
        ARWorldTrackingConfiguration configuration;
        configuration.planeDetection = ARWorldTrackingConfiguration::horizontal;
        return configuration;
    }

    std::shared_ptr<core::ManualScheduler> clock = std::make_shared<core::ManualScheduler>();
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::shared_ptr<ARSession> session;
};

} // namespace orvanta::arsession::testing

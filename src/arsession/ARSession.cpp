#include "arsession/ARSession.h"

#include "arsession/ARSessionDelegate.h"
#include "core/Dispatch.h"

#include <algorithm>
#include <cassert>
#include <type_traits>

namespace orvanta::arsession {

namespace {

bool containsIdentifier(const std::vector<ARPlaneAnchor>& anchors, const QUuid& identifier) {
    return std::any_of(anchors.begin(), anchors.end(), [&](const ARPlaneAnchor& a) { return a.identifier == identifier; });
}

} // namespace

ARSession::ARSession(std::unique_ptr<SessionBackend> backend, std::shared_ptr<core::Scheduler> clock,
                     double frameInterval)
    : backend_(std::move(backend)), clock_(clock ? std::move(clock) : core::Dispatch::main()),
      frameInterval_(frameInterval) {
    assert(backend_ && clock_ && frameInterval_ > 0.0);
}

ARSession::~ARSession() { stopTimer(); }

void ARSession::run(const ARWorldTrackingConfiguration& configuration, unsigned options) {
    configuration_ = configuration;
    backend_->run(configuration, (options & resetTracking) != 0, (options & removeExistingAnchors) != 0,
                  clock_->now());
    if ((options & removeExistingAnchors) != 0 && !frame_.anchors.empty()) {
        removed_ = frame_.anchors;
        frame_.anchors.clear();
        notify(&ARSessionDelegate::sessionDidRemoveAnchors, removed_);
    }
    running_ = true;
    startTimer();
}

void ARSession::pause() {
    if (!running_) return;
    running_ = false;
    backend_->pause(clock_->now());
    // An interruption in progress is still watched, so its end is reported.
    if (!interrupted_) stopTimer();
}

std::vector<ARRaycastResult> ARSession::raycast(const ARRaycastQuery& query) const {
    std::vector<ARRaycastResult> results;
    raycast(query, results);
    return results;
}

void ARSession::raycast(const ARRaycastQuery& query, std::vector<ARRaycastResult>& results) const {
    results.clear();
    if (!hasFrame_) return;
    backend_->raycast(query, frame_, results);
    std::sort(results.begin(), results.end(),
              [](const ARRaycastResult& a, const ARRaycastResult& b) { return a.distance < b.distance; });
}

core::Cancellable ARSession::observeFrames(std::function<void(const ARFrame&)> observer) {
    return observers_.add(std::move(observer));
}

void ARSession::tick() {
    update_.clearEvents();
    backend_->poll(clock_->now(), update_);
    if (update_.failure) {
        // A failed session stops until it is run again.
        running_ = false;
        interrupted_ = false;
        stopTimer();
        backend_->pause(clock_->now());
        notify(&ARSessionDelegate::sessionDidFailWithError, *update_.failure);
        return;
    }
    if (update_.interruptionBegan) {
        interrupted_ = true;
        notify(&ARSessionDelegate::sessionWasInterrupted);
    }
    if (update_.interruptionEnded) {
        interrupted_ = false;
        if (!running_) stopTimer();
        notify(&ARSessionDelegate::sessionInterruptionEnded);
    }
    if (update_.hasFrame && running_) deliverFrame();
}

void ARSession::startTimer() {
    if (timer_.isValid()) return;
    timer_ = clock_->scheduleRepeating(frameInterval_, [this] { tick(); });
}

void ARSession::stopTimer() { timer_.invalidate(); }

void ARSession::deliverFrame() {
    diffAnchors(frame_.anchors, update_.frame.anchors);
    frame_ = update_.frame; // copy-assignment keeps the anchor list's capacity
    hasFrame_ = true;
    if (lastTrackingState_ != frame_.camera.trackingState) {
        lastTrackingState_ = frame_.camera.trackingState;
        notify(&ARSessionDelegate::sessionCameraDidChangeTrackingState, frame_.camera);
    }
    if (!added_.empty()) notify(&ARSessionDelegate::sessionDidAddAnchors, added_);
    if (!updated_.empty()) notify(&ARSessionDelegate::sessionDidUpdateAnchors, updated_);
    if (!removed_.empty()) notify(&ARSessionDelegate::sessionDidRemoveAnchors, removed_);
    notify(&ARSessionDelegate::sessionDidUpdateFrame, frame_);
    observers_.call(frame_);
}

void ARSession::diffAnchors(const std::vector<ARPlaneAnchor>& before, const std::vector<ARPlaneAnchor>& after) {
    added_.clear();
    updated_.clear();
    removed_.clear();
    for (const auto& anchor : after) {
        const auto old = std::find_if(before.begin(), before.end(),
                                      [&](const ARPlaneAnchor& a) { return a.identifier == anchor.identifier; });
        if (old == before.end())
            added_.push_back(anchor);
        else if (!(*old == anchor))
            updated_.push_back(anchor);
    }
    for (const auto& anchor : before)
        if (!containsIdentifier(after, anchor.identifier)) removed_.push_back(anchor);
}

template <class... Params, class... Args>
void ARSession::notify(void (ARSessionDelegate::*method)(ARSession&, Params...), const Args&... args) {
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    const auto queue = delegateQueue_ ? delegateQueue_ : core::Dispatch::main();
    if (queue == clock_) {
        ((*delegate).*method)(*this, args...);
        return;
    }
    queue->async([weakDelegate = delegate_, alive = std::weak_ptr<bool>(alive_), this, method, ... copies = args] {
        const auto target = weakDelegate.lock();
        if (!target || alive.expired()) return;
        ((*target).*method)(*this, copies...);
    });
}

} // namespace orvanta::arsession

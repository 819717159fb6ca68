#pragma once
// The camera-tracking service: runs a backend from a clock, keeps the current frame, tells
// its delegate about frames, planes, tracking changes, interruptions and failures, and
// answers ray casts.
//
// Frames come from a repeating timer on the clock queue (60 Hz by default); tests give the
// session a ManualScheduler and advance it frame by frame. A frame step makes no heap
// allocation once buffers have grown, provided the delegate queue is the clock queue (the
// clock's own timer bookkeeping aside: SteppedClock has none, ManualScheduler does).
// Thread: every method on the clock queue (the main queue by default).

#include "arsession/ARFrame.h"
#include "arsession/ARRaycastQuery.h"
#include "arsession/ARRaycastResult.h"
#include "arsession/ARWorldTrackingConfiguration.h"
#include "arsession/HandlerList.h"
#include "arsession/SessionBackend.h"
#include "core/Cancellable.h"
#include "core/RepeatingTimer.h"
#include "core/Scheduler.h"

#include <functional>
#include <memory>
#include <vector>

namespace orvanta::arsession {

class ARSessionDelegate;

class ARSession {
public:
    // Option set of run(); raw values 1 and 2.
    enum RunOptions : unsigned { noOptions = 0, resetTracking = 1, removeExistingAnchors = 2 };

    static constexpr double defaultFrameInterval = 1.0 / 60.0;

    // `clock`: the queue whose timer produces frames; null means core::Dispatch::main().
    explicit ARSession(std::unique_ptr<SessionBackend> backend, std::shared_ptr<core::Scheduler> clock = nullptr,
                       double frameInterval = defaultFrameInterval);
    ~ARSession();
    ARSession(const ARSession&) = delete;
    ARSession& operator=(const ARSession&) = delete;

    // Starts (or restarts) tracking with `configuration`. Frames follow on the clock.
    // With removeExistingAnchors the known planes are dropped and reported as removed.
    void run(const ARWorldTrackingConfiguration& configuration, unsigned options = noOptions);
    // Stops producing frames; the current frame stays readable. run() resumes.
    void pause();
    bool isRunning() const { return running_; }
    const ARWorldTrackingConfiguration& configuration() const { return configuration_; }

    // The latest frame, or nullptr before the first one. Valid until the next frame.
    const ARFrame* currentFrame() const { return hasFrame_ ? &frame_ : nullptr; }

    void setDelegate(std::weak_ptr<ARSessionDelegate> delegate) { delegate_ = std::move(delegate); }
    std::shared_ptr<ARSessionDelegate> delegate() const { return delegate_.lock(); }
    // The queue delegate callbacks run on; null (the default) means core::Dispatch::main().
    // On another queue than the clock's, each callback carries a copy of its data.
    void setDelegateQueue(std::shared_ptr<core::Scheduler> queue) { delegateQueue_ = std::move(queue); }

    // Hits of `query` against the current frame, nearest first; empty before the first frame.
    std::vector<ARRaycastResult> raycast(const ARRaycastQuery& query) const;
    // Same, into `results` (cleared first, capacity kept): the allocation-free form for per-frame use.
    void raycast(const ARRaycastQuery& query, std::vector<ARRaycastResult>& results) const;

    // Calls `observer` on the clock queue after every new frame, after the delegate (when the
    // delegate queue is the clock queue). For the kit's own views; the delegate stays free
    // for the application. Ends when the returned Cancellable is cancelled or dropped.
    [[nodiscard]] core::Cancellable observeFrames(std::function<void(const ARFrame&)> observer);

    // One step of the clock: polls the backend and delivers what happened. The timer calls it;
    // tests may call it directly.
    void tick();

    std::shared_ptr<core::Scheduler> clock() const { return clock_; }

private:
    void startTimer();
    void stopTimer();
    void deliverFrame();
    void diffAnchors(const std::vector<ARPlaneAnchor>& before, const std::vector<ARPlaneAnchor>& after);
    // Calls `method` on the delegate with `args`: at once when the delegate queue is the clock
    // queue, else as a task on the delegate queue carrying copies of `args`.
    template <class... Params, class... Args>
    void notify(void (ARSessionDelegate::*method)(ARSession&, Params...), const Args&... args);

    std::unique_ptr<SessionBackend> backend_;
    std::shared_ptr<core::Scheduler> clock_;
    double frameInterval_;
    core::RepeatingTimer timer_;
    std::weak_ptr<ARSessionDelegate> delegate_;
    std::shared_ptr<core::Scheduler> delegateQueue_;
    ARWorldTrackingConfiguration configuration_;
    bool running_ = false;
    bool interrupted_ = false;

    SessionBackend::Update update_;
    ARFrame frame_;
    bool hasFrame_ = false;
    std::optional<TrackingState> lastTrackingState_;
    // Reused buffers of the anchor diff.
    std::vector<ARPlaneAnchor> added_, updated_, removed_;
    HandlerList<const ARFrame&> observers_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // seen by queued tasks
};

} // namespace orvanta::arsession

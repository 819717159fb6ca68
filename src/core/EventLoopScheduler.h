#pragma once
// A queue served by a Qt event loop: the application's main thread, or a worker thread
// that this scheduler starts itself (a background queue).
// Thread: every method from any thread; tasks run on the event loop's thread.

#include "core/Scheduler.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QThread>

#include <memory>

namespace orvanta::core {

class EventLoopScheduler final : public Scheduler {
public:
    // Serves the event loop of the thread that `context` lives in (for the main queue,
    // the application object).
    explicit EventLoopScheduler(QObject* context);
    // Starts a worker thread named `name` with its own event loop and serves it; the thread
    // stops when the scheduler is destroyed.
    static std::shared_ptr<EventLoopScheduler> withWorkerThread(const QString& name);
    ~EventLoopScheduler() override;

    void async(Task task) override;
    void asyncAfter(double seconds, Task task) override;
    RepeatingTimer scheduleRepeating(double interval, Task task) override;
    double now() const override;
    bool isCurrent() const override;

    // The thread whose event loop runs the tasks (objects used by tasks may be moved there).
    QThread* thread() const { return context_ ? context_->thread() : nullptr; }

private:
    EventLoopScheduler() = default;

    std::unique_ptr<QThread> ownThread_;
    std::unique_ptr<QObject> ownContext_;
    QPointer<QObject> context_;
    QElapsedTimer clock_;
};

} // namespace orvanta::core

#include "core/EventLoopScheduler.h"

#include <QMetaObject>
#include <QTimer>

#include <cmath>

namespace orvanta::core {

namespace {
int toMilliseconds(double seconds) { return static_cast<int>(std::lround(std::max(0.0, seconds) * 1000.0)); }
} // namespace

EventLoopScheduler::EventLoopScheduler(QObject* context) : context_(context) { clock_.start(); }

std::shared_ptr<EventLoopScheduler> EventLoopScheduler::withWorkerThread(const QString& name) {
    std::shared_ptr<EventLoopScheduler> scheduler(new EventLoopScheduler());
    scheduler->ownThread_ = std::make_unique<QThread>();
    scheduler->ownThread_->setObjectName(name);
    scheduler->ownContext_ = std::make_unique<QObject>();
    scheduler->ownContext_->moveToThread(scheduler->ownThread_.get());
    scheduler->context_ = scheduler->ownContext_.get();
    scheduler->clock_.start();
    scheduler->ownThread_->start();
    return scheduler;
}

EventLoopScheduler::~EventLoopScheduler() {
    if (!ownThread_) return;
    // The context object must die on its own thread: a deferred delete on a thread whose
    // loop ends is carried out when the thread finishes.
    ownContext_.release()->deleteLater();
    ownThread_->quit();
    if (QThread::currentThread() == ownThread_.get()) {
        // Released by one of its own tasks: a thread cannot wait for itself, so it is
        // handed to Qt to delete once its loop has ended.
        QThread* thread = ownThread_.release();
        QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
        return;
    }
    ownThread_->wait();
}

void EventLoopScheduler::async(Task task) {
    QMetaObject::invokeMethod(context_.data(), std::move(task), Qt::QueuedConnection);
}

void EventLoopScheduler::asyncAfter(double seconds, Task task) {
    QObject* context = context_.data();
    const int ms = toMilliseconds(seconds);
    // Timers must be started on the loop's own thread. A precise timer never fires early (a
    // coarse one may, by up to 5 % of its interval).
    async([context, ms, task = std::move(task)] { QTimer::singleShot(ms, Qt::PreciseTimer, context, task); });
}

RepeatingTimer EventLoopScheduler::scheduleRepeating(double interval, Task task) {
    auto valid = std::make_shared<std::atomic<bool>>(true);
    QObject* context = context_.data();
    const int ms = toMilliseconds(interval);
    async([context, ms, valid, task = std::move(task)] {
        auto* timer = new QTimer(context); // Qt ownership: the context parents it; it deletes itself once invalid
        timer->setInterval(ms);
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, valid, task] {
            if (!valid->load()) {
                timer->stop();
                timer->deleteLater();
                return;
            }
            task();
        });
        timer->start();
    });
    return RepeatingTimer(valid);
}

double EventLoopScheduler::now() const { return static_cast<double>(clock_.nsecsElapsed()) / 1e9; }

bool EventLoopScheduler::isCurrent() const {
    return context_ && QThread::currentThread() == context_->thread();
}

} // namespace orvanta::core

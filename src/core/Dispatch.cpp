#include "core/Dispatch.h"

#include "core/EventLoopScheduler.h"

#include <QCoreApplication>

#include <mutex>

namespace orvanta::core {

namespace {
struct Queues {
    std::mutex mutex;
    std::shared_ptr<Scheduler> main;
    std::shared_ptr<Scheduler> background;
};
Queues& queues() {
    static Queues q;
    return q;
}
} // namespace

std::shared_ptr<Scheduler> Dispatch::main() {
    std::lock_guard lock(queues().mutex);
    if (!queues().main) {
        QCoreApplication* application = QCoreApplication::instance();
        if (!application)
            qFatal("OrvantaARFoodSDK needs a Qt application object (QGuiApplication or QCoreApplication) "
                   "before it is used: its main queue is that application's event loop.");
        queues().main = std::make_shared<EventLoopScheduler>(application);
    }
    return queues().main;
}

std::shared_ptr<Scheduler> Dispatch::background() {
    std::lock_guard lock(queues().mutex);
    if (!queues().background) queues().background = EventLoopScheduler::withWorkerThread("orvanta-background");
    return queues().background;
}

void Dispatch::setMain(std::shared_ptr<Scheduler> scheduler) {
    std::lock_guard lock(queues().mutex);
    queues().main = std::move(scheduler);
}

void Dispatch::setBackground(std::shared_ptr<Scheduler> scheduler) {
    std::lock_guard lock(queues().mutex);
    queues().background = std::move(scheduler);
}

} // namespace orvanta::core

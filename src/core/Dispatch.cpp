#include "core/Dispatch.h"

#include <cassert>
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
    assert(queues().main && "no main queue installed");
    return queues().main;
}

std::shared_ptr<Scheduler> Dispatch::background() {
    std::lock_guard lock(queues().mutex);
    assert(queues().background && "no background queue installed");
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

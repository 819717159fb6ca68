#pragma once
// Where the kit finds its main queue and its background queue. An application installs
// event-loop queues at start; tests install ManualScheduler instances.
// Thread: main() and background() from any thread; the setters before work starts.

#include "core/Scheduler.h"

#include <memory>

namespace orvanta::core {

class Dispatch {
public:
    static std::shared_ptr<Scheduler> main();
    static std::shared_ptr<Scheduler> background();

    static void setMain(std::shared_ptr<Scheduler> scheduler);
    static void setBackground(std::shared_ptr<Scheduler> scheduler);
};

} // namespace orvanta::core

#pragma once
// Where the kit finds its main queue and its background queue. Unless others are installed
// (tests install ManualScheduler instances), the main queue is the running Qt application's
// event loop and the background queue a worker thread of the kit's, both set up on first
// use; using the main queue with no application object is fatal, with a message saying so.
// Thread: main() and background() from any thread; the setters before work starts (null
// goes back to the defaults).

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

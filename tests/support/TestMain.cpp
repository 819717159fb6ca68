// Test process entry: a Qt application object (network and timers need one), a manual
// main queue that tests drive, and a real background queue.
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"
#include "core/ManualScheduler.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <memory>

int main(int argc, char** argv) {
    // On the heap, so that a death test can take it away.
    auto app = std::make_unique<QCoreApplication>(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    // The process runs Qt threads; a death test re-runs the program instead of forking it.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    orvanta::core::Dispatch::setMain(std::make_shared<orvanta::core::ManualScheduler>());
    orvanta::core::Dispatch::setBackground(orvanta::core::EventLoopScheduler::withWorkerThread("background"));
    const int result = RUN_ALL_TESTS();
    orvanta::core::Dispatch::setBackground(nullptr);
    return result;
}

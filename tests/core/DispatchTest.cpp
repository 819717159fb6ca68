#include "core/Dispatch.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <future>

using namespace orvanta::core;

// A host that installs no queues still gets working ones: the application's event loop as
// the main queue and a worker thread as the background queue.
TEST(Dispatch, WithNothingInstalledTheQueuesAreTheApplicationsLoopAndAWorker) {
    const auto installedMain = Dispatch::main();
    const auto installedBackground = Dispatch::background();
    Dispatch::setMain(nullptr);
    Dispatch::setBackground(nullptr);

    const auto main = Dispatch::main();
    EXPECT_EQ(Dispatch::main(), main);
    EXPECT_TRUE(main->isCurrent());
    bool ran = false;
    main->async([&] { ran = true; });
    for (int turn = 0; turn < 1000 && !ran; ++turn) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    EXPECT_TRUE(ran);

    std::promise<bool> onBackground;
    const auto background = Dispatch::background();
    background->async([&] { onBackground.set_value(background->isCurrent() && !main->isCurrent()); });
    auto answer = onBackground.get_future();
    ASSERT_EQ(answer.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    EXPECT_TRUE(answer.get());

    Dispatch::setMain(installedMain);
    Dispatch::setBackground(installedBackground);
}

TEST(DispatchDeathTest, TheMainQueueWithoutAnApplicationObjectIsFatalAndSaysWhy) {
    EXPECT_DEATH(
        {
            Dispatch::setMain(nullptr);
            delete QCoreApplication::instance();
            Dispatch::main();
        },
        "needs a Qt application object");
}

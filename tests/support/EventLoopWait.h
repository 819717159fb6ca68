#pragma once
// Runs the calling thread's event loop until a condition holds, looking at it every 20 ms,
// for tests whose work (a loopback server, a main-queue delivery) needs that loop turning.
// Thread: a thread with an event loop (the test's main thread).

#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>

namespace orvanta::testing {

class EventLoopWait {
public:
    // False when `done` still does not hold after `limit`.
    static bool until(const std::function<bool()>& done, std::chrono::milliseconds limit = std::chrono::seconds(60)) {
        if (done()) return true;
        QEventLoop loop;
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, &loop, [&] {
            if (done()) loop.quit();
        });
        QTimer::singleShot(limit, &loop, &QEventLoop::quit);
        look.start(20);
        loop.exec();
        return done();
    }
};

} // namespace orvanta::testing

#include "support/EventLoopWait.h"

#include <QEventLoop>
#include <QTimer>

namespace orvanta::testing {

bool EventLoopWait::until(const std::function<bool()>& done, std::chrono::milliseconds limit) {
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

} // namespace orvanta::testing

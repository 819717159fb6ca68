#pragma once
// Waits for an event: runs the event loop, deferred deletions included, until `happened`
// holds or the generous bound passes.

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>

#include <functional>

namespace orvanta::testing {

inline bool runEventsUntil(const std::function<bool()>& happened, int boundMs = 10000) {
    QDeadlineTimer deadline(boundMs);
    while (!happened()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace orvanta::testing

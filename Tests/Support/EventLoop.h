// Waiting for things to happen, never for time to pass.
#pragma once

#include "Support/Testing.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace vantoro::testing {

/// Runs the event loop until the condition holds; false when it still does not after the (generous) limit.
template <typename Condition>
bool waitUntil(const Condition& condition, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const QDeadlineTimer deadline(limit);
    // Wakes the loop for conditions that no event of this thread announces.
    QTimer poll;
    poll.start(5);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace vantoro::testing

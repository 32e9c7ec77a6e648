#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <functional>

// Runs the event loop until `condition` holds or patience runs out; a slow
// machine only makes it wait longer.
inline bool eventually(const std::function<bool()>& condition, int timeoutMs = 30000)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

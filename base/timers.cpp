#include "base/timers.h"

#include <QTimer>

Timers::~Timers() = default;

void QtTimers::after(int ms, QObject* context, std::function<void()> work)
{
    QTimer::singleShot(ms, context, std::move(work));
}

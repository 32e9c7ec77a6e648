#include "platform/clock.h"

#include <QDateTime>
#include <QElapsedTimer>

namespace {

class WallClock final : public Clock {
public:
    double seconds() const override { return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0; }
};

class MonotonicClock final : public Clock {
public:
    MonotonicClock() { timer_.start(); }
    double seconds() const override { return double(timer_.nsecsElapsed()) / 1e9; }

private:
    QElapsedTimer timer_;
};

} // namespace

Clock::~Clock() = default;

const Clock& Clock::wall()
{
    static const WallClock clock;
    return clock;
}

const Clock& Clock::monotonic()
{
    static const MonotonicClock clock;
    return clock;
}

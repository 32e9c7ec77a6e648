#pragma once

#include "platform/clock.h"

// Time that moves only when a test says so.
class FakeClock final : public Clock {
public:
    double now = 1000.0;

    double seconds() const override { return now; }
    void advance(double by) { now += by; }
};

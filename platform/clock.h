#pragma once

// A source of time in seconds, so that tests can drive it.
class Clock {
public:
    virtual ~Clock();
    virtual double seconds() const = 0;

    // Wall-clock seconds since the epoch.
    static const Clock& wall();
    // Seconds that only ever grow, unaffected by clock changes.
    static const Clock& monotonic();
};

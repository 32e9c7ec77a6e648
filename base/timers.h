#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

// Runs work once after a delay, on the UI thread, unless `context` is gone by
// then. The program waits on Qt's timers; tests move time by hand.
class Timers {
public:
    virtual ~Timers();
    virtual void after(int ms, QObject* context, std::function<void()> work) = 0;
};

class QtTimers final : public Timers {
public:
    void after(int ms, QObject* context, std::function<void()> work) override;
};

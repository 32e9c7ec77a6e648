#pragma once

#include "base/timers.h"

#include <algorithm>
#include <vector>

// Time that passes only when a test says so; what falls due runs in order.
class FakeTimers final : public Timers {
public:
    void after(int ms, QObject* context, std::function<void()> work) override
    {
        pending_.push_back({now_ + ms, next_++, context, std::move(work)});
    }

    // Runs everything due within `ms`, including what that work schedules.
    void advance(int ms)
    {
        const qint64 until = now_ + ms;
        for (;;) {
            auto due = std::min_element(pending_.begin(), pending_.end(), [](const Pending& a, const Pending& b) {
                return a.at != b.at ? a.at < b.at : a.order < b.order;
            });
            if (due == pending_.end() || due->at > until)
                break;
            Pending running = std::move(*due);
            pending_.erase(due);
            now_ = running.at;
            if (running.context)
                running.work();
        }
        now_ = until;
    }

private:
    struct Pending {
        qint64 at;
        quint64 order;
        QPointer<QObject> context;
        std::function<void()> work;
    };
    std::vector<Pending> pending_;
    qint64 now_ = 0;
    quint64 next_ = 0;
};

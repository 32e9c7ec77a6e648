#pragma once

#include "platform/linux/atspi/atspiobjects.h"

#include <atomic>

class QDBusArgument;

// An application's objects asked over the accessibility bus: every round of
// questions is sent at once, each with the bus's short time-out.
class AtspiBusObjects final : public AtspiObjects {
public:
    // Once `stops` counts another stop, nothing more is asked: every question
    // counts as unanswered, so the reading ends at once.
    explicit AtspiBusObjects(const AtspiBus& bus, const std::atomic<int>* stops = nullptr)
        : bus_(bus), stops_(stops), stopsAtStart_(stops ? stops->load() : 0)
    {
    }

    QList<Answer> ask(const QList<Ask>& questions) override;
    std::optional<QList<AtspiCacheItem>> cache(const AtspiRef& application, bool& timedOut) override;

    // The objects of a bulk-cache reply; nothing when it is not one. Open to
    // tests and fuzzing: the application decides all of it.
    static std::optional<QList<AtspiCacheItem>> readCacheItems(const QDBusArgument& reply);

private:
    bool stopped() const { return stops_ && stops_->load() != stopsAtStart_; }

    const AtspiBus& bus_;
    const std::atomic<int>* stops_;
    const int stopsAtStart_;
};

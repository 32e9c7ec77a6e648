#pragma once

#include "platform/linux/atspi/atspiobjects.h"

class QDBusArgument;

// An application's objects asked over the accessibility bus: every round of
// questions is sent at once, each with the bus's short time-out.
class AtspiBusObjects final : public AtspiObjects {
public:
    explicit AtspiBusObjects(const AtspiBus& bus) : bus_(bus) {}

    QList<Answer> ask(const QList<Ask>& questions) override;
    std::optional<QList<AtspiCacheItem>> cache(const AtspiRef& application, bool& timedOut) override;

    // The objects of a bulk-cache reply; nothing when it is not one. Open to
    // tests and fuzzing: the application decides all of it.
    static std::optional<QList<AtspiCacheItem>> readCacheItems(const QDBusArgument& reply);

private:
    const AtspiBus& bus_;
};

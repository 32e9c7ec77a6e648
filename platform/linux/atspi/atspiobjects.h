#pragma once

#include "platform/linux/atspi/atspibus.h"

#include <QList>
#include <QString>

#include <optional>
#include <variant>

// One object of a toolkit's bulk cache (Cache.GetItems), in either of the two
// layouts toolkits send.
struct AtspiCacheItem {
    AtspiRef ref;
    AtspiRef parent;
    std::optional<QList<AtspiRef>> children; // the layout with child lists
    int childCount = -1;                     // the layout with counts (GTK: −1 for menus)
    QString name;
    uint role = 0;
    QList<uint> states;
};

// What the menu reader asks another application about its objects. Over the
// accessibility bus in the program; from a table in tests and fuzzing, where
// the objects of a broken or hostile application are made up. Whatever the
// application answers is its own word: the reader trusts none of it.
class AtspiObjects {
public:
    // An object's children beyond this many are not taken: no menu has so many.
    static constexpr int kMaxChildren = 2000;

    enum class Question { children, role, state, name, keyBinding, parent };
    struct Ask {
        AtspiRef ref;
        Question question = Question::children;
    };
    using Value = std::variant<std::monostate, QList<AtspiRef>, uint, quint64, QString, AtspiRef>;
    struct Answer {
        bool timedOut = false; // the application did not answer in time
        Value value;           // empty where it answered with an error or a value of the wrong type
    };

    virtual ~AtspiObjects() = default;
    // Asks everything at once and waits for every answer; the answers come in
    // the order of the questions. Waits: never on the UI thread.
    virtual QList<Answer> ask(const QList<Ask>& questions) = 0;
    // Every object of the application from its toolkit's bulk cache, where it
    // keeps one; `timedOut` tells a silent application from one without a cache.
    virtual std::optional<QList<AtspiCacheItem>> cache(const AtspiRef& application, bool& timedOut) = 0;
};

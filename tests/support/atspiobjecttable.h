#pragma once

// An application's accessible objects as a table, answering the menu reader's
// questions the way an application on the bus would: for tests and fuzzing,
// where the objects of broken or hostile applications are made up.

#include "platform/fake/fakeclock.h"
#include "platform/linux/atspi/atspiobjects.h"

#include <QHash>

class AtspiObjectTable final : public AtspiObjects {
public:
    struct Object {
        uint role = 0;
        QString name;
        quint64 states = 0;
        QList<AtspiRef> children;
        QString keyBinding;
        AtspiRef parent;
    };

    QHash<AtspiRef, Object> objects;
    std::optional<QList<AtspiCacheItem>> bulkCache; // none: the toolkit keeps none
    // Time each round of questions takes, on `clock` where one is given.
    FakeClock* clock = nullptr;
    double secondsPerRound = 0;
    // From this round on (counted from 0), the application stops answering.
    int silentFromRound = -1;

    int rounds = 0;
    qsizetype questions = 0;
    qsizetype largestRound = 0;

    QList<Answer> ask(const QList<Ask>& asked) override
    {
        const bool silent = silentFromRound >= 0 && rounds >= silentFromRound;
        ++rounds;
        questions += asked.size();
        largestRound = std::max(largestRound, asked.size());
        if (clock)
            clock->advance(secondsPerRound);
        QList<Answer> answers;
        for (const Ask& ask : asked) {
            const auto found = objects.constFind(ask.ref);
            if (silent) {
                answers.append(Answer{true, {}});
                continue;
            }
            if (found == objects.cend()) {
                answers.append(Answer{false, {}}); // an error: no such object
                continue;
            }
            switch (ask.question) {
            case Question::children:
                answers.append(Answer{false, found->children.mid(0, kMaxChildren)});
                break;
            case Question::role:
                answers.append(Answer{false, found->role});
                break;
            case Question::state:
                answers.append(Answer{false, found->states});
                break;
            case Question::name:
                answers.append(Answer{false, found->name});
                break;
            case Question::keyBinding:
                answers.append(Answer{false, found->keyBinding});
                break;
            case Question::parent:
                answers.append(Answer{false, found->parent});
                break;
            }
        }
        return answers;
    }

    std::optional<QList<AtspiCacheItem>> cache(const AtspiRef&, bool& timedOut) override
    {
        timedOut = false;
        return bulkCache;
    }
};

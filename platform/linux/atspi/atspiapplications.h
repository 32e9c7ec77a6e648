#pragma once

#include "platform/linux/atspi/atspibus.h"

#include <QHash>
#include <QObject>

#include <atomic>
#include <mutex>
#include <optional>

class QThreadPool;

// The applications on the accessibility bus, by process: looked up without
// waiting, kept up to date off the UI thread when the registry announces an
// application coming or going, and whenever a lookup misses.
class AtspiApplications : public QObject {
    Q_OBJECT

public:
    struct Info {
        qint32 pid = 0;
        QString name;
        QString toolkit;
        AtspiRef root;
        bool answered = true; // false: it did not answer when asked its name
    };

    AtspiApplications(AtspiBus& bus, QThreadPool& pool, QObject* parent = nullptr);
    ~AtspiApplications() override;

    // What is known now; never waits.
    std::optional<Info> find(qint32 pid) const;
    QList<Info> all() const;

    // Reads the bus afresh and waits for it: worker threads only.
    void refreshNow();
    // Refreshes on the pool soon; requests made meanwhile are folded into one.
    void refreshSoon();
    // `find`, else a fresh reading first. Waits: worker threads only.
    std::optional<Info> lookup(qint32 pid);

signals:
    void changed();

private slots:
    void registryChildrenChanged();

private:
    void listenToRegistry();

    AtspiBus& bus_;
    QThreadPool& pool_;
    mutable std::mutex mutex_;
    QHash<qint32, Info> byPid_;
    std::mutex refreshing_;
    std::atomic<bool> refreshQueued_ = false;
    int listeningTo_ = 0; // the bus generation whose registry signals arrive here; UI thread only
};

#pragma once

// A session bus of the test's own, as the desktop's is: a fake service owns
// its well-known name there, and any other program may send signals.

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

class PrivateBus {
public:
    PrivateBus()
    {
        daemon_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                      QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
                                                      QStringLiteral("--address=unix:path=") + folder_.filePath("bus")});
        if (daemon_.waitForReadyRead(10000))
            address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    }
    ~PrivateBus()
    {
        for (const QString& name : std::as_const(names_))
            QDBusConnection::disconnectFromBus(name);
        daemon_.kill();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    // A connection of its own, named `name` in this process.
    QDBusConnection connect(const QString& name)
    {
        names_.append(name);
        return QDBusConnection::connectToBus(address_, name);
    }

private:
    QTemporaryDir folder_;
    QProcess daemon_;
    QString address_;
    QStringList names_;
};

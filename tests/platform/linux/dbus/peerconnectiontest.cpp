#include "platform/linux/dbus/peerconnection.h"

#include <QDBusServer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

// A D-Bus server of another process, listening on `path`.
struct OtherProcessServer {
    explicit OtherProcessServer(const QString& path)
    {
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                      QStringLiteral("--address=unix:path=") + path});
        for (int i = 0; i < 200 && !QFile::exists(path); ++i)
            QThread::msleep(25);
    }
    ~OtherProcessServer()
    {
        daemon.kill();
        daemon.waitForFinished();
    }
    QProcess daemon;
};

} // namespace

// The connection is kept only when the process that offered the address is
// the one listening on it; a hostile address never gets as far as libdbus.
TEST(PeerConnection, KeepsOnlyAConnectionToTheProcessThatOfferedIt)
{
    QTemporaryDir folder;
    QDBusServer own(QStringLiteral("unix:path=") + folder.filePath(QStringLiteral("own")));
    ASSERT_TRUE(own.isConnected());
    const qint32 self = qint32(::getpid());

    const std::optional<QDBusConnection> mine = PeerConnection::open(own.address(), QStringLiteral("peer-test-own"), self);
    ASSERT_TRUE(mine.has_value());
    EXPECT_TRUE(mine->isConnected());
    const auto listener = PeerConnection::listenerOf(*mine);
    ASSERT_TRUE(listener);
    EXPECT_EQ(listener->pid, self);
    QDBusConnection::disconnectFromPeer(QStringLiteral("peer-test-own"));

    // The same socket claimed by another process.
    EXPECT_FALSE(PeerConnection::open(own.address(), QStringLiteral("peer-test-claimed"), self + 1));
    EXPECT_FALSE(QDBusConnection(QStringLiteral("peer-test-claimed")).isConnected());

    // Another process's socket offered as this one's.
    const QString other = folder.filePath(QStringLiteral("other"));
    OtherProcessServer server(other);
    ASSERT_TRUE(QFile::exists(other));
    EXPECT_FALSE(PeerConnection::open(QStringLiteral("unix:path=") + other, QStringLiteral("peer-test-other"), self));
    EXPECT_TRUE(PeerConnection::open(QStringLiteral("unix:path=") + other, QStringLiteral("peer-test-daemon"),
                                     qint32(server.daemon.processId())));
    QDBusConnection::disconnectFromPeer(QStringLiteral("peer-test-daemon"));

    // A program named by the address never runs.
    const QString marker = folder.filePath(QStringLiteral("ran"));
    EXPECT_FALSE(PeerConnection::open(QStringLiteral("unixexec:path=/bin/sh,argv0=sh,argv1=-c,argv2=touch%20") + marker,
                                      QStringLiteral("peer-test-exec"), self));
    QThread::msleep(200);
    EXPECT_FALSE(QFile::exists(marker));
}

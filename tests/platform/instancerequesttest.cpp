#include "platform/instancerequest.h"

#include "app/kestrioapp.h"
#include "platform/socketpeer.h"
#include "support/eventually.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using Kind = InstanceRequest::Kind;

TEST(InstanceRequest, ToggleCarriesItsTokenToTheRunningInstance)
{
    const InstanceRequest toggle{Kind::toggle, QStringLiteral("sway-token_1234:5678")};
    const auto decoded = InstanceRequest::decode(toggle.encode());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->kind, Kind::toggle);
    EXPECT_EQ(decoded->activationToken, toggle.activationToken);

    const auto reopen = InstanceRequest::decode(InstanceRequest{}.encode());
    ASSERT_TRUE(reopen);
    EXPECT_EQ(reopen->kind, Kind::reopen);
    EXPECT_EQ(InstanceRequest::decode("toggle\n")->activationToken, QString());
}

TEST(InstanceRequest, WhatIsNoRequestIsIgnoredAndNoTokenIsPassedOnBroken)
{
    for (const QByteArray& line : {QByteArray("quit\n"), QByteArray(""), QByteArray("togglex\n"), QByteArray("\xff\xfe\n")})
        EXPECT_FALSE(InstanceRequest::decode(line)) << line.constData();

    // A token the desktop could not have made reaches nobody; the toggle still happens.
    for (const QByteArray& token : {QByteArray("two words"), QByteArray("tab\there"), QByteArray("caf\xc3\xa9"),
                                    QByteArray(InstanceRequest::kMaxTokenLength + 1, 'a')}) {
        const auto decoded = InstanceRequest::decode("toggle " + token + "\n");
        ASSERT_TRUE(decoded) << token.constData();
        EXPECT_EQ(decoded->kind, Kind::toggle);
        EXPECT_EQ(decoded->activationToken, QString()) << token.constData();
    }
    // And none is sent.
    EXPECT_EQ((InstanceRequest{Kind::toggle, QStringLiteral("a b")}.encode()), "toggle\n");
}

} // namespace

namespace {

// A listener of another user at the instance's socket (possible wherever the
// folder is shared) is never handed a request or its activation token; one
// of this user is.
TEST(KestrioInstance, RequestsGoOnlyToAListenerOfThisUser)
{
    QTemporaryDir folder;
    const QString socket = folder.filePath("kestrio.socket");
    const QString heard = folder.filePath("heard");
    const InstanceRequest toggle{InstanceRequest::Kind::toggle, "token-123"};

    if (SocketPeer::currentUser() == 0) {
        // Another user listens there (a shared folder, as /tmp is).
        QFile::setPermissions(folder.path(), QFileDevice::Permissions(0x7777));
        QProcess other;
        other.start("runuser", {"-u", "nobody", "--", "python3", "-c",
                                "import socket, sys\n"
                                "s = socket.socket(socket.AF_UNIX); s.bind(sys.argv[1]); s.listen(1)\n"
                                "open(sys.argv[1] + '.ready', 'w').close()\n"
                                "c, _ = s.accept(); c.settimeout(2)\n"
                                "data = b''\n"
                                "try:\n"
                                "    while chunk := c.recv(100): data += chunk\n"
                                "except OSError: pass\n"
                                "open(sys.argv[2], 'wb').write(data)\n",
                                socket, heard});
        ASSERT_TRUE(other.waitForStarted());
        ASSERT_TRUE(eventually([&] { return QFile::exists(socket + ".ready"); }));
        EXPECT_FALSE(KestrioApp::passToRunningInstance(toggle, socket));
        ASSERT_TRUE(other.waitForFinished(10000));
        QFile file(heard);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), QByteArray());
        QFile::remove(socket);
    }

    QLocalServer mine;
    ASSERT_TRUE(mine.listen(socket));
    EXPECT_TRUE(KestrioApp::passToRunningInstance(toggle, socket));
    ASSERT_TRUE(mine.waitForNewConnection(5000));
    QLocalSocket* connection = mine.nextPendingConnection();
    ASSERT_TRUE(eventually([&] { return connection->canReadLine() || connection->waitForReadyRead(100); }));
    EXPECT_EQ(InstanceRequest::decode(connection->readLine())->activationToken, "token-123");
}

} // namespace

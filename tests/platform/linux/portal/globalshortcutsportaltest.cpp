#include "platform/linux/portal/globalshortcutsportal.h"
#include "support/eventually.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusServer>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString kRequestPrefix = QStringLiteral("/org/freedesktop/portal/desktop/request/1_1/");
const QString kSessionPath = QStringLiteral("/org/freedesktop/portal/desktop/session/1_1/kestrio");

// Plays the desktop's portal on the far end of a private connection: answers
// each request with a Response signal, as xdg-desktop-portal does.
class FakePortal : public QDBusVirtualObject {
public:
    uint version = 1;
    uint bindResponse = 0; // 1: the user cancelled the desktop's dialog
    QStringList calls;
    QVariantMap lastShortcut;
    QString closedSession;
    std::optional<QDBusConnection> connection;

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        const QString member = message.member();
        calls.append(member);
        if (member == QLatin1String("Get")) {
            if (version == 0)
                bus.send(message.createErrorReply(QDBusError::UnknownInterface, QStringLiteral("no such interface")));
            else
                bus.send(message.createReply(QVariant::fromValue(QDBusVariant(version))));
            return true;
        }
        if (member == QLatin1String("Close")) {
            closedSession = message.path();
            bus.send(message.createReply());
            return true;
        }
        const QList<QVariant> arguments = message.arguments();
        QVariantMap options;
        uint response = 0;
        QVariantMap results;
        if (member == QLatin1String("CreateSession")) {
            options = qdbus_cast<QVariantMap>(arguments.value(0));
            results.insert(QStringLiteral("session_handle"), kSessionPath);
        } else if (member == QLatin1String("BindShortcuts")) {
            options = qdbus_cast<QVariantMap>(arguments.value(3));
            const QDBusArgument list = arguments.value(1).value<QDBusArgument>();
            list.beginArray();
            while (!list.atEnd()) {
                QString id;
                list.beginStructure();
                list >> id >> lastShortcut;
                list.endStructure();
                lastShortcut.insert(QStringLiteral("id"), id);
            }
            list.endArray();
            response = bindResponse;
        } else {
            return false;
        }
        const QString request = kRequestPrefix + options.value(QStringLiteral("handle_token")).toString();
        bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        QDBusMessage answer = QDBusMessage::createSignal(request, QStringLiteral("org.freedesktop.portal.Request"),
                                                         QStringLiteral("Response"));
        answer << response << results;
        bus.send(answer);
        return true;
    }

    void press(const QString& session, const QString& id)
    {
        QDBusMessage activated = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                            QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                                            QStringLiteral("Activated"));
        activated << QVariant::fromValue(QDBusObjectPath(session)) << id << qulonglong(1234) << QVariantMap();
        connection->send(activated);
    }
};

class Portal : public testing::Test {
protected:
    void SetUp() override
    {
#ifdef __SANITIZE_THREAD__
        // Replies and signals reach this thread from Qt's D-Bus thread through
        // Qt's own locks, which ThreadSanitizer cannot see in an uninstrumented Qt.
        GTEST_SKIP() << "Qt's D-Bus thread hands over what ThreadSanitizer cannot follow";
#endif
    }

    Portal() : server_(QStringLiteral("unix:tmpdir=") + folder_.path())
    {
        QObject::connect(&server_, &QDBusServer::newConnection, [this](const QDBusConnection& connection) {
            QDBusConnection(connection).registerVirtualObject(QStringLiteral("/"), &fake, QDBusConnection::SubPath);
            fake.connection = connection;
        });
    }
    ~Portal() override
    {
        portal_.reset();
        QDBusConnection::disconnectFromPeer(QStringLiteral("kestrio-portal-test"));
        if (fake.connection) {
            fake.connection->unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
            QDBusConnection::disconnectFromPeer(fake.connection->name());
        }
    }

    GlobalShortcutsPortal& portal()
    {
        if (!portal_) {
            portal_ = std::make_unique<GlobalShortcutsPortal>(
                QDBusConnection::connectToPeer(server_.address(), QStringLiteral("kestrio-portal-test")));
        }
        return *portal_;
    }

    FakePortal fake;

private:
    QTemporaryDir folder_;
    QDBusServer server_;
    std::unique_ptr<GlobalShortcutsPortal> portal_;
};

TEST_F(Portal, TheShortcutIsBoundThroughASessionAndEachPressArrives)
{
    int presses = 0;
    // Asked before the portal has answered whether it exists: bound once it has.
    portal().bind("CTRL+SHIFT+space", "Open Kestrio's search panel", [&] { ++presses; });
    ASSERT_TRUE(eventually([&] { return portal().isBound(); }, 10000));
    EXPECT_EQ(fake.calls, (QStringList{"Get", "CreateSession", "BindShortcuts"}));
    EXPECT_EQ(fake.lastShortcut.value("id").toString(), GlobalShortcutsPortal::kShortcutId);
    EXPECT_EQ(fake.lastShortcut.value("preferred_trigger").toString(), "CTRL+SHIFT+space");

    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    EXPECT_TRUE(eventually([&] { return presses == 1; }, 10000));
    // Presses of other programs' sessions or shortcuts are not Kestrio's.
    fake.press(kSessionPath + "-other", GlobalShortcutsPortal::kShortcutId);
    fake.press(kSessionPath, "something-else");
    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    EXPECT_TRUE(eventually([&] { return presses == 2; }, 10000));
    QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    EXPECT_EQ(presses, 2);

    portal().release();
    EXPECT_TRUE(eventually([&] { return fake.closedSession == kSessionPath; }, 10000));
    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    EXPECT_EQ(presses, 2);
}

TEST_F(Portal, ACancelledDialogOrNoPortalBindsNothing)
{
    fake.bindResponse = 1;
    portal().bind("CTRL+k", "Open Kestrio's search panel", [] {});
    ASSERT_TRUE(eventually([&] { return fake.calls.contains("BindShortcuts"); }, 10000));
    QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    EXPECT_FALSE(portal().isBound());
    EXPECT_EQ(portal().isAvailable(), true);
}

TEST_F(Portal, ADesktopWithoutThePortalSaysSo)
{
    fake.version = 0;
    portal().bind("CTRL+k", "Open Kestrio's search panel", [] {});
    ASSERT_TRUE(eventually([&] { return portal().isAvailable().has_value(); }, 10000));
    EXPECT_EQ(portal().isAvailable(), false);
    EXPECT_EQ(fake.calls, QStringList{"Get"});
}

} // namespace

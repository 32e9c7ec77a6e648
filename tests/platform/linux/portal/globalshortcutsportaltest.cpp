#include "platform/linux/portal/globalshortcutsportal.h"
#include "support/eventually.h"
#include "support/privatebus.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QTest>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

// One shortcut as the portal lists it: a(sa{sv}).
struct ListedShortcut {
    QString id;
    QVariantMap properties;
};
Q_DECLARE_METATYPE(ListedShortcut)

QDBusArgument& operator<<(QDBusArgument& argument, const ListedShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ListedShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace {

const QString kRequestPrefix = QStringLiteral("/org/freedesktop/portal/desktop/request/1_1/");
const QString kSessionPath = QStringLiteral("/org/freedesktop/portal/desktop/session/1_1/kestrio");

// Plays the desktop's portal on the far end of a private connection: answers
// each request with a Response signal, as xdg-desktop-portal does.
class FakePortal : public QDBusVirtualObject {
public:
    uint version = 1;
    uint bindResponse = 0; // 1: the user cancelled the desktop's dialog
    QString grantedKeys = "Ctrl+Shift+Space"; // what the desktop says it bound; empty: no keys
    bool bindAnswered = true; // false: the desktop's dialog is still open
    QString lastRequest;
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
            results.insert(QStringLiteral("shortcuts"),
                           QVariant::fromValue(shortcutList(grantedKeys)));
        } else {
            return false;
        }
        const QString request = kRequestPrefix + options.value(QStringLiteral("handle_token")).toString();
        lastRequest = request;
        bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        if (member == QLatin1String("BindShortcuts") && !bindAnswered)
            return true;
        QDBusMessage answer = QDBusMessage::createSignal(request, QStringLiteral("org.freedesktop.portal.Request"),
                                                         QStringLiteral("Response"));
        answer << response << results;
        bus.send(answer);
        return true;
    }

    static QList<ListedShortcut> shortcutList(const QString& keys)
    {
        return {{GlobalShortcutsPortal::kShortcutId, {{"description", "Open Kestrio's search panel"},
                                                      {"trigger_description", keys}}}};
    }
    // The user changed the keys in the desktop's own settings.
    void changeKeys(const QString& session, const QString& keys)
    {
        QDBusMessage changed = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                          QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                                          QStringLiteral("ShortcutsChanged"));
        changed << QVariant::fromValue(QDBusObjectPath(session)) << QVariant::fromValue(shortcutList(keys));
        connection->send(changed);
    }
    // An Activated signal, from the portal or, with `from`, from another program on the bus.
    void press(const QString& session, const QString& id, std::optional<QDBusConnection> from = std::nullopt)
    {
        QDBusMessage activated = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                            QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                                            QStringLiteral("Activated"));
        activated << QVariant::fromValue(QDBusObjectPath(session)) << id << qulonglong(1234) << QVariantMap();
        from.value_or(*connection).send(activated);
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

    Portal()
    {
        qDBusRegisterMetaType<ListedShortcut>();
        qDBusRegisterMetaType<QList<ListedShortcut>>();
        fake.connection = bus_.connect(QStringLiteral("fake-portal"));
        fake.connection->registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
        fake.connection->registerVirtualObject(QStringLiteral("/"), &fake, QDBusConnection::SubPath);
    }
    ~Portal() override
    {
        portal_.reset();
        fake.connection->unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
    }

    GlobalShortcutsPortal& portal()
    {
        if (!portal_)
            portal_ = std::make_unique<GlobalShortcutsPortal>(bus_.connect(QStringLiteral("kestrio-portal-test")));
        return *portal_;
    }
    // Another program on the same bus.
    QDBusConnection impostor() { return bus_.connect(QStringLiteral("impostor")); }

    FakePortal fake;

private:
    PrivateBus bus_;
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
    // The keys the desktop granted, as it names them.
    EXPECT_EQ(portal().state(), (DesktopShortcutState{DesktopShortcutState::Kind::bound, "Ctrl+Shift+Space", {}}));
    // Changed in the desktop's own settings later.
    fake.changeKeys(kSessionPath, "Meta+K");
    EXPECT_TRUE(eventually([&] { return portal().state().keys == "Meta+K"; }, 10000));

    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    EXPECT_TRUE(eventually([&] { return presses == 1; }, 10000));
    // Presses of other programs' sessions or shortcuts are not Kestrio's.
    fake.press(kSessionPath + "-other", GlobalShortcutsPortal::kShortcutId);
    fake.press(kSessionPath, "something-else");
    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    EXPECT_TRUE(eventually([&] { return presses == 2; }, 10000));
    // Another program sending the portal's signal, rightly shaped, is not the portal.
    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId, impostor());
    QTest::qWait(300); // signals on their way arrive meanwhile
    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    EXPECT_TRUE(eventually([&] { return presses == 3; }, 10000));
    QTest::qWait(300); // signals on their way arrive meanwhile
    EXPECT_EQ(presses, 3);

    portal().release();
    EXPECT_TRUE(eventually([&] { return fake.closedSession == kSessionPath; }, 10000));
    fake.press(kSessionPath, GlobalShortcutsPortal::kShortcutId);
    QTest::qWait(300); // signals on their way arrive meanwhile
    EXPECT_EQ(presses, 3);
}

// A desktop that takes the shortcut but gives it no keys (the user left it
// unassigned): nothing opens Kestrio, and the settings say so.
TEST_F(Portal, AShortcutGrantedNoKeysIsNotBound)
{
    fake.grantedKeys.clear();
    portal().bind("CTRL+k", "Open Kestrio's search panel", [] {});
    ASSERT_TRUE(eventually([&] { return portal().state().kind == DesktopShortcutState::Kind::refused; }, 10000));
    EXPECT_FALSE(portal().isBound());
    EXPECT_TRUE(portal().state().problem.contains("no keys"));
}

TEST_F(Portal, ACancelledDialogOrNoPortalBindsNothing)
{
    fake.bindResponse = 1;
    portal().bind("CTRL+k", "Open Kestrio's search panel", [] {});
    ASSERT_TRUE(eventually([&] { return fake.calls.contains("BindShortcuts"); }, 10000));
    QTest::qWait(300); // signals on their way arrive meanwhile
    EXPECT_FALSE(portal().isBound());
    EXPECT_EQ(portal().isAvailable(), true);
}

// While the desktop's dialog is open, another program answers the request
// in the portal's place: nothing is bound on its word.
TEST_F(Portal, AnAnswerFromAnotherProgramBindsNothing)
{
    fake.bindAnswered = false;
    portal().bind("CTRL+k", "Open Kestrio's search panel", [] {});
    ASSERT_TRUE(eventually([&] { return fake.calls.contains("BindShortcuts"); }, 10000));
    // The answer the portal itself would give, keys granted and all.
    QDBusMessage answer = QDBusMessage::createSignal(fake.lastRequest, QStringLiteral("org.freedesktop.portal.Request"),
                                                     QStringLiteral("Response"));
    answer << uint(0)
           << QVariantMap{{QStringLiteral("shortcuts"), QVariant::fromValue(FakePortal::shortcutList("Ctrl+K"))}};
    impostor().send(answer);
    QTest::qWait(300); // signals on their way arrive meanwhile
    EXPECT_FALSE(portal().isBound());
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

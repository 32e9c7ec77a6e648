#include "platform/linux/kde/kdeglobalshortcut.h"
#include "support/desktopkeys.h"
#include "support/eventually.h"
#include "support/privatebus.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr int kCtrlAltSpace = (Qt::ControlModifier | Qt::AltModifier | Qt::Key_Space).toCombined();
constexpr int kSuperK = (Qt::MetaModifier | Qt::Key_K).toCombined();
const QString kComponentPath = QStringLiteral("/component/kestrio");

TEST(KdeGlobalShortcutKeys, TriggersAreNumberedAsPlasmaNumbersKeys)
{
    struct Case {
        const char* trigger;
        int key;
        const char* readable;
    };
    const Case cases[] = {
        {"CTRL+ALT+space", kCtrlAltSpace, "Ctrl+Alt+Space"},
        {"LOGO+k", kSuperK, "Super+K"},
        {"CTRL+SHIFT+F5", (Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_F5).toCombined(), "Ctrl+Shift+F5"},
        {"ALT+comma", (Qt::AltModifier | Qt::Key_Comma).toCombined(), "Alt+,"},
        {"CTRL+7", (Qt::ControlModifier | Qt::Key_7).toCombined(), "Ctrl+7"},
        {"CTRL+Page_Down", (Qt::ControlModifier | Qt::Key_PageDown).toCombined(), "Ctrl+PgDown"},
        // What names no key Plasma knows is no key.
        {"CTRL+", 0, ""},
        {"CTRL+F99", 0, ""},
        {"CTRL+adiaeresis", (Qt::ControlModifier | Qt::Key_Adiaeresis).toCombined(), "Ctrl+Ä"},
        {"CTRL+NoSuchKey", 0, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trigger);
        EXPECT_EQ(KdeGlobalShortcut::keyOf(desktopKeys(c.trigger)), c.key);
        if (c.key) {
            EXPECT_EQ(KdeGlobalShortcut::readable(c.key), c.readable);
        }
    }
}

// Plays Plasma's shortcut service (kglobalaccel) on a private bus: actions
// with their keys, one holder per key, presses and changes as signals.
class FakeShortcutService : public QDBusVirtualObject {
public:
    QHash<QString, QList<int>> keys; // by "component/action"
    QHash<QString, QStringList> actions; // the whole action id, by "component/action"
    QStringList calls;
    uint lastFlags = 0;
    std::optional<QDBusConnection> connection;

    static QString idOf(const QStringList& actionId) { return actionId.value(0) + u'/' + actionId.value(1); }

    // Another program's action holding `key`, as Plasma's own do.
    void hold(const QStringList& actionId, int key)
    {
        actions.insert(idOf(actionId), actionId);
        keys.insert(idOf(actionId), {key});
    }
    QStringList holderOf(int key) const
    {
        for (auto it = keys.cbegin(); it != keys.cend(); ++it) {
            if (it->contains(key))
                return actions.value(it.key());
        }
        return {};
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        const QString member = message.member();
        calls.append(member);
        const QList<QVariant> arguments = message.arguments();
        const QStringList actionId = arguments.value(0).toStringList();
        if (member == QLatin1String("doRegister")) {
            actions.insert(idOf(actionId), actionId);
            bus.send(message.createReply());
        } else if (member == QLatin1String("shortcut")) {
            bus.send(message.createReply(QVariant::fromValue(keys.value(idOf(actionId)))));
        } else if (member == QLatin1String("action")) {
            bus.send(message.createReply(holderOf(arguments.value(0).toInt())));
        } else if (member == QLatin1String("setShortcut")) {
            lastFlags = arguments.value(2).toUInt();
            const QList<int> wanted = qdbus_cast<QList<int>>(arguments.value(1));
            QList<int> granted;
            for (int key : wanted) {
                const QStringList holder = holderOf(key);
                if (holder.isEmpty() || idOf(holder) == idOf(actionId))
                    granted.append(key);
            }
            keys.insert(idOf(actionId), granted);
            bus.send(message.createReply(QVariant::fromValue(granted)));
        } else if (member == QLatin1String("getComponent")) {
            bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(kComponentPath))));
        } else if (member == QLatin1String("unregister")) {
            const QString id = arguments.value(0).toString() + u'/' + arguments.value(1).toString();
            keys.remove(id);
            actions.remove(id);
            bus.send(message.createReply(true));
        } else if (member == QLatin1String("setInactive")) {
            bus.send(message.createReply());
        } else {
            return false;
        }
        return true;
    }

    // A press, from the service or, with `from`, from another program on the bus.
    void press(const QString& action, std::optional<QDBusConnection> from = std::nullopt)
    {
        QDBusMessage pressed = QDBusMessage::createSignal(kComponentPath, QStringLiteral("org.kde.kglobalaccel.Component"),
                                                         QStringLiteral("globalShortcutPressed"));
        pressed << QStringLiteral("kestrio") << action << qlonglong(1234);
        from.value_or(*connection).send(pressed);
    }
    // The user changed Kestrio's keys in System Settings.
    void changeKeys(const QList<int>& newKeys)
    {
        keys.insert(QStringLiteral("kestrio/toggle"), newKeys);
        QDBusMessage changed = QDBusMessage::createSignal(QStringLiteral("/kglobalaccel"),
                                                         QStringLiteral("org.kde.KGlobalAccel"),
                                                         QStringLiteral("yourShortcutGotChanged"));
        changed << KdeGlobalShortcut::kActionId << QVariant::fromValue(newKeys);
        connection->send(changed);
    }
};

class KdeShortcut : public testing::Test {
protected:
    void SetUp() override
    {
#ifdef __SANITIZE_THREAD__
        // Replies and signals reach this thread from Qt's D-Bus thread through
        // Qt's own locks, which ThreadSanitizer cannot see in an uninstrumented Qt.
        GTEST_SKIP() << "Qt's D-Bus thread hands over what ThreadSanitizer cannot follow";
#endif
    }

    KdeShortcut()
    {
        service.connection = bus_.connect(QStringLiteral("fake-kglobalaccel"));
        service.connection->registerService(KdeGlobalShortcut::kService);
        service.connection->registerVirtualObject(QStringLiteral("/"), &service, QDBusConnection::SubPath);
    }
    ~KdeShortcut() override
    {
        shortcut_.reset();
        service.connection->unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
    }

    KdeGlobalShortcut& shortcut()
    {
        if (!shortcut_)
            shortcut_ = std::make_unique<KdeGlobalShortcut>(bus_.connect(QStringLiteral("kestrio-kde-test")));
        return *shortcut_;
    }
    void bind(const QString& trigger, bool replace)
    {
        shortcut().bind(desktopKeys(trigger), replace, [this] { ++presses; }, [this](const DesktopShortcutState& s) { state = s; });
    }
    QDBusConnection impostor() { return bus_.connect(QStringLiteral("impostor")); }

    FakeShortcutService service;
    DesktopShortcutState state;
    int presses = 0;

private:
    PrivateBus bus_;
    std::unique_ptr<KdeGlobalShortcut> shortcut_;
};

using Kind = DesktopShortcutState::Kind;

TEST_F(KdeShortcut, FreeKeysAreBoundAndPressesComeFromTheServiceAlone)
{
    bind("CTRL+ALT+space", true);
    ASSERT_TRUE(eventually([&] { return state.kind == Kind::bound; }, 10000));
    EXPECT_EQ(state.keys, "Ctrl+Alt+Space");
    EXPECT_EQ(service.keys.value("kestrio/toggle"), QList<int>{kCtrlAltSpace});
    EXPECT_EQ(service.actions.value("kestrio/toggle"), KdeGlobalShortcut::kActionId); // shows as "Kestrio" in System Settings
    EXPECT_EQ(service.lastFlags, 2u | 4u); // present, and the keys just chosen replace saved ones
    ASSERT_TRUE(eventually([&] { return service.calls.contains("getComponent"); }, 10000));
    QTest::qWait(300); // the subscription is made meanwhile

    service.press("toggle");
    EXPECT_TRUE(eventually([&] { return presses == 1; }, 10000));
    // Another program sending the service's signal, rightly shaped, is not the service.
    service.press("toggle", impostor());
    service.press("some-other-action");
    QTest::qWait(300); // signals on their way arrive meanwhile
    EXPECT_EQ(presses, 1);

    // Changed, then cleared, in System Settings.
    service.changeKeys({kSuperK});
    EXPECT_TRUE(eventually([&] { return state.keys == "Super+K"; }, 10000));
    service.changeKeys({});
    EXPECT_TRUE(eventually([&] { return state.kind == Kind::refused; }, 10000));
    EXPECT_TRUE(state.problem.contains("No keys open Kestrio"));

    shortcut().release();
    EXPECT_TRUE(eventually([&] { return service.calls.contains("setInactive"); }, 10000));
    service.press("toggle");
    QTest::qWait(300); // signals on their way arrive meanwhile
    EXPECT_EQ(presses, 1);
}

// Keys another action holds stay its own: Kestrio names the holder and
// takes nothing; the user can still give it keys in System Settings.
TEST_F(KdeShortcut, KeysAnotherActionHoldsAreRefusedNamingIt)
{
    const QStringList krunner{"org.kde.krunner.desktop", "RunClipboard", "KRunner", "Run command on clipboard contents"};
    service.hold(krunner, kCtrlAltSpace);
    bind("CTRL+ALT+space", true);
    ASSERT_TRUE(eventually([&] { return state.kind == Kind::refused; }, 10000));
    EXPECT_EQ(state.problem, "Ctrl+Alt+Space is already the shortcut for “Run command on clipboard contents” (KRunner). "
                             "Record another shortcut in Kestrio's settings.");
    EXPECT_EQ(service.keys.value("org.kde.krunner.desktop/RunClipboard"), QList<int>{kCtrlAltSpace});
    EXPECT_FALSE(service.calls.contains("setShortcut"));
    EXPECT_TRUE(service.actions.contains("kestrio/toggle"));

    service.changeKeys({kSuperK});
    EXPECT_TRUE(eventually([&] { return state.kind == Kind::bound && state.keys == "Super+K"; }, 10000));
}

// Keys the user gave Kestrio in System Settings stay when Kestrio starts
// again; only keys chosen in Kestrio replace them.
TEST_F(KdeShortcut, KeysGivenInSystemSettingsStayUnlessReplaced)
{
    service.keys.insert("kestrio/toggle", {kSuperK});
    bind("CTRL+ALT+space", false);
    ASSERT_TRUE(eventually([&] { return state.kind == Kind::bound; }, 10000));
    EXPECT_EQ(state.keys, "Super+K");
    EXPECT_EQ(service.lastFlags, 2u);

    bind("CTRL+ALT+space", true);
    ASSERT_TRUE(eventually([&] { return state.keys == "Ctrl+Alt+Space"; }, 10000));
    EXPECT_EQ(service.keys.value("kestrio/toggle"), QList<int>{kCtrlAltSpace});
}

TEST_F(KdeShortcut, ForgettingTakesOutKestriosActionAlone)
{
    const QStringList other{"kwin", "Overview", "KWin", "Toggle Overview"};
    service.hold(other, kSuperK);
    bind("CTRL+ALT+space", true);
    ASSERT_TRUE(eventually([&] { return state.kind == Kind::bound; }, 10000));
    shortcut().forget();
    EXPECT_TRUE(eventually([&] { return !service.actions.contains("kestrio/toggle"); }, 10000));
    EXPECT_EQ(service.keys.value("kwin/Overview"), QList<int>{kSuperK});
}

TEST_F(KdeShortcut, NoServiceSaysSo)
{
    service.connection->unregisterService(KdeGlobalShortcut::kService);
    bind("CTRL+ALT+space", true);
    ASSERT_TRUE(eventually([&] { return state.kind == Kind::refused; }, 10000));
    EXPECT_TRUE(state.problem.contains("does not answer"));
}

} // namespace

#include "platform/linux/portal/globalshortcutsportal.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");
const QString kSession = QStringLiteral("org.freedesktop.portal.Session");

// One entry of BindShortcuts' a(sa{sv}).
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace

Q_DECLARE_METATYPE(PortalShortcut)

GlobalShortcutsPortal::GlobalShortcutsPortal(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus))
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    // Answers arrive on request objects whose paths the portal names; every
    // one is heard and the awaited one picked by its token. Only the portal's
    // own: any program on the bus can send signals of these names.
    bus_.connect(kService, QString(), kRequest, QStringLiteral("Response"), this, SLOT(requestAnswered(QDBusMessage)));
    bus_.connect(kService, kPath, kInterface, QStringLiteral("Activated"), this, SLOT(shortcutActivated(QDBusMessage)));
    // The user changed the keys in the desktop's own settings.
    bus_.connect(kService, kPath, kInterface, QStringLiteral("ShortcutsChanged"), this,
                 SLOT(shortcutsChanged(QDBusMessage)));

    QDBusMessage version = QDBusMessage::createMethodCall(kService, kPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                          QStringLiteral("Get"));
    version.setArguments({kInterface, QStringLiteral("version")});
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(version, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        available_ = !reply.isError() && reply.value().variant().toUInt() >= 1;
        if (!*available_ && wanted_)
            setState({DesktopShortcutState::Kind::refused, {},
                      QStringLiteral("This desktop offers programs no way to ask for a shortcut.")});
        if (*available_ && wanted_ && step_ == Step::none)
            sessionHandle_.isEmpty() ? createSession() : bindShortcuts();
    });
}

GlobalShortcutsPortal::~GlobalShortcutsPortal()
{
    release();
}

QDBusMessage GlobalShortcutsPortal::portalCall(const QString& method) const
{
    return QDBusMessage::createMethodCall(kService, kPath, kInterface, method);
}

QString GlobalShortcutsPortal::nextToken()
{
    return QStringLiteral("kestrio%1").arg(++tokens_);
}

void GlobalShortcutsPortal::bind(const QString& preferredTrigger, const QString& description,
                                 std::function<void()> activated)
{
    trigger_ = preferredTrigger;
    description_ = description;
    activated_ = std::move(activated);
    wanted_ = true;
    if (state_.kind != DesktopShortcutState::Kind::bound)
        setState({DesktopShortcutState::Kind::pending, {}, {}});
    if (available_.value_or(false) && step_ == Step::none)
        sessionHandle_.isEmpty() ? createSession() : bindShortcuts();
}

void GlobalShortcutsPortal::createSession()
{
    step_ = Step::creatingSession;
    pendingToken_ = nextToken();
    QDBusMessage create = portalCall(QStringLiteral("CreateSession"));
    create.setArguments({QVariantMap{{QStringLiteral("handle_token"), pendingToken_},
                                     {QStringLiteral("session_handle_token"), nextToken()}}});
    bus_.asyncCall(create, 5000);
}

void GlobalShortcutsPortal::bindShortcuts()
{
    step_ = Step::binding;
    pendingToken_ = nextToken();
    const QList<PortalShortcut> shortcuts{
        {QString::fromLatin1(kShortcutId),
         {{QStringLiteral("description"), description_}, {QStringLiteral("preferred_trigger"), trigger_}}}};
    QDBusMessage bindCall = portalCall(QStringLiteral("BindShortcuts"));
    bindCall.setArguments({QVariant::fromValue(QDBusObjectPath(sessionHandle_)), QVariant::fromValue(shortcuts), QString(),
                           QVariantMap{{QStringLiteral("handle_token"), pendingToken_}}});
    bus_.asyncCall(bindCall, 5000);
}

void GlobalShortcutsPortal::requestAnswered(const QDBusMessage& message)
{
    // Request paths end in the token the call carried.
    if (step_ == Step::none || !message.path().endsWith(u'/' + pendingToken_))
        return;
    const QList<QVariant> arguments = message.arguments();
    const uint response = arguments.value(0).toUInt();
    const QVariantMap results = qdbus_cast<QVariantMap>(arguments.value(1));
    const Step step = std::exchange(step_, Step::none);
    if (arguments.size() < 2 || response != 0) {
        // Refused or cancelled by the user: nothing is bound, nothing retried.
        setState({DesktopShortcutState::Kind::refused, {},
                  response == 1 ? QStringLiteral("The shortcut was declined in the desktop's dialog.")
                                : QStringLiteral("The desktop refused the shortcut.")});
        return;
    }
    if (step == Step::creatingSession) {
        const QVariant handle = results.value(QStringLiteral("session_handle"));
        sessionHandle_ = handle.canConvert<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path() : handle.toString();
        if (sessionHandle_.isEmpty() || !sessionHandle_.startsWith(u'/')) {
            sessionHandle_.clear();
            setState({DesktopShortcutState::Kind::refused, {}, QStringLiteral("The desktop refused the shortcut.")});
            return;
        }
        if (wanted_)
            bindShortcuts();
        return;
    }
    if (wanted_)
        takeShortcuts(results.value(QStringLiteral("shortcuts")));
}

void GlobalShortcutsPortal::takeShortcuts(const QVariant& shortcuts)
{
    // What the desktop granted: the keys it shows for Kestrio's shortcut,
    // none when the user gave it none.
    QString keys;
    if (shortcuts.canConvert<QDBusArgument>()) {
        const QDBusArgument list = shortcuts.value<QDBusArgument>();
        if (list.currentSignature() == QLatin1String("a(sa{sv})")) {
            for (const PortalShortcut& shortcut : qdbus_cast<QList<PortalShortcut>>(list)) {
                if (shortcut.id == QString::fromLatin1(kShortcutId))
                    keys = shortcut.properties.value(QStringLiteral("trigger_description")).toString();
            }
        }
    }
    if (keys.isEmpty())
        setState({DesktopShortcutState::Kind::refused, {},
                  QStringLiteral("The desktop gave Kestrio's shortcut no keys; choose them in its shortcut settings.")});
    else
        setState({DesktopShortcutState::Kind::bound, keys, {}});
}

void GlobalShortcutsPortal::shortcutsChanged(const QDBusMessage& message)
{
    const QList<QVariant> arguments = message.arguments();
    if (!wanted_ || arguments.size() < 2)
        return;
    const QVariant session = arguments[0];
    const QString path = session.canConvert<QDBusObjectPath>() ? session.value<QDBusObjectPath>().path() : session.toString();
    if (path == sessionHandle_)
        takeShortcuts(arguments[1]);
}

void GlobalShortcutsPortal::shortcutActivated(const QDBusMessage& message)
{
    const QList<QVariant> arguments = message.arguments();
    if (!isBound() || arguments.size() < 2 || arguments[1].toString() != QString::fromLatin1(kShortcutId))
        return;
    const QVariant session = arguments[0];
    const QString path = session.canConvert<QDBusObjectPath>() ? session.value<QDBusObjectPath>().path() : session.toString();
    if (path != sessionHandle_)
        return;
    if (activated_)
        activated_();
}

void GlobalShortcutsPortal::release()
{
    wanted_ = false;
    step_ = Step::none;
    pendingToken_.clear();
    if (!sessionHandle_.isEmpty()) {
        bus_.asyncCall(QDBusMessage::createMethodCall(kService, sessionHandle_, kSession, QStringLiteral("Close")));
        sessionHandle_.clear();
    }
    activated_ = nullptr;
    setState({});
}

void GlobalShortcutsPortal::setState(DesktopShortcutState state)
{
    if (state_ == state)
        return;
    state_ = std::move(state);
    emit stateChanged(state_);
}

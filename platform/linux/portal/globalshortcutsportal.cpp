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

    QDBusMessage version = QDBusMessage::createMethodCall(kService, kPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                          QStringLiteral("Get"));
    version.setArguments({kInterface, QStringLiteral("version")});
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(version, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        available_ = !reply.isError() && reply.value().variant().toUInt() >= 1;
        emit availabilityKnown(*available_);
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
        setBound(false);
        return;
    }
    if (step == Step::creatingSession) {
        const QVariant handle = results.value(QStringLiteral("session_handle"));
        sessionHandle_ = handle.canConvert<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path() : handle.toString();
        if (sessionHandle_.isEmpty() || !sessionHandle_.startsWith(u'/')) {
            sessionHandle_.clear();
            setBound(false);
            return;
        }
        if (wanted_)
            bindShortcuts();
        return;
    }
    setBound(wanted_);
}

void GlobalShortcutsPortal::shortcutActivated(const QDBusMessage& message)
{
    const QList<QVariant> arguments = message.arguments();
    if (!bound_ || arguments.size() < 2 || arguments[1].toString() != QString::fromLatin1(kShortcutId))
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
    setBound(false);
}

void GlobalShortcutsPortal::setBound(bool bound)
{
    if (bound_ == bound)
        return;
    bound_ = bound;
    emit bindingChanged(bound);
}

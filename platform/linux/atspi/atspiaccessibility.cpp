#include "platform/linux/atspi/atspiaccessibility.h"

#include "platform/clock.h"
#include "platform/linux/atspi/atspielement.h"
#include "platform/linux/atspi/atspimenureader.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <QStandardPaths>

namespace {

const QString kRootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kApplication = QStringLiteral("org.a11y.atspi.Application");

AttributeRead value(AccessibilityValue v)
{
    return {AccessibilityError::success, std::move(v)};
}

AttributeRead failure(AccessibilityError error)
{
    return {error, {}};
}

} // namespace

AtspiAccessibility::AtspiAccessibility() : bus_([this] { return windows_.rootProperty("AT_SPI_BUS"); }) {}

AtspiAccessibility::~AtspiAccessibility() = default;

QList<AtspiAccessibility::ApplicationInfo> AtspiAccessibility::applicationProcesses()
{
    const QList<AtspiRef> roots = bus_.applications();
    QDBusConnection connection = bus_.connection();
    // Every application's process, which the bus itself answers, all at once.
    std::vector<std::pair<AtspiRef, QDBusPendingCall>> pids;
    for (const AtspiRef& root : roots) {
        QDBusMessage askPid = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                             QStringLiteral("/org/freedesktop/DBus"),
                                                             QStringLiteral("org.freedesktop.DBus"),
                                                             QStringLiteral("GetConnectionUnixProcessID"));
        askPid.setArguments({root.bus});
        pids.emplace_back(root, connection.asyncCall(askPid, AtspiBus::kCallTimeoutMs));
    }
    // This process is left out: asking it anything would wait on its own thread.
    const qint32 self = qint32(QCoreApplication::applicationPid());
    QList<ApplicationInfo> apps;
    for (auto& [root, call] : pids) {
        call.waitForFinished();
        const auto pid = AtspiBus::valueOf(call.reply());
        if (pid && qint32(pid->toUInt()) != self)
            apps.append(ApplicationInfo{qint32(pid->toUInt()), {}, {}, root});
    }
    return apps;
}

QList<AtspiAccessibility::ApplicationInfo> AtspiAccessibility::named(QList<ApplicationInfo> apps)
{
    // The names come from the applications themselves, all asked at once.
    std::vector<std::pair<QDBusPendingCall, QDBusPendingCall>> pending;
    for (const ApplicationInfo& app : apps)
        pending.emplace_back(bus_.property(app.root, kAccessible, QStringLiteral("Name")),
                             bus_.property(app.root, kApplication, QStringLiteral("ToolkitName")));
    for (qsizetype i = 0; i < apps.size(); ++i) {
        auto& [name, toolkit] = pending[size_t(i)];
        name.waitForFinished();
        toolkit.waitForFinished();
        apps[i].name = AtspiBus::valueOf(name.reply()).value_or(QVariant()).toString();
        apps[i].toolkit = AtspiBus::valueOf(toolkit.reply()).value_or(QVariant()).toString();
    }
    return apps;
}

QList<AtspiAccessibility::ApplicationInfo> AtspiAccessibility::applications()
{
    return named(applicationProcesses());
}

std::optional<AtspiAccessibility::ApplicationInfo> AtspiAccessibility::application(qint32 pid)
{
    // Only the one asked for is named: this runs at every window activation.
    for (const ApplicationInfo& app : applicationProcesses()) {
        if (app.pid == pid)
            return named({app}).first();
    }
    return std::nullopt;
}

AccessibilityElementRef AtspiAccessibility::applicationElement(qint32 pid)
{
    auto app = std::make_shared<AtspiElement>();
    app->kind = AtspiElement::Kind::application;
    app->pid = pid;
    app->role = QStringLiteral("AXApplication");
    if (const auto info = application(pid)) {
        app->ref = info->root;
        app->title = info->name;
    }
    return app;
}

AttributeRead AtspiAccessibility::copyAttributeValue(const AccessibilityElementRef& element, const QString& attribute)
{
    const auto* e = dynamic_cast<const AtspiElement*>(element.get());
    if (!e)
        return failure(AccessibilityError::illegalArgument);

    if (e->kind == AtspiElement::Kind::application) {
        if (e->ref.isNull())
            return failure(AccessibilityError::invalidElement);
        if (attribute == AXName::menuBar) {
            AtspiMenuReader reader(bus_);
            if (AccessibilityElementRef bar = reader.readMenuBar(e->ref, e->pid))
                return value(bar);
            return failure(AccessibilityError::noValue);
        }
        if (attribute == AXName::role)
            return value(e->role);
        if (attribute == AXName::title)
            return value(e->title);
        return failure(AccessibilityError::attributeUnsupported);
    }

    if (attribute == AXName::role)
        return value(e->role);
    if (attribute == AXName::title)
        return value(e->title);
    if (attribute == AXName::children)
        return value(e->children);
    if (attribute == AXName::enabled) {
        if (e->ref.isNull() || Clock::monotonic().seconds() - e->readAt < kStateFreshSeconds)
            return value(e->enabled);
        const auto states = AtspiBus::statesOf(bus_.callAndWait(e->ref, kAccessible, QStringLiteral("GetState")));
        // A vanished object answers with an error, or with the DEFUNCT state and nothing else.
        if (!states || *states == 0 || AtspiState::has(*states, 7 /* defunct */))
            return failure(AccessibilityError::invalidElement);
        return value(AtspiState::has(*states, AtspiState::sensitive));
    }
    if (attribute == AXName::menuItemCmdModifiers && e->modifiers)
        return value(*e->modifiers);
    if (attribute == AXName::menuItemCmdChar && e->keyCharacter)
        return value(*e->keyCharacter);
    if (attribute == AXName::menuItemCmdVirtualKey && e->virtualKey)
        return value(*e->virtualKey);
    return failure(AccessibilityError::noValue);
}

QDBusConnection AtspiAccessibility::pressConnection(const AtspiRef& application, bool& peer)
{
    QMutexLocker lock(&mutex_);
    if (!peers_.contains(application.bus)) {
        // GTK offers each client a connection of its own; a modal dialog opened
        // by a press then blocks only that connection, not the shared bus.
        std::optional<QDBusConnection> connection;
        const QDBusMessage reply = bus_.callAndWait(application, kApplication, QStringLiteral("GetApplicationBusAddress"));
        const QString address = AtspiBus::valueOf(reply).value_or(QVariant()).toString();
        if (!address.isEmpty()) {
            QDBusConnection p2p = QDBusConnection::connectToPeer(address, QStringLiteral("kestrio-peer-") + application.bus);
            if (p2p.isConnected())
                connection = p2p;
        }
        peers_.insert(application.bus, connection);
    }
    const std::optional<QDBusConnection> connection = peers_.value(application.bus);
    peer = connection.has_value();
    return connection ? *connection : bus_.connection();
}

AccessibilityError AtspiAccessibility::performAction(const AccessibilityElementRef& element, const QString& action)
{
    const auto* e = dynamic_cast<const AtspiElement*>(element.get());
    if (!e || e->kind != AtspiElement::Kind::node)
        return AccessibilityError::illegalArgument;
    if (action != AXName::press)
        return AccessibilityError::actionUnsupported;
    if (e->ref.isNull())
        return AccessibilityError::actionUnsupported;

    bool peer = false;
    QDBusConnection connection = pressConnection(AtspiRef{e->ref.bus, kRootPath}, peer);
    QDBusMessage press = QDBusMessage::createMethodCall(peer ? QString() : e->ref.bus, e->ref.path,
                                                        QStringLiteral("org.a11y.atspi.Action"), QStringLiteral("DoAction"));
    press.setArguments({0});
    const QDBusMessage reply = connection.call(press, QDBus::Block, kPressReplyMs);
    if (AtspiBus::timedOut(reply))
        return AccessibilityError::success; // busy running the command, e.g. a modal dialog
    if (reply.type() != QDBusMessage::ReplyMessage)
        return AccessibilityError::cannotComplete;
    const auto done = AtspiBus::valueOf(reply);
    return done && done->toBool() ? AccessibilityError::success : AccessibilityError::cannotComplete;
}

bool AtspiAccessibility::isProcessTrusted()
{
    if (!bus_.connect())
        return false;
    const AtspiRef registry{QStringLiteral("org.a11y.atspi.Registry"), kRootPath};
    return bus_.callAndWait(registry, kAccessible, QStringLiteral("GetChildren")).type() == QDBusMessage::ReplyMessage;
}

void AtspiAccessibility::requestTrust()
{
    // Toolkits expose their objects once the desktop says accessibility is on.
    QDBusMessage enable = QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                                         QStringLiteral("org.freedesktop.DBus.Properties"),
                                                         QStringLiteral("Set"));
    enable.setArguments({QStringLiteral("org.a11y.Status"), QStringLiteral("IsEnabled"),
                         QVariant::fromValue(QDBusVariant(true))});
    QDBusConnection::sessionBus().call(enable, QDBus::Block, AtspiBus::kCallTimeoutMs);
}

std::optional<RunningApplication> AtspiAccessibility::runningApplication(unsigned long window)
{
    const auto info = windows_.windowInfo(window);
    if (!info || !info->pid)
        return std::nullopt;
    RunningApplication app;
    app.processIdentifier = *info->pid;
    app.window = window;
    if (!info->applicationId.isEmpty())
        app.bundleIdentifier = info->applicationId;
    else if (!info->windowClass.isEmpty())
        app.bundleIdentifier = info->windowClass;
    if (const auto a11y = application(*info->pid); a11y && !a11y->name.isEmpty())
        app.localizedName = a11y->name;
    else if (!info->windowClass.isEmpty())
        app.localizedName = info->windowClass;
    return app;
}

std::optional<RunningApplication> AtspiAccessibility::runningApplicationOf(qint32 pid)
{
    const auto window = windows_.windowOfProcess(pid);
    return window ? runningApplication(*window) : std::nullopt;
}

std::optional<RunningApplication> AtspiAccessibility::frontmostApplication()
{
    const auto window = windows_.activeWindow();
    return window ? runningApplication(*window) : std::nullopt;
}

void AtspiAccessibility::openAccessibilitySettings()
{
    requestTrust();
    // The desktop's own accessibility settings, where one is installed.
    const QList<QStringList> candidates{
        {QStringLiteral("gnome-control-center"), QStringLiteral("universal-access")},
        {QStringLiteral("xfce4-accessibility-settings")},
        {QStringLiteral("mate-at-properties")},
        {QStringLiteral("systemsettings"), QStringLiteral("kcm_access")},
    };
    for (const QStringList& command : candidates) {
        if (!QStandardPaths::findExecutable(command.first()).isEmpty()) {
            QProcess::startDetached(command.first(), command.mid(1));
            return;
        }
    }
}

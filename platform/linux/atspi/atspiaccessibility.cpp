#include "platform/linux/atspi/atspiaccessibility.h"

#include "platform/clock.h"
#include "platform/crossthread.h"
#include "platform/linux/atspi/atspibusobjects.h"
#include "platform/linux/atspi/atspimenuhandle.h"
#include "platform/linux/atspi/atspimenureader.h"
#include "platform/linux/dbus/peerconnection.h"
#include "platform/linux/exported/exportedmenureader.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>

namespace {

const QString kRootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kApplication = QStringLiteral("org.a11y.atspi.Application");
const QString kBusLauncher = QStringLiteral("org.a11y.Bus");
const QString kBusLauncherPath = QStringLiteral("/org/a11y/bus");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kStatus = QStringLiteral("org.a11y.Status");
const QString kIsEnabled = QStringLiteral("IsEnabled");

} // namespace

AtspiAccessibility::AtspiAccessibility(WindowDirectory& windows, bool watchFocus)
    : windows_(windows), bus_([this] { return windows_.announcedAccessibilityBus(); }), applications_(bus_, pool_)
{
    if (watchFocus) {
        focusWatch_ = std::make_unique<AtspiFocusWatch>(bus_);
        // A focused process is named once the bus's list of applications
        // holds it, which may be a moment after its announcement: the front
        // application is worth asking for again then.
        QObject::connect(&applications_, &AtspiApplications::changed, focusWatch_.get(),
                         &AtspiFocusWatch::focusChanged);
    }
    // Readings of frozen applications each hold a thread for a time-out; the
    // few jobs here are short, so a handful of threads never queue behind them.
    pool_.setMaxThreadCount(4);
    // The installed applications are indexed once, off the UI thread.
    CrossThread::start(pool_, [this] { entries_.find({}, {}, {}); });
    QObject::connect(&applications_, &AtspiApplications::changed, &context_, [this] { dropPeersOfGoneApplications(); });
    checkTrustSoon();
}

AtspiAccessibility::~AtspiAccessibility()
{
    CrossThread::waitForDone(pool_);
}

bool AtspiAccessibility::isSwitchedOn()
{
    // The desktop's accessibility switch: Qt, Chromium and Firefox expose
    // their menus only while it is on, so it is the permission to read them.
    QDBusMessage get = QDBusMessage::createMethodCall(kBusLauncher, kBusLauncherPath, kProperties, QStringLiteral("Get"));
    get.setArguments({kStatus, kIsEnabled});
    const QDBusMessage reply = QDBusConnection::sessionBus().call(get, QDBus::Block, AtspiBus::kCallTimeoutMs);
    const auto on = DBusCalls::valueOf(reply);
    return on && on->typeId() == QMetaType::Bool && on->toBool();
}

bool AtspiAccessibility::checkTrust()
{
    if (!isSwitchedOn())
        return false;
    const bool wasConnected = bus_.isConnected();
    if (!bus_.ensureConnected())
        return false;
    // A new bus: its applications are named in a job of their own, since one
    // that does not answer would hold up this answer.
    if (!wasConnected)
        applications_.refreshSoon();
    const QDBusMessage reply = bus_.callAndWait(AtspiBus::desktop(), kAccessible, QStringLiteral("GetChildren"));
    if (reply.type() == QDBusMessage::ReplyMessage)
        return true;
    // The bus or its registry went away: connect afresh next time.
    if (!DBusCalls::timedOut(reply))
        bus_.invalidate();
    return false;
}

void AtspiAccessibility::checkTrustSoon()
{
    if (trustCheckQueued_.exchange(true))
        return;
    CrossThread::start(pool_, [this] {
        const bool trusted = checkTrust();
        const int generation = bus_.generation();
        trustCheckQueued_ = false;
        CrossThread::post(&context_, [this, trusted, generation] { trustAnswered(trusted, generation); });
    });
}

void AtspiAccessibility::trustAnswered(bool trusted, int busGeneration)
{
    trusted_ = trusted ? 1 : 0;
    if (busGeneration != knownBusGeneration_) {
        knownBusGeneration_ = busGeneration;
        watchBusOwner();
        if (focusWatch_)
            focusWatch_->listen();
    }
    for (auto& [context, then] : std::exchange(trustWaiters_, {})) {
        if (context)
            then();
    }
    for (auto& [context, answered] : std::exchange(trustAskers_, {})) {
        if (context)
            answered(trusted);
    }
}

void AtspiAccessibility::watchBusOwner()
{
    if (busWatcher_)
        return;
    // A restarted accessibility bus (a new owner of its launcher's name) means
    // a new address: drop the old connection and look again.
    busWatcher_ = std::make_unique<QDBusServiceWatcher>(QStringLiteral("org.a11y.Bus"), QDBusConnection::sessionBus(),
                                                        QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(busWatcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, busWatcher_.get(), [this] {
        bus_.invalidate();
        checkTrustSoon();
    });
}

bool AtspiAccessibility::isProcessTrusted()
{
    // Every caller polls, so the next call sees the answer to this one.
    checkTrustSoon();
    return trusted_ == 1;
}

void AtspiAccessibility::afterTrustIsKnown(QObject* context, std::function<void()> then)
{
    if (trusted_ >= 0) {
        then();
        return;
    }
    trustWaiters_.append({context, std::move(then)});
    checkTrustSoon();
}

void AtspiAccessibility::askTrust(QObject* context, std::function<void(bool)> answered)
{
    trustAskers_.append({context, std::move(answered)});
    checkTrustSoon();
}

QList<AtspiAccessibility::ApplicationInfo> AtspiAccessibility::applications()
{
    applications_.refreshNow();
    return applications_.all();
}

std::optional<MenuTree> AtspiAccessibility::readMenus(qint32 pid, std::optional<quint64> windowId)
{
    const std::optional<AtspiApplications::Info> application = applications_.lookup(pid);
    const std::optional<DesktopWindow> window = windowId ? windows_.window(*windowId) : std::nullopt;
    AtspiBusObjects objects(bus_, &stops_);
    AtspiMenuReader reader(objects);
    std::optional<MenuTree> tree;
    // The window the user was in is found by its title.
    if (application && !application->root.isNull() && bus_.ensureConnected())
        tree = reader.readMenuBar(application->root, application->toolkit, window ? window->title : QString());
    if (reader.foundMenuBar())
        return tree;

    // No menu bar in the window: the one the application exports, if any,
    // with the menu button's commands after it.
    if (std::optional<MenuTree> exported = ExportedMenuReader().read(pid, window)) {
        if (tree) {
            exported->menus += tree->menus;
            exported->complete = exported->complete && tree->complete;
        }
        return exported;
    }
    return tree;
}

std::optional<bool> AtspiAccessibility::isEnabled(const MenuHandleRef& item)
{
    if (const auto* exported = dynamic_cast<const ExportedMenuHandle*>(item.get()))
        return exported->enabled;
    const auto* handle = dynamic_cast<const AtspiMenuHandle*>(item.get());
    if (!handle)
        return std::nullopt;
    if (Clock::monotonic().seconds() - handle->readAt < kStateFreshSeconds)
        return handle->enabled;
    const auto states = AtspiBus::statesOf(bus_.callAndWait(handle->ref, kAccessible, QStringLiteral("GetState")));
    if (!states)
        return std::nullopt;
    const AtspiState::Reading reading = AtspiState::read(*states);
    if (reading.gone)
        return std::nullopt;
    return reading.enabled;
}

QDBusConnection AtspiAccessibility::pressConnection(const AtspiRef& application, bool& peer)
{
    {
        std::lock_guard lock(peersMutex_);
        if (peers_.contains(application.bus)) {
            const std::optional<QDBusConnection> known = peers_.value(application.bus);
            peer = known.has_value() && known->isConnected();
            if (peer)
                return *known;
        }
    }
    // GTK offers each client a connection of its own; a modal dialog opened by
    // a press then blocks only that connection, not the shared bus. Asked
    // without the lock held: another press must not wait on this application.
    // The address is the application's word, so it is taken only for a local
    // socket that the application itself listens on, as the bus daemon (not
    // the application) names it; else the press goes over the shared bus.
    std::optional<QDBusConnection> connection;
    QDBusPendingCall askedPid = DBusCalls::askProcessId(bus_.connection(), application.bus);
    const QDBusMessage reply = bus_.callAndWait(application, kApplication, QStringLiteral("GetApplicationBusAddress"));
    const QString address = DBusCalls::valueOf(reply).value_or(QVariant()).toString();
    askedPid.waitForFinished();
    const QDBusPendingReply<uint> pid = askedPid;
    if (!address.isEmpty() && !pid.isError() && pid.value() > 0 && pid.value() <= 0x7fffffffu)
        connection = PeerConnection::open(address, QStringLiteral("kestrio-peer-") + application.bus, qint32(pid.value()));
    std::lock_guard lock(peersMutex_);
    peers_.insert(application.bus, connection);
    peer = connection.has_value();
    return connection ? *connection : bus_.connection();
}

void AtspiAccessibility::dropPeersOfGoneApplications()
{
    QSet<QString> present;
    for (const ApplicationInfo& info : applications_.all())
        present.insert(info.root.bus);
    std::lock_guard lock(peersMutex_);
    for (auto it = peers_.begin(); it != peers_.end();) {
        if (present.contains(it.key())) {
            ++it;
            continue;
        }
        if (it.value())
            QDBusConnection::disconnectFromPeer(it.value()->name());
        it = peers_.erase(it);
    }
}

qsizetype AtspiAccessibility::peerCount() const
{
    std::lock_guard lock(peersMutex_);
    return std::count_if(peers_.cbegin(), peers_.cend(), [](const auto& peer) { return peer.has_value(); });
}

bool AtspiAccessibility::press(const MenuHandleRef& item)
{
    if (const auto* exported = dynamic_cast<const ExportedMenuHandle*>(item.get()))
        return ExportedMenuReader().press(exported->press, kPressReplyMs);
    const auto* handle = dynamic_cast<const AtspiMenuHandle*>(item.get());
    if (!handle || handle->ref.isNull())
        return false;

    bool peer = false;
    QDBusConnection connection = pressConnection(AtspiRef{handle->ref.bus, kRootPath}, peer);
    QDBusMessage press = QDBusMessage::createMethodCall(peer ? QString() : handle->ref.bus, handle->ref.path,
                                                        QStringLiteral("org.a11y.atspi.Action"), QStringLiteral("DoAction"));
    press.setArguments({0});
    const QDBusMessage reply = connection.call(press, QDBus::Block, kPressReplyMs);
    if (DBusCalls::timedOut(reply))
        return true; // busy running the command, e.g. a modal dialog
    const auto done = DBusCalls::valueOf(reply);
    return done && done->toBool();
}

void AtspiAccessibility::requestTrust()
{
    // Toolkits expose their objects once the desktop says accessibility is on.
    // The user's own act, as the switch in the desktop's settings would be;
    // the answer is looked at once the switch is thrown.
    CrossThread::start(pool_, [this] {
        QDBusMessage enable = QDBusMessage::createMethodCall(kBusLauncher, kBusLauncherPath, kProperties,
                                                             QStringLiteral("Set"));
        enable.setArguments({kStatus, kIsEnabled, QVariant::fromValue(QDBusVariant(true))});
        QDBusConnection::sessionBus().call(enable, QDBus::Block, AtspiBus::kCallTimeoutMs);
        checkTrustSoon();
    });
    openDesktopAccessibilitySettings();
}

std::optional<RunningApplication> AtspiAccessibility::runningApplication(quint64 window)
{
    const auto info = windows_.window(window);
    if (!info || !info->pid)
        return std::nullopt;
    RunningApplication app;
    app.processIdentifier = *info->pid;
    app.window = window;
    const auto entry = entries_.find(info->applicationId, info->windowClass, DesktopEntries::programOf(*info->pid));
    if (!info->applicationId.isEmpty())
        app.bundleIdentifier = info->applicationId;
    else if (!info->windowClass.isEmpty())
        app.bundleIdentifier = info->windowClass;
    else if (entry)
        app.bundleIdentifier = entry->id;
    // The name the desktop shows for it; else as the accessibility bus knows
    // it, without asking (an application not named yet is named in the
    // background for next time).
    const auto a11y = applications_.find(*info->pid);
    if (!a11y)
        applications_.refreshSoon();
    if (entry)
        app.localizedName = entry->name;
    else if (a11y && !a11y->name.isEmpty())
        app.localizedName = a11y->name;
    else if (!info->windowClass.isEmpty())
        app.localizedName = info->windowClass;
    return app;
}

std::optional<RunningApplication> AtspiAccessibility::runningApplicationOf(qint32 pid)
{
    if (const auto window = windows_.windowOfProcess(pid))
        return runningApplication(*window);
    const auto a11y = applications_.find(pid);
    if (!a11y) {
        applications_.refreshSoon();
        return std::nullopt;
    }
    // No window to go by: the desktop entry of its program names it, else the
    // program's file name. The name an application gives itself on the bus is
    // shown, but never used as its identifier, which leaves the machine with
    // usage events.
    RunningApplication app;
    app.processIdentifier = pid;
    const QString program = DesktopEntries::programOf(pid);
    const auto entry = entries_.find({}, {}, program);
    if (entry)
        app.bundleIdentifier = entry->id;
    else if (!program.isEmpty())
        app.bundleIdentifier = program;
    if (entry)
        app.localizedName = entry->name;
    else if (!a11y->name.isEmpty())
        app.localizedName = a11y->name;
    return app;
}

std::optional<RunningApplication> AtspiAccessibility::frontmostApplication()
{
    if (const auto window = windows_.activeWindow())
        return runningApplication(*window);
    if (focusWatch_) {
        if (const auto pid = focusWatch_->focusedProcess())
            return runningApplicationOf(*pid);
    }
    return std::nullopt;
}

void AtspiAccessibility::openAccessibilitySettings()
{
    requestTrust();
}

void AtspiAccessibility::openDesktopAccessibilitySettings()
{
    // The desktop's own accessibility settings, where one is installed: the
    // user sees where the switch lives and can turn it off there.
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

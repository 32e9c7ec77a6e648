#include "platform/linux/atspi/atspifocuswatch.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>

namespace {

const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
// Top-level windows of one application: more is not an application's.
constexpr qsizetype kMaxWindows = 64;
const QString kObjectEvents = QStringLiteral("org.a11y.atspi.Event.Object");
const QString kWindowEvents = QStringLiteral("org.a11y.atspi.Event.Window");

} // namespace

AtspiFocusWatch::AtspiFocusWatch(AtspiBus& bus, QObject* parent) : QObject(parent), bus_(bus) {}

void AtspiFocusWatch::listen()
{
    const int generation = bus_.generation();
    if (generation == listeningTo_ || !bus_.isConnected())
        return;
    listeningTo_ = generation;
    heard_ = false;
    pids_.clear();
    QDBusConnection connection = bus_.connection();
    // Toolkits send these only while some client has asked the registry for them.
    for (const QString& event : {QStringLiteral("object:state-changed:focused"), QStringLiteral("window:activate")}) {
        QDBusMessage registerEvent = QDBusMessage::createMethodCall(
            QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/registry"),
            QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
        registerEvent.setArguments({event, QStringList(), QString()});
        connection.asyncCall(registerEvent, AtspiBus::kCallTimeoutMs);
    }
    connection.connect(QString(), QString(), kObjectEvents, QStringLiteral("StateChanged"), this,
                       SLOT(stateChanged(QDBusMessage)));
    connection.connect(QString(), QString(), kWindowEvents, QStringLiteral("Activate"), this,
                       SLOT(windowActivated(QDBusMessage)));
    lookForTheActiveWindow();
}

void AtspiFocusWatch::lookForTheActiveWindow()
{
    const int generation = listeningTo_;
    auto stale = [this, generation] { return generation != listeningTo_ || heard_; };
    auto ask = [this](const AtspiRef& target, const QString& method, auto then) {
        auto* watcher = new QDBusPendingCallWatcher(bus_.call(target, kAccessible, method), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, then] {
            watcher->deleteLater();
            then(watcher->reply());
        });
    };
    ask(AtspiBus::desktop(), QStringLiteral("GetChildren"), [=, this](const QDBusMessage& applications) {
        if (stale())
            return;
        for (const AtspiRef& application : AtspiBus::refsOf(applications)) {
            ask(application, QStringLiteral("GetChildren"), [=, this](const QDBusMessage& windows) {
                if (stale())
                    return;
                for (const AtspiRef& window : AtspiBus::refsOf(windows, kMaxWindows)) {
                    ask(window, QStringLiteral("GetState"), [=, this](const QDBusMessage& state) {
                        const auto states = AtspiBus::statesOf(state);
                        if (!stale() && states && AtspiState::has(*states, AtspiState::active))
                            announced(window.bus, true);
                    });
                }
            });
        }
    });
}

void AtspiFocusWatch::stateChanged(const QDBusMessage& message)
{
    // (kind, detail1, detail2, any data, properties): "focused", 1 when gained.
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2 || arguments[0].toString() != QStringLiteral("focused"))
        return;
    heard_ = true;
    announced(message.service(), arguments[1].toInt() == 1);
}

void AtspiFocusWatch::windowActivated(const QDBusMessage& message)
{
    heard_ = true;
    announced(message.service(), true);
}

void AtspiFocusWatch::announced(const QString& sender, bool focusGained)
{
    if (!focusGained || sender.isEmpty())
        return;
    if (const auto known = pids_.constFind(sender); known != pids_.cend()) {
        focusMovedTo(*known);
        return;
    }
    // Who sent it, from the bus daemon, which is never an application that hangs.
    auto* watcher = new QDBusPendingCallWatcher(DBusCalls::askProcessId(bus_.connection(), sender), this);
    const int generation = listeningTo_;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, sender, generation] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError() || generation != listeningTo_ || reply.value() == 0 || reply.value() > 0x7fffffffu)
            return;
        const qint32 pid = qint32(reply.value());
        if (pids_.size() > 4096) // names of connections long closed
            pids_.clear();
        pids_.insert(sender, pid);
        focusMovedTo(pid);
    });
}

std::optional<qint32> AtspiFocusWatch::focusedProcess() const
{
    const qint32 pid = focused_.load();
    return pid > 0 ? std::optional(pid) : std::nullopt;
}

void AtspiFocusWatch::focusMovedTo(qint32 pid)
{
    // Kestrio's own panel takes the focus too; the target stays the application before it.
    if (pid <= 0 || pid == QCoreApplication::applicationPid() || focused_.load() == pid)
        return;
    focused_.store(pid);
    emit focusChanged();
}

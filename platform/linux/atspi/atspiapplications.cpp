#include "platform/linux/atspi/atspiapplications.h"

#include "platform/crossthread.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QPointer>
#include <QThreadPool>

namespace {

const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kApplication = QStringLiteral("org.a11y.atspi.Application");

} // namespace

AtspiApplications::AtspiApplications(AtspiBus& bus, QThreadPool& pool, QObject* parent)
    : QObject(parent), bus_(bus), pool_(pool)
{
}

AtspiApplications::~AtspiApplications() = default;

std::optional<AtspiApplications::Info> AtspiApplications::find(qint32 pid) const
{
    std::lock_guard lock(mutex_);
    const auto it = byPid_.constFind(pid);
    return it == byPid_.constEnd() ? std::nullopt : std::optional<Info>(*it);
}

QList<AtspiApplications::Info> AtspiApplications::all() const
{
    std::lock_guard lock(mutex_);
    return byPid_.values();
}

void AtspiApplications::refreshNow()
{
    std::lock_guard once(refreshing_);
    refreshQueued_ = false;
    if (!bus_.ensureConnected()) {
        std::lock_guard lock(mutex_);
        byPid_.clear();
        return;
    }
    const QList<AtspiRef> roots = bus_.applications();
    QDBusConnection connection = bus_.connection();

    // Every application's process, which the bus itself answers, all at once.
    std::vector<std::pair<AtspiRef, QDBusPendingCall>> pids;
    for (const AtspiRef& root : roots)
        pids.emplace_back(root, DBusCalls::askProcessId(connection, root.bus));
    // This process is left out: asking it anything would wait on its own thread.
    const qint32 self = qint32(QCoreApplication::applicationPid());
    const QHash<qint32, Info> before = [this] {
        std::lock_guard lock(mutex_);
        return byPid_;
    }();
    QHash<qint32, Info> now;
    std::vector<std::tuple<qint32, QDBusPendingCall, QDBusPendingCall>> naming;
    for (auto& [root, call] : pids) {
        call.waitForFinished();
        const auto pid = DBusCalls::valueOf(call.reply());
        if (!pid || qint32(pid->toUInt()) == self)
            continue;
        Info info{qint32(pid->toUInt()), {}, {}, root, true};
        const auto known = before.constFind(info.pid);
        if (known != before.constEnd() && known->root == root && known->answered) {
            now.insert(info.pid, *known); // named before: applications keep their names
            continue;
        }
        now.insert(info.pid, info);
        // The names come from the applications themselves, all asked at once;
        // one that does not answer costs one time-out here, off the UI thread.
        naming.emplace_back(info.pid, bus_.property(root, kAccessible, QStringLiteral("Name")),
                            bus_.property(root, kApplication, QStringLiteral("ToolkitName")));
    }
    for (auto& [pid, name, toolkit] : naming) {
        name.waitForFinished();
        toolkit.waitForFinished();
        Info& info = now[pid];
        info.name = DBusCalls::valueOf(name.reply()).value_or(QVariant()).toString();
        info.toolkit = DBusCalls::valueOf(toolkit.reply()).value_or(QVariant()).toString();
        info.answered = !DBusCalls::timedOut(name.reply());
    }
    const bool different = [&] {
        std::lock_guard lock(mutex_);
        const bool changedPids = byPid_.keys() != now.keys();
        byPid_ = now;
        return changedPids;
    }();

    const int generation = bus_.generation();
    QPointer<AtspiApplications> self_(this);
    CrossThread::post(this, [self_, generation, different] {
        if (!self_)
            return;
        if (self_->listeningTo_ != generation) {
            self_->listeningTo_ = generation;
            self_->listenToRegistry();
        }
        if (different)
            emit self_->changed();
    });
}

void AtspiApplications::refreshSoon()
{
    if (refreshQueued_.exchange(true))
        return;
    // The owner waits for the pool before this object goes.
    CrossThread::start(pool_, [this] { refreshNow(); });
}

std::optional<AtspiApplications::Info> AtspiApplications::lookup(qint32 pid)
{
    if (auto info = find(pid); info && info->answered)
        return info;
    refreshNow();
    return find(pid);
}

void AtspiApplications::listenToRegistry()
{
    // The registry announces applications coming and going as children of its
    // root changing. Subscribing does not wait for the bus.
    const AtspiRef desktop = AtspiBus::desktop();
    bus_.connection().connect(desktop.bus, desktop.path, QStringLiteral("org.a11y.atspi.Event.Object"),
                              QStringLiteral("ChildrenChanged"), this, SLOT(registryChildrenChanged()));
}

void AtspiApplications::registryChildrenChanged()
{
    refreshSoon();
}

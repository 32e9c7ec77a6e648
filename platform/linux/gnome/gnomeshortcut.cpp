#include "platform/linux/gnome/gnomeshortcut.h"

#include "platform/linux/gnome/gnomekeybindings.h"

#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

namespace {

using namespace GnomeKeybindings;

// gsettings answers in milliseconds; one that hangs is given up on.
constexpr int kStepTimeoutMs = 5000;

DesktopShortcutState refused(const QString& problem)
{
    return {DesktopShortcutState::Kind::refused, {}, problem};
}

} // namespace

GnomeShortcut::GnomeShortcut(QString command, QObject* parent) : QObject(parent), command_(std::move(command)) {}

bool GnomeShortcut::isAvailable()
{
    return !QStandardPaths::findExecutable(QStringLiteral("gsettings")).isEmpty();
}

void GnomeShortcut::run(const QStringList& arguments, std::function<void(bool ok, const QString& output)> then)
{
    auto* process = new QProcess(this);
    process->setProcessChannelMode(QProcess::SeparateChannels);
    auto* limit = new QTimer(process);
    limit->setSingleShot(true);
    connect(limit, &QTimer::timeout, process, [process] { process->kill(); });
    connect(process, &QProcess::finished, this, [process, then](int code, QProcess::ExitStatus status) {
        process->deleteLater();
        then(status == QProcess::NormalExit && code == 0, QString::fromUtf8(process->readAllStandardOutput()));
    });
    connect(process, &QProcess::errorOccurred, this, [process, then](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return; // the end of a started process is heard by `finished`
        process->deleteLater();
        then(false, {});
    });
    process->start(QStringLiteral("gsettings"), arguments);
    limit->start(kStepTimeoutMs);
}

// One binding, from the first reading to the last write.
struct GnomeShortcut::Request {
    quint64 generation = 0;
    QString accelerator;
    bool replace = false;
    Done done;
    QStringList paths;  // the custom list
    QString listing;    // GNOME's own shortcuts, as gsettings lists them
    QString ownKeys;    // the keys of Kestrio's entry, if it has some
    QList<std::pair<QString, QString>> customs; // name and keys of the user's others
};

bool GnomeShortcut::isCurrent(const Request& request) const
{
    return request.generation == generation_;
}

void GnomeShortcut::bind(const DesktopKeys& keys, bool replace, Done done)
{
    auto request = std::make_shared<Request>();
    request->generation = ++generation_;
    request->accelerator = acceleratorOf(keys);
    request->replace = replace;
    request->done = std::move(done);
    // The list of custom shortcuts first: Kestrio's own may be there already.
    run({QStringLiteral("get"), QString::fromLatin1(kMediaKeysSchema), QString::fromLatin1(kCustomListKey)},
        [this, request](bool ok, const QString& output) {
            if (!isCurrent(*request))
                return;
            const std::optional<QStringList> paths = ok ? texts(output) : std::nullopt;
            if (!paths) {
                request->done(refused(QStringLiteral("GNOME's keyboard settings could not be read.")));
                return;
            }
            request->paths = *paths;
            readSchema(request, 0);
        });
}

void GnomeShortcut::readSchema(const std::shared_ptr<Request>& request, qsizetype at)
{
    // GNOME's own shortcuts, a schema at a time (one not installed lists nothing).
    if (at == bindingSchemas().size()) {
        readCustom(request, 0);
        return;
    }
    run({QStringLiteral("list-recursively"), bindingSchemas()[at]}, [this, request, at](bool, const QString& output) {
        if (!isCurrent(*request))
            return;
        request->listing += output;
        readSchema(request, at + 1);
    });
}

void GnomeShortcut::readCustom(const std::shared_ptr<Request>& request, qsizetype at)
{
    // Each custom shortcut's keys and name, Kestrio's own among them.
    if (at == request->paths.size()) {
        decide(request);
        return;
    }
    const QString schema = QString::fromLatin1(kCustomSchema) + u':' + request->paths[at];
    run({QStringLiteral("get"), schema, QStringLiteral("binding")}, [this, request, schema, at](bool, const QString& binding) {
        if (!isCurrent(*request))
            return;
        run({QStringLiteral("get"), schema, QStringLiteral("name")}, [this, request, binding, at](bool, const QString& name) {
            if (!isCurrent(*request))
                return;
            const QString keys = texts(binding).value_or(QStringList()).value(0);
            if (request->paths[at] == QString::fromLatin1(kOwnPath))
                request->ownKeys = keys;
            else
                request->customs.append({texts(name).value_or(QStringList()).value(0), keys});
            readCustom(request, at + 1);
        });
    });
}

void GnomeShortcut::decide(const std::shared_ptr<Request>& request)
{
    // Kestrio's own entry with other keys, given in GNOME's settings: kept,
    // unless the user just chose these keys in Kestrio.
    if (!request->replace && !request->ownKeys.isEmpty()) {
        request->done({DesktopShortcutState::Kind::bound, readable(request->ownKeys), {}});
        return;
    }
    std::optional<Holder> holder = holderIn(request->listing, request->accelerator);
    for (const auto& [name, keys] : std::as_const(request->customs)) {
        if (!holder && canonical(keys) == canonical(request->accelerator))
            holder = Holder{QString::fromLatin1(kCustomSchema), name, true};
    }
    if (holder) {
        request->done(refused(QStringLiteral("%1 is already %2. Record another shortcut in Kestrio's settings.")
                                  .arg(readable(request->accelerator), describe(*holder))));
        return;
    }
    // The entry's keys before it is listed, so that GNOME never sees a half-made entry.
    const QStringList own{QString::fromLatin1(kCustomSchema) + u':' + QString::fromLatin1(kOwnPath)};
    const QList<QStringList> steps{
        QStringList{QStringLiteral("set")} + own + QStringList{QStringLiteral("name"), printed(QStringLiteral("Kestrio"))},
        QStringList{QStringLiteral("set")} + own + QStringList{QStringLiteral("command"), printed(command_)},
        QStringList{QStringLiteral("set")} + own + QStringList{QStringLiteral("binding"), printed(request->accelerator)},
        QStringList{QStringLiteral("set"), QString::fromLatin1(kMediaKeysSchema), QString::fromLatin1(kCustomListKey),
                    printed(withOwn(request->paths))},
    };
    write(request, steps, 0);
}

void GnomeShortcut::write(const std::shared_ptr<Request>& request, const QList<QStringList>& steps, qsizetype at)
{
    if (at == steps.size()) {
        request->done({DesktopShortcutState::Kind::bound, readable(request->accelerator), {}});
        return;
    }
    run(steps[at], [this, request, steps, at](bool ok, const QString&) {
        if (!isCurrent(*request))
            return;
        if (!ok) {
            request->done(refused(QStringLiteral("GNOME's keyboard settings could not be written.")));
            return;
        }
        write(request, steps, at + 1);
    });
}

void GnomeShortcut::forget(Done done)
{
    ++generation_;
    QPointer<GnomeShortcut> self(this);
    run({QStringLiteral("get"), QString::fromLatin1(kMediaKeysSchema), QString::fromLatin1(kCustomListKey)},
        [this, self, done](bool ok, const QString& output) {
            if (!self)
                return;
            const std::optional<QStringList> paths = ok ? texts(output) : std::nullopt;
            const auto finish = [this, self, done](bool) {
                if (!self)
                    return;
                run({QStringLiteral("reset-recursively"),
                     QString::fromLatin1(kCustomSchema) + u':' + QString::fromLatin1(kOwnPath)},
                    [done](bool, const QString&) {
                        if (done)
                            done({});
                    });
            };
            if (!paths || !paths->contains(QString::fromLatin1(kOwnPath))) {
                finish(true);
                return;
            }
            run({QStringLiteral("set"), QString::fromLatin1(kMediaKeysSchema), QString::fromLatin1(kCustomListKey),
                 printed(withoutOwn(*paths))},
                [finish](bool ok, const QString&) { finish(ok); });
        });
}

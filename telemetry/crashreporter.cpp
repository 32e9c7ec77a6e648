#include "telemetry/crashreporter.h"

#include <QStandardPaths>

#include "platform/systeminfo.h"
#include "telemetry/apphangwatchdog.h"
#include "telemetry/appinfo.h"
#include "telemetry/crashsignalhandler.h"
#include "telemetry/nativeimages.h"

#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSysInfo>
#include <QTimer>
#include <QUuid>

namespace {

constexpr int kRequestTimeoutMs = 10000;

QString eventId()
{
    return QUuid::createUuid().toString(QUuid::Id128);
}

QString isoSeconds(qint64 secondsSinceEpoch)
{
    return QDateTime::fromSecsSinceEpoch(secondsSinceEpoch, Qt::UTC).toString(Qt::ISODate);
}

QString memoryMapOf(const QString& record)
{
    return record.chopped(QStringLiteral(".json").size()) + QStringLiteral(".maps");
}

// The crash service's stack trace: the caller first, the crashing frame last.
QJsonObject stacktrace(const QJsonArray& framesNewestFirst)
{
    QJsonArray frames;
    for (qsizetype i = framesNewestFirst.size() - 1; i >= 0; --i) {
        const QString address = framesNewestFirst.at(i).toString();
        if (address.startsWith(QLatin1String("0x")))
            frames.append(QJsonObject{{"instruction_addr", address}});
    }
    return QJsonObject{{"frames", frames}};
}

} // namespace

CrashReporter::CrashReporter(const SystemInfo& system, QString crashFolder, QObject* parent)
    : QObject(parent), system_(system), crashFolder_(std::move(crashFolder))
{
}

QString CrashReporter::standardFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/kestrio/crashes");
}

CrashReporter::~CrashReporter()
{
    stop();
}

void CrashReporter::start(const Options& options)
{
    options_ = options;
    dsn_ = SentryDsn::parse(options.dsn);
    active_ = true;
    CrashSignalHandler::install(crashFolder_, options.releaseName);
    if (options.enableAppHangTracking) {
        hangWatchdog_ = std::make_unique<AppHangWatchdog>([this](double seconds) {
            captureError(QStringLiteral("App Hanging"),
                         QStringLiteral("The main thread did not answer for %1 s.").arg(seconds, 0, 'f', 1),
                         {});
        }, options.appHangTimeoutInterval);
        hangWatchdog_->start();
    }
    sendPendingCrashes();
}

void CrashReporter::stop()
{
    active_ = false;
    CrashSignalHandler::uninstall();
    hangWatchdog_.reset();
}

QJsonObject CrashReporter::scrubEvent(QJsonObject event)
{
    event.remove(QStringLiteral("user"));
    event.remove(QStringLiteral("server_name"));
    return event;
}

QJsonObject CrashReporter::makeEvent(const QString& level, const QString& type, const QString& description,
                                     const QVariantMap& extras, qint64 timestamp) const
{
    return QJsonObject{
        {"event_id", eventId()},
        {"timestamp", isoSeconds(timestamp)},
        {"platform", "native"},
        {"level", level},
        {"release", options_.releaseName},
        {"environment", options_.environment},
        {"server_name", QSysInfo::machineHostName()}, // as the service's own clients add it
        {"exception", QJsonObject{{"values", QJsonArray{QJsonObject{{"type", type}, {"value", description}}}}}},
        {"extra", QJsonObject::fromVariantMap(extras)},
        {"contexts", QJsonObject{
            {"os", QJsonObject{{"name", system_.osName()}, {"version", osVersionString(system_)}}},
            {"device", QJsonObject{{"model", deviceModel(system_)}}},
            {"app", QJsonObject{{"app_version", appVersion()}, {"app_build", appBuild()}}},
        }},
    };
}

void CrashReporter::captureError(const QString& type, const QString& description, const QVariantMap& extras)
{
    if (!active_)
        return;
    send(makeEvent(QStringLiteral("error"), type, description, extras, QDateTime::currentSecsSinceEpoch()));
}

void CrashReporter::send(QJsonObject event, const QString& doneFile)
{
    if (!dsn_)
        return;
    if (options_.beforeSend)
        event = options_.beforeSend(std::move(event));
    const QByteArray body = QJsonDocument(event).toJson(QJsonDocument::Compact);
    const QByteArray header = QJsonDocument(QJsonObject{
        {"event_id", event.value("event_id")},
        {"sent_at", QDateTime::currentDateTimeUtc().toString(Qt::ISODate)},
        {"dsn", options_.dsn},
    }).toJson(QJsonDocument::Compact);
    const QByteArray item = QJsonDocument(QJsonObject{{"type", "event"}, {"length", body.size()}})
                                .toJson(QJsonDocument::Compact);

    if (!network_) {
        network_ = new QNetworkAccessManager(this);
        network_->setTransferTimeout(kRequestTimeoutMs);
    }
    QNetworkRequest request(dsn_->envelopeUrl);
    request.setRawHeader("Content-Type", "application/x-sentry-envelope");
    request.setRawHeader("X-Sentry-Auth", QStringLiteral("Sentry sentry_version=7, sentry_key=%1, sentry_client=%2/%3")
                                              .arg(dsn_->publicKey, system_.sdkName(), appVersion())
                                              .toUtf8());
    QNetworkReply* reply = network_->post(request, header + '\n' + item + '\n' + body + '\n');
    inFlight_.insert(reply);
    connect(reply, &QNetworkReply::finished, this, [this, reply, doneFile] {
        inFlight_.remove(reply);
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // A crash record is kept until the service took it.
        if (!doneFile.isEmpty() && reply->error() == QNetworkReply::NoError && status >= 200 && status < 300) {
            QFile::remove(doneFile);
            QFile::remove(memoryMapOf(doneFile));
        }
        reply->deleteLater();
    });
}

void CrashReporter::flush(double timeoutSeconds)
{
    if (inFlight_.isEmpty())
        return;
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    for (QNetworkReply* reply : std::as_const(inFlight_))
        connect(reply, &QNetworkReply::finished, &loop, [this, &loop] {
            if (inFlight_.isEmpty())
                loop.quit();
        }, Qt::QueuedConnection);
    deadline.start(int(timeoutSeconds * 1000));
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void CrashReporter::discardPendingCrashes()
{
    QDir folder(crashFolder_);
    for (const QString& name : folder.entryList({QStringLiteral("crash-*.json"), QStringLiteral("crash-*.maps")}, QDir::Files))
        folder.remove(name);
}

void CrashReporter::sendPendingCrashes()
{
    const QDir folder(crashFolder_);
    for (const QString& name : folder.entryList({QStringLiteral("crash-*.json")}, QDir::Files, QDir::Name)) {
        const QString path = folder.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
        if (record.isEmpty()) {
            // A record cut short by the crash itself still says there was one.
            send(makeEvent(QStringLiteral("fatal"), QStringLiteral("Crash"), QStringLiteral("The program crashed."), {},
                           QFileInfo(path).lastModified().toSecsSinceEpoch()),
                 path);
            continue;
        }
        const QString signal = record.value("name").toString(QStringLiteral("signal"));
        QJsonObject event = makeEvent(QStringLiteral("fatal"), signal,
                                      QStringLiteral("Fatal signal %1 (%2)").arg(record.value("signal").toInt()).arg(signal),
                                      {}, qint64(record.value("time").toDouble()));
        // Where it crashed: the crashing thread's stack, and the modules that
        // were loaded, so that the service can name the functions.
        QJsonObject exception = event.value("exception").toObject().value("values").toArray().at(0).toObject();
        exception.insert("mechanism", QJsonObject{
            {"type", "signalhandler"},
            {"handled", false},
            {"meta", QJsonObject{{"signal", QJsonObject{{"number", record.value("signal").toInt()}, {"name", signal}}}}},
        });
        exception.insert("stacktrace", stacktrace(record.value("frames").toArray()));
        event.insert("exception", QJsonObject{{"values", QJsonArray{exception}}});
        QFile maps(memoryMapOf(path));
        if (maps.open(QIODevice::ReadOnly))
            event.insert("debug_meta", NativeImages::debugMeta(NativeImages::fromMemoryMap(maps.read(4 << 20))));
        // The crash belongs to the release that crashed, not to this one.
        if (const QString release = record.value("release").toString(); !release.isEmpty())
            event.insert("release", release);
        send(event, path);
    }
}

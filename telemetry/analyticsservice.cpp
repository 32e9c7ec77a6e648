#include "telemetry/analyticsservice.h"

#include "base/settingsstore.h"
#include "buildconfig.h"
#include "platform/clock.h"
#include "platform/systeminfo.h"
#include "telemetry/appinfo.h"
#include "telemetry/crashreporter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QStandardPaths>

#include <cmath>

namespace {

constexpr double kSessionTimeoutSeconds = 3600;
constexpr int kSessionRequestTimeoutMs = 10000;
constexpr int kRequestTimeoutMs = 60000;
constexpr double kFlushTimeoutSeconds = 2.0;

// Only the three kinds of values an event may carry.
QJsonObject propertiesObject(const QVariantMap& properties)
{
    QJsonObject object;
    for (auto it = properties.begin(); it != properties.end(); ++it) {
        switch (it.value().metaType().id()) {
        case QMetaType::QString:
            object.insert(it.key(), it.value().toString());
            break;
        case QMetaType::Bool:
            object.insert(it.key(), it.value().toBool());
            break;
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::UInt:
            object.insert(it.key(), it.value().toLongLong());
            break;
        default:
            break;
        }
    }
    return object;
}

} // namespace

AnalyticsService::Endpoint AnalyticsService::builtInEndpoint()
{
    return {QUrl(QStringLiteral("https://%1/api/v0/event").arg(QStringLiteral(KESTRIO_ANALYTICS_HOST))),
            QStringLiteral(KESTRIO_ANALYTICS_APP_KEY), QStringLiteral(KESTRIO_CRASH_REPORT_DSN)};
}

AnalyticsService::AnalyticsService(SettingsStore& settings, const SystemInfo& system, const Clock& wallClock,
                                   Endpoint endpoint, CrashReporter& crashReporter, QObject* parent)
    : QObject(parent),
      aptabaseAppKey(endpoint.appKey),
      aptabaseURL(endpoint.eventUrl),
      sentryDSN(endpoint.sentryDSN),
      settings_(settings),
      system_(system),
      clock_(wallClock),
      crashReporter_(crashReporter),
      sessionId_(makeSessionId(wallClock.seconds())),
      lastEventTime_(wallClock.seconds())
{
}

AnalyticsService::~AnalyticsService() = default;

QString AnalyticsService::makeSessionId(double nowSeconds)
{
    constexpr quint64 kRange = 100000000;
    // Draw below the largest multiple of the range so every value is as likely.
    constexpr quint64 kLimit = (quint64(1) << 32) - ((quint64(1) << 32) % kRange);
    quint64 random = 0;
    do {
        random = QRandomGenerator::system()->generate();
    } while (random >= kLimit);
    const quint64 seconds = nowSeconds > 0 ? quint64(std::floor(nowSeconds)) : 0;
    return QString::number(seconds * kRange + random % kRange);
}

void AnalyticsService::start()
{
    if (isStarted_)
        return;
    if (!settings_.analyticsEnabled())
        return;
    CrashReporter::Options options;
    options.dsn = sentryDSN;
    options.releaseName = QStringLiteral("kestrio@%1+%2").arg(appVersion(), appBuild());
    options.beforeSend = &CrashReporter::scrubEvent;
    crashReporter_.start(options);
    isStarted_ = true;
    track(QStringLiteral("app_launched"), {
        {"version", appVersion()},
        {"build", appBuild()},
        {"macos", osVersionString(system_)},
        {"locale", system_.localeIdentifier()},
    });
}

void AnalyticsService::stop()
{
    if (!isStarted_)
        return;
    crashReporter_.stop();
    isStarted_ = false;
}

void AnalyticsService::stopAtQuit()
{
    if (!isStarted_)
        return;
    // The one wait on the network on the UI thread: bounded, and only as the program ends.
    crashReporter_.flush(kFlushTimeoutSeconds);
    stop();
}

void AnalyticsService::discardPendingCrashReports()
{
    crashReporter_.discardPendingCrashes();
}

void AnalyticsService::track(const QString& eventName, const QVariantMap& properties)
{
    if (!isStarted_)
        return;
    const double now = clock_.seconds();
    if (now - lastEventTime_ > kSessionTimeoutSeconds)
        sessionId_ = makeSessionId(now);
    lastEventTime_ = now;

    const QJsonObject systemProps{
        {"isDebug", false},
        {"locale", system_.localeIdentifier()},
        {"osName", system_.osName()},
        {"osVersion", osVersionString(system_)},
        {"appVersion", appVersion()},
        {"appBuildNumber", appBuild()},
        {"sdkVersion", system_.sdkName() + u'@' + appVersion()},
        {"deviceModel", deviceModel(system_)},
    };
    sendEvent(QJsonObject{
        {"timestamp", QDateTime::fromSecsSinceEpoch(qint64(std::floor(now)), Qt::UTC).toString(Qt::ISODate)},
        {"sessionId", sessionId_},
        {"eventName", eventName},
        {"systemProps", systemProps},
        {"props", propertiesObject(properties)},
    });
}

void AnalyticsService::captureError(const QString& type, const QString& description, const QVariantMap& context)
{
    if (!isStarted_)
        return;
    crashReporter_.captureError(type, description, context);
}

void AnalyticsService::sendEvent(const QJsonObject& event)
{
    const QByteArray body = QJsonDocument(event).toJson(QJsonDocument::Compact);
    if (body.isEmpty())
        return;
    QNetworkRequest request(aptabaseURL);
    request.setTransferTimeout(kRequestTimeoutMs);
    request.setRawHeader("Content-Type", "application/json");
    request.setRawHeader("App-Key", aptabaseAppKey.toUtf8());
    request.setRawHeader("User-Agent", (system_.osName() + u'/' + osVersionString(system_) + u' ' + system_.languageCode()).toUtf8());
    if (!urlSession_) {
        urlSession_ = new QNetworkAccessManager(this);
        urlSession_->setTransferTimeout(kSessionRequestTimeoutMs);
    }
    QNetworkReply* reply = urlSession_->post(request, body);
    // Fire and forget: the answer, its status and any error are ignored.
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
}

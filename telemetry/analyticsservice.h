#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>

class Clock;
class CrashReporter;
class QNetworkAccessManager;
class SettingsStore;
class SystemInfo;

// Anonymous usage events, sent only when the user opted in, one small JSON
// object per request, fire and forget; also starts and stops crash reporting.
// Properties are texts, integers and Booleans: never a query or a menu's text.
class AnalyticsService : public QObject {
    Q_OBJECT

public:
    struct Endpoint {
        QUrl eventUrl;    // https://HOST/api/v0/event
        QString appKey;   // 15 characters
        QString sentryDSN;
    };

    static Endpoint builtInEndpoint();

    AnalyticsService(SettingsStore& settings, const SystemInfo& system, const Clock& wallClock, Endpoint endpoint,
                     CrashReporter& crashReporter, QObject* parent = nullptr);
    ~AnalyticsService() override;

    const QString aptabaseAppKey;
    const QUrl aptabaseURL;
    const QString sentryDSN;

    // Starts events and crash reporting when "analyticsEnabled" is on.
    void start();
    // Opt-out: stops at once; reports already on their way finish by
    // themselves, and nothing here waits for them.
    void stop();
    // Termination: flushes crash reports (at most 2 s), then stops.
    void stopAtQuit();
    // Opt-out only: crash records that wait to be sent never will be.
    void discardPendingCrashReports();
    bool isStarted() const { return isStarted_; }

    void track(const QString& eventName, const QVariantMap& properties = {});
    void captureError(const QString& type, const QString& description, const QVariantMap& context);

    QString sessionId() const { return sessionId_; }
    double lastEventTime() const { return lastEventTime_; }

    // Seconds since 1970 × 100000000 + a secure random number below 100000000.
    static QString makeSessionId(double nowSeconds);

private:
    void sendEvent(const QJsonObject& event);

    SettingsStore& settings_;
    const SystemInfo& system_;
    const Clock& clock_;
    CrashReporter& crashReporter_;
    bool isStarted_ = false;
    QString sessionId_;
    double lastEventTime_;
    QNetworkAccessManager* urlSession_ = nullptr;
};

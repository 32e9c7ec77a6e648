#pragma once

#include "telemetry/sentrydsn.h"

#include <QJsonObject>
#include <QObject>
#include <QSet>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class AppHangWatchdog;
class QNetworkAccessManager;
class QNetworkReply;
class SystemInfo;

// A small crash-reporting client that speaks the hosted service's envelope
// protocol: explicit error reports, fatal signals (recorded at the crash and
// sent by the next start) and main-thread hangs. Active between start and stop.
class CrashReporter : public QObject {
    Q_OBJECT

public:
    struct Options {
        QString dsn;
        bool debug = false;
        bool sendDefaultPii = false;
        bool enableAutoSessionTracking = false;
        double tracesSampleRate = 0.0;
        bool enableAppHangTracking = true;
        double appHangTimeoutInterval = 2.0;
        QString releaseName;
        QString environment = QStringLiteral("production");
        // Runs on every outgoing event and may change it.
        std::function<QJsonObject(QJsonObject)> beforeSend;
    };

    // Crash records wait in `crashFolder` until a start sends them.
    CrashReporter(const SystemInfo& system, QString crashFolder, QObject* parent = nullptr);
    // The program's crash folder: $XDG_DATA_HOME/kestrio/crashes.
    static QString standardFolder();
    ~CrashReporter() override;

    void start(const Options& options);
    void stop();
    bool isActive() const { return active_; }
    const Options& options() const { return options_; }

    // Reports an error with extra values; nothing while stopped.
    void captureError(const QString& type, const QString& description, const QVariantMap& extras);
    // Waits until every report in flight is sent, at most `timeoutSeconds`.
    void flush(double timeoutSeconds);
    // Deletes the crash records still waiting to be sent: the user opted out,
    // so they are never sent, not even after a later opt-in.
    void discardPendingCrashes();

    // Every outgoing event passes here: no user, no server name.
    static QJsonObject scrubEvent(QJsonObject event);

    QString crashFolder() const { return crashFolder_; }

private:
    QJsonObject makeEvent(const QString& level, const QString& type, const QString& description,
                          const QVariantMap& extras, qint64 timestamp) const;
    void send(QJsonObject event, const QString& doneFile = {});
    void sendPendingCrashes();

    const SystemInfo& system_;
    const QString crashFolder_;
    Options options_;
    std::optional<SentryDsn> dsn_;
    bool active_ = false;
    QNetworkAccessManager* network_ = nullptr;
    QSet<QNetworkReply*> inFlight_;
    std::unique_ptr<AppHangWatchdog> hangWatchdog_;
};

#pragma once

#include "update/updatecheckerror.h"
#include "base/updatecheckresult.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <variant>

class AnalyticsService;
class Clock;
class NotificationHub;
class QNetworkAccessManager;
class QNetworkReply;
class SettingsStore;
class SystemInfo;

// Reads the maker's version manifest, once a day on its own and whenever the
// user asks.
class UpdateCheckService : public QObject {
    Q_OBJECT

public:
    using Outcome = std::variant<UpdateCheckResult, UpdateCheckError>;

    static constexpr double automaticCheckInterval = 86400;
    // The whole request, however the server paces its answer.
    static constexpr int kRequestTimeoutMs = 10000;
    // A manifest is a few hundred bytes; an answer larger than this is not one.
    static constexpr qint64 kMaxManifestBytes = 64 * 1024;

    static QUrl builtInManifestURL();

    UpdateCheckService(QUrl manifestURL, SettingsStore& settings, AnalyticsService& analytics,
                       NotificationHub& notifications, const SystemInfo& system, const Clock& wallClock,
                       QObject* parent = nullptr);

    const QUrl manifestURL;
    // Tests shorten the limit on the whole request.
    void setRequestTimeoutMs(int ms) { requestTimeoutMs_ = ms; }

    // The completion runs once, later, on the main thread.
    void checkForUpdates(std::function<void(const Outcome&)> completion);
    void checkAutomaticallyIfNeeded();
    void handleAutomaticCheckResult(const Outcome& outcome);

    // What an answer to the manifest request means.
    static Outcome evaluateManifestResponse(QNetworkReply& reply);

private:
    SettingsStore& settings_;
    AnalyticsService& analytics_;
    NotificationHub& notifications_;
    const SystemInfo& system_;
    const Clock& clock_;
    QNetworkAccessManager* network_ = nullptr;
    int requestTimeoutMs_ = kRequestTimeoutMs;
};

#include "update/updatecheckservice.h"

#include "base/notificationhub.h"
#include "base/settingsstore.h"
#include "buildconfig.h"
#include "platform/clock.h"
#include "platform/systeminfo.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/appinfo.h"
#include "update/networkfailure.h"
#include "update/versionmanifest.h"

#include <QDateTime>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QTimer>

#include <memory>

QUrl UpdateCheckService::builtInManifestURL()
{
    return QUrl(QStringLiteral("https://%1/apps/kestrio/latest.json").arg(QStringLiteral(KESTRIO_WEBSITE_HOST)));
}

UpdateCheckService::UpdateCheckService(QUrl manifestURL, SettingsStore& settings, AnalyticsService& analytics,
                                       NotificationHub& notifications, const SystemInfo& system,
                                       const Clock& wallClock, QObject* parent)
    : QObject(parent),
      manifestURL(std::move(manifestURL)),
      settings_(settings),
      analytics_(analytics),
      notifications_(notifications),
      system_(system),
      clock_(wallClock)
{
}

UpdateCheckService::Outcome UpdateCheckService::evaluateManifestResponse(QNetworkReply& reply)
{
    // A transport failure comes first, also one after the status line arrived
    // (a connection reset in the middle of the body).
    if (isTransportFailure(reply.error()))
        return UpdateCheckError{UpdateCheckError::Kind::network, reply.errorString()};
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        return UpdateCheckError{UpdateCheckError::Kind::invalidResponse, {}};
    const int code = status.toInt();
    if (code < 200 || code > 299)
        return UpdateCheckError{UpdateCheckError::Kind::invalidResponse, {}};
    const auto decoded = VersionManifest::decode(reply.readAll());
    if (const auto* error = std::get_if<VersionManifest::DecodeError>(&decoded))
        return UpdateCheckError{UpdateCheckError::Kind::decode, error->description};
    const auto result = checkResultOf(std::get<VersionManifest>(decoded), appVersion());
    if (!result)
        return UpdateCheckError{UpdateCheckError::Kind::invalidResponse, {}};
    return *result;
}

void UpdateCheckService::checkForUpdates(std::function<void(const Outcome&)> completion)
{
    if (!network_) {
        network_ = new QNetworkAccessManager(this);
        network_->setTransferTimeout(kRequestTimeoutMs);
        // Never from https to anything less.
        network_->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    }
    // The manifest decides what gets installed: it only comes over https.
    if (manifestURL.scheme() != QLatin1String("https")) {
        QMetaObject::invokeMethod(this, [completion = std::move(completion), url = manifestURL] {
            if (completion)
                completion(UpdateCheckError{UpdateCheckError::Kind::network,
                                            QStringLiteral("the update address does not use https (%1).")
                                                .arg(url.toDisplayString())});
        }, Qt::QueuedConnection);
        return;
    }
    QNetworkRequest request(manifestURL);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setTransferTimeout(kRequestTimeoutMs);
    request.setRawHeader("User-Agent",
                         QStringLiteral("Kestrio/%1 (%2)").arg(appVersion(), system_.osName()).toUtf8());
    QNetworkReply* reply = network_->get(request);
    // Qt's transfer time-out counts from the last byte: a server that sends
    // one now and then would hold the check for good, so the whole request
    // has its own limit, and the answer a size cap.
    auto stopped = std::make_shared<std::optional<UpdateCheckError>>();
    auto stop = [reply, stopped](UpdateCheckError why) {
        if (!*stopped && !reply->isFinished()) {
            *stopped = std::move(why);
            reply->abort();
        }
    };
    QTimer::singleShot(requestTimeoutMs_, reply, [stop] {
        stop({UpdateCheckError::Kind::network, QStringLiteral("the server did not answer in time.")});
    });
    const auto checkSize = [reply, stop] {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if ((length.isValid() && length.toLongLong() > kMaxManifestBytes) || reply->bytesAvailable() > kMaxManifestBytes)
            stop({UpdateCheckError::Kind::invalidResponse, {}});
    };
    connect(reply, &QNetworkReply::metaDataChanged, reply, checkSize);
    connect(reply, &QNetworkReply::readyRead, reply, checkSize);
    connect(reply, &QNetworkReply::finished, this, [this, reply, stopped, completion = std::move(completion)] {
        const Outcome outcome = *stopped ? Outcome(**stopped) : evaluateManifestResponse(*reply);
        reply->deleteLater();
        // Always later, never inside the caller's own call.
        QMetaObject::invokeMethod(this, [completion, outcome] {
            if (completion)
                completion(outcome);
        }, Qt::QueuedConnection);
    });
}

void UpdateCheckService::checkAutomaticallyIfNeeded()
{
    if (!settings_.autoUpdateCheck())
        return;
    if (const auto last = settings_.lastUpdateCheckDate()) {
        const double elapsed = clock_.seconds() - double(last->toMSecsSinceEpoch()) / 1000.0;
        if (elapsed < automaticCheckInterval) // also a date in the future
            return;
    }
    QPointer<UpdateCheckService> self(this);
    checkForUpdates([self](const Outcome& outcome) {
        if (self)
            self->handleAutomaticCheckResult(outcome);
    });
}

void UpdateCheckService::handleAutomaticCheckResult(const Outcome& outcome)
{
    settings_.setDate(SettingsKey::lastUpdateCheckDate,
                      QDateTime::fromMSecsSinceEpoch(qint64(clock_.seconds() * 1000), Qt::UTC));
    if (const auto* result = std::get_if<UpdateCheckResult>(&outcome)) {
        if (result->isNewer) {
            notifications_.postUpdateAvailable(*result);
            analytics_.track(QStringLiteral("update_available"),
                             {{"current_version", appVersion()}, {"latest_version", result->latestVersion}});
        }
        return;
    }
    if (analytics_.isStarted())
        analytics_.captureError(QStringLiteral("UpdateCheckError"), std::get<UpdateCheckError>(outcome).description(),
                                {{"source", "auto_update_check"}});
}

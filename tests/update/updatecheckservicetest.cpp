#include "base/notificationhub.h"
#include "support/eventually.h"
#include "support/tempsettings.h"
#include "support/testtelemetry.h"
#include "telemetry/appinfo.h"
#include "update/updatecheckservice.h"
#include "update/versioncomparison.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace {

QByteArray manifest(const QString& version, const QString& url = "https://example.invalid/kestrio.tar.gz")
{
    return QStringLiteral(R"({"version": "%1", "downloadUrl": "%2", "releaseNotes": "Faster."})").arg(version, url).toUtf8();
}

// The running version with its last piece moved by `delta`.
QString relativeVersion(int delta)
{
    QList<qint64> pieces = versionComponents(appVersion());
    while (pieces.size() < 3)
        pieces.append(0);
    pieces.last() += delta;
    QStringList text;
    for (qint64 p : pieces)
        text << QString::number(p);
    return text.join(u'.');
}

class Checker : public testing::Test {
protected:
    LoopbackHttpServer site{LoopbackHttpServer::Scheme::https};
    TempSettings settings;
    TestTelemetry telemetry{settings.store()};
    NotificationHub hub;
    UpdateCheckService service{site.url("/apps/kestrio/latest.json"), settings.store(), telemetry.analytics, hub,
                               telemetry.system, telemetry.clock};
    QList<UpdateCheckResult> announced;

    Checker()
    {
        QObject::connect(&hub, &NotificationHub::updateAvailable, [this](const UpdateCheckResult& r) { announced << r; });
    }

    UpdateCheckService::Outcome check()
    {
        std::optional<UpdateCheckService::Outcome> outcome;
        service.checkForUpdates([&](const UpdateCheckService::Outcome& o) { outcome = o; });
        EXPECT_FALSE(outcome); // never inside the call
        EXPECT_TRUE(eventually([&] { return outcome.has_value(); }));
        return outcome.value_or(UpdateCheckError{});
    }

    QString failure(const UpdateCheckService::Outcome& outcome)
    {
        const auto* error = std::get_if<UpdateCheckError>(&outcome);
        return error ? error->description() : QString();
    }
};

TEST_F(Checker, NewerEqualAndOlderReleases)
{
    const std::vector<std::pair<int, bool>> table{{1, true}, {0, false}, {-1, false}};
    for (const auto& [delta, newer] : table) {
        site.body = manifest(relativeVersion(delta));
        const auto outcome = check();
        ASSERT_TRUE(std::holds_alternative<UpdateCheckResult>(outcome)) << failure(outcome).toStdString();
        EXPECT_EQ(std::get<UpdateCheckResult>(outcome).isNewer, newer) << delta;
        EXPECT_EQ(std::get<UpdateCheckResult>(outcome).releaseNotes, "Faster.");
    }
    const RecordedRequest& request = site.requests.last();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/apps/kestrio/latest.json");
    EXPECT_EQ(request.header("User-Agent"), "Kestrio/" + appVersion().toUtf8() + " (Linux)");
}

TEST_F(Checker, Failures)
{
    site.status = 404;
    site.body = "<html><body>Not Found</body></html>";
    EXPECT_EQ(failure(check()), "The update server returned an invalid response.");

    site.status = 200;
    site.body = "<html>maintenance</html>";
    EXPECT_TRUE(failure(check()).startsWith("Could not read the update information: "));
    site.body.clear();
    EXPECT_TRUE(failure(check()).startsWith("Could not read the update information: "));

    site.body = manifest("9.9.9", "not a url");
    EXPECT_EQ(failure(check()), "The update server returned an invalid response.");
}

TEST_F(Checker, ABodyCutShortIsANetworkErrorNotADecodingOne)
{
    site.paths["/apps/kestrio/latest.json"] = {200, manifest("9.9.9"), LoopbackAnswer::Ending::resetMidBody};
    const QString message = failure(check());
    EXPECT_TRUE(message.startsWith("Network error: ")) << message.toStdString();
}

// A server that sends a byte now and then never trips a time-out that counts
// from the last byte; the limit is on the whole request.
TEST_F(Checker, AServerThatTricklesItsAnswerRunsIntoTheLimitOnTheWholeRequest)
{
    service.setRequestTimeoutMs(500); // a byte comes every 50 ms, the answer takes seconds
    site.paths["/apps/kestrio/latest.json"] = {200, manifest("9.9.9") + QByteArray(200, ' '), LoopbackAnswer::Ending::trickle};
    EXPECT_EQ(failure(check()), "Network error: the server did not answer in time.");
}

// An answer far larger than any manifest is not read to its end.
TEST_F(Checker, AnAnswerLargerThanAnyManifestIsRefused)
{
    QByteArray huge = manifest("9.9.9");
    huge.insert(1, QByteArray(UpdateCheckService::kMaxManifestBytes, ' ')); // still valid JSON
    site.body = huge;
    EXPECT_EQ(failure(check()), "The update server returned an invalid response.");
}

TEST_F(Checker, OnlyHttpsIsAsked)
{
    LoopbackHttpServer plain;
    plain.body = manifest("9.9.9");
    UpdateCheckService overHttp(plain.url("/latest.json"), settings.store(), telemetry.analytics, hub, telemetry.system,
                                telemetry.clock);
    std::optional<UpdateCheckService::Outcome> outcome;
    overHttp.checkForUpdates([&](const UpdateCheckService::Outcome& o) { outcome = o; });
    ASSERT_TRUE(eventually([&] { return outcome.has_value(); }));
    EXPECT_TRUE(failure(*outcome).startsWith("Network error: ")) << failure(*outcome).toStdString();
    EXPECT_TRUE(plain.requests.isEmpty());
}

TEST_F(Checker, ConnectionRefusedIsANetworkError)
{
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost, 0);
    const quint16 port = closed.serverPort();
    closed.close();
    UpdateCheckService nowhere(QUrl(QStringLiteral("https://127.0.0.1:%1/latest.json").arg(port)), settings.store(),
                               telemetry.analytics, hub, telemetry.system, telemetry.clock);
    std::optional<UpdateCheckService::Outcome> outcome;
    nowhere.checkForUpdates([&](const UpdateCheckService::Outcome& o) { outcome = o; });
    ASSERT_TRUE(eventually([&] { return outcome.has_value(); }));
    EXPECT_TRUE(failure(*outcome).startsWith("Network error: ")) << failure(*outcome).toStdString();
    EXPECT_GT(failure(*outcome).size(), QString("Network error: ").size());
}

TEST_F(Checker, AutomaticCheckRunsOncePerDay)
{
    site.body = manifest(relativeVersion(0));
    const double now = telemetry.clock.now;
    auto lastCheckedAgo = [&](double seconds) {
        settings.store().setDate(SettingsKey::lastUpdateCheckDate,
                                 QDateTime::fromMSecsSinceEpoch(qint64((now - seconds) * 1000), Qt::UTC));
    };
    struct Case {
        const char* name;
        std::function<void()> arrange;
        bool checks;
    };
    const std::vector<Case> table{
        {"never checked", [&] { settings.store().remove(SettingsKey::lastUpdateCheckDate); }, true},
        {"23 h 59 min ago", [&] { lastCheckedAgo(86400 - 60); }, false},
        {"24 h ago", [&] { lastCheckedAgo(86400); }, true},
        {"in the future", [&] { lastCheckedAgo(-3600); }, false},
        {"switched off", [&] {
             settings.store().remove(SettingsKey::lastUpdateCheckDate);
             settings.store().setBool(SettingsKey::autoUpdateCheck, false);
         }, false},
        {"switch removed", [&] { settings.store().remove(SettingsKey::autoUpdateCheck); }, true},
    };
    for (const Case& c : table) {
        c.arrange();
        const qsizetype before = site.requests.size();
        service.checkAutomaticallyIfNeeded();
        if (c.checks) {
            EXPECT_TRUE(site.waitForRequests(before + 1)) << c.name;
            EXPECT_TRUE(eventually([&] {
                return settings.store().lastUpdateCheckDate()
                    && settings.store().lastUpdateCheckDate()->toSecsSinceEpoch() == qint64(now);
            })) << c.name;
        } else {
            EXPECT_TRUE(site.staysQuiet()) << c.name;
        }
    }
}

TEST_F(Checker, ANewerReleaseIsAnnouncedAndCounted)
{
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    telemetry.analytics.start();
    site.body = manifest(relativeVersion(0));
    service.checkAutomaticallyIfNeeded();
    ASSERT_TRUE(eventually([&] { return settings.store().lastUpdateCheckDate().has_value(); }));
    EXPECT_TRUE(announced.isEmpty());

    settings.store().remove(SettingsKey::lastUpdateCheckDate);
    site.body = manifest(relativeVersion(1));
    service.checkAutomaticallyIfNeeded();
    ASSERT_TRUE(eventually([&] { return !announced.isEmpty(); }));
    EXPECT_EQ(announced.first().latestVersion, relativeVersion(1));
    ASSERT_TRUE(telemetry.events.waitForRequests(2));
    const QJsonObject event = telemetry.sentEvents().last();
    EXPECT_EQ(event.value("eventName"), "update_available");
    EXPECT_EQ(event.value("props").toObject(),
              (QJsonObject{{"current_version", appVersion()}, {"latest_version", relativeVersion(1)}}));
}

TEST_F(Checker, AFailedAutomaticCheckIsReportedOnlyWhenStarted)
{
    site.status = 500;
    service.checkAutomaticallyIfNeeded();
    ASSERT_TRUE(eventually([&] { return settings.store().lastUpdateCheckDate().has_value(); }));
    EXPECT_TRUE(telemetry.crashes.staysQuiet());

    settings.store().remove(SettingsKey::lastUpdateCheckDate);
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    telemetry.analytics.start();
    service.checkAutomaticallyIfNeeded();
    ASSERT_TRUE(telemetry.crashes.waitForRequests(1));
    const QJsonObject report = QJsonDocument::fromJson(telemetry.crashes.requests[0].body.split('\n').value(2)).object();
    EXPECT_EQ(report.value("extra").toObject(), (QJsonObject{{"source", "auto_update_check"}}));
    EXPECT_EQ(report.value("exception").toObject().value("values").toArray().at(0).toObject().value("value"),
              "The update server returned an invalid response.");
    EXPECT_EQ(telemetry.sentEventNames(), QStringList{"app_launched"}); // no usage event for a failure
}

} // namespace

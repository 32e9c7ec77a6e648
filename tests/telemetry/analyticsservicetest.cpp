#include "platform/fake/fakeclock.h"
#include "platform/fake/fakesysteminfo.h"
#include "support/eventually.h"
#include "support/testtelemetry.h"
#include "support/tempsettings.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/appinfo.h"
#include "telemetry/crashreporter.h"

#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

QJsonObject json(const QByteArray& body)
{
    return QJsonDocument::fromJson(body).object();
}

// The event inside a crash report envelope: header, item header, event.
QJsonObject envelopeEvent(const QByteArray& body)
{
    return json(body.split('\n').value(2));
}

class Telemetry : public testing::Test {
protected:
    TempSettings settings;
    TestTelemetry telemetry{settings.store()};
    LoopbackHttpServer& events = telemetry.events;
    LoopbackHttpServer& crashes = telemetry.crashes;
    FakeSystemInfo& system = telemetry.system;
    FakeClock& clock = telemetry.clock;
    QTemporaryDir& crashFolder = telemetry.crashFolder;
    CrashReporter& crashReporter = telemetry.crashReporter;
    AnalyticsService& service = telemetry.analytics;

    void optIn() { settings.store().setBool(SettingsKey::analyticsEnabled, true); }
    QStringList eventNames() const { return telemetry.sentEventNames(); }
};

TEST_F(Telemetry, EventJsonAndHeaders)
{
    optIn();
    clock.now = 1740820502.75; // 2025-03-01T09:15:02.75Z
    service.start();
    service.track("search_opened", {{"active_app_bundle_id", "org.xfce.mousepad"}, {"rank_position", 3}, {"had_shortcut", true}});
    ASSERT_TRUE(events.waitForRequests(2));

    const RecordedRequest& launched = events.requests[0];
    EXPECT_EQ(launched.method, "POST");
    EXPECT_EQ(launched.path, "/api/v0/event");
    EXPECT_EQ(json(launched.body).value("props").toObject(), (QJsonObject{
        {"version", appVersion()}, {"build", appBuild()}, {"macos", "6.1.0"}, {"locale", "en_US"}}));

    const RecordedRequest& request = events.requests[1];
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(request.header("App-Key"), "A-EU-1234567890");
    EXPECT_EQ(request.header("User-Agent"), "Linux/6.1.0 en");
    EXPECT_LT(request.headerIndex("Content-Type"), request.headerIndex("App-Key"));
    EXPECT_LT(request.headerIndex("App-Key"), request.headerIndex("User-Agent"));
    EXPECT_EQ(request.body, QJsonDocument(json(request.body)).toJson(QJsonDocument::Compact));

    const QJsonObject event = json(request.body);
    EXPECT_EQ(event.keys(), (QStringList{"eventName", "props", "sessionId", "systemProps", "timestamp"}));
    EXPECT_EQ(event.value("timestamp"), "2025-03-01T09:15:02Z");
    EXPECT_EQ(event.value("eventName"), "search_opened");
    const QString session = event.value("sessionId").toString();
    EXPECT_EQ(session.size(), 18);
    EXPECT_TRUE(session.startsWith("1740820502"));
    EXPECT_EQ(event.value("props").toObject(), (QJsonObject{
        {"active_app_bundle_id", "org.xfce.mousepad"}, {"rank_position", 3}, {"had_shortcut", true}}));
    EXPECT_EQ(event.value("systemProps").toObject(), (QJsonObject{
        {"isDebug", false},
        {"locale", "en_US"},
        {"osName", "Linux"},
        {"osVersion", "6.1.0"},
        {"appVersion", appVersion()},
        {"appBuildNumber", appBuild()},
        {"sdkVersion", "kestrio-linux@" + appVersion()},
        {"deviceModel", "Test Machine 3000"},
    }));
}

TEST_F(Telemetry, EmptyPropertiesAndALocaleWithoutLanguage)
{
    optIn();
    system.language.clear();
    service.start();
    service.track("settings_changed");
    ASSERT_TRUE(events.waitForRequests(2));
    EXPECT_EQ(json(events.requests[1].body).value("props"), QJsonObject{});
    EXPECT_EQ(events.requests[1].header("User-Agent"), "Linux/6.1.0"); // the trailing space is trimmed by HTTP
}

TEST_F(Telemetry, NothingIsSentUnlessOptedInAndStarted)
{
    const double created = service.lastEventTime();
    clock.advance(50);
    service.track("search_opened");
    service.start(); // not opted in
    service.track("search_opened");
    service.captureError("UpdateCheckError", "offline", {{"source", "auto_update_check"}});
    EXPECT_FALSE(service.isStarted());
    EXPECT_FALSE(crashReporter.isActive());
    EXPECT_EQ(service.lastEventTime(), created);
    EXPECT_TRUE(events.staysQuiet());
    EXPECT_TRUE(crashes.requests.isEmpty());

    optIn();
    service.start();
    EXPECT_TRUE(crashReporter.isActive());
    service.stop();
    EXPECT_FALSE(service.isStarted());
    EXPECT_FALSE(crashReporter.isActive());
    service.track("search_opened");
    ASSERT_TRUE(events.waitForRequests(1));
    EXPECT_TRUE(events.staysQuiet());
    EXPECT_EQ(eventNames(), QStringList{"app_launched"});
}

TEST_F(Telemetry, SessionRotatesAfterMoreThanAnHour)
{
    optIn();
    service.start();
    const QString first = service.sessionId();
    clock.advance(3600);
    service.track("a");
    EXPECT_EQ(service.sessionId(), first);
    clock.advance(3601);
    service.track("b");
    EXPECT_NE(service.sessionId(), first);
    EXPECT_TRUE(service.sessionId().startsWith(QString::number(qint64(clock.now))));

    // Opting out and in again announces the launch again, in the same session.
    const QString second = service.sessionId();
    service.stop();
    service.start();
    ASSERT_TRUE(events.waitForRequests(4));
    EXPECT_EQ(eventNames(), (QStringList{"app_launched", "a", "b", "app_launched"}));
    EXPECT_EQ(json(events.requests[3].body).value("sessionId").toString(), second);
}

TEST(SessionId, TimeThenEightRandomDigits)
{
    QSet<QString> randomParts;
    for (int i = 0; i < 200; ++i) {
        const QString id = AnalyticsService::makeSessionId(1740820502.9);
        ASSERT_EQ(id.size(), 18);
        ASSERT_TRUE(id.startsWith("1740820502"));
        randomParts.insert(id.right(8));
    }
    EXPECT_GT(randomParts.size(), 190);
    EXPECT_LT(AnalyticsService::makeSessionId(0).toULongLong(), 100000000u); // only the random part
}

TEST_F(Telemetry, ErrorReportsCarryTheirExtraAndNoUser)
{
    optIn();
    service.start();
    service.captureError("UpdateCheckError", "The network connection was lost.", {{"source", "auto_update_check"}});
    ASSERT_TRUE(crashes.waitForRequests(1));
    const RecordedRequest& report = crashes.requests[0];
    EXPECT_EQ(report.path, "/api/42/envelope/");
    EXPECT_TRUE(report.header("X-Sentry-Auth").contains("sentry_key=0123456789abcdef0123456789abcdef"));
    const QJsonObject event = envelopeEvent(report.body);
    EXPECT_EQ(event.value("extra").toObject(), (QJsonObject{{"source", "auto_update_check"}}));
    EXPECT_EQ(event.value("release"), QStringLiteral("kestrio@%1+%2").arg(appVersion(), appBuild()));
    EXPECT_EQ(event.value("environment"), "production");
    EXPECT_EQ(event.value("exception").toObject().value("values").toArray().at(0).toObject().value("value"),
              "The network connection was lost.");
    EXPECT_FALSE(event.contains("user"));
    EXPECT_FALSE(event.contains("server_name"));
}

TEST(CrashReporterScrub, RemovesUserAndServerNameOnly)
{
    const QJsonObject scrubbed = CrashReporter::scrubEvent(
        QJsonObject{{"user", QJsonObject{{"id", "me"}}}, {"server_name", "host"}, {"level", "error"}});
    EXPECT_EQ(scrubbed, (QJsonObject{{"level", "error"}}));
}

TEST_F(Telemetry, FlushWaitsForReportsInFlight)
{
    optIn();
    service.start();
    service.captureError("E", "one", {});
    service.captureError("E", "two", {});
    service.stop(); // flushes
    EXPECT_EQ(crashes.requests.size(), 2);
}

TEST_F(Telemetry, AFatalSignalIsRecordedAndSentByTheNextStart)
{
    for (const QString& how : {QStringLiteral("segv"), QStringLiteral("abort")}) {
        QProcess child;
        child.start(QStringLiteral(CRASH_HELPER_PATH), {crashFolder.path(), how});
        ASSERT_TRUE(child.waitForFinished(30000));
        EXPECT_EQ(child.exitStatus(), QProcess::CrashExit);
    }
    EXPECT_EQ(QDir(crashFolder.path()).entryList({"crash-*.json"}).size(), 2);

    optIn();
    service.start();
    ASSERT_TRUE(crashes.waitForRequests(2));
    QStringList signalNames;
    for (const auto& request : crashes.requests) {
        const QJsonObject event = envelopeEvent(request.body);
        EXPECT_EQ(event.value("level"), "fatal");
        EXPECT_EQ(event.value("release"), "kestrio@9.8.7+65"); // the release that crashed
        signalNames << event.value("exception").toObject().value("values").toArray().at(0).toObject().value("type").toString();
    }
    signalNames.sort();
    EXPECT_EQ(signalNames, (QStringList{"SIGABRT", "SIGSEGV"}));
    // Sent, so forgotten.
    EXPECT_TRUE(eventually([&] { return QDir(crashFolder.path()).entryList({"crash-*.json"}).isEmpty(); }));
}

TEST_F(Telemetry, UnsentCrashRecordsAreKept)
{
    QFile record(crashFolder.filePath("crash-1-2.json"));
    ASSERT_TRUE(record.open(QIODevice::WriteOnly));
    record.write("{\"signal\":11,\"name\":\"SIGSEGV\",\"time\":1700000000,\"release\":\"kestrio@1+1\"}\n");
    record.close();
    crashes.status = 503;
    optIn();
    service.start();
    ASSERT_TRUE(crashes.waitForRequests(1));
    crashes.staysQuiet();
    EXPECT_TRUE(record.exists());
}

TEST_F(Telemetry, AMainThreadHangIsReported)
{
    optIn();
    service.start();
    QThread::msleep(2600); // the main thread does not answer
    ASSERT_TRUE(crashes.waitForRequests(1));
    const QJsonObject event = envelopeEvent(crashes.requests[0].body);
    EXPECT_EQ(event.value("exception").toObject().value("values").toArray().at(0).toObject().value("type"), "App Hanging");
}

} // namespace

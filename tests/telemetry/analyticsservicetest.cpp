#include "platform/fake/fakeclock.h"
#include "platform/fake/fakesysteminfo.h"
#include "support/eventually.h"
#include "support/testtelemetry.h"
#include "support/tempsettings.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/appinfo.h"
#include "telemetry/crashreporter.h"
#include "telemetry/nativeimages.h"

#include <QTimer>
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
    // The client names the machine, as the service's own clients do; the
    // hook the service configures takes it out again.
    EXPECT_FALSE(event.contains("user"));
    EXPECT_FALSE(event.contains("server_name"));
}

TEST(CrashReporterScrub, RemovesUserAndServerNameOnly)
{
    const QJsonObject scrubbed = CrashReporter::scrubEvent(
        QJsonObject{{"user", QJsonObject{{"id", "me"}}}, {"server_name", "host"}, {"level", "error"}});
    EXPECT_EQ(scrubbed, (QJsonObject{{"level", "error"}}));
}

// Every outgoing event passes the hook: without it the machine's name goes out.
TEST(CrashReporterScrub, EveryOutgoingEventPassesTheHook)
{
    LoopbackHttpServer service;
    FakeSystemInfo system;
    QTemporaryDir folder;
    CrashReporter reporter(system, folder.path());
    CrashReporter::Options options;
    options.dsn = QStringLiteral("http://0123456789abcdef0123456789abcdef@127.0.0.1:%1/42").arg(service.port());
    options.enableAppHangTracking = false;
    int hooked = 0;
    for (const bool scrub : {false, true}) {
        SCOPED_TRACE(scrub);
        options.beforeSend = [&hooked, scrub](QJsonObject event) {
            ++hooked;
            return scrub ? CrashReporter::scrubEvent(event) : event;
        };
        reporter.start(options);
        reporter.captureError("E", "one", {});
        ASSERT_TRUE(service.waitForRequests(scrub ? 2 : 1));
        const QJsonObject event = envelopeEvent(service.requests.last().body);
        EXPECT_EQ(event.contains("server_name"), !scrub);
        reporter.stop();
    }
    EXPECT_EQ(hooked, 2);
}

TEST_F(Telemetry, FlushWaitsForReportsInFlight)
{
    optIn();
    service.start();
    service.captureError("E", "one", {});
    service.captureError("E", "two", {});
    service.stopAtQuit(); // flushes
    EXPECT_EQ(crashes.requests.size(), 2);
}

// Opting out while a report is on its way waits for nothing: no event loop
// runs inside the settings' click, and the report still arrives.
TEST_F(Telemetry, OptingOutWaitsForNoReport)
{
    optIn();
    service.start();
    service.captureError("E", "on its way", {});
    bool ranMeanwhile = false;
    QTimer::singleShot(0, [&] { ranMeanwhile = true; });
    service.stop();
    EXPECT_FALSE(ranMeanwhile);
    EXPECT_TRUE(crashes.waitForRequests(1));
}

// A crash is recorded with its stack and the loaded modules (a stack overflow
// too, from a stack of the handler's own) and sent by the next start, in a
// form the service can name the crashing functions from.
TEST_F(Telemetry, AFatalSignalIsRecordedAndSentByTheNextStart)
{
    const QStringList ways{"segv", "abort", "overflow"};
    for (const QString& how : ways) {
        QProcess child;
        child.start(QStringLiteral(CRASH_HELPER_PATH), {crashFolder.path(), how});
        ASSERT_TRUE(child.waitForFinished(30000));
        // Ended by the signal, or by a sanitizer that takes it over after us.
        EXPECT_TRUE(child.exitStatus() == QProcess::CrashExit || child.exitCode() != 0) << how.toStdString();
    }
    EXPECT_EQ(QDir(crashFolder.path()).entryList({"crash-*.json"}).size(), 3);
    EXPECT_EQ(QDir(crashFolder.path()).entryList({"crash-*.maps"}).size(), 3);

    const QByteArray helperBuildId = NativeImages::buildId(QStringLiteral(CRASH_HELPER_PATH)).value_or(QByteArray());
    ASSERT_FALSE(helperBuildId.isEmpty());
    optIn();
    service.start();
    ASSERT_TRUE(crashes.waitForRequests(3));
    QStringList signalNames;
    for (const auto& request : crashes.requests) {
        const QJsonObject event = envelopeEvent(request.body);
        EXPECT_EQ(event.value("level"), "fatal");
        EXPECT_EQ(event.value("release"), "kestrio@9.8.7+65"); // the release that crashed
        const QJsonObject exception = event.value("exception").toObject().value("values").toArray().at(0).toObject();
        signalNames << exception.value("type").toString();
        EXPECT_EQ(exception.value("mechanism").toObject().value("handled"), false);

        // The helper is among the modules, named by its build id, and the
        // crashing thread's stack runs through it.
        const QJsonArray frames = exception.value("stacktrace").toObject().value("frames").toArray();
        EXPECT_GE(frames.size(), 3);
        std::optional<std::pair<quint64, quint64>> helper;
        for (const auto& image : event.value("debug_meta").toObject().value("images").toArray()) {
            const QJsonObject i = image.toObject();
            if (i.value("code_file") == QFileInfo(CRASH_HELPER_PATH).fileName()) {
                EXPECT_EQ(i.value("code_id").toString(), QString::fromLatin1(helperBuildId.toHex()));
                EXPECT_EQ(i.value("debug_id").toString(), NativeImages::debugId(helperBuildId));
                helper = std::pair{i.value("image_addr").toString().toULongLong(nullptr, 16),
                                   quint64(i.value("image_size").toInteger())};
            }
        }
        ASSERT_TRUE(helper) << exception.value("type").toString().toStdString();
        int inHelper = 0;
        for (const auto& frame : frames) {
            const quint64 address = frame.toObject().value("instruction_addr").toString().toULongLong(nullptr, 16);
            inHelper += address >= helper->first && address < helper->first + helper->second;
        }
        EXPECT_GE(inHelper, 1);
    }
    signalNames.sort();
    EXPECT_EQ(signalNames, (QStringList{"SIGABRT", "SIGSEGV", "SIGSEGV"}));
    // Sent, so forgotten, the memory maps with them.
    EXPECT_TRUE(eventually([&] { return QDir(crashFolder.path()).entryList({"crash-*"}).isEmpty(); }));
}

TEST_F(Telemetry, OptingOutForgetsCrashesNotYetSent)
{
    QProcess child;
    child.start(QStringLiteral(CRASH_HELPER_PATH), {crashFolder.path(), "segv"});
    ASSERT_TRUE(child.waitForFinished(30000));
    ASSERT_EQ(QDir(crashFolder.path()).entryList({"crash-*"}).size(), 2);
    crashes.status = 503; // the service is away: the record stays
    optIn();
    service.start();
    ASSERT_TRUE(crashes.waitForRequests(1));
    service.stop();
    service.discardPendingCrashReports();
    EXPECT_TRUE(QDir(crashFolder.path()).entryList({"crash-*"}).isEmpty());
    crashes.status = 200;
    service.start(); // opted in again later: nothing from before goes out
    EXPECT_TRUE(crashes.staysQuiet());
    EXPECT_EQ(crashes.requests.size(), 1);
}

TEST(NativeImages, DebugIdsAsTheServiceComputesThem)
{
    EXPECT_EQ(NativeImages::debugId(QByteArray::fromHex("68220ae2c65d65c1b6aaa12fa6765a6ec2f5f434")),
              "e20a2268-5dc6-c165-b6aa-a12fa6765a6e");
    EXPECT_EQ(NativeImages::debugId(QByteArray::fromHex("0102")), "00000201-0000-0000-0000-000000000000");
}

// A module loaded from a home folder is named by its file alone: the folder names the user.
TEST(NativeImages, ModulesAreNamedWithoutTheirFolders)
{
    const QJsonObject meta = NativeImages::debugMeta(
        {NativeImage{"/home/alice/.local/lib/libplugin.so", 0x7f0000000000, 0x1000, QByteArray::fromHex("0102")},
         NativeImage{"/usr/lib/x86_64-linux-gnu/libQt6Core.so.6", 0x7f1000000000, 0x1000, {}}});
    const QJsonArray images = meta.value("images").toArray();
    ASSERT_EQ(images.size(), 2);
    EXPECT_EQ(images[0].toObject().value("code_file"), "libplugin.so");
    EXPECT_EQ(images[1].toObject().value("code_file"), "libQt6Core.so.6");
    EXPECT_FALSE(QJsonDocument(meta).toJson().contains("alice"));
}

TEST(NativeImages, ModulesFromAMemoryMap)
{
    const QString self = QCoreApplication::applicationFilePath();
    const QByteArray maps = "5555aaaa0000-5555aaab0000 r--p 00000000 08:01 42 " + self.toUtf8() + "\n"
        "5555aaab0000-5555aaac8000 r-xp 00010000 08:01 42 " + self.toUtf8() + "\n"
        "7fff0000-7fff1000 rw-p 00000000 00:00 0 [stack]\n"
        "7ffe0000-7ffe1000 r--p 00000000 08:01 7 /usr/share/fonts/not-an-elf.ttf\n"
        "not a line at all\n"
        "zz-yy r--p 00000000 08:01 7 /bin/sh\n"
        "7ffd0000-7ffc0000 r--p 00000000 08:01 7 /bin/sh\n"
        "7ffb0000-7ffb1000 r--p 00000000 08:01 9 /tmp/gone.so (deleted)\n";
    const QList<NativeImage> images = NativeImages::fromMemoryMap(maps);
    ASSERT_EQ(images.size(), 1);
    EXPECT_EQ(images[0].codeFile, self);
    EXPECT_EQ(images[0].imageAddress, 0x5555aaaa0000u);
    EXPECT_EQ(images[0].imageSize, 0x28000u);
    EXPECT_EQ(images[0].buildId, NativeImages::buildId(self).value_or(QByteArray()));
    EXPECT_FALSE(images[0].buildId.isEmpty());
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

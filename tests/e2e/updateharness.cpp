// Plays the running program for an end-to-end self-update: reads the manifest
// the way the update checker does, then installs the offered release with the
// real self-updater into INSTALLATION. Reports on standard output as JSON
// lines: {"check": …}, then {"state": …, "message": …} for each state; ends
// with 0 once the updater hands over to its script, 1 when it fails.
//   kestrio-update-harness MANIFEST_URL INSTALLATION PUBLIC_KEY
#include "base/notificationhub.h"
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "platform/clock.h"
#include "platform/linux/linuxplatform.h"
#include "platform/systeminfo.h"
#include "platform/updatepackaging.h"
#include "support/loopbackhttpserver.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"
#include "update/selfupdater.h"
#include "update/updatecheckservice.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

#include <cstdio>

namespace {

void report(const QJsonObject& line)
{
    std::printf("%s\n", QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    const QStringList args = app.arguments();
    if (args.size() != 4) {
        std::fprintf(stderr, "usage: kestrio-update-harness MANIFEST_URL INSTALLATION PUBLIC_KEY\n");
        return 64;
    }
    // The maker's site in the test is a loopback server with a certificate of its own.
    LoopbackHttpServer::trustTestCertificate();

    const QString workspaces = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/kestrio";
    QDir().mkpath(workspaces);
    SelfUpdater updater(platform.updatePackaging(), PlatformWords::linuxDesktop(),
                        SelfUpdater::Environment{workspaces, args[2], QCoreApplication::applicationPid(),
                                                 [] { QCoreApplication::exit(0); }, args[3], qint64(1) << 30,
                                                 [] { report({{"releasePage", true}}); }});
    QObject::connect(&updater, &SelfUpdater::stateChanged, [](const SelfUpdater::State& state) {
        static const char* names[] = {"idle", "downloading", "installing", "failed"};
        report({{"state", names[int(state.kind)]}, {"message", state.message}});
        if (state.kind == SelfUpdater::State::Kind::failed)
            QCoreApplication::exit(1);
    });

    SettingsStore settings(SettingsStore::standardPath());
    NotificationHub hub;
    CrashReporter crashes(platform.systemInfo(), CrashReporter::standardFolder());
    AnalyticsService analytics(settings, platform.systemInfo(), Clock::wall(), AnalyticsService::builtInEndpoint(), crashes);
    UpdateCheckService checker(QUrl(args[1]), settings, analytics, hub, platform.systemInfo(), Clock::wall());
    checker.checkForUpdates([&updater](const UpdateCheckService::Outcome& outcome) {
        if (const auto* error = std::get_if<UpdateCheckError>(&outcome)) {
            report({{"check", error->description()}});
            QCoreApplication::exit(1);
            return;
        }
        const auto& result = std::get<UpdateCheckResult>(outcome);
        report({{"check", result.isNewer ? "newer" : "not newer"}, {"version", result.latestVersion}});
        updater.startUpdate(result.downloadURL, result.latestVersion);
    });
    return app.exec();
}

#include "app/programservices.h"

#include "platform/clock.h"

ProgramServices::ProgramServices(HotkeyPlatform& hotkeys, const SystemInfo& system, UpdatePackaging& packaging,
                                 const PlatformWords& words)
    : settings(SettingsStore::standardPath()),
      crashReporter(system, CrashReporter::standardFolder()),
      analytics(settings, system, Clock::wall(), AnalyticsService::builtInEndpoint(), crashReporter),
      usage(settings),
      hotkey(hotkeys, settings, Clock::monotonic()),
      updateCheck(UpdateCheckService::builtInManifestURL(), settings, analytics, notifications, system, Clock::wall()),
      selfUpdater(packaging, words, SelfUpdater::builtInEnvironment(packaging))
{
}

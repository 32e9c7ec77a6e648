#pragma once

#include "base/notificationhub.h"
#include "base/settingsstore.h"
#include "base/timers.h"
#include "hotkey/hotkeyservice.h"
#include "search/usagetracker.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"
#include "update/selfupdater.h"
#include "update/updatecheckservice.h"

class HotkeyPlatform;
class SystemInfo;
class UpdatePackaging;
struct PlatformWords;

// The program's long-lived services, each the one instance of the program:
// made once by main on top of the platform's backends, with the deployment
// settings built in, and handed down from there. Declared in the order they
// depend on each other, so each goes before what it uses.
struct ProgramServices {
    ProgramServices(HotkeyPlatform& hotkeys, const SystemInfo& system, UpdatePackaging& packaging,
                    const PlatformWords& words);

    SettingsStore settings;
    NotificationHub notifications;
    QtTimers timers;
    CrashReporter crashReporter;
    AnalyticsService analytics;
    UsageTracker usage;
    HotkeyService hotkey;
    UpdateCheckService updateCheck;
    SelfUpdater selfUpdater;
};

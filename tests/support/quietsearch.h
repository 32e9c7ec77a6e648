#pragma once

// What a search panel records, for the programs that measure or drive one
// (harnesses, benchmarks): a usage history of their own, in a folder that
// goes with them, and usage events that are never sent (nobody opted in).

#include "base/settingsstore.h"
#include "platform/clock.h"
#include "search/searchviewmodel.h"
#include "search/usagetracker.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"

#include <QTemporaryDir>

struct QuietSearch {
    QTemporaryDir folder;
    SettingsStore settings{folder.filePath(QStringLiteral("settings.json"))};
    UsageTracker usage{settings};
    CrashReporter crashes;
    AnalyticsService analytics;

    explicit QuietSearch(const SystemInfo& system)
        : crashes(system, folder.filePath(QStringLiteral("crashes"))),
          analytics(settings, system, Clock::wall(), {}, crashes)
    {
    }

    // With `press`, presses go there instead of to the reader.
    SearchServices services(std::function<bool(const MenuItem&)> press = {})
    {
        return SearchServices{&usage, &analytics, std::move(press)};
    }
};

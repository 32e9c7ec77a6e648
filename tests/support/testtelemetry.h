#pragma once

#include "platform/fake/fakeclock.h"
#include "platform/fake/fakesysteminfo.h"
#include "support/loopbackhttpserver.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

// Usage events and crash reports of a test, sent to loopback servers of its own.
struct TestTelemetry {
    LoopbackHttpServer events;
    LoopbackHttpServer crashes;
    FakeSystemInfo system;
    FakeClock clock;
    QTemporaryDir crashFolder;
    CrashReporter crashReporter{system, crashFolder.path()};
    AnalyticsService analytics;

    explicit TestTelemetry(SettingsStore& settings)
        : analytics(settings, system, clock,
                    AnalyticsService::Endpoint{
                        events.url("/api/v0/event"), "A-EU-1234567890",
                        QStringLiteral("http://0123456789abcdef0123456789abcdef@127.0.0.1:%1/42").arg(crashes.port())},
                    crashReporter)
    {
    }

    QList<QJsonObject> sentEvents() const
    {
        QList<QJsonObject> out;
        for (const auto& r : events.requests)
            out << QJsonDocument::fromJson(r.body).object();
        return out;
    }

    QStringList sentEventNames() const
    {
        QStringList names;
        for (const QJsonObject& event : sentEvents())
            names << event.value("eventName").toString();
        return names;
    }
};

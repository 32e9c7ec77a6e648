#include "base/notificationhub.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

namespace {

TEST(NotificationHub, PostsFromTheMainThreadArriveBeforePostReturns)
{
    NotificationHub hub;
    QList<bool> seen;
    QObject::connect(&hub, &NotificationHub::analyticsOptInChanged, [&](bool enabled) { seen << enabled; });
    hub.postAnalyticsOptInChanged(true);
    hub.postAnalyticsOptInChanged(false);
    EXPECT_EQ(seen, (QList<bool>{true, false}));
}

TEST(NotificationHub, PostsFromAnotherThreadArriveOnTheMainThread)
{
    NotificationHub hub;
    QThread* deliveredOn = nullptr;
    UpdateCheckResult delivered;
    QObject::connect(&hub, &NotificationHub::updateAvailable, [&](const UpdateCheckResult& update) {
        deliveredOn = QThread::currentThread();
        delivered = update;
    });
    const UpdateCheckResult update{"2.0", std::nullopt, QUrl("https://example.invalid/k.tar.gz"), "notes", true};
    std::unique_ptr<QThread> poster(QThread::create([&] { hub.postUpdateAvailable(update); }));
    poster->start();
    poster->wait();
    EXPECT_EQ(deliveredOn, nullptr); // not delivered on the poster's thread
    QCoreApplication::processEvents();
    EXPECT_EQ(deliveredOn, QThread::currentThread());
    EXPECT_EQ(delivered, update);
}

} // namespace

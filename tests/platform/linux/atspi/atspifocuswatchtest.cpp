#include "platform/linux/atspi/atspifocuswatch.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

// Readings ask for the focused process from their workers while focus
// announcements arrive on the UI thread; under ThreadSanitizer a race here
// fails the test.
TEST(AtspiFocusWatch, TheFocusedProcessIsReadWhileAnnouncementsArrive)
{
    AtspiBus bus;
    AtspiFocusWatch watch(bus);
    EXPECT_FALSE(watch.focusedProcess());

    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            const auto pid = watch.focusedProcess();
            EXPECT_TRUE(!pid || (*pid >= 100 && *pid < 2100));
        }
    });
    for (qint32 pid = 100; pid < 2100; ++pid)
        watch.focusMovedTo(pid);
    done = true;
    reader.join();
    EXPECT_EQ(watch.focusedProcess(), 2099);
}

// Kestrio's own panel taking the focus leaves the target as it was.
TEST(AtspiFocusWatch, KestriosOwnFocusIsNotTheTarget)
{
    AtspiBus bus;
    AtspiFocusWatch watch(bus);
    int changes = 0;
    QObject::connect(&watch, &AtspiFocusWatch::focusChanged, [&] { ++changes; });
    watch.focusMovedTo(4242);
    watch.focusMovedTo(qint32(QCoreApplication::applicationPid()));
    watch.focusMovedTo(4242);
    EXPECT_EQ(watch.focusedProcess(), 4242);
    EXPECT_EQ(changes, 1);
}

} // namespace

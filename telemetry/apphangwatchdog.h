#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <thread>

// Watches whether the main thread still answers. A thread of its own pings
// the main thread; when an answer is `threshold` seconds late, the hang is
// reported on the main thread once it answers again, with how long it lasted.
class AppHangWatchdog : public QObject {
    Q_OBJECT

public:
    using Report = std::function<void(double seconds)>;

    explicit AppHangWatchdog(Report report, double threshold = 2.0, QObject* parent = nullptr);
    ~AppHangWatchdog() override;

    void start();
    void stop();

private:
    void watch();
    void answer(qint64 pingedAtMs);

    Report report_;
    const qint64 thresholdMs_;
    std::thread thread_;
    std::atomic<bool> running_{false};
    std::atomic<qint64> lastAnswerMs_{0};
    std::atomic<qint64> hangStartMs_{0};
};

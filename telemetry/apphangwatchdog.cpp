#include "telemetry/apphangwatchdog.h"

#include "platform/crossthread.h"


#include <chrono>

namespace {

// A clock that only moves forward: the wall clock may jump (time zones,
// network time) and would make a hang out of nothing, or hide one.
qint64 nowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

constexpr int kPingIntervalMs = 250;

} // namespace

AppHangWatchdog::AppHangWatchdog(Report report, double threshold, QObject* parent)
    : QObject(parent), report_(std::move(report)), thresholdMs_(qint64(threshold * 1000))
{
}

AppHangWatchdog::~AppHangWatchdog()
{
    stop();
}

void AppHangWatchdog::start()
{
    if (running_.exchange(true))
        return;
    lastAnswerMs_ = nowMs();
    hangStartMs_ = 0;
    thread_ = std::thread([this] { watch(); });
}

void AppHangWatchdog::stop()
{
    if (!running_.exchange(false))
        return;
    thread_.join();
}

void AppHangWatchdog::watch()
{
    // The watchdog outlives no ping: stop() waits for this thread, and a ping
    // still queued dies with the object.
    while (running_) {
        const qint64 pingedAt = nowMs();
        CrossThread::post(this, [this, pingedAt] { answer(pingedAt); });
        std::this_thread::sleep_for(std::chrono::milliseconds(kPingIntervalMs));
        const qint64 silent = nowMs() - lastAnswerMs_;
        if (silent >= thresholdMs_ && hangStartMs_ == 0)
            hangStartMs_ = lastAnswerMs_.load();
    }
}

void AppHangWatchdog::answer(qint64)
{
    const qint64 now = nowMs();
    lastAnswerMs_ = now;
    const qint64 hangStart = hangStartMs_.exchange(0);
    if (hangStart != 0 && running_ && report_)
        report_(double(now - hangStart) / 1000.0);
}

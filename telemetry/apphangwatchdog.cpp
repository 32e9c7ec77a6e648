#include "telemetry/apphangwatchdog.h"

#include <QDateTime>
#include <QPointer>

namespace {

qint64 nowMs()
{
    return QDateTime::currentMSecsSinceEpoch();
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

bool AppHangWatchdog::isRunning() const
{
    return running_;
}

void AppHangWatchdog::start()
{
    if (running_.exchange(true))
        return;
    lastAnswerMs_ = nowMs();
    hangStartMs_ = 0;
    thread_.reset(QThread::create([this] { watch(); }));
    thread_->start();
}

void AppHangWatchdog::stop()
{
    if (!running_.exchange(false))
        return;
    thread_->wait();
    thread_.reset();
}

void AppHangWatchdog::watch()
{
    QPointer<AppHangWatchdog> self(this);
    while (running_) {
        const qint64 pingedAt = nowMs();
        QMetaObject::invokeMethod(this, [self, pingedAt] {
            if (self)
                self->answer(pingedAt);
        }, Qt::QueuedConnection);
        QThread::msleep(kPingIntervalMs);
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

#include "platform/crossthread.h"

#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <thread>

// KESTRIO_THREAD_SANITIZER comes from the build (the tsan preset), since this
// file itself is compiled without the sanitizer.
#ifdef KESTRIO_THREAD_SANITIZER
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

// This file itself is built without the sanitizer's instrumentation (see
// CMakeLists.txt): the carriers Qt and the standard library make for a
// hand-off are written and read here, on both sides of it, and only the
// hand-off itself is told.

namespace {

#ifdef KESTRIO_THREAD_SANITIZER
// One synchronisation object for every hand-off: it orders more than needed,
// never less.
char handOffToken;
#endif

} // namespace

namespace CrossThread {

void handOff()
{
#ifdef KESTRIO_THREAD_SANITIZER
    __tsan_release(&handOffToken);
#endif
}

void takeOver()
{
#ifdef KESTRIO_THREAD_SANITIZER
    __tsan_acquire(&handOffToken);
#endif
}

void start(QThreadPool& pool, std::function<void()> task, QThread::Priority priority)
{
    // Made before the hand-off, so that the task's own storage is covered by it.
    std::function<void()> run = [task = std::move(task)] {
        takeOver();
        task();
        handOff(); // for whoever waits for the pool
    };
    handOff();
    pool.start(std::move(run), priority);
}

void post(QObject* context, std::function<void()> task)
{
#ifdef KESTRIO_THREAD_SANITIZER
    // The event carrying the task is made inside invokeMethod, so the hand-off
    // comes after it; the receiving side waits the moment it takes for that.
    auto handedOff = std::make_shared<std::atomic<bool>>(false);
    QMetaObject::invokeMethod(context, [task = std::move(task), handedOff] {
        while (!handedOff->load(std::memory_order_acquire))
            std::this_thread::yield();
        takeOver();
        task();
    }, Qt::QueuedConnection);
    handOff();
    handedOff->store(true, std::memory_order_release);
#else
    QMetaObject::invokeMethod(context, std::move(task), Qt::QueuedConnection);
#endif
}

void waitForDone(QThreadPool& pool)
{
    pool.waitForDone();
    takeOver();
}

} // namespace CrossThread

#pragma once

#include <QThread>

#include <functional>

class QObject;
class QThreadPool;

// Handing work between threads through Qt's thread pools and event queues.
// Qt synchronises with locks of its own that ThreadSanitizer cannot see (Qt
// is not built with it), so every hand-off here also tells the sanitizer what
// it orders; in other builds that costs nothing. Code that moves data between
// threads goes through these, or through std:: locks, which it sees.
namespace CrossThread {

// Everything this thread did so far is visible to a thread that later calls takeOver().
void handOff();
void takeOver();

// Runs `task` on `pool`; it sees what the caller did before.
void start(QThreadPool& pool, std::function<void()> task, QThread::Priority priority = QThread::InheritPriority);
// Runs `task` on `context`'s thread later, unless `context` is gone by then;
// it sees what the caller did before.
void post(QObject* context, std::function<void()> task);
// Waits until `pool` has nothing left to run, and sees what its tasks did.
void waitForDone(QThreadPool& pool);

} // namespace CrossThread

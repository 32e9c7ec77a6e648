#pragma once

#include <QString>

// Writes a record of a fatal signal (SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL)
// into a folder, from inside the signal handler, then lets the signal end the
// program as it would have. The record holds the crashing thread's stack (the
// instruction addresses) and, beside it, the process's memory map, from which
// the next start names the loaded modules. Only what is safe in a signal
// handler runs there: file names and text are prepared when the handler is
// installed, and it runs on a stack of its own so that a stack overflow is
// recorded too.
namespace CrashSignalHandler {

// Frames recorded at most; a runaway recursion has many more.
inline constexpr int kMaxFrames = 128;

// Installs the handlers; records go to `folder` as crash-<pid>-<time>.json,
// the memory map as crash-<pid>-<time>.maps.
void install(const QString& folder, const QString& release);
// Restores the handlers that were there before.
void uninstall();
bool isInstalled();

} // namespace CrashSignalHandler

#pragma once

#include <QString>

// Writes a small record of a fatal signal (SIGSEGV, SIGABRT, SIGBUS, SIGFPE,
// SIGILL) into a folder, from inside the signal handler, then lets the signal
// end the program as it would have. Only what is safe in a signal handler runs
// there: the file name and text are prepared when the handler is installed.
namespace CrashSignalHandler {

// Installs the handlers; records go to `folder` as crash-<pid>-<time>.json.
void install(const QString& folder, const QString& release);
// Restores the handlers that were there before.
void uninstall();
bool isInstalled();

} // namespace CrashSignalHandler

// Starts crash reporting into the folder given, then crashes with the signal
// given (SEGV by default), as a real fault would.
#include "platform/fake/fakesysteminfo.h"
#include "telemetry/crashreporter.h"

#include <QCoreApplication>

#include <csignal>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    FakeSystemInfo system;
    CrashReporter reporter(system, app.arguments().value(1));
    CrashReporter::Options options;
    options.releaseName = QStringLiteral("kestrio@9.8.7+65");
    options.enableAppHangTracking = false;
    reporter.start(options);
    if (app.arguments().value(2) == QLatin1String("abort"))
        std::abort();
    // As a bad memory access would; raised, so that sanitizers let it through.
    std::raise(SIGSEGV);
    return 0;
}

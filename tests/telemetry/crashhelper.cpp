// Starts crash reporting into the folder given, then crashes: "segv" (the
// default) as a bad memory access would, "abort", or "overflow", a runaway
// recursion that uses up the stack.
#include "platform/fake/fakesysteminfo.h"
#include "telemetry/crashreporter.h"

#include <QCoreApplication>

#include <csignal>

namespace {

// Kept from being turned into a loop: every call needs a frame of its own.
// It ends only where the stack does, which is the point.
volatile int deepest = 0;

int __attribute__((noinline)) recurse(int depth)
{
    volatile char frame[256];
    frame[0] = char(depth);
    deepest = depth;
    return (deepest >= 0 ? recurse(depth + 1) : 0) + frame[0];
}

} // namespace

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
    if (app.arguments().value(2) == QLatin1String("overflow"))
        return recurse(0);
    // As a bad memory access would; raised, so that sanitizers let it through.
    std::raise(SIGSEGV);
    return 0;
}

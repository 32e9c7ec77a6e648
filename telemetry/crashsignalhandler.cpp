#include "telemetry/crashsignalhandler.h"

#include <QDir>

#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr size_t kSignalCount = sizeof kSignals / sizeof kSignals[0];

// Everything the handler needs, filled before it can run.
char folderPath[1024];
char releaseText[256];
struct sigaction previous[kSignalCount];
std::atomic<bool> installed{false};

// Appends text or a decimal number to a fixed buffer; signal-safe.
struct Writer {
    char* buffer;
    size_t size;
    size_t used = 0;

    void text(const char* s)
    {
        while (*s && used + 1 < size)
            buffer[used++] = *s++;
        buffer[used] = '\0';
    }

    void number(unsigned long long n)
    {
        char digits[24];
        int count = 0;
        do {
            digits[count++] = char('0' + n % 10);
            n /= 10;
        } while (n && count < 24);
        char reversed[25];
        for (int i = 0; i < count; ++i)
            reversed[i] = digits[count - 1 - i];
        reversed[count] = '\0';
        text(reversed);
    }
};

const char* signalName(int signal)
{
    switch (signal) {
    case SIGSEGV: return "SIGSEGV";
    case SIGABRT: return "SIGABRT";
    case SIGBUS: return "SIGBUS";
    case SIGFPE: return "SIGFPE";
    case SIGILL: return "SIGILL";
    default: return "SIGNAL";
    }
}

void onFatalSignal(int signal)
{
    const unsigned long long now = static_cast<unsigned long long>(time(nullptr));
    char path[1200];
    Writer name{path, sizeof path};
    name.text(folderPath);
    name.text("/crash-");
    name.number(static_cast<unsigned long long>(getpid()));
    name.text("-");
    name.number(now);
    name.text(".json");

    char record[512];
    Writer json{record, sizeof record};
    json.text("{\"signal\":");
    json.number(static_cast<unsigned long long>(signal));
    json.text(",\"name\":\"");
    json.text(signalName(signal));
    json.text("\",\"time\":");
    json.number(now);
    json.text(",\"release\":\"");
    json.text(releaseText);
    json.text("\"}\n");

    const int fd = open(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd >= 0) {
        ssize_t ignored = write(fd, record, json.used);
        (void)ignored;
        close(fd);
    }

    // Let the signal do what it would have done without us.
    for (size_t i = 0; i < kSignalCount; ++i) {
        if (kSignals[i] == signal)
            sigaction(signal, &previous[i], nullptr);
    }
    raise(signal);
}

} // namespace

namespace CrashSignalHandler {

void install(const QString& folder, const QString& release)
{
    uninstall();
    QDir().mkpath(folder);
    const QByteArray f = QFile::encodeName(folder);
    const QByteArray r = release.toUtf8();
    std::strncpy(folderPath, f.constData(), sizeof folderPath - 1);
    std::strncpy(releaseText, r.constData(), sizeof releaseText - 1);
    struct sigaction action {};
    action.sa_handler = onFatalSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESETHAND | SA_NODEFER;
    for (size_t i = 0; i < kSignalCount; ++i)
        sigaction(kSignals[i], &action, &previous[i]);
    installed = true;
}

void uninstall()
{
    if (!installed.exchange(false))
        return;
    for (size_t i = 0; i < kSignalCount; ++i)
        sigaction(kSignals[i], &previous[i], nullptr);
}

bool isInstalled()
{
    return installed;
}

} // namespace CrashSignalHandler

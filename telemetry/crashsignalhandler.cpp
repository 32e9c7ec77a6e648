#include "telemetry/crashsignalhandler.h"

#include <QDir>

#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <ucontext.h>
#include <unistd.h>

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr size_t kSignalCount = sizeof kSignals / sizeof kSignals[0];
// Room for the handler when the thread's own stack is used up.
constexpr size_t kAlternateStackSize = 64 * 1024;

// Everything the handler needs, filled before it can run.
char folderPath[1024];
char releaseText[256];
struct sigaction previous[kSignalCount];
alignas(16) char alternateStack[kAlternateStackSize];
std::atomic<bool> installed{false};

// Appends text, decimal or hexadecimal numbers to a fixed buffer; signal-safe.
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

    void number(unsigned long long n, unsigned base = 10)
    {
        char digits[24];
        int count = 0;
        do {
            digits[count++] = "0123456789abcdef"[n % base];
            n /= base;
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

void writeAll(int fd, const char* data, size_t length)
{
    while (length > 0) {
        const ssize_t n = write(fd, data, length);
        if (n <= 0)
            return;
        data += n;
        length -= size_t(n);
    }
}

// The instruction address the signal interrupted.
unsigned long long faultAddress(void* context)
{
#if defined(__x86_64__)
    return static_cast<unsigned long long>(static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return static_cast<unsigned long long>(static_cast<ucontext_t*>(context)->uc_mcontext.pc);
#else
    (void)context;
    return 0;
#endif
}

void copyMemoryMap(const char* path)
{
    const int in = open("/proc/self/maps", O_RDONLY);
    if (in < 0)
        return;
    const int out = open(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (out >= 0) {
        char chunk[4096];
        for (ssize_t n; (n = read(in, chunk, sizeof chunk)) > 0;)
            writeAll(out, chunk, size_t(n));
        close(out);
    }
    close(in);
}

void onFatalSignal(int signal, siginfo_t*, void* context)
{
    const unsigned long long now = static_cast<unsigned long long>(time(nullptr));
    char base[1200];
    Writer name{base, sizeof base};
    name.text(folderPath);
    name.text("/crash-");
    name.number(static_cast<unsigned long long>(getpid()));
    name.text("-");
    name.number(now);

    // The stack as the unwinder sees it from here: this handler and the
    // kernel's return path first, then the interrupted code. Those first
    // frames are left out, where the interrupted address is found.
    void* frames[CrashSignalHandler::kMaxFrames];
    const int count = backtrace(frames, CrashSignalHandler::kMaxFrames);
    const unsigned long long fault = faultAddress(context);
    int first = 0;
    for (int i = 0; i < count; ++i) {
        if (reinterpret_cast<unsigned long long>(frames[i]) == fault) {
            first = i;
            break;
        }
    }

    char record[8192];
    Writer json{record, sizeof record};
    json.text("{\"signal\":");
    json.number(static_cast<unsigned long long>(signal));
    json.text(",\"name\":\"");
    json.text(signalName(signal));
    json.text("\",\"time\":");
    json.number(now);
    json.text(",\"release\":\"");
    json.text(releaseText);
    json.text("\",\"fault\":\"0x");
    json.number(fault, 16);
    json.text("\",\"frames\":[");
    for (int i = first; i < count; ++i) {
        json.text(i == first ? "\"0x" : ",\"0x");
        json.number(reinterpret_cast<unsigned long long>(frames[i]), 16);
        json.text("\"");
    }
    json.text("]}\n");

    char path[1300];
    Writer file{path, sizeof path};
    file.text(base);
    file.text(".maps");
    copyMemoryMap(path); // first: the record's presence says the crash is written
    file.used = 0;
    file.text(base);
    file.text(".json");
    const int fd = open(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd >= 0) {
        writeAll(fd, record, json.used);
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

    // The unwinder loads its library on first use, which a signal handler
    // must not do: use it once now.
    void* warmUp[2];
    backtrace(warmUp, 2);

    // A stack of its own for this thread's handler, where an overflowed one
    // leaves no room.
    stack_t stack{};
    stack.ss_sp = alternateStack;
    stack.ss_size = sizeof alternateStack;
    sigaltstack(&stack, nullptr);

    struct sigaction action {};
    action.sa_sigaction = onFatalSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESETHAND | SA_NODEFER;
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

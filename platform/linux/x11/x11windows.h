#pragma once

#include "platform/linux/windows/windowdirectory.h"

#include <QHash>
#include <QList>
#include <QRect>
#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

typedef struct _XDisplay Display;

// What the window manager and the windows themselves announce. A thread of
// its own, on a connection of its own, reads the root window's and every
// client window's properties and follows their changes; every question is
// answered from what it last read, so the UI thread never waits on the X
// server (a server another client grabbed would hold it).
class X11Windows final : public WindowDirectory {
public:
    X11Windows();
    ~X11Windows() override;
    X11Windows(const X11Windows&) = delete;
    X11Windows& operator=(const X11Windows&) = delete;

    // Waits until the first reading is in, for a command line; false when it is not.
    bool waitForFirstReading(int timeoutMs);
    // Runs on the watching thread whenever the active window changed, once
    // what is known of it is current.
    void setActiveChanged(std::function<void()> changed);

    // The window the window manager calls active, else the one with the input focus.
    std::optional<quint64> activeWindow() override;
    // Its hints and frame.
    std::optional<DesktopWindow> window(quint64 id) override;
    // The first window of the window manager's client list that belongs to `pid`.
    std::optional<quint64> windowOfProcess(qint32 pid) override;
    // The window's frame on the screen, in root coordinates.
    std::optional<QRect> geometry(unsigned long window);
    // Asks the window manager to activate the window (as a pager would, so
    // that focus-stealing prevention lets it through) and gives it the focus.
    void activate(unsigned long window);
    // Keeps the window on every workspace.
    void setOnAllDesktops(unsigned long window);
    // Whether a compositing manager runs on the default screen.
    bool hasCompositor();
    QString announcedAccessibilityBus() override;

private:
    struct Known {
        std::optional<quint64> active;
        QList<quint64> clients; // the window manager's client list, in its order
        QHash<quint64, DesktopWindow> windows;
        QString accessibilityBus;
        bool compositor = false;
        bool read = false; // the first reading is in
    };
    class Watcher;

    void watch();

    // Requests that need no answer, from the UI thread.
    std::mutex commandsMutex_;
    Display* commands_ = nullptr;
    unsigned long activeAtom_ = 0, desktopAtom_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable firstReading_;
    Known known_;
    std::function<void()> activeChanged_;

    int wake_[2] = {-1, -1}; // written to stop the watching thread
    std::thread watcher_;
};

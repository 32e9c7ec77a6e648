#pragma once

#include "platform/linux/windowdirectory.h"

#include <QRect>
#include <QString>

#include <mutex>
#include <optional>

typedef struct _XDisplay Display;

// What the window manager and the windows themselves announce, read over a
// connection of our own.
class X11Windows final : public WindowDirectory {
public:
    X11Windows();
    ~X11Windows() override;
    X11Windows(const X11Windows&) = delete;
    X11Windows& operator=(const X11Windows&) = delete;

    bool isOpen() const { return display_ != nullptr; }

    // The window the window manager calls active, else the one with the input focus.
    std::optional<quint64> activeWindow() override;
    // Its hints; no frame (see `geometry`).
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
    QString announcedAccessibilityBus() override { return rootProperty("AT_SPI_BUS"); }
    // A text property of the root window.
    QString rootProperty(const char* name);

private:
    QString textProperty(unsigned long window, const char* name);
    std::optional<unsigned long> cardinalProperty(unsigned long window, const char* name, unsigned long type);

    std::mutex mutex_;
    Display* display_ = nullptr;
};

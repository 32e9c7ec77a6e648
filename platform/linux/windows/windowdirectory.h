#pragma once

#include <QRect>
#include <QString>

#include <optional>

// Where a GTK application exports a window's menus and actions on the
// session bus. Empty where the display does not tell (it does on X11).
struct GtkExports {
    QString busName;
    QString applicationPath; // the "app" actions
    QString windowPath;      // the "win" actions
    QString menuBarPath;

    friend bool operator==(const GtkExports&, const GtkExports&) = default;
};

// One top-level window as the desktop describes it.
struct DesktopWindow {
    quint64 id = 0;            // the desktop's own handle: an X window, a sway container
    std::optional<qint32> pid; // where the desktop knows it
    QString applicationId;     // desktop application id (Wayland app id, GTK/KDE hints on X11)
    QString windowClass;       // X11 WM_CLASS class
    QString title;
    std::optional<QRect> frame; // where it is, in the desktop's coordinates
    GtkExports gtkExports;
    std::optional<quint64> x11Window; // the X window, which global menus register windows by

    friend bool operator==(const DesktopWindow&, const DesktopWindow&) = default;
};

// What the desktop tells about its windows: which one the user works in and
// who owns it. Implementations answer from what they know without waiting on
// another process, and may be called from any thread.
class WindowDirectory {
public:
    virtual ~WindowDirectory();

    virtual std::optional<quint64> activeWindow() = 0;
    virtual std::optional<DesktopWindow> window(quint64 id) = 0;
    // One of the process's top-level windows.
    virtual std::optional<quint64> windowOfProcess(qint32 pid) = 0;
    // The accessibility bus as the display announces it (X11's AT_SPI_BUS),
    // for when the session bus does not tell.
    virtual QString announcedAccessibilityBus() { return {}; }

};

// A desktop that tells nothing (a Wayland compositor without an interface
// Kestrio speaks): the front application comes from elsewhere.
class NoWindowDirectory final : public WindowDirectory {
public:
    std::optional<quint64> activeWindow() override { return std::nullopt; }
    std::optional<DesktopWindow> window(quint64) override { return std::nullopt; }
    std::optional<quint64> windowOfProcess(qint32) override { return std::nullopt; }
};

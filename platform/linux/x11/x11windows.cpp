#include "platform/linux/x11/x11windows.h"

#include <QFileInfo>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

// Errors such as BadWindow for a window that just closed must not end the program.
int ignoreErrors(Display*, XErrorEvent*)
{
    return 0;
}

} // namespace

X11Windows::X11Windows()
{
    display_ = XOpenDisplay(nullptr);
    if (display_)
        XSetErrorHandler(ignoreErrors);
}

X11Windows::~X11Windows()
{
    if (display_)
        XCloseDisplay(display_);
}

std::optional<unsigned long> X11Windows::cardinalProperty(unsigned long window, const char* name, unsigned long type)
{
    Atom actualType = 0;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const Atom atom = XInternAtom(display_, name, False);
    std::optional<unsigned long> value;
    if (XGetWindowProperty(display_, window, atom, 0, 1, False, type, &actualType, &format, &count, &after, &data) == Success
        && data && count == 1 && format == 32)
        value = *reinterpret_cast<unsigned long*>(data);
    if (data)
        XFree(data);
    return value;
}

QString X11Windows::textProperty(unsigned long window, const char* name)
{
    Atom actualType = 0;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const Atom atom = XInternAtom(display_, name, False);
    QString text;
    if (XGetWindowProperty(display_, window, atom, 0, 4096, False, AnyPropertyType, &actualType, &format, &count, &after,
                           &data) == Success
        && data && format == 8)
        text = QString::fromUtf8(reinterpret_cast<const char*>(data), int(count));
    if (data)
        XFree(data);
    return text;
}

std::optional<quint64> X11Windows::activeWindow()
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return std::nullopt;
    const Window root = DefaultRootWindow(display_);
    if (auto active = cardinalProperty(root, "_NET_ACTIVE_WINDOW", XA_WINDOW); active && *active)
        return *active;
    // No window manager: the input focus, raised to its top-level window.
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(display_, &focus, &revert);
    if (focus == None || focus == PointerRoot)
        return std::nullopt;
    for (Window w = focus;;) {
        Window rootReturn = 0, parent = 0;
        Window* children = nullptr;
        unsigned int n = 0;
        if (!XQueryTree(display_, w, &rootReturn, &parent, &children, &n))
            return std::nullopt;
        if (children)
            XFree(children);
        if (parent == rootReturn || parent == 0)
            return w;
        w = parent;
    }
}

std::optional<DesktopWindow> X11Windows::window(quint64 id)
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return std::nullopt;
    const Window window = id;
    DesktopWindow info;
    info.id = id;
    info.x11Window = id;
    if (auto pid = cardinalProperty(window, "_NET_WM_PID", XA_CARDINAL))
        info.pid = qint32(*pid);
    info.applicationId = textProperty(window, "_GTK_APPLICATION_ID");
    info.gtkExports = {textProperty(window, "_GTK_UNIQUE_BUS_NAME"), textProperty(window, "_GTK_APPLICATION_OBJECT_PATH"),
                       textProperty(window, "_GTK_WINDOW_OBJECT_PATH"), textProperty(window, "_GTK_MENUBAR_OBJECT_PATH")};
    if (info.applicationId.isEmpty()) {
        // KDE names the desktop file, possibly as a path.
        const QString desktopFile = textProperty(window, "_KDE_NET_WM_DESKTOP_FILE");
        info.applicationId = QFileInfo(desktopFile).fileName().remove(QStringLiteral(".desktop"));
    }
    info.title = textProperty(window, "_NET_WM_NAME");
    if (info.title.isEmpty())
        info.title = textProperty(window, "WM_NAME");
    XClassHint hint{};
    if (XGetClassHint(display_, window, &hint)) {
        info.windowClass = QString::fromLocal8Bit(hint.res_class);
        XFree(hint.res_name);
        XFree(hint.res_class);
    }
    return info;
}

std::optional<quint64> X11Windows::windowOfProcess(qint32 pid)
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return std::nullopt;
    Atom actualType = 0;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const Atom clients = XInternAtom(display_, "_NET_CLIENT_LIST", False);
    std::optional<quint64> found;
    if (XGetWindowProperty(display_, DefaultRootWindow(display_), clients, 0, 65536, False, XA_WINDOW, &actualType,
                           &format, &count, &after, &data) == Success
        && data && format == 32) {
        const auto* windows = reinterpret_cast<const unsigned long*>(data);
        for (unsigned long i = 0; i < count && !found; ++i) {
            if (cardinalProperty(windows[i], "_NET_WM_PID", XA_CARDINAL) == static_cast<unsigned long>(pid))
                found = windows[i];
        }
    }
    if (data)
        XFree(data);
    return found;
}

std::optional<QRect> X11Windows::geometry(unsigned long window)
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return std::nullopt;
    XWindowAttributes attributes{};
    if (!XGetWindowAttributes(display_, window, &attributes))
        return std::nullopt;
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(display_, window, DefaultRootWindow(display_), 0, 0, &x, &y, &child);
    return QRect(x, y, attributes.width, attributes.height);
}

void X11Windows::activate(unsigned long window)
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display_, "_NET_ACTIVE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = 2; // source: a pager, which window managers obey
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display_, DefaultRootWindow(display_), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XRaiseWindow(display_, window);
    XSetInputFocus(display_, window, RevertToParent, CurrentTime);
    XFlush(display_);
}

void X11Windows::setOnAllDesktops(unsigned long window)
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return;
    // Mapped windows ask the window manager; the property covers the rest.
    const Atom desktop = XInternAtom(display_, "_NET_WM_DESKTOP", False);
    const unsigned long all = 0xFFFFFFFF;
    XChangeProperty(display_, window, desktop, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&all), 1);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = desktop;
    event.xclient.format = 32;
    event.xclient.data.l[0] = long(all);
    event.xclient.data.l[1] = 2;
    XSendEvent(display_, DefaultRootWindow(display_), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XFlush(display_);
}

bool X11Windows::hasCompositor()
{
    std::lock_guard lock(mutex_);
    if (!display_)
        return false;
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(DefaultScreen(display_));
    return XGetSelectionOwner(display_, XInternAtom(display_, name.constData(), False)) != None;
}

QString X11Windows::rootProperty(const char* name)
{
    std::lock_guard lock(mutex_);
    return display_ ? textProperty(DefaultRootWindow(display_), name) : QString();
}

#include "platform/linux/x11/x11windows.h"

#include <QFileInfo>
#include <QSet>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

// Errors such as BadWindow for a window that just closed must not end the program.
int ignoreErrors(Display*, XErrorEvent*)
{
    return 0;
}

// Without a window manager nothing announces the focus: it is looked at this often.
constexpr int kFocusPollMs = 250;
// A compositor's coming and going is looked at this often.
constexpr int kCompositorPollMs = 2000;

} // namespace

// The reading side, on the watching thread's own connection.
class X11Windows::Watcher {
public:
    explicit Watcher(Display* display) : d_(display), root_(DefaultRootWindow(display))
    {
        for (const char* name : {"_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST", "AT_SPI_BUS", "_NET_WM_PID",
                                 "_GTK_APPLICATION_ID", "_GTK_UNIQUE_BUS_NAME", "_GTK_APPLICATION_OBJECT_PATH",
                                 "_GTK_WINDOW_OBJECT_PATH", "_GTK_MENUBAR_OBJECT_PATH", "_KDE_NET_WM_DESKTOP_FILE",
                                 "_NET_WM_NAME", "WM_NAME", "WM_CLASS"})
            atoms_.insert(QByteArray(name), XInternAtom(d_, name, False));
        compositorAtom_ = XInternAtom(d_, ("_NET_WM_CM_S" + QByteArray::number(DefaultScreen(d_))).constData(), False);
        XSelectInput(d_, root_, PropertyChangeMask);
    }

    Atom atom(const char* name) const { return atoms_.value(QByteArray(name)); }

    std::optional<unsigned long> cardinal(Window window, const char* name, Atom type) const
    {
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        std::optional<unsigned long> value;
        if (XGetWindowProperty(d_, window, atom(name), 0, 1, False, type, &actualType, &format, &count, &after, &data)
                == Success
            && data && count == 1 && format == 32)
            value = *reinterpret_cast<unsigned long*>(data);
        if (data)
            XFree(data);
        return value;
    }

    QString text(Window window, const char* name) const
    {
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        QString value;
        if (XGetWindowProperty(d_, window, atom(name), 0, 4096, False, AnyPropertyType, &actualType, &format, &count,
                               &after, &data) == Success
            && data && format == 8)
            value = QString::fromUtf8(reinterpret_cast<const char*>(data), int(count));
        if (data)
            XFree(data);
        return value;
    }

    QList<quint64> clientList() const
    {
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        QList<quint64> clients;
        if (XGetWindowProperty(d_, root_, atom("_NET_CLIENT_LIST"), 0, 65536, False, XA_WINDOW, &actualType, &format,
                               &count, &after, &data) == Success
            && data && format == 32) {
            const auto* windows = reinterpret_cast<const unsigned long*>(data);
            for (unsigned long i = 0; i < count; ++i)
                clients.append(windows[i]);
        }
        if (data)
            XFree(data);
        return clients;
    }

    std::optional<QRect> frame(Window window) const
    {
        XWindowAttributes attributes{};
        if (!XGetWindowAttributes(d_, window, &attributes))
            return std::nullopt;
        int x = 0, y = 0;
        Window child = 0;
        XTranslateCoordinates(d_, window, root_, 0, 0, &x, &y, &child);
        return QRect(x, y, attributes.width, attributes.height);
    }

    DesktopWindow describe(Window window) const
    {
        DesktopWindow info;
        info.id = window;
        info.x11Window = window;
        if (auto pid = cardinal(window, "_NET_WM_PID", XA_CARDINAL))
            info.pid = qint32(*pid);
        info.applicationId = text(window, "_GTK_APPLICATION_ID");
        info.gtkExports = {text(window, "_GTK_UNIQUE_BUS_NAME"), text(window, "_GTK_APPLICATION_OBJECT_PATH"),
                           text(window, "_GTK_WINDOW_OBJECT_PATH"), text(window, "_GTK_MENUBAR_OBJECT_PATH")};
        if (info.applicationId.isEmpty()) {
            // KDE names the desktop file, possibly as a path.
            const QString desktopFile = text(window, "_KDE_NET_WM_DESKTOP_FILE");
            info.applicationId = QFileInfo(desktopFile).fileName().remove(QStringLiteral(".desktop"));
        }
        info.title = text(window, "_NET_WM_NAME");
        if (info.title.isEmpty())
            info.title = text(window, "WM_NAME");
        XClassHint hint{};
        if (XGetClassHint(d_, window, &hint)) {
            info.windowClass = QString::fromLocal8Bit(hint.res_class);
            XFree(hint.res_name);
            XFree(hint.res_class);
        }
        info.frame = frame(window);
        return info;
    }

    // Property changes and moves of a window are heard from now on.
    void follow(Window window) const { XSelectInput(d_, window, PropertyChangeMask | StructureNotifyMask); }

    bool hasWindowManager() const { return cardinal(root_, "_NET_ACTIVE_WINDOW", XA_WINDOW).has_value(); }

    std::optional<quint64> active() const
    {
        if (auto active = cardinal(root_, "_NET_ACTIVE_WINDOW", XA_WINDOW))
            return *active ? std::optional<quint64>(*active) : std::nullopt;
        // No window manager: the input focus, raised to its top-level window.
        Window focus = 0;
        int revert = 0;
        XGetInputFocus(d_, &focus, &revert);
        if (focus == None || focus == PointerRoot)
            return std::nullopt;
        for (Window w = focus;;) {
            Window rootReturn = 0, parent = 0;
            Window* children = nullptr;
            unsigned int n = 0;
            if (!XQueryTree(d_, w, &rootReturn, &parent, &children, &n))
                return std::nullopt;
            if (children)
                XFree(children);
            if (parent == rootReturn || parent == 0)
                return w;
            w = parent;
        }
    }

    bool compositor() const { return XGetSelectionOwner(d_, compositorAtom_) != None; }
    Window root() const { return root_; }

private:
    Display* d_;
    Window root_;
    QHash<QByteArray, Atom> atoms_;
    Atom compositorAtom_ = 0;
};

X11Windows::X11Windows()
{
    XSetErrorHandler(ignoreErrors);
    commands_ = XOpenDisplay(nullptr);
    if (!commands_)
        return;
    activeAtom_ = XInternAtom(commands_, "_NET_ACTIVE_WINDOW", False);
    desktopAtom_ = XInternAtom(commands_, "_NET_WM_DESKTOP", False);
    if (::pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    watcher_ = std::thread([this] { watch(); });
}

X11Windows::~X11Windows()
{
    if (watcher_.joinable()) {
        const char stop = 1;
        [[maybe_unused]] const ssize_t written = ::write(wake_[1], &stop, 1);
        watcher_.join();
    }
    for (int fd : wake_) {
        if (fd >= 0)
            ::close(fd);
    }
    if (commands_)
        XCloseDisplay(commands_);
}

void X11Windows::watch()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::lock_guard lock(mutex_);
        known_.read = true;
        firstReading_.notify_all();
        return;
    }
    Watcher x(display);
    QSet<quint64> followed;

    // What changed since the last look, read in one go.
    bool activeDirty = true, clientsDirty = true, busDirty = true, compositorDirty = true;
    QSet<quint64> windowsDirty;
    bool windowManager = x.hasWindowManager();
    int sinceCompositor = 0;

    for (;;) {
        Known now;
        {
            std::lock_guard lock(mutex_);
            now = known_;
        }
        if (clientsDirty) {
            now.clients = x.clientList();
            const QSet<quint64> current(now.clients.begin(), now.clients.end());
            for (quint64 client : std::as_const(now.clients)) {
                if (!followed.contains(client)) {
                    x.follow(client);
                    followed.insert(client);
                    windowsDirty.insert(client);
                }
            }
            for (auto it = followed.begin(); it != followed.end();) {
                if (current.contains(*it)) {
                    ++it;
                    continue;
                }
                now.windows.remove(*it);
                it = followed.erase(it);
            }
        }
        if (activeDirty) {
            windowManager = x.hasWindowManager();
            now.active = x.active();
            if (now.active && !now.windows.contains(*now.active))
                windowsDirty.insert(*now.active); // without a window manager, a window of no client list
        }
        for (quint64 window : std::as_const(windowsDirty))
            now.windows.insert(window, x.describe(Window(window)));
        if (busDirty)
            now.accessibilityBus = x.text(x.root(), "AT_SPI_BUS");
        if (compositorDirty)
            now.compositor = x.compositor();
        const bool activeChanged = activeDirty && (now.active != known_.active || windowsDirty.contains(now.active.value_or(0)));
        now.read = true;
        std::function<void()> changed;
        {
            std::lock_guard lock(mutex_);
            known_ = now;
            changed = activeChanged ? activeChanged_ : nullptr;
            firstReading_.notify_all();
        }
        if (changed)
            changed();
        activeDirty = clientsDirty = busDirty = compositorDirty = false;
        windowsDirty.clear();

        // Sleep until the server or the owner says something, or it is time to look again.
        const int pollMs = windowManager ? kCompositorPollMs : kFocusPollMs;
        pollfd fds[2] = {{ConnectionNumber(display), POLLIN, 0}, {wake_[0], POLLIN, 0}};
        if (!XPending(display) && ::poll(fds, 2, pollMs) == 0) {
            sinceCompositor += pollMs;
            if (sinceCompositor >= kCompositorPollMs) {
                sinceCompositor = 0;
                compositorDirty = true;
            }
            activeDirty = !windowManager;
            continue;
        }
        if (fds[1].revents & POLLIN)
            break;
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == PropertyNotify && event.xproperty.window == x.root()) {
                const Atom atom = event.xproperty.atom;
                activeDirty |= atom == x.atom("_NET_ACTIVE_WINDOW");
                clientsDirty |= atom == x.atom("_NET_CLIENT_LIST");
                busDirty |= atom == x.atom("AT_SPI_BUS");
            } else if (event.type == PropertyNotify || event.type == ConfigureNotify) {
                const quint64 window = event.type == PropertyNotify ? event.xproperty.window : event.xconfigure.window;
                if (followed.contains(window))
                    windowsDirty.insert(window);
            } else if (event.type == DestroyNotify) {
                clientsDirty = true;
            }
        }
        if (!windowManager)
            activeDirty = true;
    }
    XCloseDisplay(display);
}

bool X11Windows::waitForFirstReading(int timeoutMs)
{
    std::unique_lock lock(mutex_);
    return firstReading_.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return known_.read; });
}

void X11Windows::setActiveChanged(std::function<void()> changed)
{
    bool known = false;
    {
        std::lock_guard lock(mutex_);
        activeChanged_ = changed;
        known = known_.active.has_value();
    }
    // What was read before anyone listened is news too.
    if (known && changed)
        changed();
}

std::optional<quint64> X11Windows::activeWindow()
{
    std::lock_guard lock(mutex_);
    return known_.active;
}

std::optional<DesktopWindow> X11Windows::window(quint64 id)
{
    std::lock_guard lock(mutex_);
    const auto it = known_.windows.constFind(id);
    return it == known_.windows.cend() ? std::nullopt : std::optional(*it);
}

std::optional<quint64> X11Windows::windowOfProcess(qint32 pid)
{
    std::lock_guard lock(mutex_);
    for (quint64 client : std::as_const(known_.clients)) {
        if (known_.windows.value(client).pid == pid)
            return client;
    }
    return std::nullopt;
}

std::optional<QRect> X11Windows::geometry(unsigned long window)
{
    std::lock_guard lock(mutex_);
    const auto it = known_.windows.constFind(window);
    return it == known_.windows.cend() ? std::nullopt : it->frame;
}

bool X11Windows::hasCompositor()
{
    std::lock_guard lock(mutex_);
    return known_.compositor;
}

QString X11Windows::announcedAccessibilityBus()
{
    std::lock_guard lock(mutex_);
    return known_.accessibilityBus;
}

void X11Windows::activate(unsigned long window)
{
    std::lock_guard lock(commandsMutex_);
    if (!commands_)
        return;
    // Requests without replies: nothing here waits on the server.
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = activeAtom_;
    event.xclient.format = 32;
    event.xclient.data.l[0] = 2; // source: a pager, which window managers obey
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(commands_, DefaultRootWindow(commands_), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XRaiseWindow(commands_, window);
    XSetInputFocus(commands_, window, RevertToParent, CurrentTime);
    XFlush(commands_);
}

void X11Windows::setOnAllDesktops(unsigned long window)
{
    std::lock_guard lock(commandsMutex_);
    if (!commands_)
        return;
    // Mapped windows ask the window manager; the property covers the rest.
    const unsigned long all = 0xFFFFFFFF;
    XChangeProperty(commands_, window, desktopAtom_, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&all), 1);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = desktopAtom_;
    event.xclient.format = 32;
    event.xclient.data.l[0] = long(all);
    event.xclient.data.l[1] = 2;
    XSendEvent(commands_, DefaultRootWindow(commands_), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    XFlush(commands_);
}

// The Linux answers to the platform's "current" accessors.
#include "platform/desktopwindows.h"
#include "platform/hotkeyplatform.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/dbus/sessionbuscontrol.h"
#include "platform/linux/displaysession.h"
#include "platform/linux/evdev/evdevkeyboardtap.h"
#include "platform/linux/gnome/gnomeshortcut.h"
#include "platform/linux/kde/kdeglobalshortcut.h"
#include "platform/linux/portal/globalshortcutsportal.h"
#include "platform/linux/sway/swaybinding.h"
#include "platform/linux/sway/swaywindows.h"
#include "platform/linux/tarupdatepackaging.h"
#include "platform/linux/wayland/waylanddesktopwindows.h"
#include "platform/linux/x11/x11desktopwindows.h"
#include "platform/linux/x11/x11keyboardlayout.h"
#include "platform/linux/x11/x11keyboardtap.h"
#include "platform/linux/x11/x11windows.h"
#include "platform/linux/x11/x11workspace.h"
#include "platform/linux/xdg/xdgautostartloginitem.h"
#include "platform/linux/xkb/desktopkeys.h"
#include "platform/linux/xkb/xkbkeyboardlayout.h"
#include "platform/loginitem.h"
#include "platform/updatepackaging.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// sway's IPC connection, shared by the window directory, the workspace and
// the focus requests; nothing outside sway.
SwayWindows* swayWindows()
{
    static SwayWindows* windows = DisplaySession::current().compositor == DisplaySession::Compositor::sway
        ? new SwayWindows(qEnvironmentVariable("SWAYSOCK"))
        : nullptr;
    return windows;
}

// The X server's windows, shared by the window directory, the workspace and
// the window operations: one thread follows them all.
X11Windows& x11Windows()
{
    static X11Windows* windows = new X11Windows;
    return *windows;
}

bool watchesFocusOnTheBus()
{
    const DisplaySession& session = DisplaySession::current();
    return session.isWayland() && session.compositor != DisplaySession::Compositor::sway;
}

AtspiAccessibility& atspi()
{
    static AtspiAccessibility* accessibility = new AtspiAccessibility(WindowDirectory::current(), watchesFocusOnTheBus());
    return *accessibility;
}

// Under Wayland: the front application as the accessibility backend names
// it (from sway's tree, or from the toolkits' focus announcements where the
// compositor tells nothing), and word of a change from whichever of the two
// announces it; `watch` connects that announcement once watching starts.
class AnnouncedWorkspace final : public Workspace {
public:
    explicit AnnouncedWorkspace(std::function<void(Workspace&)> watch) : watch_(std::move(watch)) {}

    std::optional<RunningApplication> frontmostApplication() override { return atspi().frontmostApplication(); }
    void startWatching() override
    {
        if (watch_)
            std::exchange(watch_, nullptr)(*this);
    }

private:
    std::function<void(Workspace&)> watch_;
};

class LinuxHotkeyPlatform final : public HotkeyPlatform {
public:
    // Watching keys on X11 needs no grant; reading menus does, so trust means
    // the accessibility bus answers, as for the menu reader.
    bool isProcessTrusted() override { return Accessibility::current().isProcessTrusted(); }
    // Under Wayland the X server sees only the keys of X clients: a tap there
    // would look alive and miss most presses, so the kernel's devices are read.
    bool createTap(Callback callback) override
    {
        return wayland_ ? devices_.create(std::move(callback)) : x11_.create(std::move(callback));
    }
    void enableTap(bool enabled) override
    {
        devices_.setEnabled(enabled);
        x11_.setEnabled(enabled);
    }
    void releaseTap() override
    {
        devices_.release();
        x11_.release();
    }
    KeyboardAccess keyboardAccess() override
    {
        if (!wayland_)
            return KeyboardAccess::sessionWide;
        return EvdevKeyboardTap::canReadKeyboards() ? KeyboardAccess::inputDevices : KeyboardAccess::none;
    }
    DesktopShortcutSetup desktopShortcutSetup() override
    {
        if (keyboardAccess() != KeyboardAccess::none)
            return DesktopShortcutSetup::notNeeded;
        switch (DisplaySession::current().compositor) {
        case DisplaySession::Compositor::gnome:
            // GNOME's own custom shortcuts, which its settings show and edit.
            return GnomeShortcut::isAvailable() ? DesktopShortcutSetup::desktopWatches : DesktopShortcutSetup::byHand;
        case DisplaySession::Compositor::sway:
            return DesktopShortcutSetup::configLine;
        case DisplaySession::Compositor::kde:
            return DesktopShortcutSetup::desktopWatches; // Plasma's own global shortcuts
        default:
            return portal().isAvailable().value_or(false) ? DesktopShortcutSetup::desktopWatches
                                                         : DesktopShortcutSetup::byHand;
        }
    }
    bool bindDesktopShortcut(const KeyChord& shortcut, bool replace, std::function<void()> activated,
                             std::function<void(const DesktopShortcutState&)> changed) override
    {
        const std::optional<DesktopKeys> keys = DesktopKeys::of(shortcut, KeyboardLayout::current());
        if (!wayland_ || !keys)
            return false;
        if (DisplaySession::current().compositor == DisplaySession::Compositor::gnome) {
            if (!GnomeShortcut::isAvailable())
                return false;
            // GNOME runs the toggle command; `activated` is not needed.
            changed({DesktopShortcutState::Kind::pending, {}, {}});
            gnome().bind(*keys, replace, std::move(changed));
            return true;
        }
        if (DisplaySession::current().compositor == DisplaySession::Compositor::kde) {
            changed({DesktopShortcutState::Kind::pending, {}, {}});
            kde().bind(*keys, replace, std::move(activated), std::move(changed));
            return true;
        }
        // Asked once the portal has said whether it is there; until then the
        // detector's poll asks again.
        if (!portal().isAvailable().value_or(false))
            return false;
        QObject::disconnect(portalState_);
        portalState_ = QObject::connect(&portal(), &GlobalShortcutsPortal::stateChanged, &portal(), std::move(changed));
        portal().bind(keys->portalTrigger(), QStringLiteral("Open Kestrio's search panel"), std::move(activated));
        return true;
    }
    void releaseDesktopShortcut() override
    {
        if (portal_)
            portal_->release();
        if (kde_)
            kde_->release();
    }
    void forgetDesktopShortcut() override
    {
        if (DisplaySession::current().compositor == DisplaySession::Compositor::gnome && GnomeShortcut::isAvailable())
            gnome().forget();
        if (DisplaySession::current().compositor == DisplaySession::Compositor::kde)
            kde().forget();
        releaseDesktopShortcut();
    }
    QString desktopShortcutConfigLine(const KeyChord& shortcut) override
    {
        const std::optional<DesktopKeys> keys = DesktopKeys::of(shortcut, KeyboardLayout::current());
        return keys ? swayBindsym(*keys, toggleCommand()) : QString();
    }
    // Where the desktop may watch shortcuts, it is asked early: the answer
    // decides the custom shortcut at start.
    void prepare()
    {
        using Compositor = DisplaySession::Compositor;
        const Compositor compositor = DisplaySession::current().compositor;
        if (wayland_ && compositor != Compositor::gnome && compositor != Compositor::kde && compositor != Compositor::sway)
            portal();
    }

private:
    GlobalShortcutsPortal& portal()
    {
        if (!portal_)
            portal_ = std::make_unique<GlobalShortcutsPortal>(QDBusConnection::sessionBus());
        return *portal_;
    }

    GnomeShortcut& gnome()
    {
        if (!gnome_)
            gnome_ = std::make_unique<GnomeShortcut>(toggleCommand());
        return *gnome_;
    }

    KdeGlobalShortcut& kde()
    {
        if (!kde_)
            kde_ = std::make_unique<KdeGlobalShortcut>(QDBusConnection::sessionBus());
        return *kde_;
    }

    // The command a desktop shortcut runs: this program, by name where that
    // finds it (an installed Kestrio), else by its path (a build of its own).
    static QString toggleCommand()
    {
        const QString self = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
        const QString found = QStandardPaths::findExecutable(QStringLiteral("kestrio"));
        if (!found.isEmpty() && QFileInfo(found).canonicalFilePath() == self)
            return QStringLiteral("kestrio --toggle");
        QString quoted = self;
        quoted.replace(u'\'', QStringLiteral("'\\''"));
        return u'\'' + quoted + QStringLiteral("' --toggle");
    }

    std::unique_ptr<GlobalShortcutsPortal> portal_;
    QMetaObject::Connection portalState_;
    std::unique_ptr<GnomeShortcut> gnome_;
    std::unique_ptr<KdeGlobalShortcut> kde_;
    const bool wayland_ = DisplaySession::current().isWayland();
    X11KeyboardTap x11_;
    EvdevKeyboardTap devices_;
};

} // namespace

Accessibility& Accessibility::current()
{
    return atspi();
}

HotkeyPlatform& HotkeyPlatform::current()
{
    static LinuxHotkeyPlatform* platform = [] {
        auto* made = new LinuxHotkeyPlatform;
        made->prepare();
        return made;
    }();
    return *platform;
}

WindowDirectory& WindowDirectory::current()
{
    static WindowDirectory* directory = [] () -> WindowDirectory* {
        if (!DisplaySession::current().isWayland())
            return &x11Windows();
        if (SwayWindows* sway = swayWindows())
            return sway;
        return new NoWindowDirectory;
    }();
    return *directory;
}

DesktopWindows& DesktopWindows::current()
{
    static DesktopWindows* windows = [] () -> DesktopWindows* {
        if (!DisplaySession::current().isWayland())
            return new X11DesktopWindows(x11Windows());
        std::function<void(quint64)> focus;
        if (SwayWindows* sway = swayWindows())
            focus = [sway](quint64 id) { sway->focus(id); };
        return new WaylandDesktopWindows(WindowDirectory::current(), std::move(focus));
    }();
    return *windows;
}

Workspace& Workspace::current()
{
    static Workspace* workspace = [] () -> Workspace* {
        if (!DisplaySession::current().isWayland())
            return new X11Workspace(x11Windows());
        if (SwayWindows* sway = swayWindows()) {
            return new AnnouncedWorkspace([sway](Workspace& workspace) {
                QObject::connect(sway, &SwayWindows::focusChanged, &workspace, &Workspace::applicationActivated);
            });
        }
        return new AnnouncedWorkspace([](Workspace& workspace) {
            if (AtspiFocusWatch* watch = atspi().focusWatch())
                QObject::connect(watch, &AtspiFocusWatch::focusChanged, &workspace, &Workspace::applicationActivated);
        });
    }();
    return *workspace;
}

UpdatePackaging& UpdatePackaging::current()
{
    static TarUpdatePackaging* packaging = new TarUpdatePackaging;
    return *packaging;
}

KeyboardLayout& KeyboardLayout::current()
{
    // Wayland hands its keymap only to a client's own windows: the XKB
    // defaults of the session stand in.
    static KeyboardLayout* layout = DisplaySession::current().isWayland()
        ? static_cast<KeyboardLayout*>(new XkbKeyboardLayout)
        : new X11KeyboardLayout;
    return *layout;
}

LoginItem& LoginItem::current()
{
    static XdgAutostartLoginItem* item =
        new XdgAutostartLoginItem(XdgAutostartLoginItem::userAutostartFolder(), QCoreApplication::applicationFilePath());
    return *item;
}

RemoteControl& RemoteControl::current()
{
    static SessionBusControl* control = new SessionBusControl;
    return *control;
}

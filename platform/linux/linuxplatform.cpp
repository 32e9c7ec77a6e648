#include "platform/linux/linuxplatform.h"

#include "platform/desktopwindows.h"
#include "platform/hotkeyplatform.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/dbus/sessionbuscontrol.h"
#include "platform/linux/displaysession.h"
#include "platform/linux/linuxhotkeyplatform.h"
#include "platform/linux/linuxsysteminfo.h"
#include "platform/linux/sway/swaywindows.h"
#include "platform/linux/tarupdatepackaging.h"
#include "platform/linux/wayland/waylanddesktopwindows.h"
#include "platform/linux/x11/x11desktopwindows.h"
#include "platform/linux/x11/x11keyboardlayout.h"
#include "platform/linux/x11/x11windows.h"
#include "platform/linux/x11/x11workspace.h"
#include "platform/linux/xdg/xdgautostartloginitem.h"
#include "platform/linux/xkb/xkbkeyboardlayout.h"
#include "platform/loginitem.h"
#include "platform/updatepackaging.h"

#include <QCoreApplication>

namespace {

// Under Wayland: the front application as the accessibility backend names
// it (from sway's tree, or from the toolkits' focus announcements where the
// compositor tells nothing), and word of a change from whichever of the two
// announces it; `watch` connects that announcement once watching starts.
class AnnouncedWorkspace final : public Workspace {
public:
    AnnouncedWorkspace(Accessibility& accessibility, std::function<void(Workspace&)> watch)
        : accessibility_(accessibility), watch_(std::move(watch))
    {
    }

    std::optional<RunningApplication> frontmostApplication() override { return accessibility_.frontmostApplication(); }
    void startWatching() override
    {
        if (watch_)
            std::exchange(watch_, nullptr)(*this);
    }

private:
    Accessibility& accessibility_;
    std::function<void(Workspace&)> watch_;
};

} // namespace

LinuxPlatform::LinuxPlatform(const DisplaySession& session) : session_(session) {}

LinuxPlatform::~LinuxPlatform()
{
    // The last made goes first: what each one uses outlives it.
    updatePackaging_.reset();
    remoteControl_.reset();
    loginItem_.reset();
    hotkeys_.reset();
    keyboardLayout_.reset();
    workspace_.reset();
    desktopWindows_.reset();
    accessibility_.reset();
    systemInfo_.reset();
    noWindows_.reset();
    sway_.reset();
    x11_.reset();
}

SwayWindows* LinuxPlatform::sway()
{
    if (!std::exchange(swayAsked_, true) && session_.compositor == DisplaySession::Compositor::sway)
        sway_ = std::make_unique<SwayWindows>(qEnvironmentVariable("SWAYSOCK"));
    return sway_.get();
}

X11Windows& LinuxPlatform::x11()
{
    if (!x11_)
        x11_ = std::make_unique<X11Windows>();
    return *x11_;
}

WindowDirectory& LinuxPlatform::windowDirectory()
{
    if (!session_.isWayland())
        return x11();
    if (SwayWindows* windows = sway())
        return *windows;
    if (!noWindows_)
        noWindows_ = std::make_unique<NoWindowDirectory>();
    return *noWindows_;
}

AtspiAccessibility& LinuxPlatform::accessibility()
{
    // Where the compositor tells other programs nothing of its windows (GNOME
    // and KDE under Wayland), the toolkits' focus announcements say which
    // application is in front.
    if (!accessibility_) {
        const bool watchFocus = session_.isWayland() && session_.compositor != DisplaySession::Compositor::sway;
        accessibility_ = std::make_unique<AtspiAccessibility>(windowDirectory(), watchFocus);
    }
    return *accessibility_;
}

DesktopWindows& LinuxPlatform::desktopWindows()
{
    if (!desktopWindows_) {
        if (!session_.isWayland()) {
            desktopWindows_ = std::make_unique<X11DesktopWindows>(x11());
        } else {
            std::function<void(quint64)> focus;
            if (SwayWindows* windows = sway())
                focus = [windows](quint64 id) { windows->focus(id); };
            desktopWindows_ = std::make_unique<WaylandDesktopWindows>(windowDirectory(), std::move(focus));
        }
    }
    return *desktopWindows_;
}

Workspace& LinuxPlatform::workspace()
{
    if (!workspace_) {
        if (!session_.isWayland()) {
            workspace_ = std::make_unique<X11Workspace>(x11(), accessibility());
        } else if (SwayWindows* windows = sway()) {
            workspace_ = std::make_unique<AnnouncedWorkspace>(accessibility(), [windows](Workspace& workspace) {
                QObject::connect(windows, &SwayWindows::focusChanged, &workspace, &Workspace::applicationActivated);
            });
        } else {
            workspace_ = std::make_unique<AnnouncedWorkspace>(accessibility(), [this](Workspace& workspace) {
                if (AtspiFocusWatch* watch = accessibility().focusWatch())
                    QObject::connect(watch, &AtspiFocusWatch::focusChanged, &workspace, &Workspace::applicationActivated);
            });
        }
    }
    return *workspace_;
}

KeyboardLayout& LinuxPlatform::keyboardLayout()
{
    // Wayland hands its keymap only to a client's own windows: the XKB
    // defaults of the session stand in.
    if (!keyboardLayout_) {
        if (session_.isWayland())
            keyboardLayout_ = std::make_unique<XkbKeyboardLayout>();
        else
            keyboardLayout_ = std::make_unique<X11KeyboardLayout>();
    }
    return *keyboardLayout_;
}

HotkeyPlatform& LinuxPlatform::hotkeys()
{
    if (!hotkeys_)
        hotkeys_ = std::make_unique<LinuxHotkeyPlatform>(session_, accessibility(), keyboardLayout());
    return *hotkeys_;
}

LoginItem& LinuxPlatform::loginItem()
{
    if (!loginItem_)
        loginItem_ = std::make_unique<XdgAutostartLoginItem>(XdgAutostartLoginItem::userAutostartFolder(),
                                                             QCoreApplication::applicationFilePath());
    return *loginItem_;
}

RemoteControl& LinuxPlatform::remoteControl()
{
    if (!remoteControl_)
        remoteControl_ = std::make_unique<SessionBusControl>();
    return *remoteControl_;
}

UpdatePackaging& LinuxPlatform::updatePackaging()
{
    if (!updatePackaging_)
        updatePackaging_ = std::make_unique<TarUpdatePackaging>();
    return *updatePackaging_;
}

const SystemInfo& LinuxPlatform::systemInfo()
{
    if (!systemInfo_)
        systemInfo_ = std::make_unique<LinuxSystemInfo>();
    return *systemInfo_;
}

// The Linux answers to the platform's "current" accessors.
#include "platform/desktopwindows.h"
#include "platform/hotkeyplatform.h"
#include "platform/linux/x11/x11desktopwindows.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/x11/x11keyboardtap.h"
#include "platform/linux/x11/x11workspace.h"
#include "platform/linux/tarupdatepackaging.h"
#include "platform/linux/x11/x11keyboardlayout.h"
#include "platform/linux/xdg/xdgautostartloginitem.h"
#include "platform/loginitem.h"
#include "platform/updatepackaging.h"

#include <QCoreApplication>

namespace {

class LinuxHotkeyPlatform final : public HotkeyPlatform {
public:
    // Watching keys on X11 needs no grant; reading menus does, so trust means
    // the accessibility bus answers, as for the menu reader.
    bool isProcessTrusted() override { return Accessibility::current().isProcessTrusted(); }
    // Raw events keep arriving during other clients' grabs: nothing hides keys.
    bool isSecureEventInputEnabled() override { return false; }
    bool createTap(Callback callback) override { return tap_.create(std::move(callback)); }
    void enableTap(bool enabled) override { tap_.setEnabled(enabled); }
    void releaseTap() override { tap_.release(); }

private:
    X11KeyboardTap tap_;
};

} // namespace

Accessibility& Accessibility::current()
{
    static AtspiAccessibility* accessibility = new AtspiAccessibility;
    return *accessibility;
}

HotkeyPlatform& HotkeyPlatform::current()
{
    static LinuxHotkeyPlatform* platform = new LinuxHotkeyPlatform;
    return *platform;
}

DesktopWindows& DesktopWindows::current()
{
    static X11DesktopWindows* windows = new X11DesktopWindows;
    return *windows;
}

Workspace& Workspace::current()
{
    static X11Workspace* workspace = new X11Workspace;
    return *workspace;
}

UpdatePackaging& UpdatePackaging::current()
{
    static TarUpdatePackaging* packaging = new TarUpdatePackaging;
    return *packaging;
}

KeyboardLayout& KeyboardLayout::current()
{
    static X11KeyboardLayout* layout = new X11KeyboardLayout;
    return *layout;
}

LoginItem& LoginItem::current()
{
    static XdgAutostartLoginItem* item =
        new XdgAutostartLoginItem(XdgAutostartLoginItem::userAutostartFolder(), QCoreApplication::applicationFilePath());
    return *item;
}

#include "platform/linux/linuxhotkeyplatform.h"

#include "platform/accessibility.h"
#include "platform/keyboardlayout.h"
#include "platform/linux/gnome/gnomeshortcut.h"
#include "platform/linux/kde/kdeglobalshortcut.h"
#include "platform/linux/portal/globalshortcutsportal.h"
#include "platform/linux/sway/swaybinding.h"
#include "platform/linux/xkb/desktopkeys.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QFileInfo>
#include <QStandardPaths>

using Compositor = DisplaySession::Compositor;

LinuxHotkeyPlatform::LinuxHotkeyPlatform(const DisplaySession& session, Accessibility& accessibility,
                                         const KeyboardLayout& layout)
    : session_(session), accessibility_(accessibility), layout_(layout)
{
    // Where the desktop may watch shortcuts through the portal, it is asked
    // early: the answer decides the custom shortcut at start.
    const Compositor compositor = session_.compositor;
    if (session_.isWayland() && compositor != Compositor::gnome && compositor != Compositor::kde
        && compositor != Compositor::sway)
        portal();
}

LinuxHotkeyPlatform::~LinuxHotkeyPlatform() = default;

bool LinuxHotkeyPlatform::isProcessTrusted()
{
    return accessibility_.isProcessTrusted();
}

bool LinuxHotkeyPlatform::createTap(Callback callback)
{
    // Under Wayland the X server sees only the keys of X clients: a tap there
    // would look alive and miss most presses, so the kernel's devices are read.
    return session_.isWayland() ? devices_.create(std::move(callback)) : x11_.create(std::move(callback));
}

void LinuxHotkeyPlatform::enableTap(bool enabled)
{
    devices_.setEnabled(enabled);
    x11_.setEnabled(enabled);
}

void LinuxHotkeyPlatform::releaseTap()
{
    devices_.release();
    x11_.release();
}

KeyboardAccess LinuxHotkeyPlatform::keyboardAccess()
{
    if (!session_.isWayland())
        return KeyboardAccess::sessionWide;
    return EvdevKeyboardTap::canReadKeyboards() ? KeyboardAccess::inputDevices : KeyboardAccess::none;
}

DesktopShortcutSetup LinuxHotkeyPlatform::desktopShortcutSetup()
{
    if (keyboardAccess() != KeyboardAccess::none)
        return DesktopShortcutSetup::notNeeded;
    switch (session_.compositor) {
    case Compositor::gnome:
        // GNOME's own custom shortcuts, which its settings show and edit.
        return GnomeShortcut::isAvailable() ? DesktopShortcutSetup::desktopWatches : DesktopShortcutSetup::byHand;
    case Compositor::sway:
        return DesktopShortcutSetup::configLine;
    case Compositor::kde:
        return DesktopShortcutSetup::desktopWatches; // Plasma's own global shortcuts
    default:
        return portal().isAvailable().value_or(false) ? DesktopShortcutSetup::desktopWatches
                                                     : DesktopShortcutSetup::byHand;
    }
}

bool LinuxHotkeyPlatform::bindDesktopShortcut(const KeyChord& shortcut, bool replace, std::function<void()> activated,
                                              std::function<void(const DesktopShortcutState&)> changed)
{
    const std::optional<DesktopKeys> keys = DesktopKeys::of(shortcut, layout_);
    if (!session_.isWayland() || !keys)
        return false;
    if (session_.compositor == Compositor::gnome) {
        if (!GnomeShortcut::isAvailable())
            return false;
        // GNOME runs the toggle command; `activated` is not needed.
        changed({DesktopShortcutState::Kind::pending, {}, {}});
        gnome().bind(*keys, replace, std::move(changed));
        return true;
    }
    if (session_.compositor == Compositor::kde) {
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

void LinuxHotkeyPlatform::releaseDesktopShortcut()
{
    if (portal_)
        portal_->release();
    if (kde_)
        kde_->release();
}

void LinuxHotkeyPlatform::forgetDesktopShortcut()
{
    if (session_.compositor == Compositor::gnome && GnomeShortcut::isAvailable())
        gnome().forget();
    if (session_.compositor == Compositor::kde)
        kde().forget();
    releaseDesktopShortcut();
}

QString LinuxHotkeyPlatform::desktopShortcutConfigLine(const KeyChord& shortcut)
{
    const std::optional<DesktopKeys> keys = DesktopKeys::of(shortcut, layout_);
    return keys ? swayBindsym(*keys, toggleCommand()) : QString();
}

GlobalShortcutsPortal& LinuxHotkeyPlatform::portal()
{
    if (!portal_)
        portal_ = std::make_unique<GlobalShortcutsPortal>(QDBusConnection::sessionBus());
    return *portal_;
}

GnomeShortcut& LinuxHotkeyPlatform::gnome()
{
    if (!gnome_)
        gnome_ = std::make_unique<GnomeShortcut>(toggleCommand());
    return *gnome_;
}

KdeGlobalShortcut& LinuxHotkeyPlatform::kde()
{
    if (!kde_)
        kde_ = std::make_unique<KdeGlobalShortcut>(QDBusConnection::sessionBus());
    return *kde_;
}

QString LinuxHotkeyPlatform::toggleCommand()
{
    const QString self = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    const QString found = QStandardPaths::findExecutable(QStringLiteral("kestrio"));
    if (!found.isEmpty() && QFileInfo(found).canonicalFilePath() == self)
        return QStringLiteral("kestrio --toggle");
    QString quoted = self;
    quoted.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + quoted + QStringLiteral("' --toggle");
}

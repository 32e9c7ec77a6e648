#include "hotkey/hotkeyservice.h"

#include "base/settingsstore.h"
#include "platform/clock.h"
#include "platform/hotkeyplatform.h"

#include <QPointer>
#include <QTimer>

KeyboardAccess HotkeyService::keyboardAccess() const
{
    return platform_.keyboardAccess();
}

HotkeyService::HotkeyService(HotkeyPlatform& platform, SettingsStore& settings, const Clock& monotonicClock,
                             QObject* parent)
    : QObject(parent),
      customShortcut(loadCustomShortcut(settings)),
      platform_(platform),
      settings_(settings),
      clock_(monotonicClock),
      mode_(loadHotkeyMode(settings))
{
}

HotkeyService::~HotkeyService()
{
    stop();
}

void HotkeyService::setActive(bool active)
{
    if (isActive_ == active)
        return;
    isActive_ = active;
    emit isActiveChanged(active);
}

bool HotkeyService::start()
{
    stop();
    if (!platform_.isProcessTrusted()) {
        setActive(false);
        updatePolling();
        return false;
    }
    const bool ok = installTap();
    setActive(ok);
    updatePolling();
    return ok;
}

void HotkeyService::stop()
{
    if (hasTap_) {
        platform_.enableTap(false);
        platform_.releaseTap();
        hasTap_ = false;
    }
    if (hasDesktopShortcut_) {
        platform_.releaseDesktopShortcut();
        hasDesktopShortcut_ = false;
    }
    lastTapTime_.reset();
    keyIsDown_ = false;
}

bool HotkeyService::setMode(HotkeyMode mode)
{
    stop();
    mode_ = mode;
    saveHotkeyMode(mode, settings_);
    return start();
}

bool HotkeyService::installTap()
{
    QPointer<HotkeyService> self(this);
    const bool created = platform_.createTap([self](const KeyEvent& event) {
        if (self)
            self->handleEvent(event);
    });
    if (!created)
        return installDesktopShortcut();
    hasTap_ = true;
    platform_.enableTap(true);
    return true;
}

bool HotkeyService::installDesktopShortcut()
{
    // Where the session shows no keys (Wayland), the desktop may watch the
    // custom shortcut itself; a double tap it cannot watch.
    if (mode_ != HotkeyMode::customShortcut || !customShortcut)
        return false;
    QPointer<HotkeyService> self(this);
    const auto activated = [self] {
        if (self)
            self->deliverActivation();
    };
    const auto changed = [self](const DesktopShortcutState& state) {
        if (self)
            self->setDesktopShortcut(state);
    };
    if (!platform_.bindDesktopShortcut(*customShortcut, replaceDesktopShortcut_, activated, changed))
        return false;
    hasDesktopShortcut_ = true;
    return true;
}

void HotkeyService::setDesktopShortcut(const DesktopShortcutState& state)
{
    if (desktopShortcut_ == state)
        return;
    desktopShortcut_ = state;
    emit desktopShortcutChanged(state);
}

void HotkeyService::applyDesktopShortcutChoice()
{
    if (platform_.desktopShortcutSetup() != DesktopShortcutSetup::desktopWatches)
        return;
    if (mode_ != HotkeyMode::customShortcut || !customShortcut) {
        platform_.forgetDesktopShortcut();
        setDesktopShortcut({});
        return;
    }
    replaceDesktopShortcut_ = true;
    start();
    replaceDesktopShortcut_ = false;
}

QString HotkeyService::desktopShortcutConfigLine() const
{
    // The recorded shortcut in the custom mode, else the one Kestrio offers.
    const KeyChord shortcut =
        mode_ == HotkeyMode::customShortcut && customShortcut ? *customShortcut : defaultDesktopShortcut();
    return platform_.desktopShortcutConfigLine(shortcut);
}

void HotkeyService::updatePolling()
{
    if (isActive_) {
        delete pollTimer_;
        pollTimer_ = nullptr;
        return;
    }
    if (pollTimer_)
        return; // a running timer is never rescheduled
    pollTimer_ = new QTimer(this);
    pollTimer_->setInterval(kPollIntervalMs);
    connect(pollTimer_, &QTimer::timeout, this, &HotkeyService::pollTick);
    pollTimer_->start();
}

void HotkeyService::pollTick()
{
    if (!isActive_ && platform_.isProcessTrusted())
        start();
}

void HotkeyService::handleEvent(const KeyEvent& event)
{
    // Events pass through unchanged whatever happens here: the platform's tap
    // never swallows them.
    if (mode_ == HotkeyMode::customShortcut) {
        if (event.kind == KeyEvent::Kind::keyDown)
            handleKeyDown(event.held, event.position);
        return;
    }
    if (event.kind == KeyEvent::Kind::modifiersChanged) {
        handleModifiersChanged(event.held);
        return;
    }
    // On Linux a tap is the watched modifier pressed alone: Ctrl is in nearly
    // every shortcut, and Ctrl+A then Ctrl+C typed quickly would otherwise be
    // a double tap. A key, a mouse button or a wheel turn while it is held
    // cancels the tap and the one before it. (This deliberately departs from
    // the rule that keys typed while the modifier is held play no part.)
    if (keyIsDown_) {
        keyIsDown_ = false;
        lastTapTime_.reset();
    }
}

void HotkeyService::handleModifiersChanged(Modifiers held)
{
    const std::optional<Modifier> watched = watchedModifier(mode_);
    if (!watched)
        return;
    if (held & ~Modifiers(*watched)) { // another modifier: no tap
        keyIsDown_ = false;
        lastTapTime_.reset();
        return;
    }
    if (held.testFlag(*watched)) {
        keyIsDown_ = true;
        return;
    }
    if (!keyIsDown_)
        return;
    keyIsDown_ = false;
    const qint64 now = qRound64(clock_.seconds() * 1000);
    if (lastTapTime_ && now - *lastTapTime_ < qRound64(doubleTapInterval * 1000)) {
        lastTapTime_.reset();
        deliverActivation();
    } else {
        lastTapTime_ = now;
    }
}

void HotkeyService::handleKeyDown(Modifiers held, quint16 position)
{
    if (customShortcut && position == customShortcut->key.position && held == customShortcut->modifiers)
        deliverActivation();
}

void HotkeyService::deliverActivation()
{
    // A task of its own on the main thread, never inside the tap's callback.
    QPointer<HotkeyService> self(this);
    QMetaObject::invokeMethod(this, [self] {
        if (self && self->onActivate)
            self->onActivate();
    }, Qt::QueuedConnection);
}

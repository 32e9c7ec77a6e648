#pragma once

#include "hotkey/customshortcut.h"
#include "hotkey/hotkeymode.h"
#include "platform/hotkeyplatform.h"

#include <QObject>

#include <functional>
#include <optional>

class Clock;
class HotkeyPlatform;
class QTimer;
class SettingsStore;

// Watches every application's keyboard input for the activation gesture: a
// double tap of Ctrl or Alt, or the user's own shortcut.
class HotkeyService : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isActive READ isActive NOTIFY isActiveChanged)

public:
    static constexpr double doubleTapInterval = 0.3;
    static constexpr int kPollIntervalMs = 2000;

    // Reads the mode and the custom shortcut from the settings; installs nothing.
    HotkeyService(HotkeyPlatform& platform, SettingsStore& settings, const Clock& monotonicClock,
                  QObject* parent = nullptr);
    ~HotkeyService() override;

    std::function<void()> onActivate;

    bool start();
    void stop();
    bool setMode(HotkeyMode mode);
    HotkeyMode mode() const { return mode_; }
    std::optional<KeyChord> customShortcut;

    bool isActive() const { return isActive_; }
    // How the session lets the detector see keys; asked afresh each time.
    KeyboardAccess keyboardAccess() const;
    // The poll timer's work, every 2 seconds while the detector is inactive.
    void pollTick();
    bool isPolling() const { return pollTimer_ != nullptr; }

    // Every event the tap sees.
    void handleEvent(const KeyEvent& event);

    // Where keys cannot reach Kestrio: how a shortcut of the desktop's own
    // comes about, and what the desktop made of Kestrio's.
    DesktopShortcutSetup desktopShortcutSetup() const { return platform_.desktopShortcutSetup(); }
    const DesktopShortcutState& desktopShortcut() const { return desktopShortcut_; }
    // The user changed the activation settings in Kestrio: in the custom
    // mode, the desktop takes the recorded keys, replacing what it had;
    // otherwise Kestrio's shortcut leaves the desktop.
    void applyDesktopShortcutChoice();
    // The line for the compositor's configuration, for the recorded shortcut.
    QString desktopShortcutConfigLine() const;

signals:
    void isActiveChanged(bool isActive);
    void desktopShortcutChanged(const DesktopShortcutState& state);

private:
    void setActive(bool active);
    void setDesktopShortcut(const DesktopShortcutState& state);
    bool installTap();
    bool installDesktopShortcut();
    void updatePolling();
    void handleModifiersChanged(Modifiers held);
    void handleKeyDown(Modifiers held, quint16 position);
    void deliverActivation();

    HotkeyPlatform& platform_;
    SettingsStore& settings_;
    const Clock& clock_;
    HotkeyMode mode_;
    bool isActive_ = false;
    bool hasTap_ = false;
    bool hasDesktopShortcut_ = false;
    bool replaceDesktopShortcut_ = false; // the next binding replaces what the desktop has
    DesktopShortcutState desktopShortcut_;
    std::optional<qint64> lastTapTime_; // in whole milliseconds, so that 0.3 s is exactly 0.3 s
    bool keyIsDown_ = false;
    QTimer* pollTimer_ = nullptr;
};

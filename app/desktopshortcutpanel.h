#pragma once

#include "platform/hotkeyplatform.h"

#include <QWidget>

class HotkeyService;
class NotificationHub;
class QLabel;
class QPushButton;
class SettingsStore;
class StyledLabel;
struct PlatformWords;

// Where keys cannot reach Kestrio (Wayland without the input group), how the
// user gets a shortcut of the desktop's own, in the welcome and in the
// settings: a button that asks the desktop to watch one (GNOME's settings,
// the shortcut portal) with what the desktop made of it, the line for sway's
// configuration, or the command to bind by hand. Nothing where keys reach
// Kestrio itself.
class DesktopShortcutPanel : public QWidget {
    Q_OBJECT

public:
    DesktopShortcutPanel(const PlatformWords& words, HotkeyService& hotkey, SettingsStore& settings,
                         NotificationHub& notifications, QWidget* parent = nullptr);

    // The one click: the recorded custom shortcut (Ctrl+Alt+Space where none
    // is recorded) becomes the activation, which the desktop then watches.
    void setUp();
    // The user no longer wants it: the desktop's entry for Kestrio goes, and
    // the activation is the double tap again.
    void remove();

    // What the user reads about Kestrio's shortcut now.
    QString statusText() const;
    QPushButton* setUpButton() const { return setUp_; }
    QPushButton* removeButton() const { return remove_; }
    // The line or command shown to copy, where there is one.
    QString lineText() const;

private:
    QString statusText(const DesktopShortcutState& state) const;
    void render();

    const PlatformWords& words_;
    HotkeyService& hotkey_;
    SettingsStore& settings_;
    NotificationHub& notifications_;
    DesktopShortcutSetup setup_;
    StyledLabel* status_ = nullptr;
    QPushButton* setUp_ = nullptr;
    QPushButton* remove_ = nullptr;
    QLabel* line_ = nullptr;
};

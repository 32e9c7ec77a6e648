#pragma once

#include "platform/hotkeyplatform.h"

#include <QWidget>

#include <functional>

class AccessibilityService;
class Timers;
struct PlatformWords;
class QLabel;
class QPushButton;
class QStackedWidget;

// The welcome: what Kestrio does, and the accessibility grant it needs. It
// looks at the grant once a second and changes as soon as it is given.
class OnboardingView : public QWidget {
    Q_OBJECT

public:
    static constexpr int kPollMs = 1000;

    // Where the session shows no keys, the welcome names the command to bind
    // instead of the gesture.
    // `desktopShortcut`, shown below the hint, sets up the desktop's own
    // shortcut where keys cannot reach Kestrio; the view takes it over.
    OnboardingView(const PlatformWords& words, AccessibilityService& accessibilityService, Timers& timers,
                   std::function<void()> onComplete, KeyboardAccess keyboardAccess = KeyboardAccess::sessionWide,
                   QWidget* desktopShortcut = nullptr, QWidget* parent = nullptr);

    bool hasPermission() const { return hasPermission_; }
    QPushButton* closingButton() const { return closing_; }
    // What to do on a desktop that shows no tray icons; the window grows to fit.
    void showNoTrayNotice();
    bool showsNoTrayNotice() const;

private:
    void setPermission(bool granted);
    void lookLater();

    const PlatformWords& words_;
    AccessibilityService& accessibilityService_;
    std::function<void()> onComplete_;
    bool hasPermission_ = false;
    Timers& timers_;
    QStackedWidget* permission_;
    QLabel* granted_;
    QLabel* required_;
    QPushButton* openSettings_;
    QPushButton* closing_;
    QWidget* noTray_;
};

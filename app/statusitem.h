#pragma once

#include "platform/hotkeyplatform.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QMenu;
class QSystemTrayIcon;
struct PlatformWords;

// The tray icon and the menu behind it. The menu's rows follow the program's
// state, handed over whole on each rebuild; the rows' work is the owner's.
class StatusItem : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> searchMenus;
        std::function<void()> openSettings;
        std::function<void()> openAccessibilitySettings;
        std::function<void()> downloadUpdate;
        std::function<void()> openAbout;
        std::function<void()> quit;
        std::function<void()> menuWillOpen; // just before the menu shows
    };

    // What the rows depend on.
    struct State {
        bool hotkeyActive = true;
        KeyboardAccess keyboardAccess = KeyboardAccess::sessionWide;
        std::optional<QString> offeredVersion; // an update waiting to be installed
        bool canInstallUpdates = true;
    };

    StatusItem(const PlatformWords& words, Actions actions, QObject* parent = nullptr);
    ~StatusItem() override;

    void rebuild(const State& state);
    void setVisible(bool visible);
    // The icon and its tip say an update waits.
    void showUpdateOffered();

    QSystemTrayIcon* icon() const { return icon_.get(); }
    QMenu* menu() const { return menu_.get(); }

private:
    const PlatformWords& words_;
    Actions actions_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    std::unique_ptr<QMenu> menu_;
};

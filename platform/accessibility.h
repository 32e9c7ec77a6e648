#pragma once

#include "platform/menutree.h"
#include "platform/runningapplication.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>

class QObject;

// Other applications' menus, read and pressed from outside, and the
// permission to do so.
class Accessibility {
public:
    virtual ~Accessibility();

    // The menus of the application with this process id, of `window` where
    // it has several; nothing when it shows none. Waits on the other
    // application: never on the UI thread.
    virtual std::optional<MenuTree> readMenus(qint32 pid, std::optional<quint64> window = std::nullopt) = 0;
    // Whether the item is enabled now; nothing when it is gone or does not say.
    virtual std::optional<bool> isEnabled(const MenuHandleRef& item) = 0;
    // Makes the application perform the item's command, as if chosen from its
    // menu; false when it would not. Waits on the other application.
    virtual bool press(const MenuHandleRef& item) = 0;

    // Whether this program may read and operate other applications. Answers
    // at once from what is known; where finding out means asking another
    // process, the platform asks in the background and the next call knows.
    virtual bool isProcessTrusted() = 0;
    // Runs `then` on the UI thread once the first answer about trust is in
    // (at once where it is always known), unless `context` is gone by then.
    virtual void afterTrustIsKnown(QObject* context, std::function<void()> then) = 0;
    // Finds out afresh whether this program is trusted and runs `answered`
    // with the answer on the UI thread, unless `context` is gone by then.
    virtual void askTrust(QObject* context, std::function<void(bool)> answered) = 0;
    // Asks the system to grant that, showing its own prompt where it has one.
    virtual void requestTrust() = 0;
    // The application the user is working in, if any. Cheap: never asks another application.
    virtual std::optional<RunningApplication> frontmostApplication() = 0;
    // Opens the system's accessibility settings, where it has them.
    virtual void openAccessibilitySettings() = 0;
    // A reader is going (the program is quitting): readings under way give up
    // at their next question to the other application, so that one that
    // never answers cannot hold the quit up. Later readings are not touched.
    virtual void stopReadings() {}

};

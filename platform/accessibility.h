#pragma once

#include "platform/accessibilityelement.h"
#include "platform/runningapplication.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>
#include <variant>

class QObject;

// Attribute and action names of the accessibility interface.
namespace AXName {
inline const QString menuBar = QStringLiteral("AXMenuBar");
inline const QString children = QStringLiteral("AXChildren");
inline const QString role = QStringLiteral("AXRole");
inline const QString title = QStringLiteral("AXTitle");
inline const QString enabled = QStringLiteral("AXEnabled");
inline const QString menuItemCmdModifiers = QStringLiteral("AXMenuItemCmdModifiers");
inline const QString menuItemCmdChar = QStringLiteral("AXMenuItemCmdChar");
inline const QString menuItemCmdVirtualKey = QStringLiteral("AXMenuItemCmdVirtualKey");
inline const QString roleMenu = QStringLiteral("AXMenu");
inline const QString roleMenuItem = QStringLiteral("AXMenuItem");
inline const QString roleMenuBarItem = QStringLiteral("AXMenuBarItem");
inline const QString press = QStringLiteral("AXPress");
// A menu bar's: false when the application stopped answering half-way, so
// that what was read is shown but not kept as the application's menus.
inline const QString readComplete = QStringLiteral("KestrioReadComplete");
} // namespace AXName

enum class AccessibilityError {
    success = 0,
    failure,
    illegalArgument,
    invalidElement,   // the element is gone
    cannotComplete,   // the application did not answer
    attributeUnsupported,
    actionUnsupported,
    noValue,
};

// An attribute's value: absent, or one of the types attributes have.
using AccessibilityValue =
    std::variant<std::monostate, AccessibilityElementRef, QList<AccessibilityElementRef>, QString, qint64, bool>;

struct AttributeRead {
    AccessibilityError error = AccessibilityError::failure;
    AccessibilityValue value;

    bool ok() const { return error == AccessibilityError::success; }
    template <typename T>
    const T* as() const { return ok() ? std::get_if<T>(&value) : nullptr; }
};

// Other applications' user interfaces, read and operated from outside.
class Accessibility {
public:
    virtual ~Accessibility();

    // The root element of the application with this process id; its menu bar
    // is the one of `window` where the application has several.
    virtual AccessibilityElementRef applicationElement(qint32 pid, std::optional<quint64> window = std::nullopt) = 0;
    // One attribute of an element: an error code and, on success, a value that
    // may still be absent or of an unexpected type.
    virtual AttributeRead copyAttributeValue(const AccessibilityElementRef& element, const QString& attribute) = 0;
    // Asks the element to perform an action. Reads and actions wait on the
    // other application: never on the UI thread.
    virtual AccessibilityError performAction(const AccessibilityElementRef& element, const QString& action) = 0;

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

    // Leading menu-bar menus that belong to the system, not the application,
    // and are never searched.
    virtual int skippedLeadingMenus() const = 0;

    // The platform's own.
    static Accessibility& current();
};

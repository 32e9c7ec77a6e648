#pragma once

#include "platform/hotkeyplatform.h"
#include "platform/linux/xkb/desktopkeys.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include <functional>

class QDBusMessage;

// Kestrio's shortcut as one of KDE Plasma's global shortcuts, registered with
// its shortcut service (kglobalaccel) as KDE's own programs register theirs:
// it shows under "Kestrio" in System Settings → Shortcuts, where the user can
// change or clear it, and its presses come to Kestrio from the service alone.
// Plasma 5.27's shortcut portal cannot stand in: for a program outside a
// sandbox it registers nothing and grants no keys. A shortcut another action
// holds is refused, naming it. Every call is asynchronous.
class KdeGlobalShortcut : public QObject {
    Q_OBJECT

public:
    static inline const QString kService = QStringLiteral("org.kde.kglobalaccel");
    // Kestrio's action: component and action, as the service and System Settings name them.
    static inline const QStringList kActionId{QStringLiteral("kestrio"), QStringLiteral("toggle"),
                                              QStringLiteral("Kestrio"), QStringLiteral("Open Kestrio's search panel")};

    explicit KdeGlobalShortcut(QDBusConnection bus, QObject* parent = nullptr);
    ~KdeGlobalShortcut() override;

    using Changed = std::function<void(const DesktopShortcutState&)>;
    // Makes `keys` open Kestrio; with `replace`, also
    // where the user gave Kestrio other keys in System Settings. `activated`
    // runs on each press; `changed` hears what Plasma made of it, then of
    // every change made in System Settings.
    void bind(const DesktopKeys& keys, bool replace, std::function<void()> activated, Changed changed);
    // Stops listening; the keys stay Kestrio's in System Settings.
    void release();
    // Takes Kestrio's action out of Plasma's shortcuts; the others stay.
    void forget();

    // Plasma's key number (Qt's: modifiers plus key) for the keys; 0 when it has none.
    static int keyOf(const DesktopKeys& keys);
    // A key number as people read it: "Ctrl+Alt+Space".
    static QString readable(int key);
    // The holder of a key as the service names it (component, action,
    // component's and action's names for people), or nothing.
    static QString describeHolder(const QStringList& holder);

private slots:
    void pressed(const QString& component, const QString& action, qlonglong timestamp);
    void keysChanged(const QStringList& actionId, const QList<int>& keys);

private:
    QDBusMessage call(const QString& method, const QVariantList& arguments) const;
    void ask(const QString& method, const QVariantList& arguments, std::function<void(const QDBusMessage&)> then);
    void take(int key);
    void listen();
    void report(const QList<int>& keys);
    void stopListening();

    QDBusConnection bus_;
    quint64 generation_ = 0; // a newer request makes older answers moot
    std::function<void()> activated_;
    Changed changed_;
    QString componentPath_; // where the presses are announced, once listening
    bool listeningForChanges_ = false;
    bool registered_ = false;
};

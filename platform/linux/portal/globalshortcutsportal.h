#pragma once

#include "platform/hotkeyplatform.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <optional>

// The desktop's own watch for a program's shortcut, through the
// GlobalShortcuts portal (KDE Plasma; GNOME from 48): the desktop asks the
// user to confirm the keys once and then announces each press. Everything is
// asynchronous: the portal answers through Response signals on request objects.
class GlobalShortcutsPortal : public QObject {
    Q_OBJECT

public:
    static constexpr const char* kShortcutId = "open-search-panel";

    // `bus`: the session bus, or in tests a connection to a stand-in portal.
    explicit GlobalShortcutsPortal(QDBusConnection bus, QObject* parent = nullptr);
    ~GlobalShortcutsPortal() override;

    // Whether the desktop has the portal: unknown until it answered.
    std::optional<bool> isAvailable() const { return available_; }
    // Asks for the shortcut, offering `preferredTrigger` ("CTRL+SHIFT+k");
    // each press then calls `activated`. A bind replaces the one before.
    void bind(const QString& preferredTrigger, const QString& description, std::function<void()> activated);
    // Closes the session: no more presses arrive.
    void release();
    // Bound: the desktop has granted keys for it (`state().keys` names them,
    // as the desktop describes them).
    bool isBound() const { return state_.kind == DesktopShortcutState::Kind::bound; }
    const DesktopShortcutState& state() const { return state_; }

signals:
    void stateChanged(const DesktopShortcutState& state);

private slots:
    void requestAnswered(const QDBusMessage& message);
    void shortcutActivated(const QDBusMessage& message);
    void shortcutsChanged(const QDBusMessage& message);

private:
    QDBusMessage portalCall(const QString& method) const;
    QString nextToken();
    void createSession();
    void bindShortcuts();
    void setState(DesktopShortcutState state);
    // The state that the portal's list of shortcuts (a(sa{sv})) gives Kestrio's.
    void takeShortcuts(const QVariant& shortcuts);

    QDBusConnection bus_;
    std::optional<bool> available_;
    QString trigger_;
    QString description_;
    std::function<void()> activated_;
    bool wanted_ = false;
    DesktopShortcutState state_;
    QString sessionHandle_;
    QString pendingToken_; // the request whose Response is awaited
    enum class Step { none, creatingSession, binding } step_ = Step::none;
    int tokens_ = 0;
};

#pragma once

#include "platform/linux/atspi/atspibus.h"

#include <QHash>
#include <QObject>

#include <atomic>
#include <optional>

// The application the user works in, as the accessibility bus tells it:
// toolkits announce the widget that takes the keyboard focus and the window
// that becomes active. For compositors that tell other programs nothing about
// their windows (GNOME and KDE under Wayland). Every answer comes from signals
// and asynchronous calls; nothing waits on an application.
class AtspiFocusWatch : public QObject {
    Q_OBJECT

public:
    explicit AtspiFocusWatch(AtspiBus& bus, QObject* parent = nullptr);

    // Listens on the bus's current connection; call again when it changes.
    void listen();
    // The process that last took the focus, other than this one. Safe to ask
    // from any thread (readings ask from their workers).
    std::optional<qint32> focusedProcess() const;

    // A focus announcement from `sender` (a unique bus name); `focusGained`
    // tells a gain from a loss, which changes nothing.
    void announced(const QString& sender, bool focusGained);
    // The process behind an announcement, once known.
    void focusMovedTo(qint32 pid);

signals:
    void focusChanged();

private slots:
    void stateChanged(const QDBusMessage& message);
    void windowActivated(const QDBusMessage& message);

private:
    // The window active before anything was announced (the application the
    // user was in when Kestrio started): each application's windows are
    // asked once for their ACTIVE state.
    void lookForTheActiveWindow();

    AtspiBus& bus_;
    int listeningTo_ = -1;
    bool heard_ = false; // an announcement arrived on this bus: it knows better than the look
    std::atomic<qint32> focused_ = 0; // 0: none yet; written on the UI thread only
    QHash<QString, qint32> pids_; // by unique bus name, as the bus daemon answered
};

#pragma once

#include "platform/linux/dbus/dbuscalls.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QString>
#include <QVariantList>

#include <functional>
#include <mutex>
#include <optional>

// An object on the accessibility bus.
struct AtspiRef {
    QString bus;
    QString path;

    bool isNull() const { return bus.isEmpty() || path.isEmpty() || path == QLatin1String("/org/a11y/atspi/null"); }
    friend bool operator==(const AtspiRef&, const AtspiRef&) = default;
};

size_t qHash(const AtspiRef& ref, size_t seed = 0);

namespace AtspiRole {
inline constexpr uint acceleratorLabel = 1, checkBox = 7, checkMenuItem = 8, dialog = 16, filler = 20, frame = 23, glassPane = 24, internalFrame = 28,
                      label = 29, layeredPane = 30, menu = 33, menuBar = 34, menuItem = 35, optionPane = 36, panel = 39,
                      popupMenu = 41, pushButton = 43, radioButton = 44, radioMenuItem = 45, rootPane = 46, scrollPane = 49, separator = 50,
                      splitPane = 53, tearoffMenuItem = 59, toggleButton = 62, viewport = 68, window = 69, application = 75;
} // namespace AtspiRole

// State bits, as AT-SPI numbers them (AtspiStateType).
namespace AtspiState {
inline constexpr int active = 1, checked = 4, defunct = 6, editable = 7, enabled = 8, sensitive = 24, showing = 25,
                     visible = 30;
inline bool has(quint64 states, int state) { return (states >> state) & 1; }

// What a state set read from an element says about it.
struct Reading {
    bool gone = false;    // the element no longer exists
    bool enabled = false; // it can be used (SENSITIVE: GTK 4 sets only that one)
    bool shown = false;   // it is on screen now
    friend bool operator==(const Reading&, const Reading&) = default;
};
// A vanished element answers with the DEFUNCT state, or with no state at all.
Reading read(quint64 states);
} // namespace AtspiState

// The connection to the accessibility bus and the calls Kestrio makes on it.
// Calls are asynchronous so that many can be in flight at once; every one has
// a short time-out so that an application that does not answer costs little.
// Connecting waits on the session bus, so it happens off the UI thread; the
// UI thread only ever takes the connection as it is.
class AtspiBus {
public:
    static constexpr int kCallTimeoutMs = DBusCalls::kTimeoutMs;
    // Applications on a bus, children of an object: more is not a desktop's.
    static constexpr qsizetype kMaxRefs = 4096;

    // `fallbackAddress` is asked when the session bus does not know the address.
    explicit AtspiBus(std::function<QString()> fallbackAddress = {});
    ~AtspiBus();
    AtspiBus(const AtspiBus&) = delete;
    AtspiBus& operator=(const AtspiBus&) = delete;

    // Connects, or connects again when the bus went away or was not there
    // before; true when connected. Waits: never on the UI thread.
    bool ensureConnected();
    // The connection as it is now, without waiting; a disconnected one when there is none.
    QDBusConnection connection() const;
    bool isConnected() const;
    // Counts the connections made so far: a new number means a new bus.
    int generation() const;
    // Drops the connection, so that the next ensureConnected makes a new one
    // (the accessibility bus was restarted).
    void invalidate();

    QDBusPendingCall call(const AtspiRef& target, const QString& interface, const QString& method,
                          const QVariantList& arguments = {}, int timeoutMs = kCallTimeoutMs) const;
    QDBusPendingCall property(const AtspiRef& target, const QString& interface, const QString& name) const;
    // Waits for the answer: never on the UI thread.
    QDBusMessage callAndWait(const AtspiRef& target, const QString& interface, const QString& method,
                             const QVariantList& arguments = {}, int timeoutMs = kCallTimeoutMs) const;

    // The registry's root: its children are the applications on the bus.
    static AtspiRef desktop();
    // The applications registered on the bus. Waits.
    QList<AtspiRef> applications() const;

    // Replies. An application decides their size: a list of objects keeps at most `limit`.
    static QList<AtspiRef> refsOf(const QDBusMessage& reply, qsizetype limit = kMaxRefs);
    static std::optional<quint64> statesOf(const QDBusMessage& reply);

private:
    std::function<QString()> fallbackAddress_;
    std::mutex connecting_;    // one attempt at a time; never taken by the UI thread
    mutable std::mutex mutex_; // the connection itself, held only for a moment
    std::optional<QDBusConnection> connection_;
    int generation_ = 0;
};

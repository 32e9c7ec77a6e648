#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QMutex>
#include <QString>
#include <QVariantList>

#include <functional>
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
inline constexpr uint checkMenuItem = 8, dialog = 16, filler = 20, frame = 23, glassPane = 24, internalFrame = 28,
                      layeredPane = 30, menu = 33, menuBar = 34, menuItem = 35, optionPane = 36, panel = 39,
                      popupMenu = 41, radioMenuItem = 45, rootPane = 46, scrollPane = 49, separator = 50,
                      splitPane = 53, tearoffMenuItem = 59, viewport = 68, window = 69, application = 75;
} // namespace AtspiRole

namespace AtspiState {
inline constexpr int active = 1, checked = 4, enabled = 8, sensitive = 24, showing = 25, visible = 30;
inline bool has(quint64 states, int state) { return (states >> state) & 1; }
} // namespace AtspiState

// The connection to the accessibility bus and the calls Kestrio makes on it.
// Calls are asynchronous so that many can be in flight at once; every one has
// a short time-out so that an application that does not answer costs little.
class AtspiBus {
public:
    static constexpr int kCallTimeoutMs = 1000;

    // `fallbackAddress` is asked when the session bus does not know the address.
    explicit AtspiBus(std::function<QString()> fallbackAddress = {});

    // Connects on first use; false when there is no accessibility bus.
    bool connect();
    QDBusConnection connection();

    QDBusPendingCall call(const AtspiRef& target, const QString& interface, const QString& method,
                          const QVariantList& arguments = {}, int timeoutMs = kCallTimeoutMs);
    QDBusPendingCall property(const AtspiRef& target, const QString& interface, const QString& name);
    QDBusMessage callAndWait(const AtspiRef& target, const QString& interface, const QString& method,
                             const QVariantList& arguments = {}, int timeoutMs = kCallTimeoutMs);

    // The applications registered on the bus.
    QList<AtspiRef> applications();

    // Replies.
    static QList<AtspiRef> refsOf(const QDBusMessage& reply);
    static std::optional<quint64> statesOf(const QDBusMessage& reply);
    static std::optional<QVariant> valueOf(const QDBusMessage& reply);
    static bool timedOut(const QDBusMessage& reply);

private:
    std::function<QString()> fallbackAddress_;
    QMutex mutex_;
    std::optional<QDBusConnection> connection_;
    bool tried_ = false;
};

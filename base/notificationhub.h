#pragma once

#include "base/updatecheckresult.h"

#include <QObject>

// In-process announcements from the settings window and the update checker to
// the long-lived services. Signals are delivered on the hub's (main) thread,
// whichever thread posts.
class NotificationHub : public QObject {
    Q_OBJECT

public:
    explicit NotificationHub(QObject* parent = nullptr);

    void postHotkeyModeChanged();
    void postMenuBarIconVisibilityChanged();
    void postAnalyticsOptInChanged(bool enabled);
    void postUpdateAvailable(const UpdateCheckResult& update);

signals:
    void hotkeyModeChanged();
    void menuBarIconVisibilityChanged();
    void analyticsOptInChanged(bool enabled);
    void updateAvailable(const UpdateCheckResult& update);

private:
    template <typename Emit>
    void post(Emit emitOnHubThread);
};

#include "base/notificationhub.h"

#include "platform/crossthread.h"

#include <QCoreApplication>
#include <QThread>

NotificationHub::NotificationHub(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<UpdateCheckResult>();
}

template <typename Emit>
void NotificationHub::post(Emit emitOnHubThread)
{
    // Posted on the hub's thread, observers run before post returns, as with a
    // synchronous notification centre; from elsewhere the post hops over.
    if (QThread::currentThread() == thread())
        emitOnHubThread();
    else
        CrossThread::post(this, emitOnHubThread);
}

void NotificationHub::postHotkeyModeChanged()
{
    post([this] { emit hotkeyModeChanged(); });
}

void NotificationHub::postMenuBarIconVisibilityChanged()
{
    post([this] { emit menuBarIconVisibilityChanged(); });
}

void NotificationHub::postAnalyticsOptInChanged(bool enabled)
{
    post([this, enabled] { emit analyticsOptInChanged(enabled); });
}

void NotificationHub::postUpdateAvailable(const UpdateCheckResult& update)
{
    post([this, update] { emit updateAvailable(update); });
}

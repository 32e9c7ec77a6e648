#include "platform/linux/displaysession.h"

DisplaySession DisplaySession::fromEnvironment(const QProcessEnvironment& environment)
{
    DisplaySession session;
    const QString type = environment.value(QStringLiteral("XDG_SESSION_TYPE")).toLower();
    // A Wayland display wins over an X one: under Wayland, DISPLAY names the
    // compatibility server, which sees only the keys and windows of X clients.
    const bool wayland = !environment.value(QStringLiteral("WAYLAND_DISPLAY")).isEmpty() || type == QStringLiteral("wayland");
    if (!wayland)
        return session;
    session.kind = Kind::wayland;
    const QStringList desktops =
        environment.value(QStringLiteral("XDG_CURRENT_DESKTOP")).toLower().split(u':', Qt::SkipEmptyParts);
    if (!environment.value(QStringLiteral("SWAYSOCK")).isEmpty())
        session.compositor = Compositor::sway;
    else if (desktops.contains(QStringLiteral("gnome")))
        session.compositor = Compositor::gnome;
    else if (desktops.contains(QStringLiteral("kde")))
        session.compositor = Compositor::kde;
    else
        session.compositor = Compositor::otherWayland;
    return session;
}


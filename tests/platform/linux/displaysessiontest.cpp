#include "platform/linux/displaysession.h"

#include <gtest/gtest.h>

namespace {

using Kind = DisplaySession::Kind;
using Compositor = DisplaySession::Compositor;

TEST(DisplaySession, TheSessionDecidesTheBackends)
{
    struct Case {
        QStringList environment;
        Kind kind;
        Compositor compositor;
    };
    const std::vector<Case> cases{
        {{"DISPLAY=:0", "XDG_SESSION_TYPE=x11", "XDG_CURRENT_DESKTOP=XFCE"}, Kind::x11, Compositor::x11WindowManager},
        {{"DISPLAY=:0"}, Kind::x11, Compositor::x11WindowManager},
        {{"XDG_SESSION_TYPE=tty"}, Kind::x11, Compositor::x11WindowManager},
        // Under Wayland, DISPLAY is the compatibility server's: Wayland wins.
        {{"DISPLAY=:0", "WAYLAND_DISPLAY=wayland-0", "XDG_CURRENT_DESKTOP=GNOME"}, Kind::wayland, Compositor::gnome},
        {{"XDG_SESSION_TYPE=wayland", "XDG_CURRENT_DESKTOP=ubuntu:GNOME"}, Kind::wayland, Compositor::gnome},
        {{"WAYLAND_DISPLAY=wayland-0", "XDG_CURRENT_DESKTOP=KDE"}, Kind::wayland, Compositor::kde},
        {{"WAYLAND_DISPLAY=wayland-1", "SWAYSOCK=/run/user/1000/sway-ipc.sock", "XDG_CURRENT_DESKTOP=sway"}, Kind::wayland,
         Compositor::sway},
        {{"WAYLAND_DISPLAY=wayland-1", "XDG_CURRENT_DESKTOP=Hyprland"}, Kind::wayland, Compositor::otherWayland},
        {{"WAYLAND_DISPLAY=wayland-1"}, Kind::wayland, Compositor::otherWayland},
    };
    for (const Case& c : cases) {
        QProcessEnvironment environment;
        for (const QString& entry : c.environment)
            environment.insert(entry.section(u'=', 0, 0), entry.section(u'=', 1));
        const DisplaySession session = DisplaySession::fromEnvironment(environment);
        EXPECT_EQ(session.kind, c.kind) << c.environment.join(u' ').toStdString();
        EXPECT_EQ(session.compositor, c.compositor) << c.environment.join(u' ').toStdString();
    }
}

} // namespace

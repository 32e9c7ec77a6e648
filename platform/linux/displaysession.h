#pragma once

#include <QProcessEnvironment>

// Which display server the user's session runs, and under Wayland which
// compositor: it decides the backends for keys, windows and focus.
struct DisplaySession {
    enum class Kind { x11, wayland };
    enum class Compositor { x11WindowManager, sway, gnome, kde, otherWayland };

    Kind kind = Kind::x11;
    Compositor compositor = Compositor::x11WindowManager;

    static DisplaySession fromEnvironment(const QProcessEnvironment& environment);

    bool isWayland() const { return kind == Kind::wayland; }
};

#pragma once

#include "platform/linux/xkb/desktopkeys.h"

#include <QString>

// The line of sway's configuration that makes `keys` run `command`:
// "bindsym Ctrl+Mod1+space exec kestrio --toggle".
QString swayBindsym(const DesktopKeys& keys, const QString& command);

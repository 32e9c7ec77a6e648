#pragma once

#include <QString>

// The line of sway's configuration that makes `trigger` (the shortcut
// portal's words: "CTRL+ALT+space") run `command`: "bindsym Ctrl+Mod1+space
// exec kestrio --toggle"; empty when sway has no name for the keys.
QString swayBindsym(const QString& trigger, const QString& command);

#include "platform/desktopwindows.h"

DesktopWindows::~DesktopWindows() = default;

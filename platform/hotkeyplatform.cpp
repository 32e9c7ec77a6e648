#include "platform/hotkeyplatform.h"

HotkeyPlatform::~HotkeyPlatform() = default;

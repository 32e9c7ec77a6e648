#pragma once

#include "platform/linux/atspi/atspibus.h"
#include "platform/menutree.h"

// A menu item of another application as read over AT-SPI: its object, which
// is pressed through its Action interface, and whether it was enabled when
// read.
class AtspiMenuHandle final : public MenuHandle {
public:
    AtspiMenuHandle(AtspiRef ref, bool enabled, double readAt) : ref(std::move(ref)), enabled(enabled), readAt(readAt) {}

    AtspiRef ref;
    bool enabled = false;
    double readAt = 0; // monotonic seconds when the state was read
};

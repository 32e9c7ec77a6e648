#pragma once

class Accessibility;
class UsageTracker;
struct MenuItem;

// Makes the target application perform the item's command, as if chosen from
// its menu. True when pressed and its use recorded.
bool pressMenuItem(const MenuItem& item, Accessibility& accessibility, UsageTracker& tracker);

#pragma once

class Accessibility;
struct MenuItem;

// Makes the target application perform the item's command, as if chosen from
// its menu. True when it pressed an item that was enabled: a use to record.
// A disabled item is pressed all the same, as its menu would let it be
// clicked, but counts as no use. Waits on the target application: the
// program calls it off the UI thread.
bool pressMenuItem(const MenuItem& item, Accessibility& accessibility);

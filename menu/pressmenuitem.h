#pragma once

#include <QString>

#include <functional>

class Accessibility;
class UsageTracker;
struct MenuItem;

// Records one use of a command: the application's bundle key and the item's path key.
using RecordUse = std::function<void(const QString& bundleKey, const QString& pathKey)>;

// Makes the target application perform the item's command, as if chosen from
// its menu. True when pressed and its use recorded. Waits on the target
// application: the program calls it off the UI thread.
bool pressMenuItem(const MenuItem& item, Accessibility& accessibility, const RecordUse& recordUse);
bool pressMenuItem(const MenuItem& item, Accessibility& accessibility, UsageTracker& tracker);

#pragma once

#include <QHash>
#include <QString>

class SettingsStore;

// How often each menu item of each application was run, kept in the settings
// under "menuItemUsage" and written after every change.
class UsageTracker {
public:
    // bundle key → (path key → successful presses)
    using UsageData = QHash<QString, QHash<QString, qint64>>;


    // Loads the stored counts; a stored value of any other shape gives none
    // (and is left alone until the next write replaces it).
    explicit UsageTracker(SettingsStore& store);

    const QString key;

    const UsageData& usageData() const { return usageData_; }
    qint64 count(const QString& bundleKey, const QString& pathKey) const;

    void recordUsage(const QString& bundleKey, const QString& pathKey);
    void resetUsage();

    // Grows with every change, so that readers can tell their copy is stale.
    quint64 generation() const { return generation_; }

private:
    void write();

    SettingsStore& store_;
    UsageData usageData_;
    quint64 generation_ = 0;
};

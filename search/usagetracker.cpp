#include "search/usagetracker.h"

#include "base/settingsstore.h"

#include <cmath>

namespace {

std::optional<qint64> storedCount(const QVariant& value)
{
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::Double: {
        // JSON may carry a whole count as 3.0.
        const double d = value.toDouble();
        if (std::trunc(d) == d && std::fabs(d) < 9.0e18)
            return static_cast<qint64>(d);
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<UsageTracker::UsageData> decode(const std::optional<QVariantMap>& stored)
{
    if (!stored)
        return std::nullopt;
    UsageTracker::UsageData data;
    for (auto app = stored->begin(); app != stored->end(); ++app) {
        if (app.value().metaType().id() != QMetaType::QVariantMap)
            return std::nullopt;
        const QVariantMap items = app.value().toMap();
        auto& counts = data[app.key()];
        for (auto item = items.begin(); item != items.end(); ++item) {
            const std::optional<qint64> count = storedCount(item.value());
            if (!count)
                return std::nullopt;
            counts.insert(item.key(), *count);
        }
    }
    return data;
}

} // namespace

UsageTracker::UsageTracker(SettingsStore& store)
    : key(SettingsKey::menuItemUsage), store_(store), usageData_(decode(store.dictionaryValue(key)).value_or(UsageData{}))
{
}

qint64 UsageTracker::count(const QString& bundleKey, const QString& pathKey) const
{
    return usageData_.value(bundleKey).value(pathKey, 0);
}

void UsageTracker::recordUsage(const QString& bundleKey, const QString& pathKey)
{
    usageData_[bundleKey][pathKey] = count(bundleKey, pathKey) + 1;
    write();
}

void UsageTracker::resetUsage()
{
    usageData_.clear();
    write();
}

void UsageTracker::write()
{
    ++generation_;
    QVariantMap stored;
    for (auto app = usageData_.begin(); app != usageData_.end(); ++app) {
        QVariantMap items;
        for (auto item = app.value().begin(); item != app.value().end(); ++item)
            items.insert(item.key(), item.value());
        stored.insert(app.key(), items);
    }
    store_.setObject(key, stored);
}

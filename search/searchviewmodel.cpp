#include "search/searchviewmodel.h"

#include "menu/accessibilityservice.h"
#include "search/usagetracker.h"
#include "telemetry/analyticsservice.h"

#include <QTextBoundaryFinder>
#include <QTimer>

#include <algorithm>

namespace {

// User-perceived characters of a text.
int characterCount(const QString& text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

QString orUnknown(const std::optional<QString>& bundleID)
{
    return bundleID.value_or(QStringLiteral("unknown"));
}

} // namespace

SearchViewModel::SearchViewModel(AccessibilityService& accessibilityService,
                                 std::optional<RunningApplication> targetApp, std::function<void()> onDismiss,
                                 Services services, QObject* parent)
    : QObject(parent),
      accessibilityService_(accessibilityService),
      targetApp_(std::move(targetApp)),
      onDismiss_(std::move(onDismiss)),
      services_(std::move(services))
{
    Q_ASSERT(services_.usage && services_.analytics);
    if (!services_.press) {
        services_.press = [reader = &accessibilityService_, usage = services_.usage](const MenuItem& item) {
            // Waits on the target: the reader presses on its pool, never here
            // on the UI thread, and hands a use back here to record.
            const QString bundle = item.appBundleID.value_or(QStringLiteral("unknown"));
            const QString path = item.pathKey();
            reader->press(item, [usage, bundle, path] { usage->recordUsage(bundle, path); });
            return true;
        };
    }
    loadMenuItems();
}

SearchViewModel::~SearchViewModel() = default;

void SearchViewModel::loadMenuItems()
{
    setIsLoading(true);
    // The reading waits on another application, so the reader runs it on its
    // pool and hands the result back here, unless this model is gone by then.
    accessibilityService_.readMenuItems(targetApp_, this, [this](const QList<MenuItem>& items) {
        setMenuItems(items);
        setIsLoading(false);
    });
}

void SearchViewModel::setMenuItems(const QList<MenuItem>& items)
{
    ranker_.setItems(items);
    usageGeneration_ = ~quint64(0);
    emit menuItemsChanged();
}

void SearchViewModel::setIsLoading(bool loading)
{
    if (isLoading_ == loading)
        return;
    isLoading_ = loading;
    emit isLoadingChanged();
}

void SearchViewModel::setSearchText(const QString& text)
{
    if (searchText_ == text)
        return;
    searchText_ = text;
    emit searchTextChanged();
}

void SearchViewModel::setSelectedIndex(int index)
{
    if (selectedIndex_ == index)
        return;
    selectedIndex_ = index;
    emit selectedIndexChanged();
}

QString SearchViewModel::firstBundleID() const
{
    const QList<MenuItem>& items = ranker_.items();
    return items.isEmpty() ? QString() : items.first().appBundleID.value_or(QString());
}

void SearchViewModel::refreshUsageCounts() const
{
    // Counts change only when the tracker does; looking them up again per
    // keystroke would cost a string hash per item.
    if (usageGeneration_ == services_.usage->generation())
        return;
    ranker_.setUsageCounts(services_.usage->usageData().value(firstBundleID()));
    usageGeneration_ = services_.usage->generation();
}

std::vector<RankedItem> SearchViewModel::filteredItems() const
{
    refreshUsageCounts();
    return ranker_.rank(searchText_);
}

void SearchViewModel::moveSelection(int delta)
{
    const int count = int(filteredItems().size());
    if (count == 0)
        return;
    setSelectedIndex(std::clamp(selectedIndex_ + delta, 0, count - 1));
}

void SearchViewModel::executeSelected()
{
    selectAndExecute(selectedIndex_);
}

void SearchViewModel::selectAndExecute(int index)
{
    const std::vector<RankedItem> results = filteredItems();
    if (results.empty() || index < 0 || size_t(index) >= results.size())
        return;
    trackSearchExecuted(int(results.size()));
    executeItem(results[size_t(index)], index);
}

void SearchViewModel::trackSearchExecuted(int resultCount)
{
    track(QStringLiteral("search_executed"), {
        {"result_count", resultCount},
        {"query_length", characterCount(searchText_)},
        {"active_app_bundle_id", menuItems().isEmpty() ? QStringLiteral("unknown") : orUnknown(menuItems().first().appBundleID)},
    });
}

void SearchViewModel::executeItem(const RankedItem& result, int rankPosition)
{
    const MenuItem item = *result.item; // the list may go with the panel
    track(QStringLiteral("menu_item_activated"), {
        {"rank_position", rankPosition},
        {"had_shortcut", item.shortcut.has_value() && !item.shortcut->isEmpty()},
        {"active_app_bundle_id", orUnknown(item.appBundleID)},
    });
    if (onDismiss_)
        onDismiss_();
    // By then the panel is closed and the target active again. The press must
    // happen even if this model is released meanwhile, but not after the
    // reader it goes through.
    QTimer::singleShot(kPressDelayMs, &accessibilityService_.lifetime(), [press = services_.press, item] { press(item); });
}

void SearchViewModel::track(const QString& name, const QVariantMap& properties)
{
    services_.analytics->track(name, properties);
}

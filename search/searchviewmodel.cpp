#include "search/searchviewmodel.h"

#include "menu/accessibilityservice.h"
#include "menu/pressmenuitem.h"
#include "search/fuzzymatch.h"
#include "search/usagetracker.h"
#include "telemetry/analyticsservice.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTextBoundaryFinder>
#include <QThreadPool>
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
      services_(std::move(services)),
      alive_(std::make_shared<std::atomic<bool>>(true))
{
    if (!services_.usage)
        services_.usage = &UsageTracker::shared();
    if (!services_.analytics)
        services_.analytics = &AnalyticsService::shared();
    if (!services_.press) {
        services_.press = [reader = &accessibilityService_, usage = services_.usage](const MenuItem& item) {
            return pressMenuItem(item, reader->accessibility(), *usage);
        };
    }
    loadMenuItems();
}

SearchViewModel::~SearchViewModel()
{
    *alive_ = false;
}

void SearchViewModel::loadMenuItems()
{
    setIsLoading(true);
    // The reading blocks on other applications, so it runs on a worker; it
    // holds the model only weakly and hands the result to the main thread.
    QPointer<SearchViewModel> self(this);
    std::shared_ptr<std::atomic<bool>> alive = alive_;
    AccessibilityService* reader = &accessibilityService_;
    const std::optional<RunningApplication> target = targetApp_;
    QThreadPool::globalInstance()->start([self, alive, reader, target] {
        if (!*alive)
            return;
        QList<MenuItem> items = reader->getMenuItems(target);
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self, items = std::move(items)] {
            if (!self)
                return;
            self->setMenuItems(items);
            self->setIsLoading(false);
        }, Qt::QueuedConnection);
    }, QThread::HighPriority);
}

void SearchViewModel::setMenuItems(const QList<MenuItem>& items)
{
    menuItems_ = items;
    codes_.clear();
    prepared_.clear();
    prepared_.reserve(size_t(items.size()));
    for (const MenuItem& item : items) {
        Prepared p{};
        p.title = codes_.size();
        coder_.encode(item.title, codes_);
        p.titleLength = codes_.size() - p.title;
        p.path = codes_.size();
        coder_.encode(item.pathKey(), codes_);
        p.pathLength = codes_.size() - p.path;
        prepared_.push_back(p);
    }
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
    return menuItems_.isEmpty() ? QString() : menuItems_.first().appBundleID.value_or(QString());
}

const std::vector<qint64>& SearchViewModel::usageCounts() const
{
    // Counts change only when the tracker does; looking them up again per
    // keystroke would cost a string hash per item.
    if (usageGeneration_ != services_.usage->generation() || usageCounts_.size() != size_t(menuItems_.size())) {
        const QHash<QString, qint64> counts = services_.usage->usageData().value(firstBundleID());
        usageCounts_.assign(size_t(menuItems_.size()), 0);
        if (!counts.isEmpty()) {
            for (qsizetype i = 0; i < menuItems_.size(); ++i)
                usageCounts_[size_t(i)] = counts.value(menuItems_[i].pathKey(), 0);
        }
        usageGeneration_ = services_.usage->generation();
    }
    return usageCounts_;
}

std::vector<RankedItem> SearchViewModel::filteredItems() const
{
    const std::vector<qint64>& usage = usageCounts();
    std::vector<RankedItem> ranked;
    ranked.reserve(prepared_.size());
    if (searchText_.isEmpty()) {
        for (size_t i = 0; i < prepared_.size(); ++i)
            ranked.push_back({&menuItems_[qsizetype(i)], usage[i]});
    } else {
        std::vector<char32_t> query;
        coder_.encodeQuery(searchText_, query);
        const char32_t* codes = codes_.data();
        for (size_t i = 0; i < prepared_.size(); ++i) {
            const Prepared& p = prepared_[i];
            qint64 score = fuzzyScore(query.data(), query.size(), codes + p.title, p.titleLength);
            if (score >= 0) {
                score *= kTitleWeight;
            } else {
                score = fuzzyScore(query.data(), query.size(), codes + p.path, p.pathLength);
                if (score < 0)
                    continue;
                score *= kPathWeight;
            }
            ranked.push_back({&menuItems_[qsizetype(i)], score + kUsageWeight * usage[i]});
        }
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const RankedItem& a, const RankedItem& b) { return a.score > b.score; });
    return ranked;
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
        {"active_app_bundle_id", menuItems_.isEmpty() ? QStringLiteral("unknown") : orUnknown(menuItems_.first().appBundleID)},
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
    // happen even if this model is released meanwhile.
    QTimer::singleShot(kPressDelayMs, QCoreApplication::instance(), [press = services_.press, item] { press(item); });
}

void SearchViewModel::track(const QString& name, const QVariantMap& properties)
{
    services_.analytics->track(name, properties);
}

#include "search/searchviewmodel.h"

#include "menu/accessibilityservice.h"
#include "menu/pressmenuitem.h"
#include "platform/crossthread.h"
#include "search/fuzzymatch.h"
#include "search/usagetracker.h"
#include "telemetry/analyticsservice.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSemaphore>
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

// A 64-bit summary of which characters occur: a text lacking one of the
// query's bits cannot contain the query.
quint64 characterMask(const char32_t* codes, size_t length)
{
    quint64 mask = 0;
    for (size_t i = 0; i < length; ++i)
        mask |= quint64(1) << ((codes[i] * 2654435761u) >> 26);
    return mask;
}

// Highest score first, equal scores in list order. Scores are small integers,
// so counting them is faster than comparing.
void sortByScore(std::vector<RankedItem>& ranked)
{
    if (ranked.size() < 2)
        return;
    qint64 low = ranked[0].score, high = ranked[0].score;
    for (const RankedItem& r : ranked) {
        low = std::min(low, r.score);
        high = std::max(high, r.score);
    }
    if (high - low >= (1 << 16)) {
        std::stable_sort(ranked.begin(), ranked.end(), [](const RankedItem& a, const RankedItem& b) { return a.score > b.score; });
        return;
    }
    std::vector<quint32> starts(size_t(high - low) + 2, 0);
    for (const RankedItem& r : ranked)
        ++starts[size_t(high - r.score) + 1];
    for (size_t i = 1; i < starts.size(); ++i)
        starts[i] += starts[i - 1];
    std::vector<RankedItem> sorted(ranked.size());
    for (const RankedItem& r : ranked)
        sorted[starts[size_t(high - r.score)]++] = r;
    ranked.swap(sorted);
}

// Long lists are ranked in slices on several cores. A pool of its own, so that
// a menu reading that waits on another application never delays a keystroke.
constexpr size_t kParallelFrom = 20000;

QThreadPool& rankingPool()
{
    static QThreadPool* pool = [] {
        auto* p = new QThreadPool;
        p->setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
        p->setExpiryTimeout(-1);
        return p;
    }();
    return *pool;
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
    menuItems_ = items;
    codes_.clear();
    prepared_.clear();
    prepared_.reserve(size_t(items.size()));
    for (const MenuItem& item : items) {
        Prepared p{};
        p.title = quint32(codes_.size());
        coder_.encode(item.title, codes_);
        p.titleLength = quint32(codes_.size() - p.title);
        p.path = quint32(codes_.size());
        coder_.encode(item.pathKey(), codes_);
        p.pathLength = quint32(codes_.size() - p.path);
        p.titleMask = characterMask(codes_.data() + p.title, p.titleLength);
        p.pathMask = characterMask(codes_.data() + p.path, p.pathLength);
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

void SearchViewModel::rankRange(const std::vector<char32_t>& query, size_t begin, size_t end,
                                std::vector<RankedItem>& out) const
{
    const std::vector<qint64>& usage = usageCounts_;
    out.reserve(end - begin);
    if (searchText_.isEmpty()) {
        for (size_t i = begin; i < end; ++i)
            out.push_back({&menuItems_[qsizetype(i)], usage[i]});
        return;
    }
    const quint64 queryMask = characterMask(query.data(), query.size());
    const char32_t* codes = codes_.data();
    for (size_t i = begin; i < end; ++i) {
        const Prepared& p = prepared_[i];
        const bool titleMayMatch = (p.titleMask & queryMask) == queryMask;
        const bool pathMayMatch = (p.pathMask & queryMask) == queryMask;
        if (!titleMayMatch && !pathMayMatch)
            continue;
        qint64 score = titleMayMatch ? fuzzyScore(query.data(), query.size(), codes + p.title, p.titleLength) : -1;
        if (score >= 0) {
            score *= kTitleWeight;
        } else {
            score = pathMayMatch ? fuzzyScore(query.data(), query.size(), codes + p.path, p.pathLength) : -1;
            if (score < 0)
                continue;
            score *= kPathWeight;
        }
        out.push_back({&menuItems_[qsizetype(i)], score + kUsageWeight * usage[i]});
    }
}

std::vector<RankedItem> SearchViewModel::filteredItems() const
{
    usageCounts(); // brought up to date here, read by every slice
    std::vector<char32_t> query;
    coder_.encodeQuery(searchText_, query);
    const size_t count = prepared_.size();
    const size_t helpers = count >= kParallelFrom ? size_t(rankingPool().maxThreadCount()) : 0;

    std::vector<std::vector<RankedItem>> slices(helpers + 1);
    const size_t sliceSize = (count + helpers) / (helpers + 1);
    QSemaphore done;
    for (size_t s = 1; s <= helpers; ++s) {
        CrossThread::start(rankingPool(), [&, s] {
            rankRange(query, std::min(count, s * sliceSize), std::min(count, (s + 1) * sliceSize), slices[s]);
            CrossThread::handOff();
            done.release();
        });
    }
    rankRange(query, 0, std::min(count, sliceSize), slices[0]);
    done.acquire(int(helpers));
    CrossThread::takeOver();

    std::vector<RankedItem> ranked = std::move(slices[0]);
    for (size_t s = 1; s <= helpers; ++s)
        ranked.insert(ranked.end(), slices[s].begin(), slices[s].end());
    sortByScore(ranked);
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
    // happen even if this model is released meanwhile, but not after the
    // reader it goes through.
    QTimer::singleShot(kPressDelayMs, &accessibilityService_.lifetime(), [press = services_.press, item] { press(item); });
}

void SearchViewModel::track(const QString& name, const QVariantMap& properties)
{
    services_.analytics->track(name, properties);
}

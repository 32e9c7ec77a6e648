#include "search/menuranker.h"

#include "platform/crossthread.h"
#include "search/fuzzymatch.h"

#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>

namespace {

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

} // namespace

void MenuRanker::setItems(const QList<MenuItem>& items)
{
    items_ = items;
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
    usageCounts_.assign(size_t(items.size()), 0);
}

void MenuRanker::setUsageCounts(const QHash<QString, qint64>& countsByPath)
{
    usageCounts_.assign(size_t(items_.size()), 0);
    if (countsByPath.isEmpty())
        return;
    for (qsizetype i = 0; i < items_.size(); ++i)
        usageCounts_[size_t(i)] = countsByPath.value(items_[i].pathKey(), 0);
}

void MenuRanker::rankRange(const std::vector<char32_t>& query, size_t begin, size_t end,
                           std::vector<RankedItem>& out) const
{
    out.reserve(end - begin);
    if (query.empty()) {
        for (size_t i = begin; i < end; ++i)
            out.push_back({&items_[qsizetype(i)], usageCounts_[i]});
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
        out.push_back({&items_[qsizetype(i)], score + kUsageWeight * usageCounts_[i]});
    }
}

std::vector<RankedItem> MenuRanker::rank(const QString& query) const
{
    std::vector<char32_t> codes;
    coder_.encodeQuery(query, codes);
    const size_t count = prepared_.size();
    const size_t helpers = count >= kParallelFrom ? size_t(rankingPool().maxThreadCount()) : 0;

    std::vector<std::vector<RankedItem>> slices(helpers + 1);
    const size_t sliceSize = (count + helpers) / (helpers + 1);
    QSemaphore done;
    for (size_t s = 1; s <= helpers; ++s) {
        CrossThread::start(rankingPool(), [&, s] {
            rankRange(codes, std::min(count, s * sliceSize), std::min(count, (s + 1) * sliceSize), slices[s]);
            CrossThread::handOff();
            done.release();
        });
    }
    rankRange(codes, 0, std::min(count, sliceSize), slices[0]);
    done.acquire(int(helpers));
    CrossThread::takeOver();

    std::vector<RankedItem> ranked = std::move(slices[0]);
    for (size_t s = 1; s <= helpers; ++s)
        ranked.insert(ranked.end(), slices[s].begin(), slices[s].end());
    sortByScore(ranked);
    return ranked;
}

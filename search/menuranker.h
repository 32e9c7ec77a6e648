#pragma once

#include "menu/menuitem.h"
#include "search/graphemecoder.h"

#include <QHash>
#include <QList>
#include <QString>

#include <vector>

// One ranked result: an item of the ranker's `items()` and its score. The
// pointer stays valid until the items change.
struct RankedItem {
    const MenuItem* item;
    qint64 score;
};

// Orders one application's menu items for a query. An item scores its title's
// fuzzy match, doubled, or failing that its path's, plus five per recorded
// use; items matching neither drop out. Highest score first, equal scores in
// menu order. An empty query keeps every item, scored by its uses alone.
class MenuRanker {
public:
    // Weight of one recorded use, and of title and path scores.
    static constexpr qint64 kUsageWeight = 5;
    static constexpr qint64 kTitleWeight = 2;
    static constexpr qint64 kPathWeight = 1;

    // Takes the items and prepares their folded titles and paths once, so a
    // keystroke costs integer comparisons only. Uses reset to none.
    void setItems(const QList<MenuItem>& items);
    const QList<MenuItem>& items() const { return items_; }

    // How often each item was used, by path key.
    void setUsageCounts(const QHash<QString, qint64>& countsByPath);

    std::vector<RankedItem> rank(const QString& query) const;

private:
    void rankRange(const std::vector<char32_t>& query, size_t begin, size_t end, std::vector<RankedItem>& out) const;

    QList<MenuItem> items_;
    GraphemeCoder coder_;
    std::vector<char32_t> codes_;
    struct Prepared {
        quint32 title, titleLength, path, pathLength;
        quint64 titleMask, pathMask; // which characters occur, for quick rejection
    };
    std::vector<Prepared> prepared_;
    std::vector<qint64> usageCounts_;
};

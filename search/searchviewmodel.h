#pragma once

#include "menu/menuitem.h"
#include "platform/runningapplication.h"
#include "search/graphemecoder.h"

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AccessibilityService;
class AnalyticsService;
class UsageTracker;

// One ranked result: an item of the model's `menuItems` and its score. The
// pointer stays valid until `menuItems` changes.
struct RankedItem {
    const MenuItem* item;
    qint64 score;
};

// What a search model works with: the program's (or a test's) usage history
// and usage events, both required.
struct SearchServices {
    UsageTracker* usage = nullptr;
    AnalyticsService* analytics = nullptr;
    std::function<bool(const MenuItem&)> press; // pressMenuItem through the reader's interface when absent
};

// The state of one open search panel: the query, the target's menu items, the
// selection, and running the chosen result.
class SearchViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(int selectedIndex READ selectedIndex WRITE setSelectedIndex NOTIFY selectedIndexChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)

public:
    // Weight of one recorded use, and of title and path scores.
    static constexpr qint64 kUsageWeight = 5;
    static constexpr qint64 kTitleWeight = 2;
    static constexpr qint64 kPathWeight = 1;
    // Between closing the panel and pressing the item.
    static constexpr int kPressDelayMs = 100;

    using Services = SearchServices;

    // Starts reading the target's menus at once.
    SearchViewModel(AccessibilityService& accessibilityService, std::optional<RunningApplication> targetApp,
                    std::function<void()> onDismiss, Services services = {}, QObject* parent = nullptr);
    ~SearchViewModel() override;

    AccessibilityService& accessibilityService() const { return accessibilityService_; }
    const std::optional<RunningApplication>& targetApp() const { return targetApp_; }

    QString searchText() const { return searchText_; }
    void setSearchText(const QString& text);
    const QList<MenuItem>& menuItems() const { return menuItems_; }
    int selectedIndex() const { return selectedIndex_; }
    void setSelectedIndex(int index);
    bool isLoading() const { return isLoading_; }

    // The ranked results, computed afresh from the current query, items and
    // usage counts on every call.
    std::vector<RankedItem> filteredItems() const;

    void moveSelection(int delta);
    void executeSelected();
    void selectAndExecute(int index);
    void trackSearchExecuted(int resultCount);
    void executeItem(const RankedItem& result, int rankPosition);

    // Replaces the items, as the reading's delivery does.
    void setMenuItems(const QList<MenuItem>& items);

signals:
    void searchTextChanged();
    void menuItemsChanged();
    void selectedIndexChanged();
    void isLoadingChanged();

private:
    void loadMenuItems();
    void setIsLoading(bool loading);
    void track(const QString& name, const QVariantMap& properties);
    const std::vector<qint64>& usageCounts() const;
    void rankRange(const std::vector<char32_t>& query, size_t begin, size_t end, std::vector<RankedItem>& out) const;
    QString firstBundleID() const;

    AccessibilityService& accessibilityService_;
    const std::optional<RunningApplication> targetApp_;
    std::function<void()> onDismiss_;
    Services services_;

    QString searchText_;
    QList<MenuItem> menuItems_;
    int selectedIndex_ = 0;
    bool isLoading_ = true;

    // Each item's folded title and path key, prepared once when items arrive.
    GraphemeCoder coder_;
    std::vector<char32_t> codes_;
    struct Prepared {
        quint32 title, titleLength, path, pathLength;
        quint64 titleMask, pathMask; // which characters occur, for quick rejection
    };
    std::vector<Prepared> prepared_;
    mutable std::vector<qint64> usageCounts_;
    mutable quint64 usageGeneration_ = ~quint64(0);

};

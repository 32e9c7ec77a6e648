#pragma once

#include "menu/menuitem.h"
#include "platform/runningapplication.h"
#include "search/menuranker.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AccessibilityService;
class AnalyticsService;
class UsageTracker;

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
    const QList<MenuItem>& menuItems() const { return ranker_.items(); }
    int selectedIndex() const { return selectedIndex_; }
    void setSelectedIndex(int index);
    bool isLoading() const { return isLoading_; }

    // The ranked results, computed afresh from the current query, items and
    // usage counts on every call (see MenuRanker).
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
    void refreshUsageCounts() const;
    QString firstBundleID() const;

    AccessibilityService& accessibilityService_;
    const std::optional<RunningApplication> targetApp_;
    std::function<void()> onDismiss_;
    Services services_;

    QString searchText_;
    int selectedIndex_ = 0;
    bool isLoading_ = true;

    // Brought up to date with the usage history before each ranking.
    mutable MenuRanker ranker_;
    mutable quint64 usageGeneration_ = ~quint64(0);
};

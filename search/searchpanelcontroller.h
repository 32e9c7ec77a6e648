#pragma once

#include "platform/runningapplication.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

class AccessibilityService;
class QScreen;
class DesktopWindows;
class SearchPanel;
class SearchView;
class SearchViewModel;
struct SearchServices;

// Builds one search panel for one target application, routes the navigation
// keys to its model, closes it on Escape or a click outside, and gives the
// focus back to the target when it closes.
class SearchPanelController : public QObject {
    Q_OBJECT

public:
    // `services` are what the search model works with.
    SearchPanelController(AccessibilityService& accessibilityService, std::optional<RunningApplication> targetApp,
                          DesktopWindows& windows, const SearchServices& services, QObject* parent = nullptr);
    ~SearchPanelController() override;

    void show();
    void dismiss();

    SearchPanel* panel() const;
    SearchViewModel* searchViewModel() const;
    SearchView* searchView() const;
    const std::optional<RunningApplication>& targetApp() const { return targetApp_; }
    bool monitorsInstalled() const { return monitorsInstalled_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void removeMonitors();
    QScreen* targetScreen() const;

    AccessibilityService& accessibilityService_;
    const std::optional<RunningApplication> targetApp_;
    DesktopWindows& windows_;
    std::unique_ptr<SearchServices> services_;
    QPointer<SearchPanel> panel_;
    QPointer<SearchViewModel> searchViewModel_;
    QPointer<SearchView> view_;
    bool monitorsInstalled_ = false;
};

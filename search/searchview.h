#pragma once

#include "search/panelstyle.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;
class QPropertyAnimation;
class QStackedWidget;
class QToolButton;
class ResultListModel;
class SearchViewModel;

// The panel's content: the search field, the ranked results (or a spinner
// while reading, or a note when nothing matches), and a footer naming the
// application and the keys.
class SearchView : public QWidget {
    Q_OBJECT

public:
    static constexpr int kFocusDelayMs = 50;
    static constexpr int kScrollMs = 100;
    static constexpr int kCornerRadius = 12;

    enum class Body { loading, noMatch, results };

    explicit SearchView(SearchViewModel& model, QWidget* parent = nullptr);

    // Without a compositor nothing shows through: paint the background opaque.
    void setTranslucent(bool translucent);

    Body body() const;
    bool footerVisible() const;
    QLineEdit* searchField() const { return field_; }
    QToolButton* clearButton() const { return clear_; }
    QListView* resultList() const { return list_; }
    QString footerText() const;
    ResultListModel* results() const { return results_; }

protected:
    void paintEvent(QPaintEvent*) override;
    void showEvent(QShowEvent*) override;

private:
    void refresh();
    void scrollToSelection();

    QPointer<SearchViewModel> model_;
    PanelStyle style_;
    QLineEdit* field_;
    QToolButton* clear_;
    QStackedWidget* body_;
    QListView* list_;
    ResultListModel* results_;
    QWidget* footer_;
    QLabel* appLabel_;
    QPropertyAnimation* scroll_;
    bool shownOnce_ = false;
};

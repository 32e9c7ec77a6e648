#include "search/searchview.h"

#include "search/busyspinner.h"
#include "search/menuitemrowdelegate.h"
#include "search/resultlistmodel.h"
#include "search/searchviewmodel.h"

#include <QBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>

// The icons live in the library's resources, which a static library must load itself.
static void loadResources()
{
    static const bool loaded = [] {
        Q_INIT_RESOURCE(kestrio);
        return true;
    }();
    Q_UNUSED(loaded);
}

namespace {

QIcon themedIcon(const char* themeName, const char* fallback)
{
    return QIcon::fromTheme(QString::fromLatin1(themeName), QIcon(QString::fromLatin1(fallback)));
}

QWidget* divider(const PanelStyle& style, QWidget* parent)
{
    auto* line = new QWidget(parent);
    line->setFixedHeight(1);
    line->setAutoFillBackground(true);
    QPalette palette = line->palette();
    palette.setColor(QPalette::Window, style.divider);
    line->setPalette(palette);
    return line;
}

QLabel* label(const QString& text, const QFont& font, const QColor& color, QWidget* parent)
{
    auto* l = new QLabel(text, parent);
    l->setFont(font);
    QPalette palette = l->palette();
    palette.setColor(QPalette::WindowText, color);
    l->setPalette(palette);
    return l;
}

} // namespace

SearchView::SearchView(SearchViewModel& model, QWidget* parent)
    : QWidget(parent), model_(&model), style_(PanelStyle::of(*this))
{
    loadResources();
    setAttribute(Qt::WA_TranslucentBackground);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    // Search row
    auto* searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(16, 12, 16, 12);
    searchRow->setSpacing(8);
    const int iconSize = QFontMetrics(style_.title2).height();
    auto* magnifier = new QLabel(this);
    magnifier->setPixmap(themedIcon("edit-find", ":/icons/magnifier.svg").pixmap(iconSize, iconSize));
    field_ = new QLineEdit(this);
    field_->setFrame(false);
    field_->setFont(style_.title2);
    field_->setPlaceholderText(QStringLiteral("Search menu items…"));
    field_->setStyleSheet(QStringLiteral("QLineEdit { background: transparent; border: none; }"));
    clear_ = new QToolButton(this);
    clear_->setAutoRaise(true);
    clear_->setIcon(themedIcon("edit-clear", ":/icons/clear.svg"));
    clear_->setIconSize(QSize(iconSize * 3 / 4, iconSize * 3 / 4));
    clear_->setCursor(Qt::ArrowCursor);
    clear_->setToolTip(QStringLiteral("Clear"));
    clear_->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; }"));
    clear_->hide();
    searchRow->addWidget(magnifier);
    searchRow->addWidget(field_, 1);
    searchRow->addWidget(clear_);
    column->addLayout(searchRow);
    column->addWidget(divider(style_, this));

    // Body: spinner, no match, or the list
    body_ = new QStackedWidget(this);
    auto* loading = new QWidget(body_);
    auto* loadingColumn = new QVBoxLayout(loading);
    auto* spinner = new BusySpinner(loading);
    loadingColumn->addStretch();
    loadingColumn->addWidget(spinner, 0, Qt::AlignHCenter);
    loadingColumn->addSpacing(6);
    loadingColumn->addWidget(label(QStringLiteral("Reading menu items…"), style_.body, style_.secondary, loading), 0,
                             Qt::AlignHCenter);
    loadingColumn->addStretch();
    auto* noMatch = label(QStringLiteral("No matching menu items"), style_.body, style_.secondary, body_);
    noMatch->setAlignment(Qt::AlignCenter);
    list_ = new QListView(body_);
    results_ = new ResultListModel(this);
    list_->setModel(results_);
    list_->setItemDelegate(new MenuItemRowDelegate(style_, list_));
    list_->setUniformItemSizes(true); // every row has room for a breadcrumb: fast with 20k rows
    list_->setSelectionMode(QAbstractItemView::NoSelection);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    // A thin scroll bar without arrows, in the text colour, as launchers have.
    const QColor handle = style_.tertiary;
    list_->setStyleSheet(QStringLiteral(
        "QListView { background: transparent; border: none; }"
        "QScrollBar:vertical { width: 8px; background: transparent; margin: 4px 2px 4px 0; }"
        "QScrollBar::handle:vertical { background: rgba(%1, %2, %3, 90); border-radius: 3px; min-height: 28px; }"
        "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
        "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: transparent; }")
                             .arg(handle.red())
                             .arg(handle.green())
                             .arg(handle.blue()));
    list_->viewport()->setAutoFillBackground(false);
    list_->setMouseTracking(false);
    body_->addWidget(loading);
    body_->addWidget(noMatch);
    body_->addWidget(list_);
    column->addWidget(body_, 1);

    // Footer
    footer_ = new QWidget(this);
    auto* footerColumn = new QVBoxLayout(footer_);
    footerColumn->setContentsMargins(0, 0, 0, 0);
    footerColumn->setSpacing(0);
    footerColumn->addWidget(divider(style_, footer_));
    auto* footerRow = new QHBoxLayout;
    footerRow->setContentsMargins(16, 6, 16, 6);
    appLabel_ = label(QString(), style_.caption, style_.secondary, footer_);
    appLabel_->setTextFormat(Qt::RichText);
    footerRow->addWidget(appLabel_);
    footerRow->addStretch();
    footerRow->addWidget(label(QStringLiteral("↑↓ Navigate  ⏎ Execute  ⎋ Close  Click to select"), style_.caption,
                               style_.tertiary, footer_));
    footerColumn->addLayout(footerRow);
    column->addWidget(footer_);

    scroll_ = new QPropertyAnimation(list_->verticalScrollBar(), "value", this);
    scroll_->setDuration(kScrollMs);
    scroll_->setEasingCurve(QEasingCurve::OutCubic);

    connect(field_, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (!model_)
            return;
        model_->setSearchText(text);
        model_->setSelectedIndex(0);
    });
    connect(field_, &QLineEdit::returnPressed, this, [this] {
        if (model_)
            model_->executeSelected();
    });
    connect(clear_, &QToolButton::clicked, this, [this] {
        if (!model_)
            return;
        model_->setSearchText(QString());
        model_->setSelectedIndex(0);
        field_->setFocus();
    });
    connect(list_, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (model_)
            model_->selectAndExecute(index.row());
    });
    connect(&model, &SearchViewModel::searchTextChanged, this, &SearchView::refresh);
    connect(&model, &SearchViewModel::isLoadingChanged, this, &SearchView::refresh);
    connect(&model, &SearchViewModel::menuItemsChanged, this, [this] {
        results_->forgetItems();
        refresh();
    });
    connect(&model, &SearchViewModel::selectedIndexChanged, this, [this] {
        if (!model_)
            return;
        results_->setSelectedRow(model_->selectedIndex());
        scrollToSelection();
    });
    refresh();
}

void SearchView::refresh()
{
    if (!model_)
        return;
    const QString text = model_->searchText();
    if (field_->text() != text)
        field_->setText(text);
    clear_->setVisible(!text.isEmpty());

    std::vector<RankedItem> ranked = model_->filteredItems();
    const bool noMatch = ranked.empty() && !text.isEmpty();
    results_->setResults(std::move(ranked));
    results_->setSelectedRow(model_->selectedIndex());
    body_->setCurrentIndex(model_->isLoading() ? 0 : noMatch ? 1 : 2);

    const QList<MenuItem>& items = model_->menuItems();
    footer_->setVisible(!items.isEmpty());
    if (!items.isEmpty())
        appLabel_->setText(QStringLiteral("Menus from: <b>%1</b>").arg(items.first().appName.toHtmlEscaped()));
}

void SearchView::scrollToSelection()
{
    const QModelIndex index = results_->index(model_ ? model_->selectedIndex() : -1);
    if (!index.isValid())
        return;
    QScrollBar* bar = list_->verticalScrollBar();
    const QRect row = list_->visualRect(index);
    const int target = std::clamp(bar->value() + row.center().y() - list_->viewport()->height() / 2, bar->minimum(),
                                  bar->maximum());
    scroll_->stop();
    scroll_->setStartValue(bar->value());
    scroll_->setEndValue(target);
    scroll_->start();
}

void SearchView::setTranslucent(bool translucent)
{
    style_.background.setAlphaF(translucent ? 0.96f : 1.0f);
    update();
}

SearchView::Body SearchView::body() const
{
    return body_->currentIndex() == 0 ? Body::loading : body_->currentIndex() == 1 ? Body::noMatch : Body::results;
}

bool SearchView::footerVisible() const
{
    return !footer_->isHidden();
}

QString SearchView::footerText() const
{
    return appLabel_->text();
}

void SearchView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCornerRadius, kCornerRadius);
    painter.fillPath(shape, style_.background);
    painter.setPen(QPen(style_.divider, 1));
    painter.drawPath(shape);
}

void SearchView::showEvent(QShowEvent*)
{
    if (shownOnce_)
        return;
    shownOnce_ = true;
    QTimer::singleShot(kFocusDelayMs, field_, [field = field_] { field->setFocus(Qt::OtherFocusReason); });
}

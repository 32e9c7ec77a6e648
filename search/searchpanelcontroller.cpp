#include "search/searchpanelcontroller.h"

#include "platform/desktopwindows.h"
#include "search/searchpanel.h"
#include "search/searchpanelgeometry.h"
#include "search/searchview.h"
#include "search/searchviewmodel.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

SearchPanelController::SearchPanelController(AccessibilityService& accessibilityService,
                                             std::optional<RunningApplication> targetApp, DesktopWindows& windows,
                                             const SearchServices& services, QObject* parent)
    : QObject(parent),
      accessibilityService_(accessibilityService),
      targetApp_(std::move(targetApp)),
      windows_(windows),
      services_(std::make_unique<SearchServices>(services))
{
}

SearchPanelController::~SearchPanelController()
{
    removeMonitors();
    delete panel_;
    delete searchViewModel_;
}

QScreen* SearchPanelController::targetScreen() const
{
    // The screen of the window the user works in, else the one under the
    // pointer. The window manager gives positions in the desktop's own pixels.
    if (targetApp_) {
        if (const auto geometry = windows_.windowGeometry(*targetApp_)) {
            const QList<QScreen*> screens = QGuiApplication::screens();
            QList<ScreenArea> areas;
            for (QScreen* screen : screens)
                areas.append({screen->geometry(), screen->devicePixelRatio()});
            if (const auto found = screenOfNativePoint(areas, geometry->center()))
                return screens[found->first];
        }
    }
    if (QScreen* screen = QGuiApplication::screenAt(QCursor::pos()))
        return screen;
    return QGuiApplication::primaryScreen();
}

void SearchPanelController::show()
{
    QScreen* screen = targetScreen();
    if (!screen)
        return;
    const QRect frame = searchPanelFrame(QRectF(screen->availableGeometry())).toRect();

    QPointer<SearchPanelController> self(this);
    auto* model = new SearchViewModel(accessibilityService_, targetApp_, [self] {
        if (self)
            self->dismiss();
    }, *services_);
    searchViewModel_ = model;
    view_ = new SearchView(*model);
    const bool compositor = windows_.hasCompositor();
    view_->setTranslucent(compositor);
    auto* panel = new SearchPanel(view_, compositor);
    model->setParent(panel); // released with the panel at the latest
    panel->setGeometry(frame);
    // A window that cannot be resized is a dialog to tiling compositors:
    // they float it instead of giving it a tile.
    panel->setFixedSize(frame.size());
    panel->show();
    panel->raise();
    panel->activateWindow();
    windows_.showOnAllWorkspaces(panel->winId());
    windows_.activateOwnWindow(panel->winId());

    qApp->installEventFilter(this);
    monitorsInstalled_ = true;
    panel_ = panel;

    // Hidden, not dismissed, when another application takes over.
    connect(qApp, &QGuiApplication::applicationStateChanged, panel, [panel](Qt::ApplicationState state) {
        if (state == Qt::ApplicationInactive)
            panel->hide();
    });
}

void SearchPanelController::removeMonitors()
{
    if (!monitorsInstalled_)
        return;
    qApp->removeEventFilter(this);
    monitorsInstalled_ = false;
}

void SearchPanelController::dismiss()
{
    removeMonitors();
    if (panel_) {
        panel_->hide();
        panel_->deleteLater(); // takes the model along; it may be the caller
    }
    panel_ = nullptr;
    searchViewModel_ = nullptr;
    if (targetApp_)
        windows_.activate(*targetApp_);
}

bool SearchPanelController::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        // Only while the panel shows: a hidden panel's keys belong to other windows.
        if (!searchViewModel_ || !panel_ || !panel_->isVisible())
            return false;
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            searchViewModel_->executeSelected();
            return true;
        case Qt::Key_Escape:
            dismiss();
            return true;
        case Qt::Key_Down:
            searchViewModel_->moveSelection(1);
            return true;
        case Qt::Key_Up:
            searchViewModel_->moveSelection(-1);
            return true;
        default:
            return false;
        }
    }
    if (event->type() == QEvent::MouseButtonPress && watched->isWidgetType()) {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton || !panel_)
            return false;
        // The frame's left and top edges are inside, its right and bottom edges are not.
        const QRect frame = panel_->frameGeometry();
        const QPointF at = mouse->globalPosition();
        const bool inside = at.x() >= frame.x() && at.x() < frame.x() + frame.width() && at.y() >= frame.y()
            && at.y() < frame.y() + frame.height();
        if (!inside)
            dismiss();
        return false;
    }
    return false;
}

SearchView* SearchPanelController::searchView() const
{
    return view_;
}

SearchViewModel* SearchPanelController::searchViewModel() const
{
    return searchViewModel_;
}

SearchPanel* SearchPanelController::panel() const
{
    return panel_;
}

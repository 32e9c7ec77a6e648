#include "app/programwindows.h"

#include "platform/desktopwindows.h"

#include <QBoxLayout>
#include <QGuiApplication>
#include <QScreen>

ProgramWindows::ProgramWindows(DesktopWindows& windows) : windows_(windows)
{
}

ProgramWindows::~ProgramWindows()
{
    delete welcome_;
    delete settings_;
    delete about_;
}

void ProgramWindows::showSettings(const std::function<QWidget*()>& makeContent)
{
    showReused(settings_, QStringLiteral("Kestrio Settings"), QSize(440, 520), makeContent);
}

void ProgramWindows::showAbout(const std::function<QWidget*()>& makeContent)
{
    showReused(about_, QStringLiteral("About Kestrio"), QSize(340, 420), makeContent);
}

bool ProgramWindows::bringWelcomeForward()
{
    if (!welcome_ || !welcome_->isVisible())
        return false;
    bringForward(welcome_);
    return true;
}

void ProgramWindows::showWelcome(QWidget* content, QSize size)
{
    delete welcome_;
    welcome_ = make(QStringLiteral("Welcome to Kestrio"), size, content);
    welcome_->setAttribute(Qt::WA_DeleteOnClose, true);
}

void ProgramWindows::closeWelcome()
{
    if (welcome_)
        welcome_->close();
    welcome_ = nullptr;
}

void ProgramWindows::showReused(QPointer<QWidget>& window, const QString& title, QSize size,
                                const std::function<QWidget*()>& makeContent)
{
    if (window && window->isVisible()) {
        bringForward(window);
        return;
    }
    delete window;
    window = make(title, size, makeContent());
}

QWidget* ProgramWindows::make(const QString& title, QSize size, QWidget* content)
{
    auto* window = new QWidget(nullptr, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint
                                            | Qt::CustomizeWindowHint);
    window->setWindowTitle(title);
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    window->setFixedSize(size);
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        window->move(area.center() - QPoint(size.width() / 2, size.height() / 2));
    }
    window->show();
    bringForward(window);
    return window;
}

void ProgramWindows::bringForward(QWidget* window)
{
    window->raise();
    window->activateWindow();
    windows_.activateOwnWindow(window->winId());
}

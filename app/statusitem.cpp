#include "app/statusitem.h"

#include "base/platformwords.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

namespace {

QIcon resourceIcon(const char* name)
{
    return QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(name)));
}

} // namespace

StatusItem::StatusItem(const PlatformWords& words, Actions actions, QObject* parent)
    : QObject(parent),
      words_(words),
      actions_(std::move(actions)),
      icon_(std::make_unique<QSystemTrayIcon>(resourceIcon("kestrio")))
{
    icon_->setToolTip(QStringLiteral("Kestrio"));
    // A left click opens the same menu, as a status item's would.
    connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger && menu_)
            menu_->popup(QCursor::pos());
    });
}

StatusItem::~StatusItem() = default;

void StatusItem::rebuild(const State& state)
{
    auto menu = std::make_unique<QMenu>();
    auto add = [&](const QString& title, const std::function<void()>& action, const QKeySequence& key = {},
                   const char* icon = nullptr) {
        QAction* item = menu->addAction(title);
        connect(item, &QAction::triggered, this, [action] {
            if (action)
                action();
        });
        if (!key.isEmpty())
            item->setShortcut(key);
        if (icon)
            item->setIcon(resourceIcon(icon));
        return item;
    };
    add(QStringLiteral("Search Menus…"), actions_.searchMenus);
    if (!state.hotkeyActive && state.keyboardAccess == KeyboardAccess::none) {
        // No grant helps where the session shows no keys: the settings say what does.
        menu->addSeparator();
        add(words_.keysUnavailableMenuRow, actions_.openSettings, {}, "warning");
    } else if (!state.hotkeyActive) {
        menu->addSeparator();
        add(words_.hotkeyInactiveMenuRow, actions_.openAccessibilitySettings, {}, "warning");
    }
    if (state.offeredVersion) {
        menu->addSeparator();
        QAction* download = add(QStringLiteral("Download Update — v") + *state.offeredVersion, actions_.downloadUpdate,
                                {}, "download");
        download->setEnabled(state.canInstallUpdates);
    }
    menu->addSeparator();
    add(QStringLiteral("Settings…"), actions_.openSettings, QKeySequence(Qt::CTRL | Qt::Key_Comma));
    add(QStringLiteral("About Kestrio"), actions_.openAbout);
    menu->addSeparator();
    add(QStringLiteral("Quit Kestrio"), actions_.quit, QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(menu.get(), &QMenu::aboutToShow, this, [this] {
        if (actions_.menuWillOpen)
            actions_.menuWillOpen();
    });

    icon_->setContextMenu(menu.get());
    menu_ = std::move(menu); // the old menu goes
}

void StatusItem::setVisible(bool visible)
{
    // Qt shows the icon as soon as a tray host appears, also when none runs yet.
    icon_->setVisible(visible);
}

void StatusItem::showUpdateOffered()
{
    icon_->setIcon(resourceIcon("kestrio-update"));
    icon_->setToolTip(QStringLiteral("Kestrio — update available"));
}

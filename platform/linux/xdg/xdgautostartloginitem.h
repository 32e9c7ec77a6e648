#pragma once

#include "platform/loginitem.h"

// A login item as desktop sessions know it: an XDG autostart entry,
// $XDG_CONFIG_HOME/autostart/kestrio.desktop, that starts `program`.
class XdgAutostartLoginItem final : public LoginItem {
public:
    XdgAutostartLoginItem(QString autostartFolder, QString program);

    // For the running program, in the user's autostart folder.
    static QString userAutostartFolder();

    std::optional<QString> registerItem() override;
    std::optional<QString> unregisterItem() override;

    QString entryPath() const;
    // The entry's text; the program is quoted by the desktop-entry rules.
    QString entry() const;

private:
    QString folder_;
    QString program_;
};

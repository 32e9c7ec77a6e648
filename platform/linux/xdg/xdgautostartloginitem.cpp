#include "platform/linux/xdg/xdgautostartloginitem.h"

#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

// One Exec argument: quoted when it holds anything but plain characters, with
// the four characters the quoting reserves escaped; then "%" doubled and every
// backslash doubled again, since Exec is itself an escaped string value.
QString execArgument(const QString& argument)
{
    static const QString plain = QStringLiteral(
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+,:@");
    bool quote = argument.isEmpty();
    for (QChar c : argument)
        quote = quote || !plain.contains(c);
    QString word = argument;
    if (quote) {
        word.clear();
        for (QChar c : argument) {
            if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
                word += u'\\';
            word += c;
        }
        word = u'"' + word + u'"';
    }
    word.replace(u'%', QStringLiteral("%%"));
    word.replace(u'\\', QStringLiteral("\\\\"));
    return word;
}

} // namespace

XdgAutostartLoginItem::XdgAutostartLoginItem(QString autostartFolder, QString program)
    : folder_(std::move(autostartFolder)), program_(std::move(program))
{
}

QString XdgAutostartLoginItem::userAutostartFolder()
{
    // QStandardPaths already applies $XDG_CONFIG_HOME and its ~/.config default.
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/autostart");
}

QString XdgAutostartLoginItem::entryPath() const
{
    return QDir(folder_).filePath(QStringLiteral("kestrio.desktop"));
}

QString XdgAutostartLoginItem::entry() const
{
    QString program = program_;
    program.replace(u'\n', u' '); // a line break would end the key
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Kestrio\n"
                          "Comment=Find any menu item instantly.\n"
                          "Exec=%1\n"
                          "Icon=kestrio\n"
                          "Terminal=false\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(execArgument(program));
}

std::optional<QString> XdgAutostartLoginItem::registerItem()
{
    if (!QDir().mkpath(folder_))
        return QStringLiteral("Cannot create the folder %1").arg(folder_);
    QSaveFile file(entryPath());
    if (!file.open(QIODevice::WriteOnly) || file.write(entry().toUtf8()) < 0 || !file.commit())
        return file.errorString();
    return std::nullopt;
}

std::optional<QString> XdgAutostartLoginItem::unregisterItem()
{
    QFile file(entryPath());
    if (!file.exists() || file.remove())
        return std::nullopt;
    return file.errorString();
}

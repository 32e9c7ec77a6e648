#include "platform/linux/sway/swaybinding.h"

#include <QStringList>

QString swayBindsym(const QString& trigger, const QString& command)
{
    const QStringList parts = trigger.split(u'+');
    if (parts.last().isEmpty())
        return {};
    QStringList keys;
    for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
        const QString part = parts[i].toUpper();
        if (part == QLatin1String("CTRL"))
            keys << QStringLiteral("Ctrl");
        else if (part == QLatin1String("ALT"))
            keys << QStringLiteral("Mod1");
        else if (part == QLatin1String("SHIFT"))
            keys << QStringLiteral("Shift");
        else if (part == QLatin1String("LOGO"))
            keys << QStringLiteral("Mod4");
        else
            return {};
    }
    keys << parts.last();
    return QStringLiteral("bindsym %1 exec %2").arg(keys.join(u'+'), command);
}

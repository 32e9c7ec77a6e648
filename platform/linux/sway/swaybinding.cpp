#include "platform/linux/sway/swaybinding.h"

#include <QStringList>

QString swayBindsym(const DesktopKeys& keys, const QString& command)
{
    QStringList parts;
    for (const auto& [modifier, word] : {std::pair{Modifier::ctrl, "Ctrl"}, std::pair{Modifier::alt, "Mod1"},
                                         std::pair{Modifier::shift, "Shift"}, std::pair{Modifier::super, "Mod4"}}) {
        if (keys.modifiers.testFlag(modifier))
            parts << QString::fromLatin1(word);
    }
    parts << keys.keysym;
    return QStringLiteral("bindsym %1 exec %2").arg(parts.join(u'+'), command);
}

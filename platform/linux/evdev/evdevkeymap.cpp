#include "platform/linux/evdev/evdevkeymap.h"

namespace EvdevKeyMap {

std::optional<quint16> positionOfXkbKeycode(quint32 xkbKeycode)
{
    if (xkbKeycode < quint32(kXkbKeycodeOffset) || xkbKeycode > 255)
        return std::nullopt;
    return quint16(xkbKeycode - kXkbKeycodeOffset);
}

QString printableKeyText(const char* utf8)
{
    const QString text = QString::fromUtf8(utf8);
    return text.isEmpty() || !text[0].isPrint() ? QString() : text;
}

} // namespace EvdevKeyMap

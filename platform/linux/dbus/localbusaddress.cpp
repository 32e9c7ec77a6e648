#include "platform/linux/dbus/localbusaddress.h"

#include <QSet>
#include <QStringList>

#include <algorithm>

namespace {

bool isHex(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// A value as the address syntax allows it: printable ASCII, with every other
// byte escaped as %XX.
bool isWellFormedValue(const QString& value)
{
    if (value.isEmpty())
        return false;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value[i];
        if (c == u'%') {
            if (i + 2 >= value.size() || !isHex(value[i + 1]) || !isHex(value[i + 2]))
                return false;
            i += 2;
            continue;
        }
        if (c.unicode() <= 0x20 || c.unicode() >= 0x7f)
            return false;
    }
    return true;
}

} // namespace

std::optional<LocalBusAddress> LocalBusAddress::parse(const QString& text)
{
    // One address (a list would be tried in order), of the unix transport.
    if (text.contains(u';') || !text.startsWith(QLatin1String("unix:")))
        return std::nullopt;
    const QStringList pairs = text.mid(5).split(u',');
    QSet<QString> keys;
    int sockets = 0;
    for (const QString& pair : pairs) {
        const qsizetype equals = pair.indexOf(u'=');
        if (equals <= 0)
            return std::nullopt;
        const QString key = pair.left(equals);
        const QString value = pair.mid(equals + 1);
        if (keys.contains(key) || !isWellFormedValue(value))
            return std::nullopt;
        keys.insert(key);
        if (key == QLatin1String("path")) {
            if (!value.startsWith(u'/'))
                return std::nullopt;
            ++sockets;
        } else if (key == QLatin1String("abstract")) {
            ++sockets;
        } else if (key == QLatin1String("guid")) {
            if (value.size() != 32 || !std::all_of(value.begin(), value.end(), isHex))
                return std::nullopt;
        } else {
            // "tmpdir", "dir", "runtime" make a server; anything else is not ours to guess at.
            return std::nullopt;
        }
    }
    if (sockets != 1)
        return std::nullopt;
    return LocalBusAddress(text);
}

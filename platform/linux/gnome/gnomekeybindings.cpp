#include "platform/linux/gnome/gnomekeybindings.h"

#include <QRegularExpression>

#include <algorithm>

namespace GnomeKeybindings {

namespace {

// GNOME's modifier names, and the one each stands for.
QString modifierName(QString name)
{
    name = name.toLower();
    if (name == QLatin1String("primary") || name == QLatin1String("control") || name == QLatin1String("ctrl")
        || name == QLatin1String("ctl"))
        return QStringLiteral("Control");
    if (name == QLatin1String("alt") || name == QLatin1String("mod1"))
        return QStringLiteral("Alt");
    if (name == QLatin1String("shift"))
        return QStringLiteral("Shift");
    if (name == QLatin1String("super") || name == QLatin1String("mod4") || name == QLatin1String("meta"))
        return QStringLiteral("Super");
    if (name == QLatin1String("hyper"))
        return QStringLiteral("Hyper");
    return {};
}

struct Parsed {
    QStringList modifiers; // GNOME's names, in GNOME's order
    QString key;
};

std::optional<Parsed> parse(const QString& accelerator)
{
    static const QStringList order{QStringLiteral("Control"), QStringLiteral("Alt"), QStringLiteral("Shift"),
                                   QStringLiteral("Super"), QStringLiteral("Hyper")};
    Parsed parsed;
    qsizetype at = 0;
    const QString text = accelerator.trimmed();
    while (at < text.size() && text[at] == u'<') {
        const qsizetype end = text.indexOf(u'>', at);
        if (end < 0)
            return std::nullopt;
        const QString modifier = modifierName(text.mid(at + 1, end - at - 1));
        if (modifier.isEmpty())
            return std::nullopt;
        if (!parsed.modifiers.contains(modifier))
            parsed.modifiers << modifier;
        at = end + 1;
    }
    parsed.key = text.mid(at);
    if (parsed.key.isEmpty() || parsed.key.contains(u' ') || parsed.key.contains(u'<'))
        return std::nullopt;
    std::sort(parsed.modifiers.begin(), parsed.modifiers.end(),
              [&](const QString& a, const QString& b) { return order.indexOf(a) < order.indexOf(b); });
    return parsed;
}

} // namespace

const QStringList& bindingSchemas()
{
    static const QStringList schemas{
        QStringLiteral("org.gnome.desktop.wm.keybindings"),
        QStringLiteral("org.gnome.shell.keybindings"),
        QStringLiteral("org.gnome.mutter.keybindings"),
        QStringLiteral("org.gnome.mutter.wayland.keybindings"),
        QString::fromLatin1(kMediaKeysSchema),
    };
    return schemas;
}

QString acceleratorOf(const DesktopKeys& keys)
{
    QString accelerator;
    for (const auto& [modifier, word] : {std::pair{Modifier::ctrl, "<Control>"}, std::pair{Modifier::alt, "<Alt>"},
                                         std::pair{Modifier::shift, "<Shift>"}, std::pair{Modifier::super, "<Super>"}}) {
        if (keys.modifiers.testFlag(modifier))
            accelerator += QString::fromLatin1(word);
    }
    return accelerator + keys.keysym;
}

QString canonical(const QString& accelerator)
{
    const std::optional<Parsed> parsed = parse(accelerator);
    if (!parsed)
        return {};
    QString text;
    for (const QString& modifier : parsed->modifiers)
        text += u'<' + modifier + u'>';
    return text + parsed->key.toLower();
}

QString readable(const QString& accelerator)
{
    const std::optional<Parsed> parsed = parse(accelerator);
    if (!parsed)
        return accelerator;
    QStringList parts;
    for (const QString& modifier : parsed->modifiers)
        parts << (modifier == QLatin1String("Control") ? QStringLiteral("Ctrl") : modifier);
    QString key = parsed->key;
    key.replace(u'_', u' ');
    if (!key.isEmpty())
        key[0] = key[0].toUpper();
    parts << key;
    return parts.join(u'+');
}

std::optional<QStringList> texts(const QString& printed)
{
    QString value = printed.trimmed();
    if (value.startsWith(QLatin1String("@as ")))
        value = value.mid(4).trimmed();
    const bool list = value.startsWith(u'[');
    if (list) {
        if (!value.endsWith(u']'))
            return std::nullopt;
        value = value.mid(1, value.size() - 2).trimmed();
    }
    // Each text in single (or double) quotes, with backslash escapes.
    QStringList out;
    qsizetype at = 0;
    while (at < value.size()) {
        const QChar quote = value[at];
        if (quote != u'\'' && quote != u'"')
            return std::nullopt;
        QString text;
        ++at;
        bool closed = false;
        for (; at < value.size(); ++at) {
            if (value[at] == u'\\' && at + 1 < value.size()) {
                text += value[++at];
                continue;
            }
            if (value[at] == quote) {
                closed = true;
                ++at;
                break;
            }
            text += value[at];
        }
        if (!closed)
            return std::nullopt;
        out << text;
        while (at < value.size() && value[at].isSpace())
            ++at;
        if (at < value.size()) {
            if (!list || value[at] != u',')
                return std::nullopt;
            ++at;
            while (at < value.size() && value[at].isSpace())
                ++at;
        }
    }
    if (!list && out.size() != 1)
        return std::nullopt;
    return out;
}

QString printed(const QString& value)
{
    QString quoted = value;
    quoted.replace(u'\\', QStringLiteral("\\\\"));
    quoted.replace(u'\'', QStringLiteral("\\'"));
    return u'\'' + quoted + u'\'';
}

QString printed(const QStringList& values)
{
    QStringList quoted;
    for (const QString& value : values)
        quoted << printed(value);
    return u'[' + quoted.join(QStringLiteral(", ")) + u']';
}

std::optional<Holder> holderIn(const QString& listing, const QString& accelerator)
{
    const QString wanted = canonical(accelerator);
    if (wanted.isEmpty())
        return std::nullopt;
    for (const QString& line : listing.split(u'\n', Qt::SkipEmptyParts)) {
        const QString schema = line.section(u' ', 0, 0);
        const QString key = line.section(u' ', 1, 1);
        const std::optional<QStringList> values = texts(line.section(u' ', 2));
        if (!values)
            continue;
        for (const QString& value : *values) {
            if (canonical(value) == wanted)
                return Holder{schema, key, false};
        }
    }
    return std::nullopt;
}

QString describe(const Holder& holder)
{
    if (holder.custom)
        return QStringLiteral("your custom shortcut “%1”").arg(holder.key);
    QString action = holder.key;
    action.replace(u'-', u' ');
    if (!action.isEmpty())
        action[0] = action[0].toUpper();
    return QStringLiteral("GNOME's shortcut for “%1”").arg(action);
}

QStringList withOwn(QStringList paths)
{
    if (!paths.contains(QString::fromLatin1(kOwnPath)))
        paths.append(QString::fromLatin1(kOwnPath));
    return paths;
}

QStringList withoutOwn(QStringList paths)
{
    paths.removeAll(QString::fromLatin1(kOwnPath));
    return paths;
}

} // namespace GnomeKeybindings

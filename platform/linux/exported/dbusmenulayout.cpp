#include "platform/linux/exported/dbusmenulayout.h"

#include <QDBusVariant>
#include <QSet>

namespace {

constexpr int kMaxItems = 20000;
constexpr int kMaxDepth = 16;
const QString kLayoutSignature = QStringLiteral("(ia{sv}av)");

struct Reading {
    QString service;
    QString path;
    QSet<int> seen;
    int budget = kMaxItems;
};

QList<QStringList> shortcutOf(const QVariant& value)
{
    QList<QStringList> chords;
    if (!value.canConvert<QDBusArgument>())
        return chords;
    const QDBusArgument argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("aas"))
        return chords;
    argument.beginArray();
    while (!argument.atEnd()) {
        QStringList chord;
        argument >> chord;
        if (chords.size() < 8)
            chords.append(chord);
    }
    argument.endArray();
    return chords;
}

// One item and what is below it; false for an item that is not shown.
bool readItem(const QDBusArgument& argument, int depth, Reading& reading, ExportedMenuNode& node);

QList<ExportedMenuNode> readChildren(const QDBusArgument& argument, int depth, Reading& reading)
{
    QList<ExportedMenuNode> children;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        const QVariant value = child.variant();
        if (depth > kMaxDepth || reading.budget <= 0 || !value.canConvert<QDBusArgument>())
            continue;
        const QDBusArgument inner = value.value<QDBusArgument>();
        if (inner.currentSignature() != kLayoutSignature)
            continue;
        ExportedMenuNode node;
        if (readItem(inner, depth + 1, reading, node))
            children.append(node);
    }
    argument.endArray();
    return children;
}

bool readItem(const QDBusArgument& argument, int depth, Reading& reading, ExportedMenuNode& node)
{
    int id = 0;
    QVariantMap properties;
    argument.beginStructure();
    argument >> id >> properties;
    node.children = readChildren(argument, depth, reading);
    argument.endStructure();

    // An item listed twice, or the root listed below itself, is kept once.
    if (reading.seen.contains(id))
        return false;
    reading.seen.insert(id);
    --reading.budget;
    const auto flag = [&](const char* name) {
        const QVariant value = properties.value(QLatin1String(name));
        return value.typeId() == QMetaType::Bool ? value.toBool() : true;
    };
    const QString type = properties.value(QStringLiteral("type")).toString();
    if (!flag("visible") || type == QLatin1String("separator"))
        return false;
    const QVariant label = properties.value(QStringLiteral("label"));
    node.label = label.typeId() == QMetaType::QString ? withoutMnemonic(label.toString()) : QString();
    if (node.label.isEmpty())
        return false;
    node.enabled = flag("enabled");
    node.isSubmenu = properties.value(QStringLiteral("children-display")).toString() == QLatin1String("submenu")
                     || !node.children.isEmpty();
    if (!node.isSubmenu) {
        node.key = DbusmenuLayout::translateShortcut(shortcutOf(properties.value(QStringLiteral("shortcut"))));
        node.press = ExportedPress{ExportedPress::Kind::dbusmenuClick, reading.service, reading.path, {}, {}, id};
    }
    return true;
}

} // namespace

std::optional<QList<ExportedMenuNode>> DbusmenuLayout::read(const QDBusArgument& reply, const QString& service,
                                                            const QString& path)
{
    if (reply.currentSignature() != kLayoutSignature)
        return std::nullopt;
    Reading reading{service, path, {}, kMaxItems};
    int id = 0;
    QVariantMap properties;
    reply.beginStructure();
    reply >> id >> properties;
    reading.seen.insert(id);
    const QList<ExportedMenuNode> entries = readChildren(reply, 0, reading);
    reply.endStructure();
    return entries;
}

std::optional<KeyChord> DbusmenuLayout::translateShortcut(const QList<QStringList>& chords)
{
    // The same key names as GTK's accelerators, one modifier per entry.
    if (chords.isEmpty() || chords.first().isEmpty())
        return std::nullopt;
    const QStringList& chord = chords.first();
    QString accelerator;
    for (qsizetype i = 0; i + 1 < chord.size(); ++i)
        accelerator += u'<' + chord[i] + u'>';
    return translateGtkAccelerator(accelerator + chord.last());
}

#include "platform/linux/sway/swaytree.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace {

// Deeper trees are not sway's; stop rather than recurse without end.
constexpr int kMaxDepth = 64;

void collect(const QJsonObject& node, SwayTree& tree, int depth)
{
    if (depth > kMaxDepth)
        return;
    if (const auto window = SwayTree::windowOf(node)) {
        tree.windows.insert(window->id, *window);
        if (node.value(QStringLiteral("focused")).toBool())
            tree.focused = window->id;
    }
    for (const QString& key : {QStringLiteral("nodes"), QStringLiteral("floating_nodes")}) {
        for (const QJsonValue& child : node.value(key).toArray())
            collect(child.toObject(), tree, depth + 1);
    }
}

} // namespace

std::optional<DesktopWindow> SwayTree::windowOf(const QJsonObject& node)
{
    // Windows are the containers with a client behind them: Wayland ones
    // have an app id, X11 ones window properties; both have a process.
    const QJsonValue pid = node.value(QStringLiteral("pid"));
    const QJsonValue id = node.value(QStringLiteral("id"));
    const QString type = node.value(QStringLiteral("type")).toString();
    if (!pid.isDouble() || !id.isDouble() || (type != QStringLiteral("con") && type != QStringLiteral("floating_con")))
        return std::nullopt;
    const double idValue = id.toDouble();
    const double pidValue = pid.toDouble();
    if (idValue < 0 || idValue > 9007199254740992.0 || pidValue <= 0 || pidValue > 2147483647.0)
        return std::nullopt;
    DesktopWindow window;
    window.id = quint64(idValue);
    window.pid = qint32(pidValue);
    window.applicationId = node.value(QStringLiteral("app_id")).toString();
    window.windowClass = node.value(QStringLiteral("window_properties")).toObject().value(QStringLiteral("class")).toString();
    window.title = node.value(QStringLiteral("name")).toString();
    const QJsonObject rect = node.value(QStringLiteral("rect")).toObject();
    const int width = rect.value(QStringLiteral("width")).toInt();
    const int height = rect.value(QStringLiteral("height")).toInt();
    if (width > 0 && height > 0)
        window.frame = QRect(rect.value(QStringLiteral("x")).toInt(), rect.value(QStringLiteral("y")).toInt(), width, height);
    return window;
}

SwayTree SwayTree::parse(const QByteArray& json)
{
    SwayTree tree;
    collect(QJsonDocument::fromJson(json).object(), tree, 0);
    return tree;
}

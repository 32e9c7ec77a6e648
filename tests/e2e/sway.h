#pragma once

// Helpers for tests in a headless sway session (scripts/headless-session --wayland).

#include "desktop.h"

#include <QJsonArray>

namespace e2e::sway {

struct Window {
    qint64 id = 0;
    QString pid;
    QString appId;
    QString title;
    bool focused = false;
};

inline void collect(const QJsonObject& node, QList<Window>& windows)
{
    if (node.contains(QStringLiteral("pid")))
        windows.append({node.value("id").toInteger(), QString::number(node.value("pid").toInteger()),
                        node.value("app_id").toString(), node.value("name").toString(), node.value("focused").toBool()});
    for (const char* key : {"nodes", "floating_nodes"}) {
        for (const QJsonValue& child : node.value(QLatin1String(key)).toArray())
            collect(child.toObject(), windows);
    }
}

// Every window in sway's tree.
inline QList<Window> windows()
{
    QList<Window> found;
    collect(QJsonDocument::fromJson(run("swaymsg", {"-r", "-t", "get_tree"}).out.toUtf8()).object(), found);
    return found;
}

inline Window focused()
{
    for (const Window& window : windows()) {
        if (window.focused)
            return window;
    }
    return {};
}

inline int windowsTitled(const QString& title)
{
    int count = 0;
    for (const Window& window : windows())
        count += window.title == title;
    return count;
}

// Keys through a virtual keyboard, as the user's would arrive.
inline void type(const QString& text)
{
    run("wtype", {"-d", "40", text});
}

inline void key(const QString& name)
{
    run("wtype", {"-k", name});
}

} // namespace e2e::sway

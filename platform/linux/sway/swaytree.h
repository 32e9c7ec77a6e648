#pragma once

#include "platform/linux/windows/windowdirectory.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>

// What sway's layout tree says about its windows.
struct SwayTree {
    QHash<quint64, DesktopWindow> windows; // by container id
    std::optional<quint64> focused;        // the focused window; none when an empty workspace has the focus

    // Reads a `get_tree` answer; anything that is not a tree reads as empty.
    static SwayTree parse(const QByteArray& json);
    // One window container (a `get_tree` node or a window event's
    // "container"); nothing when the node is not a window.
    static std::optional<DesktopWindow> windowOf(const QJsonObject& node);
};

#pragma once

#include "platform/menutree.h"

#include <QHashFunctions>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

// One command of the target application's menu bar, as read at one moment.
struct MenuItem {
    QUuid id;
    QString title;
    QStringList menuPath; // menu-bar title … own title, at least two entries
    std::optional<QString> shortcut;
    bool isEnabled = false;
    QString appName;
    std::optional<QString> appBundleID;
    // What pressing it takes; axElement where menus are accessibility elements.
    MenuHandleRef handle;

    // Menu path joined with " → ": the usage-history key and second search text.
    QString pathKey() const;
    // Every path entry but the last, joined with " → "; empty for a top-level item.
    QString breadcrumb() const;

    // Equal when title, path and application name are canonically equivalent.
    friend bool operator==(const MenuItem& a, const MenuItem& b);
};

size_t qHash(const MenuItem& item, size_t seed = 0);

// Separator between menu path entries.
inline constexpr char16_t kMenuPathSeparator[] = u" → ";

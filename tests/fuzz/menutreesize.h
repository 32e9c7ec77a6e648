#pragma once

// What the menu fuzzers check of a tree the reader made: its size and depth.

#include "platform/menutree.h"

#include <algorithm>

// The nodes of `nodes`' trees, and in `deepest` their depth.
inline int countNodes(const QList<MenuNode>& nodes, int depth, int& deepest)
{
    deepest = std::max(deepest, depth);
    int count = 0;
    for (const MenuNode& node : nodes)
        count += 1 + countNodes(node.children, depth + 1, deepest);
    return count;
}

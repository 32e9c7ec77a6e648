#pragma once

// What the menu fuzzers check of a tree the reader made: its size and depth.

#include "platform/linux/atspi/atspielement.h"

#include <algorithm>
#include <cstdlib>

// The elements of `element`'s tree, and in `deepest` its depth; aborts on an
// element that is not the reader's own.
inline int countElements(const AccessibilityElementRef& element, int depth, int& deepest)
{
    deepest = std::max(deepest, depth);
    const auto* e = dynamic_cast<const AtspiElement*>(element.get());
    if (!e)
        std::abort();
    int count = 1;
    for (const AccessibilityElementRef& child : e->children)
        count += countElements(child, depth + 1, deepest);
    return count;
}

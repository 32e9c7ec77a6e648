#pragma once

#include <memory>

// One element of another application's accessibility tree. Opaque to the
// logic: it is only ever handed back to the accessibility interface.
class AccessibilityElement {
public:
    virtual ~AccessibilityElement();

protected:
    AccessibilityElement() = default;
    AccessibilityElement(const AccessibilityElement&) = default;
    AccessibilityElement& operator=(const AccessibilityElement&) = default;
};

// A counted reference: copies share the element, the last one releases it.
// The count is atomic, so records holding one may cross threads.
using AccessibilityElementRef = std::shared_ptr<const AccessibilityElement>;

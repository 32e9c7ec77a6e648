#include "platform/accessibilityelement.h"

AccessibilityElement::~AccessibilityElement() = default;

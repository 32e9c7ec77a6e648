#include "platform/accessibility.h"

Accessibility::~Accessibility() = default;

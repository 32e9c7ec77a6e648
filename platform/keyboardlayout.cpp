#include "platform/keyboardlayout.h"

KeyboardLayout::~KeyboardLayout() = default;

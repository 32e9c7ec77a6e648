#include "platform/menutree.h"

MenuHandle::~MenuHandle() = default;

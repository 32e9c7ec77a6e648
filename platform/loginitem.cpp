#include "platform/loginitem.h"

LoginItem::~LoginItem() = default;

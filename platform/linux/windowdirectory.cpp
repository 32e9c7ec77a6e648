#include "platform/linux/windowdirectory.h"

WindowDirectory::~WindowDirectory() = default;

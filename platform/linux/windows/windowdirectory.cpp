#include "platform/linux/windows/windowdirectory.h"

WindowDirectory::~WindowDirectory() = default;

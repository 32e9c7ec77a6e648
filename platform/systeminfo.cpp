#include "platform/systeminfo.h"

SystemInfo::~SystemInfo() = default;

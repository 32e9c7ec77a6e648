#include "platform/updatepackaging.h"

UpdatePackaging::~UpdatePackaging() = default;

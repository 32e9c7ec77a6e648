#include "platform/workspace.h"

Workspace::~Workspace() = default;

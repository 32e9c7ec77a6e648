#include "platform/remotecontrol.h"

RemoteControl::~RemoteControl() = default;

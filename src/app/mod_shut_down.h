#pragma once

#include "platform/session.h"

// The commands below "Turn off computer". Each ends the session at once: nothing is asked, nothing
// is saved, and a failure is silent.
namespace quellix::modShutDown {

void PowerOff(Session& session);
void Restart(Session& session);
void LogOff(Session& session);
void ShutDown(Session& session);
void ForceShutDown(Session& session);

// Enables the shut-down privilege of the process. Throws Error.
void EnableShutdownPrivilege(Session& session);

}  // namespace quellix::modShutDown

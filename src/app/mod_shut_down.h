#pragma once

#include <optional>
#include <string_view>

#include "platform/session.h"

// The commands below "Turn off computer". Each ends the session at once: nothing is asked, nothing
// is saved, and a failure is silent.
namespace quellix::modShutDown {

void PowerOff(Session& session);
void Restart(Session& session);
void LogOff(Session& session);
void ShutDown(Session& session);
void ForceShutDown(Session& session);

// How a cleaning can end for the computer. Unlike the command of that name, kRestart restarts it.
enum class Ending { kNone, kShutDown, kRestart, kLogOff };

// "shutdown", "restart", "logoff", in any case; nothing for any other word.
std::optional<Ending> EndingNamed(std::string_view name);
// What it does, before a time: "The computer is turned off", in English.
std::string_view TextOf(Ending ending);
// Ends the session so; kNone does nothing.
void End(Session& session, Ending ending);

// Enables the shut-down privilege of the process. Throws Error.
void EnableShutdownPrivilege(Session& session);

}  // namespace quellix::modShutDown

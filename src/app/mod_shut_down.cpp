#include "app/mod_shut_down.h"

#include "platform/error.h"

namespace quellix::modShutDown {
namespace {

// The flags of ExitWindowsEx.
constexpr uint32_t kLogOff = 0;
constexpr uint32_t kShutDown = 1;
constexpr uint32_t kForce = 4;
constexpr uint32_t kPowerOff = 8;
constexpr uint32_t kNoReason = 0xFFFFFFFF;

template <typename Step>
void Try(Step step) {
  try {
    step();
  } catch (const Error&) {
    // The session goes on; that tells enough.
  }
}

// A user who holds the privilege already needs no success of the first step.
void ExitWindows(Session& session, uint32_t flags) {
  Try([&] { EnableShutdownPrivilege(session); });
  Try([&] { session.Exit(flags, kNoReason); });
}

}  // namespace

void PowerOff(Session& session) { ExitWindows(session, kPowerOff); }
// Logs off by force, as it always has: those who use it are used to logging on again.
void Restart(Session& session) { ExitWindows(session, kForce); }
void LogOff(Session& session) { ExitWindows(session, kLogOff); }
void ShutDown(Session& session) { ExitWindows(session, kShutDown); }
void ForceShutDown(Session& session) { ExitWindows(session, kForce); }

void EnableShutdownPrivilege(Session& session) { session.EnablePrivilege("SeShutdownPrivilege"); }

}  // namespace quellix::modShutDown

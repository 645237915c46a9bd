#include "app/mod_shut_down.h"

#include <iterator>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix::modShutDown {
namespace {

// The flags of ExitWindowsEx.
constexpr uint32_t kLogOff = 0;
constexpr uint32_t kShutDown = 1;
constexpr uint32_t kReboot = 2;
constexpr uint32_t kForce = 4;
constexpr uint32_t kPowerOff = 8;
constexpr uint32_t kNoReason = 0xFFFFFFFF;

// By Ending.
constexpr struct {
  std::string_view name, text;
  uint32_t flags;
} kEndings[] = {{"", "", 0},
                {"shutdown", Mark("The computer is turned off"), kPowerOff},
                {"restart", Mark("The computer is restarted"), kReboot},
                {"logoff", Mark("You are logged off"), kLogOff}};

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

std::optional<Ending> EndingNamed(std::string_view name) {
  for (size_t i = 1; i < std::size(kEndings); ++i) {
    if (EqualsNoCase(kEndings[i].name, name)) return static_cast<Ending>(i);
  }
  return std::nullopt;
}

std::string_view TextOf(Ending ending) { return kEndings[static_cast<size_t>(ending)].text; }

void End(Session& session, Ending ending) {
  if (ending != Ending::kNone) ExitWindows(session, kEndings[static_cast<size_t>(ending)].flags);
}

void EnableShutdownPrivilege(Session& session) { session.EnablePrivilege("SeShutdownPrivilege"); }

}  // namespace quellix::modShutDown

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// A program that runs, by the name of its file ("notepad.exe") or, without one, by the path of a
// file that it has open.
struct ProgramUse {
  std::string_view file_name = {};
  std::string_view held = {};
};

// Programs that were asked to close.
class ClosingPrograms {
 public:
  virtual ~ClosingPrograms() = default;
  // Waits for a moment, a twentieth of a second at most. Whether all of them have ended.
  virtual bool Await() = 0;
};

// The session of the user who is logged on.
class Session {
 public:
  virtual ~Session() = default;

  // Makes this process the running instance of the program `name` in its session and keeps it that
  // until the process ends. False when another process is it. Of processes that ask at the same
  // instant one gets it. Throws Error.
  virtual bool ClaimInstance(std::string_view name) = 0;

  // Enables a privilege ("SeShutdownPrivilege") of the process. Throws Error when it cannot be
  // asked for; one that the user does not hold is no error.
  virtual void EnablePrivilege(std::string_view name) = 0;

  // Whether what only administrators may change can be changed.
  virtual bool HasAdministratorRights() = 0;

  // The security identifier of the user in whose name the process runs ("S-1-5-21-..."); "" where
  // there is none. Never throws.
  virtual std::string UserId() = 0;

  // The programs that have a file open, by the names that their users know; none where that cannot
  // be told. Never throws.
  virtual std::vector<std::string> ProgramsUsing(const std::string& path) = 0;

  // Whether programs run beside this one: on a volume none does.
  virtual bool RunsPrograms() = 0;

  // Asks programs of this session to close, as the close button of each of their windows does. They
  // may ask their user first, and may stay; nothing is ended by force. Null when none has a window
  // that takes it, or when nobody can tell which has the file open. Never throws.
  virtual std::unique_ptr<ClosingPrograms> AskToClose(const ProgramUse& use) = 0;

  // Ends the session, with the flags and the reason of ExitWindowsEx. Returns before it has ended.
  // Throws Error.
  virtual void Exit(uint32_t flags, uint32_t reason) = 0;
};

}  // namespace quellix

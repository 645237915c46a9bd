#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

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

  // The programs that have a file open, by the names that their users know; none where that cannot
  // be told. Never throws.
  virtual std::vector<std::string> ProgramsUsing(const std::string& path) = 0;

  // Ends the session, with the flags and the reason of ExitWindowsEx. Returns before it has ended.
  // Throws Error.
  virtual void Exit(uint32_t flags, uint32_t reason) = 0;
};

}  // namespace quellix

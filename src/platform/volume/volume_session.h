#pragma once

#include "platform/error.h"
#include "platform/session.h"

namespace quellix {

// Nobody is logged on to a volume.
class VolumeSession : public Session {
 public:
  bool ClaimInstance(std::string_view) override { Refuse(); }
  void EnablePrivilege(std::string_view) override { Refuse(); }
  // Of a volume its mount decides.
  bool HasAdministratorRights() override { return true; }
  std::string UserId() override { return {}; }
  std::vector<std::string> ProgramsUsing(const std::string&) override { return {}; }
  bool RunsPrograms() override { return false; }
  std::unique_ptr<ClosingPrograms> AskToClose(const ProgramUse&) override { return nullptr; }
  void Exit(uint32_t, uint32_t) override { Refuse(); }

 private:
  [[noreturn]] static void Refuse() {
    throw NotAvailable("Nobody is logged on to the Windows of a volume.");
  }
};

}  // namespace quellix

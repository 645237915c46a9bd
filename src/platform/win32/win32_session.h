#pragma once

#include "platform/session.h"
#include "platform/win32/unique.h"

namespace quellix {

class Win32Session : public Session {
 public:
  bool ClaimInstance(std::string_view name) override;
  void EnablePrivilege(std::string_view name) override;
  bool HasAdministratorRights() override;
  std::string UserId() override;
  // Both ask the Restart Manager, which came with Windows Vista, who has a file open.
  std::vector<std::string> ProgramsUsing(const std::string& path) override;
  std::unique_ptr<ClosingPrograms> AskToClose(const ProgramUse& use) override;
  bool RunsPrograms() override { return true; }
  void Exit(uint32_t flags, uint32_t reason) override;

 private:
  UniqueHandle instance_;
  UniqueHandle token_;  // stays open once a privilege was enabled through it
};

}  // namespace quellix

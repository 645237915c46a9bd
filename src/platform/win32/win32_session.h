#pragma once

#include "platform/session.h"
#include "platform/win32/unique.h"

namespace quellix {

class Win32Session : public Session {
 public:
  bool ClaimInstance(std::string_view name) override;
  void EnablePrivilege(std::string_view name) override;
  bool HasAdministratorRights() override;
  // Asks the Restart Manager, which came with Windows Vista.
  std::vector<std::string> ProgramsUsing(const std::string& path) override;
  void Exit(uint32_t flags, uint32_t reason) override;

 private:
  UniqueHandle instance_;
  UniqueHandle token_;  // stays open once a privilege was enabled through it
};

}  // namespace quellix

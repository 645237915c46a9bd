#pragma once

#include "platform/error.h"
#include "platform/session.h"
#include "support/holds.h"

namespace quellix {

// Writes down what it is asked for; nobody is logged off. `fails` makes every call fail after that.
struct RecordingSession : Session {
  Names calls;
  bool fails = false;
  bool is_administrator = true;
  std::string used_path;  // that two programs have open

  bool ClaimInstance(std::string_view name) override {
    Record("claim " + std::string(name));
    return true;
  }
  void EnablePrivilege(std::string_view name) override { Record("enable " + std::string(name)); }
  bool HasAdministratorRights() override { return is_administrator; }
  std::vector<std::string> ProgramsUsing(const std::string& path) override {
    return path == used_path ? std::vector<std::string>{"Writer", "Viewer"}
                             : std::vector<std::string>{};
  }
  void Exit(uint32_t flags, uint32_t reason) override {
    Record("exit " + std::to_string(flags) + " " + std::to_string(reason));
  }

  void Record(const std::string& call) {
    calls.push_back(call);
    if (fails) throw Error(Error::Kind::kDenied, "refused");
  }
};

}  // namespace quellix

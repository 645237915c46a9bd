#pragma once

#include <functional>

#include "platform/error.h"
#include "platform/machine.h"
#include "support/holds.h"

namespace quellix {

// Writes down what it is asked for; nobody is logged off. `fails` makes every call fail after that.
struct RecordingSession : Session {
  Names calls;
  bool fails = false;
  bool is_administrator = true;
  std::string user = "S-1-5-21-1";
  std::string used_path;  // that two programs have open
  bool runs_programs = true;
  std::function<bool()> on_await;  // what a program that was asked to close does; none can be asked

  bool ClaimInstance(std::string_view name) override {
    Record("claim " + std::string(name));
    return true;
  }
  void EnablePrivilege(std::string_view name) override { Record("enable " + std::string(name)); }
  bool HasAdministratorRights() override { return is_administrator; }
  std::string UserId() override { return user; }
  std::vector<std::string> ProgramsUsing(const std::string& path) override {
    return path == used_path ? std::vector<std::string>{"Writer", "Viewer"}
                             : std::vector<std::string>{};
  }
  bool RunsPrograms() override { return runs_programs; }
  std::unique_ptr<ClosingPrograms> AskToClose(const ProgramUse& use) override {
    calls.push_back("close " + std::string(use.file_name.empty() ? use.held : use.file_name));
    if (!on_await) return nullptr;
    struct Closing : ClosingPrograms {
      explicit Closing(RecordingSession& session) : session_(session) {}
      bool Await() override { return session_.on_await(); }
      RecordingSession& session_;
    };
    return std::make_unique<Closing>(*this);
  }
  void Exit(uint32_t flags, uint32_t reason) override {
    Record("exit " + std::to_string(flags) + " " + std::to_string(reason));
  }

  void Record(const std::string& call) {
    calls.push_back(call);
    if (fails) throw Error(Error::Kind::kDenied, "refused");
  }
};

// The same machine with another session.
inline Machine WithSession(const Machine& machine, Session& session) {
  return {machine.files,     machine.registry, machine.shell,
          machine.url_cache, machine.profile,  machine.system,
          session,           machine.cleaners, machine.program_folder};
}

}  // namespace quellix

#pragma once

#include "platform/machine.h"
#include "platform/preview/preview_file_system.h"
#include "platform/preview/preview_registry.h"
#include "platform/preview/preview_shell.h"
#include "platform/profile_strings.h"

namespace quellix {

// A session that is never ended.
class PreviewSession : public Session {
 public:
  explicit PreviewSession(Session& inner) : inner_(inner) {}

  bool ClaimInstance(std::string_view) override { return true; }
  void EnablePrivilege(std::string_view) override {}
  std::vector<std::string> ProgramsUsing(const std::string& path) override {
    return inner_.ProgramsUsing(path);
  }
  bool HasAdministratorRights() override { return inner_.HasAdministratorRights(); }
  std::string UserId() override { return inner_.UserId(); }
  bool RunsPrograms() override { return inner_.RunsPrograms(); }
  std::unique_ptr<ClosingPrograms> AskToClose(const ProgramUse&) override { return nullptr; }
  void Exit(uint32_t, uint32_t) override {}

 private:
  Session& inner_;
};

// Windows' own cleaners, which only look.
class PreviewSystemCleaners : public SystemCleaners {
 public:
  explicit PreviewSystemCleaners(SystemCleaners& inner) : inner_(inner) {}

  std::vector<SystemCleaner> List() override { return inner_.List(); }
  CleanerFind Use(std::string_view key, CleanerUse, bool is_attended, const Pause& pause) override {
    return inner_.Use(key, CleanerUse::kLook, is_attended, pause);
  }

 private:
  SystemCleaners& inner_;
};

// Wraps a machine: every read passes through, every change is remembered instead of made, and later
// reads see it as made. The procedures of a run thus tell what they would do. The wrapped machine
// must outlive it.
class PreviewMachine {
 public:
  explicit PreviewMachine(const Machine& inner);

  Machine machine() const { return machine_; }

 private:
  PreviewFileSystem files_;
  PreviewRegistry registry_;
  PreviewShell shell_;
  PreviewUrlCache url_cache_;
  IniFiles profile_;
  PreviewSession session_;
  PreviewSystemCleaners cleaners_;
  Machine machine_;
};

}  // namespace quellix

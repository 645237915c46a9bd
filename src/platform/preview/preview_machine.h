#pragma once

#include "platform/machine.h"
#include "platform/preview/preview_file_system.h"
#include "platform/preview/preview_registry.h"
#include "platform/preview/preview_shell.h"

namespace quellix {

// INI files of previewed files; what is erased is recorded as such.
class PreviewProfile : public IniFiles {
 public:
  PreviewProfile(FileSystem& files, System& system, ChangeLog& log)
      : IniFiles(files, system), log_(log) {}

  bool DeleteKey(std::string_view file, std::string_view section, std::string_view key) override;
  bool DeleteSection(std::string_view file, std::string_view section) override;

 private:
  void Name(size_t before, ChangeKind kind, const std::string& part);

  ChangeLog& log_;
};

// A session that is never ended.
class PreviewSession : public Session {
 public:
  PreviewSession(Session& inner, ChangeLog& log) : inner_(inner), log_(log) {}

  bool ClaimInstance(std::string_view) override { return true; }
  void EnablePrivilege(std::string_view) override {}
  std::vector<std::string> ProgramsUsing(const std::string& path) override {
    return inner_.ProgramsUsing(path);
  }
  bool HasAdministratorRights() override { return inner_.HasAdministratorRights(); }
  void Exit(uint32_t, uint32_t) override { log_.push_back({ChangeKind::kEndSession, "", "", 0}); }

 private:
  Session& inner_;
  ChangeLog& log_;
};

// Wraps a machine: every read passes through, every change is recorded instead of made, and later
// reads see it as made. The procedures of a run thus tell what they would do. The wrapped machine
// must outlive it.
class PreviewMachine {
 public:
  explicit PreviewMachine(const Machine& inner);

  Machine machine() const { return machine_; }
  const ChangeLog& changes() const { return log_; }

 private:
  ChangeLog log_;
  PreviewFileSystem files_;
  PreviewRegistry registry_;
  PreviewShell shell_;
  PreviewUrlCache url_cache_;
  PreviewProfile profile_;
  PreviewSession session_;
  Machine machine_;
};

}  // namespace quellix

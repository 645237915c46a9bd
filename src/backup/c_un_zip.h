#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backup/backup_reader.h"
#include "backup/leftovers.h"
#include "backup/zip_repair.h"
#include "platform/machine.h"

namespace quellix {

// Reads the archives that ModZip fills, and those of other programs. Of one that a crash left
// incomplete, what is whole.
class cUnZip : public BackupReader {
 public:
  explicit cUnZip(const Machine& machine) : machine_(machine) {}

  void OnPause(const RestorePause& pause) override { pause_ = pause; }
  bool Takes(std::string_view name) const override;
  BackupInfo Describe(const std::string& path) override;
  std::vector<BackupEntry> ListEntries(const std::string& path) override;
  std::string Repair(const std::string& path) override;
  std::string ExtractTemporary(const std::string& path, std::string_view entry_path) override;
  // Bytes, times and attributes come back; what is replaced stays until its successor is whole, and
  // nothing precious is replaced.
  RestoreResult Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                        const RestorePause& pause) override;

 private:
  RepairPause PauseOf(const std::string& path, const char* work) const;
  std::unique_ptr<ZipReader> Open(const std::string& path) const;
  RestoreResult Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                        const RestorePause& pause, RestoreNotes* notes);

  Machine machine_;
  RestorePause pause_;
};

}  // namespace quellix

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

  bool Takes(std::string_view name) const override;
  BackupInfo Describe(const std::string& path, const Pause& pause) override;
  std::vector<BackupEntry> ListEntries(const std::string& path, const Pause& pause) override;
  std::string Repair(const std::string& path, const Pause& pause) override;
  std::string ExtractTemporary(const std::string& path, std::string_view entry_path,
                               const Pause& pause) override;
  // Bytes, times and attributes come back; what is replaced stays until its successor is whole, and
  // nothing precious is replaced.
  RestoreResult Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                        const Pause& pause) override;

 private:
  std::unique_ptr<ZipReader> Open(const std::string& path, const Pause& pause) const;
  RestoreResult Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                        const Pause& pause, RestoreNotes* notes);

  Machine machine_;
};

}  // namespace quellix

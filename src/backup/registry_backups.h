#pragma once

#include "backup/backup_reader.h"
#include "platform/machine.h"

namespace quellix {

// Reads the .reg files that RegistryUndo writes. Their entries are keys, each with the values that
// are to come back to it.
class RegistryBackups : public BackupReader {
 public:
  explicit RegistryBackups(const Machine& machine) : machine_(machine) {}

  bool Takes(std::string_view name) const override;
  BackupInfo Describe(const std::string& path, const Pause& pause) override;
  std::vector<BackupEntry> ListEntries(const std::string& path, const Pause& pause) override;
  // Throws Error: what is whole of such a file is restored as it is.
  std::string Repair(const std::string& path, const Pause& pause) override;
  // The key's part of the file as a .txt: a .reg would be imported.
  std::string ExtractTemporary(const std::string& path, std::string_view entry_path,
                               const Pause& pause) override;
  // A value that is there with other data is replaced as the mode says; in mode kNewer it stays, as
  // values have no date. A key of which a value stayed counts as skipped.
  RestoreResult Restore(const std::string& path, const RestoreOrder& order, Prompts& prompts,
                        const Pause& pause) override;

 private:
  Machine machine_;
};

}  // namespace quellix

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "backup/backup_reader.h"
#include "platform/machine.h"

namespace quellix {

// The backup folder with every kind of backup in it. Only Repair, Restore and Delete change
// anything. Backups are named as in the folder, those of the second folder by their full paths;
// functions with a name throw Error when it names none or the backup cannot be read at all.
class Backups {
 public:
  // The folder that the settings name, and second that of a copy with other rights, which keeps its
  // backups where its own settings, beside the program, say.
  explicit Backups(const Machine& machine);
  // `folder` ends in "\" and may be missing.
  Backups(const Machine& machine, std::string folder);

  const std::string& folder() const { return folders_.front(); }
  // Both, or one.
  const std::vector<std::string>& folders() const { return folders_; }
  // Full.
  std::string PathOf(std::string_view name) const;
  // The name of a file in one of the folders; nothing for any other.
  std::optional<std::string> NameOf(std::string_view path) const;

  // Newest first. What was not read when `pause` ended that has a problem.
  std::vector<BackupInfo> List(const Pause& pause = {});
  // What cannot be read at all is an Error.
  BackupInfo Check(std::string_view name, const Pause& pause = {});
  // See BackupReader.
  std::string Repair(std::string_view name, const Pause& pause = {});
  std::vector<BackupEntry> ListEntries(std::string_view name, const Pause& pause = {});
  std::string ExtractTemporary(std::string_view name, std::string_view entry_path,
                               const Pause& pause = {});
  RestoreResult Restore(std::string_view name, const RestoreOrder& order, Prompts& prompts,
                        const Pause& pause = {});
  void Delete(std::string_view name);

 private:
  std::vector<std::string> NamesIn(std::string_view folder) const;
  BackupReader* ReaderOf(std::string_view name) const;  // null for a file that is no backup
  BackupReader& Reader(std::string_view name) const;

  Machine machine_;
  std::vector<std::string> folders_;
  std::vector<std::unique_ptr<BackupReader>> readers_;
};

// The user's choice for files that are there already.
OverwriteMode StoredOverwriteMode(const Machine& machine);
void StoreOverwriteMode(const Machine& machine, OverwriteMode mode);  // throws Error
// "RHSA" for those set; `absent` stands for each of the others.
std::string AttributeLetters(uint32_t attributes, std::string_view absent);

}  // namespace quellix

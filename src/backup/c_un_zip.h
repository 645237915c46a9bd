#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/views.h"
#include "backup/zip_repair.h"
#include "platform/machine.h"

namespace quellix {

// What happens when a file to restore is there already.
enum class OverwriteMode { kAsk, kAlways, kNewer, kNever };

// "Always", "Newer", "Never", "Ask", without regard to case; nothing for another word.
std::optional<OverwriteMode> ParseOverwriteMode(std::string_view word);

// An archive as a list of backups shows it.
struct BackupInfo {
  std::string name;              // in the backup folder
  std::string root;              // what its paths begin with, "C:\"; "" when its name does not tell
  LocalTime date;                // from its name, else of the file, in UTC
  uint64_t entries = 0;          // 0 as well where there is a problem
  uint64_t size = 0;             // bytes of the archive
  std::string problem;           // why it cannot be read; "" when it can
  std::optional<Repair> repair;  // what was repaired just now
};

// A file in an archive.
struct BackupEntry {
  std::string path;  // below the archive's root, "Users\Me\a.txt"
  uint64_t size = 0;
  int64_t last_write = 0;  // FILETIME; 0 when the archive does not tell
  uint32_t attributes = 0;
  std::string refusal;  // why it is not restored; "" when it can be
};

struct RestoreResult {
  uint64_t restored = 0;
  uint64_t skipped = 0;               // were there, and were to be left
  std::vector<std::string> problems;  // a sentence for each entry refused or failed
  bool cancelled = false;
};

// Lists, restores and deletes the backups in a folder. Functions with an archive's name throw Error
// when it cannot be read at all; an incomplete archive is repaired first.
class cUnZip {
 public:
  // `folder` ends in "\" and may be missing.
  cUnZip(const Machine& machine, std::string folder)
      : machine_(machine), folder_(std::move(folder)) {}

  // The archives, newest first.
  std::vector<BackupInfo> ListArchives();
  BackupInfo Describe(std::string_view archive);
  std::vector<BackupEntry> ListEntries(std::string_view archive);

  // Unpacks one entry into the temporary folder, to be viewed; the path there.
  std::string ExtractTemporary(std::string_view archive, std::string_view entry_path);

  // Restores the entries of these paths, or all when none is named, to where they were or, with
  // `to`, below that folder (full path). Bytes, times and attributes come back; what is replaced
  // stays until its successor is whole. `prompts` is asked in mode kAsk.
  RestoreResult Restore(std::string_view archive, const std::vector<std::string>& entry_paths,
                        std::string_view to, OverwriteMode mode, Prompts& prompts);

  // Deletes an archive. Throws Error.
  void Delete(std::string_view archive);

  // Repairs an archive where that is needed; nothing when it was whole.
  std::optional<Repair> RepairIfNeeded(std::string_view archive);

 private:
  std::string PathOf(std::string_view archive) const;

  Machine machine_;
  std::string folder_;
};

}  // namespace quellix

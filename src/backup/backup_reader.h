#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "backup/overwrite_mode.h"
#include "platform/file_system.h"
#include "platform/locale.h"
#include "platform/pause.h"
#include "run/views.h"

namespace quellix {

// What a file of the backup folder holds.
enum class BackupKind { kFiles, kRegistry };

// A file of the backup folder as a list of backups shows it.
struct BackupInfo {
  std::string name;  // in the backup folder; full path in a second one
  BackupKind kind = BackupKind::kFiles;
  std::string root;        // where its entries belong, "C:\"; "" when its name does not tell
  LocalTime date;          // from its name, else when the file was last written
  uint64_t entries = 0;    // 0 as well where there is a problem
  uint64_t size = 0;       // bytes of the backup
  std::string problem;     // why it cannot be read; "" when it can
  std::string incomplete;  // what is left of it, in a sentence; "" when it is whole
};

// What can be put back by itself: a file, or a registry key.
struct BackupEntry {
  std::string path;  // below the root, "Users\Me\a.txt"
  uint64_t size = 0;
  int64_t last_write = 0;  // FILETIME; 0 when the backup does not tell
  uint32_t attributes = 0;
  std::string refusal;  // why it is not restored; "" when it can be
};

struct RestoreOrder {
  std::vector<std::string> entry_paths;  // as ListEntries tells them; none: all
  std::string to;                        // folder to restore into; "": to where they were
  OverwriteMode mode = OverwriteMode::kAsk;
};

// "3 files", "1 registry key"; `number` is as shown.
std::string Counted(const std::string& number, BackupKind kind);

struct RestoreResult {
  uint64_t restored = 0;
  uint64_t skipped = 0;               // were there, and were to be left
  std::vector<std::string> problems;  // a sentence for each entry refused or failed
  bool cancelled = false;             // the entries behind the last one are as they were
};

// Reads one kind of file of the backup folder. `path` is the file's full path. All functions but
// Takes and Describe throw Error when it cannot be read at all, and where `pause` ended that.
class BackupReader {
 public:
  virtual ~BackupReader() = default;

  // Whether a file is of this kind, by its name alone.
  virtual bool Takes(std::string_view name) const = 0;
  // Changes nothing: what is incomplete is read as far as it is whole.
  virtual BackupInfo Describe(const std::string& path, const Pause& pause) = 0;
  virtual std::vector<BackupEntry> ListEntries(const std::string& path, const Pause& pause) = 0;
  // Makes an incomplete backup whole; what was done, in a sentence, "" when it was whole. Throws
  // Error where the kind has no way, and the backup is as it was.
  virtual std::string Repair(const std::string& path, const Pause& pause) = 0;
  // Makes a copy of one entry in the temporary folder, which the shell may open without anything
  // being changed; the copy's path.
  virtual std::string ExtractTemporary(const std::string& path, std::string_view entry_path,
                                       const Pause& pause) = 0;
  // Puts entries back. `prompts` is asked in mode kAsk.
  virtual RestoreResult Restore(const std::string& path, const RestoreOrder& order,
                                Prompts& prompts, const Pause& pause) = 0;
};

}  // namespace quellix

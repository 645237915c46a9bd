#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace quellix {

// What the user chose for backups (section Backup of Settings.ini).
struct BackupOptions {
  bool strict = false;         // a file that could not be archived stays
  bool keep_on_abort = false;  // a stopped run leaves its archive
  bool registry = true;        // registry entries are kept too, before they go
};

// Where the removal mode "back up, then delete" puts files before they go. No function throws.
class BackupArchive {
 public:
  virtual ~BackupArchive() = default;

  // Why no archive can be made in `folder`, in a sentence; "" when one can. Makes the folder.
  virtual std::string WhyUnusable(std::string_view folder) = 0;
  // Starts a new archive in `folder` (ends in "\") whose name begins with `prefix`; the one before
  // is finished. The archive and its folder are made with the first file.
  virtual void MakeBackupArchiveName(std::string_view folder, std::string_view prefix) = 0;
  // Adds the file NamePart(path) of an open folder, under its whole path; false when that failed,
  // for the reason in Problem. In strict mode a file fails of which something cannot be stored.
  virtual bool BackupFile(Folder& folder, std::string_view path) = 0;
  // What of the last file that was added could not be stored, in a sentence; "" for nothing.
  virtual std::string_view Loss() const { return ""; }
  // Brings the files added since the last call onto the disk: not before that may they be removed.
  // False when some did not get there; then all of them are to be taken as not archived.
  virtual bool Flush() = 0;
  // Deletes the archive being filled, if any; failures are ignored. Files that an earlier run put
  // into it stay in it. With keep_on_abort it is finished instead.
  virtual void DeleteBackupArchive() = 0;
  // Finishes the archive being filled, if any; false when that failed.
  virtual bool Close() = 0;
  // Why the last failing call failed.
  virtual std::string_view Problem() const = 0;
};

}  // namespace quellix
